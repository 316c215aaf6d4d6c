#pragma once

#include <stdexcept>

/// A fault of the platform that the caller can recover from: a file that does
/// not open, a device that does not start. `what()` is its description in words
/// a user understands.
class PlatformError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};
