#include "loader/addon/AddOn.h"
#include "loader/addon/registration.h"

#include "krohost/host/runtime/Host.h"

#include <gtest/gtest.h>

namespace test {

TEST(Shutdown, EmptiesTheLoaders) {
    krohost::Host host;
    KroUtilLockOn();
    veltra::vtkfile::AddOn& addOn = veltra::vtkfile::addOn();
    addOn.vtkLoader = veltra::vtkfile::registerLoader("one", "*.a");
    addOn.trixLoader = veltra::vtkfile::registerLoader("two", "*.b");
    veltra::vtkfile::registerShutdown();
    KroUtilLockOff();
    EXPECT_TRUE(addOn.vtkLoader && addOn.trixLoader);
    host.shutDown();
    EXPECT_FALSE(addOn.vtkLoader || addOn.trixLoader);
    EXPECT_EQ(host.violations(), std::vector<std::string>{});
}

} // namespace test
