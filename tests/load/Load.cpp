#include "tests/load/Load.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

namespace test {

Load::Load(const Files& files, krohost::HostOptions options, const std::function<void(krohost::Host&)>& prepare)
    : host(std::move(options)) {
    for (const auto& [name, text] : files)
        folder_.write(name, text);
    path_ = folder_ / files.front().first;
    if (prepare)
        prepare(host);
    host.loadAddOn(ADD_ON);
    loadAgain();
}

Load::~Load() {
    host.shutDown();
    for (const std::string& violation : host.violations())
        ADD_FAILURE() << violation;
}

const krohost::Zone& Load::zone(std::int32_t number) const {
    return host.dataset().zones.at(static_cast<std::size_t>(number - 1));
}

std::int32_t Load::variableNumber(const std::string& name, bool nodal, std::int32_t zoneNumber) const {
    const std::vector<std::string>& names = host.dataset().variables;
    std::int32_t number = 0;
    for (std::int32_t variable = 1; variable <= std::ssize(names); ++variable) {
        const krohost::ZoneVariable* supplied = zone(zoneNumber).suppliedVariable(variable);
        const bool isNamed = supplied && names[static_cast<std::size_t>(variable - 1)] == name;
        if (isNamed && (number == 0 || (supplied->location == ValueLocation_Nodal) == nodal))
            number = variable;
    }
    return number;
}

std::optional<std::vector<double>> Load::values(const std::string& name) {
    return host.demandValues(1, variableNumber(name));
}

std::optional<std::string> Load::bytes(std::int32_t zoneNumber, std::int32_t variable) {
    const krohost::Target target{zoneNumber, variable};
    if (!host.load(target))
        return std::nullopt;
    const auto stored = host.dataset().find(target)->parts().front().bytes();
    std::string copy(reinterpret_cast<const char*>(stored.data()), stored.size());
    host.unload(target);
    return copy;
}

std::string Load::dialog() const {
    std::string texts;
    for (const krohost::Dialog& dialog : host.dialogs())
        texts += (texts.empty() ? "" : "\n----\n") + dialog.text;
    return texts;
}

namespace {

using SectionHeader = std::tuple<int, int, std::int64_t>; // shape, grid order, cells

void expectSections(Load& load, const ExpectedZone& expected, std::int32_t zoneNumber) {
    std::vector<SectionHeader> sections;
    for (const krohost::Section& section : load.zone(zoneNumber).sections)
        sections.emplace_back(section.shape, section.gridOrder, section.elementCount);
    std::vector<SectionHeader> expectedSections;
    std::vector<std::vector<std::int64_t>> expectedNodes;
    for (const ExpectedSection& section : expected.sections) {
        expectedSections.emplace_back(static_cast<int>(section.shape), section.gridOrder, section.elementCount);
        expectedNodes.push_back(section.nodes);
    }
    EXPECT_EQ(sections, expectedSections);
    if (expected.sections.empty())
        return; // an ordered zone has no node map
    EXPECT_EQ(load.host.demandNodeMap(zoneNumber), expectedNodes);
}

void expectVariable(Load& load, const ExpectedVariable& expected, std::int32_t zoneNumber) {
    SCOPED_TRACE(expected.name);
    const std::int32_t number = load.variableNumber(expected.name, expected.nodal, zoneNumber);
    ASSERT_NE(number, 0);
    const krohost::ZoneVariable& variable = *load.zone(zoneNumber).suppliedVariable(number);
    EXPECT_EQ(variable.type, expected.storageType);
    EXPECT_EQ(variable.location, expected.nodal ? ValueLocation_Nodal : ValueLocation_CellCentered);
    EXPECT_TRUE(load.bytes(zoneNumber, number) == expected.bytes);
}

} // namespace

void expectZone(Load& load, const ExpectedZone& expected, std::int32_t zoneNumber) {
    ASSERT_TRUE(load.loaded()) << load.dialog();
    const krohost::Zone& zone = load.zone(zoneNumber);
    EXPECT_EQ(zone.type, expected.zoneType);
    EXPECT_EQ(zone.nodeCount, expected.nodeCount);
    EXPECT_EQ(zone.elementCount, expected.elementCount);
    expectSections(load, expected, zoneNumber);
    for (const ExpectedVariable& variable : expected.variables)
        expectVariable(load, variable, zoneNumber);
    EXPECT_EQ(load.dialog(), "");
}

} // namespace test
