/// The exception classes of the host's class libraries. All carry the complete text for the user.
#pragma once

#include <exception>
#include <string>

namespace veltra {

class ExceptionBase : public std::exception {
public:
    explicit ExceptionBase(std::string message) : message_(std::move(message)) {}
    const char* what() const noexcept override { return message_.c_str(); }

private:
    std::string message_;
};

/// A file that cannot be read, or that holds something else than it should.
class IOException : public ExceptionBase {
public:
    using ExceptionBase::ExceptionBase;
};

/// A file that the system does not open or read, or that has shrunk since it was opened.
class FileAccessException : public IOException {
public:
    using IOException::IOException;
};

/// The user asked to stop. Not an error: nobody shows it.
class InterruptedException : public ExceptionBase {
public:
    InterruptedException() : ExceptionBase("The operation was interrupted") {}
};

/// Text that is not a value of the type asked for.
class bad_lexical_cast : public ExceptionBase {
public:
    using ExceptionBase::ExceptionBase;
};

/// A number that does not fit the type asked for.
class bad_numeric_cast : public ExceptionBase {
public:
    using ExceptionBase::ExceptionBase;
};

namespace kroutilutil {

/// A loader instruction list that the loader does not understand. The text is the loader's name, then the message,
/// with ": " between them unless the message brings its own colon.
class InvalidInstructionsException : public ExceptionBase {
public:
    InvalidInstructionsException(const std::string& loaderName, const std::string& message);
};

} // namespace kroutilutil
} // namespace veltra
