#pragma once

#include "Tests/Utilities/XServer.hpp"

#include <gtest/gtest.h>

#include <optional>

/// Gives a test program a display of its own, Xvfb, and GTK on it, so that it
/// runs anywhere and disturbs nobody. The processes that a death test starts
/// share their parent's.
class Display : public ::testing::Environment
{
public:
    void SetUp() override;
    void TearDown() override;

private:
    std::optional<test::XServer> server_;
};

/// Makes GTK ready for use without an application; done in every test but those
/// that run in a process of their own.
void startInterface();
