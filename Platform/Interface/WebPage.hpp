#pragma once

#include <functional>
#include <memory>
#include <string>

using GtkWidget = struct _GtkWidget; // NOLINT: GTK's own name

namespace platform::interface
{

/// Answers a question of a page: whether to go on. Called once; a page whose
/// question stays open waits. After the page's end it does nothing.
using WebAnswer = std::function<void(bool allowed)>;

/// Hears of a page. Texts may be null where there is none. Visible across modules,
/// as WebPage is.
class [[gnu::visibility("default")]] WebPageObserver
{
public:
    virtual ~WebPageObserver() = default;

    /// May the page, or a part of it, go to `uri`?
    virtual void decideAction(const char *uri, WebAnswer answer) noexcept = 0;
    /// May what came from `uri` be shown?
    virtual void decideResponse(const char *uri, const char *mimeType,
                                WebAnswer answer) noexcept = 0;
    /// The page wants `uri` in a new window, which it does not get.
    virtual void openWindow(const char *uri) noexcept = 0;
    /// Loading has come to its end, good or bad.
    virtual void didFinish() noexcept = 0;
};

/// What `WKWebView` needs of a web engine. The one implementation stands on WebKitGTK
/// and is loaded from a module at its first use: its libraries would cost every start
/// 36 ms and 36 MiB. No exception crosses the module's boundary. Main thread.
class [[gnu::visibility("default")]] WebPage
{
public:
    WebPage() = default;
    virtual ~WebPage() = default;
    WebPage(const WebPage &) = delete;
    WebPage &operator=(const WebPage &) = delete;

    /// What the page is seen in; the caller takes a reference.
    virtual GtkWidget *widget() const noexcept = 0;

    virtual void load(const char *uri) noexcept = 0;
    /// Shows HTML; `baseURI` is where its relative links begin.
    virtual void loadText(const char *html, const char *baseURI) noexcept = 0;

    /// Null before the first load. Valid until the next call into the page.
    virtual const char *uri() const noexcept = 0;
    virtual const char *title() const noexcept = 0;
    virtual bool isLoading() const noexcept = 0;
};

/// The one function that the module exports, under the name in `makeWebPageSymbol`; only
/// where pages can be held in a sandbox. The observer outlives the page.
using MakeWebPage = void (*)(WebPageObserver &observer, std::unique_ptr<WebPage> &page) noexcept;
inline constexpr const char *makeWebPageSymbol = "parvaneMakeWebPage";

} // namespace platform::interface
