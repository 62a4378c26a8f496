// Every way to write a file and every sample, cut after each byte and with each byte changed: as they are opened, and
// behind the back of a host that has opened them.

#include "krohost/host/runtime/Host.h"
#include "tests/load/limits.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VtuBuilder.h"
#include "tests/support/meshes.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>

namespace test {

namespace {

using krohost::Host;

/// Checksums of what was demanded, by its name; what failed is left out.
using Checksums = std::map<std::string, std::vector<std::uint32_t>>;

class Mutations : public testing::Test {
protected:
    /// Damages each `step`-th byte of the file.
    void sweep(const std::string& name, const std::string& text, std::size_t step) {
        Limits limits{text.size()};
        writeFile(path_, text);
        const Checksums sound = load();
        EXPECT_FALSE(sound.empty()) << name;
        damageEach(name + " as it is opened", text, step, [&](bool isCut) {
            expectRightIf(isCut, load(), sound);
            limits.check();
        });
        Host host;
        host.loadAddOn(ADD_ON);
        EXPECT_TRUE(host.loadFiles({path_}));
        damageEach(name + " after it was opened", text, 7 * step, [&](bool isCut) {
            expectRightIf(isCut, demandAll(host), sound);
            limits.check();
        });
    }

    ~Mutations() override {
        EXPECT_TRUE(0 < refusedCount_ && refusedCount_ < count_);
        std::cout << "loads tried: " << count_ << ", of which refused: " << refusedCount_
                  << "; demands that failed: " << failedDemandCount_ << '\n';
    }

private:
    /// Cuts the file ever shorter, then changes a byte at a time.
    template <class Try>
    void damageEach(const std::string& name, const std::string& text, std::size_t step, const Try& tryIt) {
        for (std::size_t rest = text.size(); rest >= step;) {
            truncate(path_, rest -= step);
            SCOPED_TRACE(fmt::format("{}, cut to {} bytes", name, rest));
            tryIt(true);
        }
        writeFile(path_, text);
        std::fstream file(path_, std::ios::in | std::ios::out | std::ios::binary);
        const auto put = [&](std::size_t position, char byte) {
            file.seekp(static_cast<std::streamoff>(position)).put(byte).flush();
        };
        for (std::size_t position = 0; position < text.size(); position += step) {
            for (const char byte : changes(text[position], position)) {
                put(position, byte);
                SCOPED_TRACE(fmt::format("{}, byte {:#04x} at {}", name, byte & 0xFF, position));
                tryIt(false);
            }
            put(position, text[position]);
        }
    }

    /// What to write in place of a byte: one bit of it turned, an extreme, and by turns what means something in markup,
    /// numbers or base64 text.
    static std::array<char, 3> changes(char byte, std::size_t position) {
        constexpr std::string_view characters = "<9\"> -=/&A.";
        return {static_cast<char>(byte ^ (1 << position % 8)), static_cast<char>(position % 2 == 0 ? 0x00 : 0xFF),
                characters[position % characters.size()]};
    }

    /// What a file still holds when its end is gone is right or refused; a changed byte may be a value's.
    static void expectRightIf(bool isCut, const Checksums& shown, const Checksums& sound) {
        for (const auto& [name, checksums] : shown)
            EXPECT_TRUE(!isCut || checksums == sound.at(name)) << name;
    }

    /// Each operation that fails shows one dialog.
    Checksums load() {
        Host host;
        host.loadAddOn(ADD_ON);
        ++count_;
        if (!host.loadFiles({path_})) {
            ++refusedCount_;
            EXPECT_EQ(host.dialogs().size(), 1);
        }
        const Checksums checksums = demandAll(host);
        host.shutDown();
        EXPECT_EQ(host.violations(), std::vector<std::string>{});
        return checksums;
    }

    Checksums demandAll(Host& host) {
        Checksums checksums;
        const std::size_t dialogsBefore = host.dialogs().size();
        std::size_t failedCount = 0;
        for (const krohost::DemandResult& result : host.demandAll()) {
            for (const krohost::StorageSummary& part : result.parts)
                checksums[host.dataset().name(result.target)].push_back(part.crc32);
            failedCount += result.isLoaded ? 0 : 1;
        }
        EXPECT_EQ(host.dialogs().size() - dialogsBefore, failedCount);
        EXPECT_EQ(host.violations(), std::vector<std::string>{});
        failedDemandCount_ += failedCount;
        return checksums;
    }

    TemporaryFolder folder_;
    const std::string path_ = folder_ / "mesh.vtu";
    std::size_t count_ = 0, refusedCount_ = 0, failedDemandCount_ = 0;
};

constexpr std::size_t stride = FAULT_STRIDE;

} // namespace

TEST_F(Mutations, OfAMeshInEveryEncodingEndInALoadOrADialog) {
    const MeshPiece piece = sideBySide({singleCell(13), singleCell(10)})
                                .withPointData(variedValues("v", ElementType::Float64, 10, 2))
                                .withCellData(variedValues("c", ElementType::Int8, 2));
    for (Encoding encoding : allEncodings()) {
        encoding.blockByteCount = 50; // several blocks for most arrays
        sweep(encoding.name(), vtu().piece(piece).encoding(encoding).text(), stride);
    }
}

TEST_F(Mutations, OfTheSamplesEndInALoadOrADialog) {
    for (const auto& entry : std::filesystem::directory_iterator(SAMPLES))
        if (entry.path().extension() == ".vtu") {
            const std::string text = readFile(entry.path());
            sweep(entry.path().filename(), text, stride * (text.size() / 500 | 1)); // odd, so that all changes come
        }
}

} // namespace test
