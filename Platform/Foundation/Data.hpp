#pragma once

#include "Platform/Foundation/URL.hpp"

#include <cstddef>
#include <utility>
#include <vector>

/// Bytes in memory.
class Data
{
public:
    Data() = default;
    /// Those bytes.
    explicit Data(std::vector<std::byte> bytes) : bytes_(std::move(bytes)) {}

    /// Reads all that is at `url`, a file or an address of the web, and waits for it.
    /// Throws a `PlatformError` when it cannot be read; so is every answer of a
    /// server that is no success. Any thread.
    static Data contentsOf(const URL &url);

    /// The bytes themselves.
    const std::vector<std::byte> &bytes() const { return bytes_; }

private:
    std::vector<std::byte> bytes_;
};
