#pragma once

#include "Platform/Foundation/URLRequest.hpp"
#include "Platform/Foundation/URLResponse.hpp"

#include <functional>
#include <memory>

class WKWebView;

/// A way that a page wants to go: the first load, a link, a redirection, a frame.
struct WKNavigationAction {
    URLRequest request;
};

/// What came back, before it is shown.
struct WKNavigationResponse {
    std::shared_ptr<URLResponse> response;
};

enum class WKNavigationActionPolicy { cancel, allow };
enum class WKNavigationResponsePolicy { cancel, allow };

/// Decides where a web view may go and what it may show. Main thread. An answer may
/// be given at once, later or never; until then the page waits.
class WKNavigationDelegate
{
public:
    virtual ~WKNavigationDelegate() = default;

    virtual void
    webViewDecidePolicyFor(WKWebView & /*webView*/, const WKNavigationAction & /*navigationAction*/,
                           const std::function<void(WKNavigationActionPolicy)> &decisionHandler)
    {
        decisionHandler(WKNavigationActionPolicy::allow);
    }

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
