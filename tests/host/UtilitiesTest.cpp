#include "host/ArgList.h"
#include "host/StringList.h"
#include "host/TaskProgress.h"
#include "host/exceptions.h"
#include "host/loaderUtilities.h"
#include "krohost/Host.h"

#include <gtest/gtest.h>

#include <new>

namespace test {

namespace {

using namespace veltra;
using namespace veltra::kroutildataio_utils;
using Lines = std::vector<std::string>;

/// The embedded host, locked as during a load; a violated contract fails the test.
class Utilities : public testing::Test {
protected:
    Utilities() { KroUtilLockOn(); }
    ~Utilities() override {
        KroUtilLockOff();
        host.shutDown();
        EXPECT_EQ(host.violations(), Lines());
    }

    static void registerLoader() {
        const KroLoaderCallback load = [](const KroStringList*, void*) { return KroBool{0}; };
        const KroLoaderSelectedCallback loadSelected = [](const KroStringList*, void*, void*) { return KroBool{0}; };
        toolbox::ArgList loader;
        EXPECT_TRUE(loader.appendString("LoaderName", "L") && loader.appendString("FileNameExtensions", "vtu") &&
                    loader.appendInt("LoaderCallbackVersion", Kro_LoaderCallbackVersion) &&
                    loader.appendFunction("LoaderCallback", load) &&
                    loader.appendFunction("LoaderSelectedCallback", loadSelected) &&
                    loader.appendPointer("ClientData", nullptr) && loader.appendInt("AllowMultiFileSelection", 1) &&
                    loader.appendInt("LoaderAdvancedOptions", 0));
        KroUtilAddOnRegister(Kro_AddOnApiLevel, "A", "1", "");
        EXPECT_EQ(KroUtilImportAddLoaderX(loader.get()), 1);
    }

    static void startDataSet(const std::vector<std::string>& variableNames) {
        registerLoader();
        KroUtilDataLoadStart();
        toolbox::ArgList arguments;
        EXPECT_TRUE(arguments.appendString("LoaderName", "L") && arguments.appendString("DataSetTitle", "T"));
        EXPECT_EQ(KroUtilDataSetCreateX(arguments.get()), 1);
        for (const std::string& name : variableNames)
            EXPECT_GT(KroUtilDataSetAddVar(name.c_str()), 0);
    }

    static krohost::HostOptions options(std::vector<double>& fractions, Lines& texts) {
        krohost::HostOptions options;
        options.onProgress = [&](double fraction, const std::string& text) {
            fractions.push_back(fraction);
            texts.push_back(text);
        };
        return options;
    }

    std::vector<double> fractions;
    Lines texts;
    krohost::Host host{options(fractions, texts)};
};

TEST_F(Utilities, ProgressOfSubTasksFillsTheirSteps) {
    const auto bar = kroutilutil::createTaskProgressBar(2);
    {
        const auto reading = bar->openSubTask();
        reading->setStepCount(4);
        reading->setText("Reading...");
        reading->advance(1);
        reading->openSubTask()->advance(1);
        reading->advance(9);
    }
    const auto building = bar->openSubTask();
    building->setText("Building...");
    building->setStepCount(0);
    building->advance(1);
    EXPECT_EQ(fractions, (std::vector<double>{0, 0.125, 0.25, 0.5, 1}));
    EXPECT_EQ(texts, (Lines{"Working...", "Reading...", "Reading...", "Reading...", "Building..."}));
}

TEST_F(Utilities, ProgressTellsTheHostOfVisibleGrowthOnly) {
    const auto bar = kroutilutil::createTaskProgressBar(50'000);
    for (int step = 0; step < 50'000; ++step) {
        bar->setText("Reading...");
        bar->openSubTask();
    }
    EXPECT_LE(host.callCount("KroUtilProgressUpdate"), 1000);
    EXPECT_GT(fractions.back(), 0.99);
    EXPECT_EQ(host.callCount("KroUtilProgressText"), 1);
}

TEST_F(Utilities, ProgressEndsWithAnInterrupt) {
    auto bar = kroutilutil::createTaskProgressBar(2);
    host.refuse("KroUtilProgressUpdate");
    EXPECT_THROW(bar->advance(1), InterruptedException);
    EXPECT_THROW(bar->setText("more"), InterruptedException);
    bar.reset();
    bar = kroutilutil::createTaskProgressBar(2);
    bar->setText("more");
    krohost::Host::requestInterrupt();
    EXPECT_THROW(bar->openSubTask(), InterruptedException);
    bar.reset();
    host.clearInterrupt();
    EXPECT_EQ(host.callCount("KroUtilProgressFinish"), 2);
}

TEST_F(Utilities, VariablesAreMatchedByLocationAndName) {
    startDataSet({"X", "p", "p"});
    VariableMap variables{{{ValueLocation_CellCentered, "p"}, 7}};
    EXPECT_TRUE(retrieveVarIndexesInDataSet(variables));
    EXPECT_TRUE(updateDataSetWithIncomingVariables(
        variables, {{ValueLocation_Nodal, "X"}, {ValueLocation_CellCentered, "X"}, {ValueLocation_Nodal, "q"}}));
    EXPECT_EQ(variables, (VariableMap{{{ValueLocation_CellCentered, "p"}, 7},
                                      {{ValueLocation_Nodal, "X"}, 1},
                                      {{ValueLocation_Nodal, "p"}, 2},
                                      {{ValueLocation_CellCentered, "X"}, 4},
                                      {{ValueLocation_Nodal, "q"}, 5}}));
    host.refuse("KroUtilDataSetAddVar");
    EXPECT_FALSE(updateDataSetWithIncomingVariables(variables, {{ValueLocation_Nodal, "r"}}));
    EXPECT_FALSE(variables.contains({ValueLocation_Nodal, "r"}));
    host.refuse("KroUtilVarGetName", 2);
    EXPECT_FALSE(retrieveVarIndexesInDataSet(variables));
    toolbox::ArgList options;
    EXPECT_TRUE(addV3LoaderSelectedOptions(options, false, true, false));
    EXPECT_EQ(KroUtilDataLoadFinishX(options.get()), 1);
}

TEST_F(Utilities, ListsTellOfRefusals) {
    host.refuse("KroUtilArgListAppendInt", 3);
    toolbox::ArgList options;
    EXPECT_FALSE(addV3LoaderSelectedOptions(options, false, true, false));
    host.refuse("KroUtilArgListAlloc");
    EXPECT_THROW(toolbox::ArgList(), std::bad_alloc);
    toolbox::StringList strings;
    strings.append("a");
    host.refuse("KroUtilStringListAppendString");
    EXPECT_THROW(strings.append("b"), std::bad_alloc);
    EXPECT_EQ(KroUtilStringListGetCount(strings.get()), 1);
    EXPECT_EQ(KroUtilStringListGetRawStringPtr(strings.get(), 1), std::string("a"));
}

TEST(Messages, AreJoinedByColons) {
    EXPECT_EQ(composeErrorMessage({"Loader", "Failed.\nReason: none"}), "Loader: Failed.\nReason: none");
    EXPECT_EQ(composeErrorMessage({}), "");
    EXPECT_STREQ(kroutilutil::InvalidInstructionsException("L", "Missing value").what(), "L: Missing value");
    EXPECT_STREQ(kroutilutil::InvalidInstructionsException("L", ": Malformed").what(), "L: Malformed");
}

} // namespace

} // namespace test
