#pragma once

#include "Platform/Foundation/Data.hpp"
#include "Platform/Foundation/URLRequest.hpp"
#include "Platform/Foundation/URLResponse.hpp"

#include <exception>
#include <functional>
#include <memory>

/// Loads from files and from the web without making anybody wait.
class URLSession
{
public:
    /// Gets either data and response or the error, a `PlatformError`.
    using Completion = std::function<void(Data data, std::shared_ptr<URLResponse> response,
                                          std::exception_ptr error)>;

    /// The one instance. Main thread.
    static URLSession &shared();

    /// Loads what `request` asks for and calls `completion` on the main thread, once
    /// and not before this returns. The response to an address of the web is an
    /// `HTTPURLResponse`, whatever its status; nothing is cached. Any thread.
    void data(const URLRequest &request, Completion completion);

private:
    URLSession() = default;
};
