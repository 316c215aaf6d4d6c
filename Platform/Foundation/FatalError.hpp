#pragma once

#include <string_view>

/// Writes "Fatal error: " and `message` as a line to standard error, then ends
/// the process with `std::abort()`. For a caller's mistake or a fault that
/// leaves nothing sensible to do. Any thread.
[[noreturn]] void fatalError(std::string_view message);
