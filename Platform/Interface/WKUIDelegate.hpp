#pragma once

#include "Platform/Interface/WKNavigationDelegate.hpp"

#include <memory>

class WKWebView;

/// How a web view is made.
struct WKWebViewConfiguration {
};

/// How a page wants its new window to look.
struct WKWindowFeatures {
};

/// Does for a web view what concerns windows. Main thread.
class WKUIDelegate
{
public:
    virtual ~WKUIDelegate() = default;

    /// A page asks for a new window, whose navigation was allowed. The view that is
    /// answered loads it; with none nothing is opened.
    virtual std::shared_ptr<WKWebView>
    webViewCreateWebViewWith(WKWebView & /*webView*/,
                             const WKWebViewConfiguration & /*configuration*/,
                             const WKNavigationAction & /*navigationAction*/,
                             const WKWindowFeatures & /*windowFeatures*/)
    {
        return nullptr;
    }
};
