// One fault after the other, at every place where it can happen, in loads of every kind.

#include "tests/load/faults.h"

#include "krohost/host/line/entries.h"
#include "krohost/host/runtime/Host.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VtuBuilder.h"
#include "tests/support/meshes.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iostream>

namespace test {

namespace {

using namespace std::string_literals;
using krohost::Host;

struct Scenario {
    std::string name;
    std::function<bool(Host&)> load;
};

bool replay(Host& host, std::vector<std::string> instructions) {
    instructions.insert(instructions.begin(), {"STANDARDSYNTAX", "1.0"});
    return host.loadInstructions(host.loaders().front(), instructions);
}

/// A load by the dialog of a file in each encoding, and of a collection; a replay and an append. Between them they make
/// every call that the add-on can make.
class Faults : public testing::Test {
protected:
    Faults() {
        const MeshPiece piece = mixed().withCellData(variedValues("c", ElementType::Int16, 4));
        VtuBuilder file = vtu().timeValue(2.5).piece(piece).piece(piece);
        for (Encoding encoding : allEncodings()) {
            if (encoding.bigEndian != encoding.header64)
                continue;
            encoding.blockByteCount = 50;
            const std::string path = folder_ / fmt::format("{}.vtu", scenarios_.size());
            file.encoding(encoding).write(path);
            scenarios_.push_back({encoding.name(), [path](Host& host) { return host.loadFiles({path}); }});
        }
        // Only the checksum of a block is wrong: libdeflate gives up and zlib, which gives all its bytes, takes over.
        const Encoding zlib{Format::AppendedRaw, true};
        std::string damaged = file.encoding(zlib).text();
        const std::string stored = encodedArray(piece.pointData[0], zlib);
        damaged.at(damaged.find(stored) + stored.size() - 1) ^= 1;
        const std::string damagedPath = folder_.write("damaged.vtu", damaged);
        scenarios_.push_back({"damaged", [=](Host& host) { return host.loadFiles({damagedPath}); }});
        const std::string first = folder_ / "0.vtu", last = folder_ / "12.vtu";
        const std::string blocks = folder_.write("blocks.vtm", R"(<VTKFile type="vtkMultiBlockDataSet">
            <vtkMultiBlockDataSet><Block name="b"><DataSet file="0.vtu" name="first"/></Block><DataSet file="1.vtu"/>
            </vtkMultiBlockDataSet></VTKFile>)");
        scenarios_.push_back({"blocks", [=](Host& host) { return host.loadFiles({blocks}); }});
        scenarios_.push_back(
            {"replay", [=](Host& host) {
                 return replay(host, {"FILELIST_DATAFILES", "2", first, last, "SOLUTION_TIMES", "2", "1", "2.25"});
             }});
        scenarios_.push_back(
            {"append", [=](Host& host) {
                 return host.loadFiles({first}) && replay(host, {"FILENAME_FILE", last, "STRAND_ID", "3"});
             }});
    }

    TemporaryFolder folder_;
    std::vector<Scenario> scenarios_;
};

/// All that the host shows of its dataset once everything is demanded.
struct Outcome {
    Outcome(Host& host, const Scenario& scenario) : isLoaded(scenario.load(host)) {
        if (!isLoaded)
            return;
        for (const krohost::Zone& zone : host.dataset().zones)
            addZone(zone);
        for (const krohost::DemandResult& result : host.demandAll()) {
            failedCount += result.isLoaded ? 0 : 1;
            for (const krohost::StorageSummary& part : result.parts)
                text += fmt::format("{} {}\n", host.dataset().name(result.target), part.crc32);
        }
    }
    void addZone(const krohost::Zone& zone) {
        text += fmt::format("{} {}\n", zone.name, zone.solutionTime);
        remarks += fmt::format("{}\n", zone.auxiliaryData);
    }
    bool isComplete() const { return isLoaded && failedCount == 0; }

    bool isLoaded;
    std::size_t failedCount = 0;
    std::string text;
    std::string remarks; // which a host may refuse without harm
};

/// A fault that happens once, at its n-th chance.
struct Injection {
    std::string name;
    std::function<void(Host&, std::int64_t number)> arm;
    std::function<bool(Host&, std::int64_t number)> hasHappened; // and disarms
    std::vector<std::string> dialogs;                            // the only ones allowed, with * in place of a path
    bool isInterrupt = false;
};

void expectOneSentence(const Host& host, const Outcome& outcome, const Injection& injection) {
    const std::size_t dialogCount = host.dialogs().size();
    if (dialogCount == 0) {
        // A host that refuses a load when it has zones already knows what it does.
        const bool isHostsAffair = !outcome.isLoaded && !host.dataset().zones.empty();
        EXPECT_TRUE(outcome.isComplete() || isHostsAffair || injection.isInterrupt);
        return;
    }
    EXPECT_EQ(dialogCount, 1);
    EXPECT_TRUE(outcome.failedCount <= 1 || injection.isInterrupt);
    std::string text = host.dialogs().front().text;
    if (const std::size_t path = text.find("\"/"); path != std::string::npos)
        text.replace(path + 1, text.find('"', path + 1) - path - 1, "*");
    EXPECT_EQ(std::ranges::count(injection.dialogs, text), 1) << text;
}

constexpr std::int64_t stride = FAULT_STRIDE;

/// Loads with each fault in turn, then without one in the same process. Returns how many faults have happened.
std::int64_t sweep(const Scenario& scenario, const Injection& injection, std::int64_t step) {
    std::string expected, remarks;
    {
        Host host;
        host.loadAddOn(ADD_ON);
        const Outcome outcome(host, scenario);
        expected = outcome.text;
        remarks = outcome.remarks;
    }
    for (std::int64_t number = 1;; number += step) {
        SCOPED_TRACE(fmt::format("{}: {} number {}", scenario.name, injection.name, number));
        Host host;
        injection.arm(host, number);
        host.loadAddOn(ADD_ON);
        const Outcome outcome(host, scenario);
        if (!injection.hasHappened(host, number))
            return number / step;
        expectOneSentence(host, outcome, injection);
        EXPECT_TRUE(!outcome.isComplete() || (outcome.text == expected && !injection.isInterrupt)) << outcome.text;
        EXPECT_TRUE(!outcome.isComplete() || outcome.remarks == remarks || injection.name == "KroUtilZoneSetAuxData");
        const std::size_t dialogCount = host.dialogs().size();
        EXPECT_EQ(Outcome(host, scenario).text, expected);
        EXPECT_EQ(host.dialogs().size(), dialogCount);
        host.shutDown();
        EXPECT_EQ(host.violations(), std::vector<std::string>{});
        if (testing::Test::HasFailure())
            return number / step;
    }
}

void sweepAll(const std::vector<Scenario>& scenarios, const std::vector<Injection>& injections, std::int64_t step = 1) {
    std::int64_t count = 0;
    for (const Injection& injection : injections)
        for (const Scenario& scenario : scenarios)
            count += sweep(scenario, injection, step);
    std::cout << "faults injected: " << count << '\n';
}

Injection below(const std::string& name, Fault fault, std::vector<std::string> dialogs) {
    return {name, [fault](Host&, std::int64_t number) { arm(fault, number); },
            [](Host&, std::int64_t) { return disarm(); }, std::move(dialogs)};
}

const std::string vtkLoader = "VTK Data Loader: ", trixLoader = "TRIX Loader: ";
const std::string unknown = vtkLoader + "An unknown error occurred while reading data from the VTK file";
const std::string vtkFile = vtkLoader + "An error occurred while reading data from the VTK file.\nReason: ";
const std::string inputFile = vtkLoader + "An error occurred while reading data from the input file.\nReason: ";

} // namespace

TEST_F(Faults, OfMemoryAreToldAndPassedOver) {
    const std::string atStart = "Insufficient memory to initialize the loader";
    const std::string callback = "Insufficient memory to load the VTK file", reason = "\nReason: std::bad_alloc";
    sweepAll(
        scenarios_,
        {below("allocation", Fault::allocation,
               {vtkLoader + atStart, trixLoader + atStart, vtkLoader + callback, vtkLoader + callback + "." + reason,
                vtkLoader + "Insufficient memory resources available to read data from the input stream." + reason})},
        stride);
}

TEST_F(Faults, OfReadsAreToldOrMadeGood) {
    const std::string broken = "Unable to read \"*\": Input/output error", cut = "Unexpected end of file in \"*\"";
    sweepAll(scenarios_,
             {below("short read", Fault::shortRead, {}), below("interrupted read", Fault::interruptedRead, {}),
              below("empty read", Fault::emptyRead, {vtkFile + cut, inputFile + cut}),
              below("failed read", Fault::failedRead, {vtkFile + broken, inputFile + broken})});
}

TEST_F(Faults, InterruptsAreSilentExceptInNodeMaps) {
    const auto fires = [](Host& host, std::int64_t) {
        const bool isInterrupted = Host::isInterrupted();
        host.clearInterrupt();
        return isInterrupted;
    };
    sweepAll(scenarios_,
             {{"poll",
               [](Host& host, std::int64_t number) { host.injection().interruptAtPoll(number); },
               fires,
               {unknown},
               true},
              {"progress update",
               [](Host& host, std::int64_t number) { host.injection().interruptAtProgressUpdate(number); },
               fires,
               {},
               true}},
             stride);
}

TEST_F(Faults, RefusedCallsAreToldOrTheHostsOwnAffair) {
    const std::string noMemory = "Insufficient memory ", reason = ".\nReason: std::bad_alloc";
    const std::string callback = vtkLoader + "Failed to load the VTK file\nReason: " + vtkLoader;
    std::vector<std::string> dialogs{
        vtkLoader + "None of the VTK files provided any data", vtkLoader + noMemory + "to load the VTK file",
        vtkLoader + noMemory + "to load the VTK file" + reason,
        vtkLoader + noMemory + "resources available to read data from the input stream" + reason,
        // in place of a string that the host does not give there is an empty one
        vtkFile + "Failed to open VTK file for reading",
        callback + "Malformed or missing STANDARDSYNTAX preamble in the $!READDATASET command",
        callback + "Unrecognized load parameter: ",
        callback + "Invalid parameter value: \"\" is not a number, which leaves 1 solution times for 2 files",
        callback + "Unexpected value for STRAND_ID instruction. Found, \"\" but was expecting an integer value.",
        unknown};
    for (const std::string& loader : {vtkLoader, trixLoader})
        for (const std::string& text : {"Failed to register the loader"s, noMemory + "to initialize the loader"})
            dialogs.push_back(loader + text);
    for (const char* list : {"FILELIST_DATAFILES", "SOLUTION_TIMES"})
        dialogs.push_back(callback + "Bad or missing count for in " + list + " instruction");
    std::vector<Injection> injections;
    for (const auto& [name, caller, refusal] : krohost::entries) {
        if (refusal == krohost::Refusal::impossible)
            continue;
        injections.push_back(
            {std::string(name),
             [name = name](Host& host, std::int64_t number) { host.injection().refuse(name, number); },
             [name = name](Host& host, std::int64_t number) { return host.injection().callCount(name) >= number; },
             dialogs, name == "KroUtilProgressUpdate"});
        injections.back().dialogs.push_back(std::string(name) + ": the host was told to refuse this call");
    }
    sweepAll(scenarios_, injections);
}

} // namespace test
