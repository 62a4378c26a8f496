#include "tests/load/Load.h"

#include <gtest/gtest.h>

#include <algorithm>

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

std::int32_t Load::variableNumber(const std::string& name) const {
    const std::vector<std::string>& names = host.dataset().variables;
    return static_cast<std::int32_t>(std::ranges::find(names, name) - names.begin()) + 1;
}

std::optional<std::vector<double>> Load::values(const std::string& name) {
    return host.demandValues(1, variableNumber(name));
}

std::optional<std::string> Load::bytes(std::int32_t variable) {
    const krohost::Target target{1, variable};
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

void expectSections(Load& load, const std::vector<ExpectedSection>& expected) {
    const std::vector<krohost::Section>& sections = load.zone().sections;
    ASSERT_EQ(sections.size(), expected.size());
    std::vector<std::vector<std::int64_t>> nodes;
    for (std::size_t index = 0; index < sections.size(); ++index) {
        EXPECT_EQ(sections[index].shape, static_cast<int>(expected[index].shape));
        EXPECT_EQ(sections[index].gridOrder, expected[index].gridOrder);
        EXPECT_EQ(sections[index].elementCount, expected[index].elementCount);
        nodes.push_back(expected[index].nodes);
    }
    EXPECT_TRUE(nodes.empty() || load.nodeMap() == nodes); // an ordered zone has no node map
}

} // namespace

void expectZone(Load& load, const ExpectedZone& expected) {
    ASSERT_TRUE(load.loaded()) << load.dialog();
    EXPECT_EQ(load.zone().type, expected.zoneType);
    EXPECT_EQ(load.zone().nodeCount, expected.nodeCount);
    EXPECT_EQ(load.zone().elementCount, expected.elementCount);
    expectSections(load, expected.sections);
    std::vector<std::string> names;
    for (const ExpectedVariable& variable : expected.variables) {
        SCOPED_TRACE(names.emplace_back(variable.name));
        const auto number = static_cast<std::int32_t>(names.size());
        const krohost::ZoneVariable* supplied = load.zone().suppliedVariable(number);
        ASSERT_TRUE(supplied);
        EXPECT_EQ(supplied->type, variable.storageType);
        EXPECT_EQ(supplied->location, variable.nodal ? ValueLocation_Nodal : ValueLocation_CellCentered);
        EXPECT_TRUE(load.bytes(number) == variable.bytes);
    }
    EXPECT_EQ(load.host.dataset().variables, names);
    EXPECT_EQ(load.dialog(), "");
}

} // namespace test
