#include "host/TaskProgress.h"
#include "host/exceptions.h"
#include "krohost/Host.h"

#include <gtest/gtest.h>

namespace {

using veltra::InterruptedException;
using veltra::kroutilutil::createTaskProgressBar;

/// The embedded host, locked as during a load, and what it shows; a violated contract fails the test.
class Progress : public testing::Test {
protected:
    Progress() { KroUtilLockOn(); }
    ~Progress() override {
        KroUtilLockOff();
        host.shutDown();
        EXPECT_EQ(host.violations(), std::vector<std::string>());
    }

    std::vector<std::pair<double, std::string>> shown;
    krohost::Host host{{.onProgress = [this](double fraction, auto& text) { shown.emplace_back(fraction, text); }}};
};

TEST_F(Progress, OfSubTasksFillsTheirSteps) {
    const auto bar = createTaskProgressBar(2);
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
    for (const std::uint64_t stepCount : {2, 2, 0}) {
        building->setStepCount(stepCount);
        building->advance(1);
    }
    EXPECT_EQ(shown, (std::vector<std::pair<double, std::string>>{{0, "Working..."},
                                                                  {0.125, "Reading..."},
                                                                  {0.25, "Reading..."},
                                                                  {0.5, "Reading..."},
                                                                  {0.75, "Building..."},
                                                                  {0.875, "Building..."},
                                                                  {1, "Building..."}}));
}

TEST_F(Progress, TellsTheHostOfVisibleGrowthOnly) {
    const auto bar = createTaskProgressBar(50'000);
    for (int step = 0; step < 50'000; ++step) {
        bar->setText("Reading...");
        bar->openSubTask();
    }
    EXPECT_LE(shown.size(), 1000);
    EXPECT_GT(shown.back().first, 0.99);
    EXPECT_EQ(host.callCount("KroUtilProgressText"), 1);
}

TEST_F(Progress, EndsWithAnInterrupt) {
    auto bar = createTaskProgressBar(2);
    host.refuse("KroUtilProgressUpdate");
    EXPECT_THROW(bar->advance(1), InterruptedException);
    EXPECT_THROW(bar->setText("more"), InterruptedException);
    bar.reset();
    bar = createTaskProgressBar(2);
    bar->setText("more");
    krohost::Host::requestInterrupt();
    EXPECT_THROW(bar->openSubTask(), InterruptedException);
}

} // namespace
