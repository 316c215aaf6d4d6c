#include "Tests/Platform/Interface/Display.hpp"

#include <cstdlib>

namespace
{

constexpr const char *ownDisplay = "PARVANE_TEST_DISPLAY";

const auto *const environment = ::testing::AddGlobalTestEnvironment(new Display);

} // namespace

void Display::SetUp()
{
    if (const char *shared = getenv(ownDisplay)) {
        useDisplay(shared);
        // The processes of death tests make a start of their own.
        return;
    }
    server_.emplace();
    ASSERT_FALSE(server_->display().empty()) << "Xvfb does not start.";
    setenv(ownDisplay, server_->display().c_str(), 1);
    useDisplay(server_->display());
    startInterface();
}

void Display::TearDown()
{
    server_.reset();
}
