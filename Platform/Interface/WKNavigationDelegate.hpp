#pragma once

#include "Platform/Foundation/URLRequest.hpp"
#include "Platform/Foundation/URLResponse.hpp"

#include <functional>
#include <memory>

class WKWebView;

/// A way that a page wants to go: the first load, a link, a redirection, a frame.
struct WKNavigationAction {
    /// What is to be loaded.
    URLRequest request;
};

/// What came back, before it is shown.
struct WKNavigationResponse {
    /// What the server or the file system says of it.
    std::shared_ptr<URLResponse> response;
};

/// Whether the page may go there.
enum class WKNavigationActionPolicy { cancel, allow };
/// Whether the page may show it.
enum class WKNavigationResponsePolicy { cancel, allow };

/// Decides where a web view may go and what it may show. Main thread. An answer may
/// be given at once, later or never; until then the page waits.
class WKNavigationDelegate
{
public:
    virtual ~WKNavigationDelegate() = default;

    /// Before anything is loaded. Allowed unless overridden.
    virtual void
    webViewDecidePolicyFor(WKWebView & /*webView*/, const WKNavigationAction & /*navigationAction*/,
                           const std::function<void(WKNavigationActionPolicy)> &decisionHandler)
    {
        decisionHandler(WKNavigationActionPolicy::allow);
    }

    /// Before what was loaded is shown. Allowed unless overridden.
    virtual void
    webViewDecidePolicyFor(WKWebView & /*webView*/,
                           const WKNavigationResponse & /*navigationResponse*/,
                           const std::function<void(WKNavigationResponsePolicy)> &decisionHandler)
    {
        decisionHandler(WKNavigationResponsePolicy::allow);
    }

    /// A navigation has come to its end.
    virtual void webViewDidFinish(WKWebView & /*webView*/) {}
};
