#pragma once

#include "Platform/Foundation/URL.hpp"

#include <optional>
#include <utility>

/// What may be taken from a cache.
enum class URLRequestCachePolicy { useProtocolCachePolicy };

/// A wish to load what is at a location.
struct URLRequest {
    /// A request for `location`; none is refused when it is loaded.
    explicit URLRequest(
        std::optional<URL> location,
        URLRequestCachePolicy policy = URLRequestCachePolicy::useProtocolCachePolicy,
        double timeout = 60)
        : url(std::move(location)), cachePolicy(policy), timeoutInterval(timeout)
    {
    }

    /// What to load.
    std::optional<URL> url;
    /// What may be taken from a cache.
    URLRequestCachePolicy cachePolicy;
    /// Seconds without any progress after which it fails.
    double timeoutInterval;
};
