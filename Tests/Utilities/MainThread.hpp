#pragma once

#include <functional>

namespace test
{

/// Serves the main thread until `condition` holds; false when it does not within a
/// minute. It is asked anew every few milliseconds, since what other threads do
/// need not wake this one.
bool serveMainThreadUntil(const std::function<bool()> &condition);

/// Runs what the main queue has been given so far.
void drainMainQueue();

} // namespace test
