#pragma once

#include "Tests/Platform/Interface/StartInterface.hpp"
#include "Tests/Utilities/XServer.hpp"

#include <gtest/gtest.h>

#include <optional>

/// Gives a test program a display of its own, Xvfb, and GTK on it, so that it
/// runs anywhere and disturbs nobody. The processes that a death test starts
/// share their parent's, and start GTK themselves.
class Display : public ::testing::Environment
{
public:
    void SetUp() override;
    void TearDown() override;

private:
    std::optional<test::XServer> server_;
};
