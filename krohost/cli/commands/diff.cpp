#include "krohost/cli/commands/compareItems.h"
#include "krohost/cli/commands/table.h"
#include "krohost/cli/report/jsonReport.h"
#include "krohost/cli/report/lossReport.h"
#include "krohost/cli/report/narrowedValues.h"
#include "krohost/host/model/timesFromFileNames.h"
#include "krohost/text/printable.h"
#include "krohost/text/quoted.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>

namespace krohost::cli {

namespace {

using nlohmann::ordered_json;

struct Side {
    std::vector<SeriesFile> files;
    const Dataset* dataset = nullptr;
    OriginalFiles originals = {};

    /// The file when there is one only.
    const std::string* onlyFile() const { return files.size() == 1 ? &files.front().path : nullptr; }
};

/// A variable with its name, which is with its location what it is known by; its number depends on those before it.
struct NamedVariable {
    std::string name;
    const ZoneVariable* variable;

    std::string key() const {
        return fmt::format("{} variable {}", inWords(variable->location), krohost::quoted(name));
    }
    const char* type() const { return inWords(variable->type); }
};

std::vector<NamedVariable> namedVariables(const Dataset& dataset, const Zone& zone) {
    std::vector<NamedVariable> result;
    for (const ZoneVariable& variable : zone.variables)
        if (variable.data)
            result.push_back(
                {dataset.variables[static_cast<std::size_t>(variable.data->target().variable) - 1], &variable});
    return result;
}

using VariablesByKey = std::map<std::string, const NamedVariable*>;

VariablesByKey byKey(const std::vector<NamedVariable>& variables) {
    VariablesByKey result;
    for (const NamedVariable& variable : variables)
        result.emplace(variable.key(), &variable);
    return result;
}

/// Whether it is an integer that a double does not hold.
bool isWide(long double value) {
    return std::isfinite(value) && static_cast<long double>(static_cast<double>(value)) != value;
}

std::string valueText(long double value) {
    return isWide(value) ? reader::inDigits(value) : fmt::format("{}", static_cast<double>(value));
}

std::string extremeText(const char* kind, const Extreme& extreme) {
    return fmt::format("largest {} difference {} at {} ({}, {})", kind, extreme.difference, extreme.index,
                       valueText(extreme.left), valueText(extreme.right));
}

ordered_json valueObject(long double value) {
    if (!isWide(value))
        return static_cast<double>(value);
    return value < 0 ? ordered_json(static_cast<std::int64_t>(value)) : ordered_json(static_cast<std::uint64_t>(value));
}

/// Infinities and NaN are null in the document.
ordered_json extremeObject(const Extreme& extreme) {
    return {{"difference", extreme.difference},
            {"index", extreme.index},
            {"a", valueObject(extreme.left)},
            {"b", valueObject(extreme.right)}};
}

/// Walks two datasets side by side and writes down what differs.
class Comparer {
public:
    Comparer(Host& host, const Tolerance& tolerance, Side& left, Side& right, Outcome& outcome)
        : host_{host}, tolerance_{tolerance}, left_{left}, right_{right}, outcome_{outcome} {}

    /// Adds to the outcome what differs, and the demands.
    void run(ProgressBar& progress) {
        const std::vector<Zone>&left = left_.dataset->zones, &right = right_.dataset->zones;
        compareProperty("zones", left.size(), right.size());
        const std::size_t count = std::min(left.size(), right.size());
        for (std::size_t index = 0; index < count && !Host::isInterrupted(); ++index) {
            progress.show(static_cast<double>(index) / static_cast<double>(count), "Comparing");
            compareZones(left[index], right[index]);
        }
        progress.clear();
        outcome_.document = {{"loaded", true},          {"same", !outcome_.isDifferent}, {"structure", structure_},
                             {"variables", variables_}, {"nodeMaps", nodeMaps_},         {"notCompared", notCompared_}};
    }

private:
    void compareZones(const Zone& left, const Zone& right) {
        zoneNumber_ = left.number;
        place_ = fmt::format("zone {} {}", left.number, krohost::quoted(left.name));
        if (!areNamedByFiles(left, right))
            compareProperty("name", left.name, right.name);
        compareProperty("type", inWords(left.type), inWords(right.type));
        compareProperty("nodes", left.nodeCount, right.nodeCount);
        compareProperty("elements", left.elementCount, right.elementCount);
        compareProperty("strand", left.strandGroup.value_or(left.strand), right.strandGroup.value_or(right.strand));
        if (!areTimedByFiles(left, right) && !areClose(left.solutionTime, right.solutionTime, tolerance_))
            compareProperty("solution time", left.solutionTime, right.solutionTime);
        compareAuxiliaryData(left, right);
        compareSections(left, right);
        compareVariables(left, right);
    }

    /// Two files have two names; it says nothing more when what their zones have from these names differs too.
    bool areNamedByFiles(const Zone& left, const Zone& right) const {
        const auto isNamed = [](const Side& side, const Zone& zone) {
            return side.onlyFile() && zone.name == std::filesystem::path{*side.onlyFile()}.stem();
        };
        return isNamed(left_, left) && isNamed(right_, right);
    }

    bool areTimedByFiles(const Zone& left, const Zone& right) const {
        const auto isTimed = [](const Side& side, const Zone& zone) {
            return side.onlyFile() && zone.solutionTime == timeFromFileName(*side.onlyFile()).value_or(0);
        };
        return isTimed(left_, left) && isTimed(right_, right);
    }

    void compareAuxiliaryData(const Zone& left, const Zone& right) {
        const ordered_json a = left.auxiliaryData, b = right.auxiliaryData;
        for (const auto& [name, value] : left.auxiliaryData)
            compareProperty("aux data " + krohost::quoted(name), value, b.value(name, ordered_json{}));
        for (const auto& [name, value] : right.auxiliaryData)
            if (!a.contains(name))
                compareProperty("aux data " + krohost::quoted(name), nullptr, value);
    }

    void compareSections(const Zone& left, const Zone& right) {
        compareProperty("sections", left.sections.size(), right.sections.size());
        std::vector<std::size_t> alike;
        for (std::size_t index = 0; index < std::min(left.sections.size(), right.sections.size()); ++index) {
            const Section &a = left.sections[index], &b = right.sections[index];
            const auto name = [&](const char* property) { return fmt::format("section {}: {}", index + 1, property); };
            const std::array<bool, 3> areAlike{compareProperty(name("shape"), inWords(a.shape), inWords(b.shape)),
                                               compareProperty(name("grid order"), a.gridOrder, b.gridOrder),
                                               compareProperty(name("elements"), a.elementCount, b.elementCount)};
            const bool isAlike = std::all_of(areAlike.begin(), areAlike.end(), std::identity{});
            if (isAlike)
                alike.push_back(index);
        }
        compareProperty("has a node map", left.nodeMap != nullptr, right.nodeMap != nullptr);
        if (left.nodeMap && right.nodeMap && !alike.empty())
            compareNodeMaps(left, right, alike);
    }

    void compareNodeMaps(const Zone& left, const Zone& right, const std::vector<std::size_t>& sections) {
        const Hold a = hold(left_, left.nodeMap->target()), b = hold(right_, right.nodeMap->target());
        if (!areLoaded(a, b, "node map"))
            return;
        if (!haveSameOriginals(left, right, a, b))
            return addUnknown("node map");
        for (const std::size_t section : sections) {
            const Comparison result = compareItems(*a.data(), *b.data(), section, {});
            if (result.differingCount == 0)
                continue;
            const std::int64_t length = left.sections[section].nodesPerElement();
            const std::int64_t element = result.firstIndex / length, node = result.firstIndex % length + 1;
            addLine(fmt::format("section {}: {} of {} node numbers differ, first at element {}, node {}", section + 1,
                                result.differingCount, result.count, element, node));
            nodeMaps_.push_back({{"zone", zoneNumber_},
                                 {"section", section + 1},
                                 {"count", result.count},
                                 {"differing", result.differingCount},
                                 {"firstElement", element},
                                 {"firstNode", node}});
        }
    }

    void compareVariables(const Zone& left, const Zone& right) {
        const auto lefts = namedVariables(*left_.dataset, left), rights = namedVariables(*right_.dataset, right);
        const VariablesByKey leftsByKey = byKey(lefts), rightsByKey = byKey(rights);
        for (const NamedVariable& variable : lefts) {
            const auto found = rightsByKey.find(variable.key());
            const NamedVariable* other = found == rightsByKey.end() ? nullptr : found->second;
            compareProperty(variable.key(), variable.type(), other ? ordered_json(other->type()) : ordered_json());
            if (other && other->variable->data->valueCount == variable.variable->data->valueCount)
                compareValues(left, right, variable, *other);
        }
        for (const NamedVariable& variable : rights)
            if (!leftsByKey.contains(variable.key()))
                compareProperty(variable.key(), nullptr, variable.type());
    }

    void compareValues(const Zone& leftZone, const Zone& rightZone, const NamedVariable& left,
                       const NamedVariable& right) {
        if (Host::isInterrupted())
            return;
        const Hold a = hold(left_, left.variable->data->target()), b = hold(right_, right.variable->data->target());
        if (!areLoaded(a, b, left.key()))
            return;
        const auto location = left.variable->location;
        const auto ofA = left_.originals.ofVariable(leftZone, location, left.name),
                   ofB = right_.originals.ofVariable(rightZone, location, right.name);
        if (!ofA || !ofB)
            return addUnknown(left.key());
        const Comparison result = compareItems(*a.data(), *b.data(), 0, tolerance_, {*ofA, *ofB});
        if (result.differingCount == 0)
            return;
        addLine(fmt::format("{}: {} of {} values differ, {}, {}", left.key(), result.differingCount, result.count,
                            extremeText("absolute", result.absolute), extremeText("relative", result.relative)));
        variables_.push_back({{"zone", zoneNumber_},
                              {"name", left.name},
                              {"location", inWords(left.variable->location)},
                              {"count", result.count},
                              {"differing", result.differingCount},
                              {"absolute", extremeObject(result.absolute)},
                              {"relative", extremeObject(result.relative)}});
    }

    /// Whether the host's node numbers are alike where those of the files are: all that it holds otherwise is the same.
    bool haveSameOriginals(const Zone& left, const Zone& right, const Hold& a, const Hold& b) {
        const bool isNarrow = a.data()->itemByteCount() == 4 || b.data()->itemByteCount() == 4;
        if (!isNarrow)
            return true;
        const auto ofA = left_.originals.ofNodes(left), ofB = right_.originals.ofNodes(right);
        return ofA && ofB &&
               std::equal(ofA->begin(), ofA->end(), ofB->begin(), ofB->end(), [](const auto& x, const auto& y) {
                   return x.tuple == y.tuple && x.component == y.component && x.value == y.value;
               });
    }

    /// What the host does not hold as the files have it, so that equal values say nothing.
    void addUnknown(const std::string& what) {
        constexpr const char* why = "the host does not hold the values of the files";
        notCompared_.push_back({{"zone", zoneNumber_}, {"what", what}, {"notLoadedFrom", nullptr}, {"why", why}});
        addLine(fmt::format("{}: cannot be compared, {}", what, why));
    }

    Hold hold(const Side& side, Target target) {
        Hold result = host_.hold(*side.dataset, target);
        outcome_.report.demands.push_back({target, result.data() != nullptr, {}});
        return result;
    }

    bool areLoaded(const Hold& left, const Hold& right, const std::string& what) {
        if (left.data() && right.data())
            return true;
        const char* side = left.data() ? "B" : right.data() ? "A" : "A and B";
        notCompared_.push_back({{"zone", zoneNumber_}, {"what", what}, {"notLoadedFrom", side}});
        outcome_.text += fmt::format("{}: {}: not compared, not loaded from {}\n", place_, what, side);
        return false;
    }

    /// Whether it is the same in both, where null stands for what one of them does not have.
    bool compareProperty(const std::string& what, const ordered_json& left, const ordered_json& right) {
        if (left == right)
            return true;
        if (left.is_null() || right.is_null())
            addLine(fmt::format("{}: only in {}", what, right.is_null() ? "A" : "B"));
        else
            addLine(fmt::format("{}: {} in A, {} in B", what, jsonText(left), jsonText(right)));
        structure_.push_back({{"zone", zoneNumber_}, {"what", what}, {"a", left}, {"b", right}});
        return false;
    }

    void addLine(const std::string& difference) {
        outcome_.text += fmt::format("{}: {}\n", place_, difference);
        outcome_.isDifferent = true;
    }

    Host& host_;
    const Tolerance& tolerance_;
    Side &left_, &right_;
    Outcome& outcome_;
    std::string place_ = "dataset";
    ordered_json zoneNumber_; // null for the whole dataset
    ordered_json structure_ = ordered_json::array(), variables_ = structure_, nodeMaps_ = structure_,
                 notCompared_ = structure_;
};

std::string toleranceError(const std::string& text) {
    const std::optional<double> value = parseTime(text);
    return value && *value >= 0 ? "" : text + " is not a tolerance";
}

/// Loads two datasets, A and B, side by side, and compares what they hold, two arrays in memory at a time.
class Diff : public Command {
public:
    explicit Diff(CLI::App& app) {
        addNewLoadOptions(app, input);
        app.get_option("FILE")->expected(2);
        app.add_option("--rtol", tolerance_.relative, "Values so close are equal, relative to the greater (default: 0)")
            ->check(toleranceError)
            ->type_name("R");
        app.add_option("--atol", tolerance_.absolute, "Values so close are equal (default: 0)")
            ->check(toleranceError)
            ->type_name("A");
        addHostOptions(app, host);
        addJsonOption(app, output);
        addOutputOptions(app, output);
    }

    Outcome run(Session& session) override {
        Outcome outcome;
        Side left, right;
        const bool areLoaded = load(session, input.files.at(0), left, outcome.report) &&
                               load(session, input.files.at(1), right, outcome.report) && !Host::isInterrupted();
        if (areLoaded) {
            Comparer{session.host, tolerance_, left, right, outcome}.run(session.progress);
            outcome.document["losses"] = lossList(outcome.report.losses);
            outcome.text = printable(outcome.text);
        } else if (!outcome.report.isLoaded) {
            outcome.document = {{"loaded", false}};
        }
        return outcome;
    }

private:
    /// False when it is not loaded, which the report says.
    bool load(Session& session, const std::string& file, Side& side, Report& report) const {
        InputOptions own = input;
        own.files = {file};
        Plan plan = makePlan(own, writing.isForced);
        Session part{session.host, session.console, session.progress, plan, session.addOn};
        cli::load(part, own, report);
        side = {plan.files, &session.host.keepDataset()};
        if (!report.isLoaded)
            return false;
        const std::vector<std::string> names = paths(plan.files);
        side.originals = {*side.dataset, {names.begin(), names.end()}};
        report.losses.add(lossesOfLoad(plan, allArrays(*side.dataset)));
        return true;
    }

    Tolerance tolerance_;
};

} // namespace

const CommandEntry diffCommand{"diff", "Compare two datasets, A and B",
                               "  krohost diff step1.vtu step2.vtu          ends with 5 when they differ\n"
                               "  krohost diff --rtol 1e-6 step1.vtu step2.vtu\n",
                               makeCommand<Diff>};

} // namespace krohost::cli
