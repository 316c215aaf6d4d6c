#pragma once

#include "Platform/Foundation/URL.hpp"
#include "Platform/Foundation/URLRequest.hpp"
#include "Platform/Interface/UIView.hpp"
#include "Platform/Interface/WKNavigationDelegate.hpp"
#include "Platform/Interface/WKUIDelegate.hpp"

#include <memory>
#include <optional>
#include <string>

namespace platform::interface
{
class WebPage;
} // namespace platform::interface

/// Shows pages of the web and PDF documents. Nothing that it loads is kept on the
/// disk, nothing is downloaded, no page opens a window, and a certificate that is not
/// valid is refused. What a page runs is held in a process of its own in a sandbox;
/// when that ends, the view says so and offers to load the page again.
///
/// The first view starts the web engine. Where it is not installed the view says so,
/// and so does standard error; loading does nothing then. Main thread.
class WKWebView : public UIView
{
public:
    WKWebView();
    /// A web view in an empty box of a storyboard.
    explicit WKWebView(std::unique_ptr<platform::interface::Widget> box);
    ~WKWebView() override;

    /// Not kept alive. Without one every page is shown.
    std::weak_ptr<WKNavigationDelegate> navigationDelegate;
    /// Not kept alive. Without one no window is opened.
    std::weak_ptr<WKUIDelegate> uiDelegate;

    /// Loads the request's location; without one nothing. The engine has a time-out
    /// of its own.
    void load(const URLRequest &request);
    /// Shows HTML as if it came from `baseURL`.
    void loadHTMLString(const std::string &string, const std::optional<URL> &baseURL);

    /// None before the first load.
    std::optional<URL> url() const;
    /// The page's own; empty where it has none.
    std::string title() const;
    /// Whether something is still on its way.
    bool isLoading() const;

private:
    class Observer;

    std::unique_ptr<Observer> observer_;
    std::unique_ptr<platform::interface::WebPage> page_;
};
