#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace platform::foundation
{

/// What a server of the web answered, or why there is no answer.
struct HTTPAnswer {
    /// Empty for an answer, else the reason.
    std::string error;
    int status = 0; ///< as RFC 9110 numbers them; 0 without an answer
    /// Where it came from in the end.
    std::string address;
    /// Without parameters; empty where the server gave none.
    std::string mimeType;
    /// The whole content.
    std::vector<std::byte> bytes;
};

/// What the module for HTTP does. Redirections are followed, certificates that are not
/// valid refused. `timeout` is in seconds without any progress.
struct HTTPFunctions {
    /// Waits for the answer. Any thread.
    HTTPAnswer (*fetch)(const char *address, unsigned timeout) noexcept;
    /// Returns at once and calls `done` on the main thread. Main thread.
    void (*fetchLater)(const char *address, unsigned timeout,
                       std::function<void(HTTPAnswer)> done) noexcept;
};

/// The module's, which stands on libsoup and is loaded at the first use. A
/// `PlatformError` when it is missing. Any thread.
const HTTPFunctions &httpFunctions();

/// The name under which the module exports its functions.
inline constexpr const char *httpFunctionsSymbol = "parvaneHTTPFunctions";

} // namespace platform::foundation
