#pragma once

#include "Platform/Foundation/URL.hpp"

#include <optional>
#include <string>
#include <utility>

/// What is known of what a request loads, before and with its content.
class URLResponse
{
public:
    /// A response from `url` with content of that type.
    URLResponse(std::optional<URL> url, std::optional<std::string> mimeType)
        : url_(std::move(url)), mimeType_(std::move(mimeType))
    {
    }
    virtual ~URLResponse() = default;

    /// The location at the end of all redirections.
    const std::optional<URL> &url() const { return url_; }
    /// The content's type without parameters, as "text/html"; none where nothing said
    /// it.
    const std::optional<std::string> &mimeType() const { return mimeType_; }

private:
    std::optional<URL> url_;
    std::optional<std::string> mimeType_;
};

/// The same from a server of the web.
class HTTPURLResponse : public URLResponse
{
public:
    /// A response with the status that the server gave (RFC 9110).
    HTTPURLResponse(std::optional<URL> url, std::optional<std::string> mimeType, int statusCode)
        : URLResponse(std::move(url), std::move(mimeType)), statusCode_(statusCode)
    {
    }

    /// 200 for success; RFC 9110, section 15.
    int statusCode() const { return statusCode_; }

private:
    int statusCode_;
};
