#include "krohost/cli/input/smallFile.h"

#include "krohost/cli/terminal/Failure.h"
#include "krohost/convert/Loss.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <istream>
#include <streambuf>

namespace krohost::cli {

namespace {

/// An open file that is read without waiting longer than the user wants to.
class Descriptor {
public:
    explicit Descriptor(const SmallFile& file)
        : file_{file}, descriptor_{open(file.path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)} {
        if (descriptor_ < 0)
            fail();
    }
    ~Descriptor() { close(descriptor_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    /// Some of the bytes that come next; none at the end.
    std::size_t read(std::span<char> bytes) const {
        constexpr int milliseconds = 100; // between two looks at whether to stop
        while (true) {
            convert::pollInterrupt();
            pollfd ready{descriptor_, POLLIN, 0};
            if (poll(&ready, 1, milliseconds) <= 0)
                continue;
            const ssize_t count = ::read(descriptor_, bytes.data(), bytes.size());
            if (count >= 0)
                return static_cast<std::size_t>(count);
            if (errno != EINTR && errno != EAGAIN)
                fail();
        }
    }

private:
    [[noreturn]] void fail() const {
        throw Failure(fmt::format("The {} \"{}\" cannot be read: {}.", file_.kind, file_.path, std::strerror(errno)),
                      Exit_Failed);
    }

    const SmallFile& file_;
    int descriptor_;
};

/// The same as a stream of the standard library.
class StreamBuffer final : public std::streambuf {
public:
    explicit StreamBuffer(const SmallFile& file) : descriptor_{file} {}

private:
    int_type underflow() override {
        const std::size_t count = descriptor_.read(block_);
        setg(block_.data(), block_.data(), block_.data() + count);
        return count == 0 ? traits_type::eof() : traits_type::to_int_type(block_.front());
    }

    Descriptor descriptor_;
    std::array<char, 65536> block_;
};

/// Follows the events of the JSON library and knows the place of each.
class JsonEvents final : public nlohmann::json_sax<nlohmann::json> {
public:
    JsonEvents(const SmallFile& file, JsonVisitor& visitor) : file_{file}, visitor_{visitor} {}

    bool null() override { return word(true); }
    bool boolean(bool) override { return word(false); }
    bool number_integer(number_integer_t value) override { return number(static_cast<double>(value)); }
    bool number_unsigned(number_unsigned_t value) override { return number(static_cast<double>(value)); }
    bool number_float(number_float_t value, const string_t&) override { return number(value); }
    bool string(string_t& value) override {
        visitor_.text(where_, value);
        return true;
    }
    bool binary(binary_t&) override { return true; } // which text does not have

    bool start_object(std::size_t) override {
        visitor_.beginObject(where_);
        return nest();
    }
    bool key(string_t& value) override {
        where_.back() = std::move(value);
        return true;
    }
    bool end_object() override {
        where_.pop_back();
        visitor_.endObject(where_);
        return true;
    }
    bool start_array(std::size_t) override {
        visitor_.beginList(where_);
        return nest();
    }
    bool end_array() override {
        where_.pop_back();
        return true;
    }

    bool parse_error(std::size_t position, const std::string&, const nlohmann::detail::exception& error) override {
        constexpr int numberOverflow = 406;
        if (error.id == numberOverflow)
            file_.failAsMalformed("it holds a number that is too large");
        file_.failAsMalformed(fmt::format("it is not JSON from byte {} on", position));
    }

private:
    bool word(bool isNull) {
        visitor_.word(where_, isNull);
        return true;
    }
    bool number(double value) {
        visitor_.number(where_, value);
        return true;
    }
    bool nest() {
        constexpr std::size_t depthLimit = 100;
        if (where_.size() == depthLimit)
            file_.failAsMalformed(fmt::format("it is nested more than {} deep", depthLimit));
        where_.emplace_back();
        return true;
    }

    const SmallFile& file_;
    JsonVisitor& visitor_;
    JsonVisitor::Where where_;
};

} // namespace

void SmallFile::read(const std::function<bool(std::span<const char>)>& use) const {
    const Descriptor descriptor{*this};
    std::array<char, 65536> block;
    for (std::size_t count = descriptor.read(block); count > 0; count = descriptor.read(block))
        if (!use(std::span{block}.first(count)))
            return;
}

void SmallFile::visitJson(JsonVisitor& visitor) const {
    StreamBuffer buffer{*this};
    std::istream stream{&buffer};
    JsonEvents events{*this, visitor};
    nlohmann::json::sax_parse(stream, &events);
}

void SmallFile::failAsMalformed(const std::string& reason) const {
    throw Failure(fmt::format("The {} \"{}\" is malformed: {}.", kind, path, reason), Exit_Failed);
}

} // namespace krohost::cli
