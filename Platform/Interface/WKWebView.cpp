#include "Platform/Interface/WKWebView.hpp"

#include "Platform/Foundation/Module.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/Print.hpp"
#include "Platform/Foundation/URLText.hpp"
#include "Platform/Interface/SandboxTrial.hpp"
#include "Platform/Interface/WebPage.hpp"
#include "Platform/Interface/Widget.hpp"

#include <gtkmm/box.h>
#include <gtkmm/label.h>

#include <utility>

using platform::interface::MakeWebPage;
using platform::interface::WebAnswer;
using platform::interface::Widget;

namespace
{

/// Web engines leave characters in their locations that RFC 3986 does not allow.
std::optional<URL> urlOf(const char *uri)
{
    if (!uri)
        return std::nullopt;
    if (auto url = URL::fromString(uri))
        return url;
    return URL::fromString(platform::foundation::encodeForbidden(uri));
}

MakeWebPage findMakeWebPage()
{
    return reinterpret_cast<MakeWebPage>(platform::foundation::moduleSymbol(
        "web_view.so", platform::interface::makeWebPageSymbol, "shows web pages"));
}

std::unique_ptr<Widget> messageSaying(const std::string &text)
{
    auto *label = Gtk::make_managed<Gtk::Label>(text);
    label->set_wrap(true);
    label->set_justify(Gtk::Justification::CENTER);
    label->set_margin(24);
    return std::make_unique<Widget>(*label);
}

} // namespace

/// Puts the page's questions to the view's delegates.
class WKWebView::Observer : public platform::interface::WebPageObserver
{
public:
    explicit Observer(WKWebView &view) : view_(view) {}

    void decideAction(const char *uri, WebAnswer answer) noexcept override
    {
        const auto decide = [answer = std::move(answer)](WKNavigationActionPolicy policy) {
            answer(policy == WKNavigationActionPolicy::allow);
        };
        if (const auto delegate = view_.navigationDelegate.lock())
            delegate->webViewDecidePolicyFor(view_, WKNavigationAction{URLRequest(urlOf(uri))},
                                             decide);
        else
            decide(WKNavigationActionPolicy::allow);
    }

    void decideResponse(const char *uri, const char *mimeType, WebAnswer answer) noexcept override
    {
        const auto decide = [answer = std::move(answer)](WKNavigationResponsePolicy policy) {
            answer(policy == WKNavigationResponsePolicy::allow);
        };
        auto type = mimeType ? std::optional<std::string>(mimeType) : std::nullopt;
        const auto response = std::make_shared<URLResponse>(urlOf(uri), std::move(type));
        if (const auto delegate = view_.navigationDelegate.lock())
            delegate->webViewDecidePolicyFor(view_, WKNavigationResponse{response}, decide);
        else
            decide(WKNavigationResponsePolicy::allow);
    }

    void openWindow(const char *uri) noexcept override
    {
        const auto delegate = view_.uiDelegate.lock();
        if (!delegate)
            return;
        const WKNavigationAction action{URLRequest(urlOf(uri))};
        if (const auto other = delegate->webViewCreateWebViewWith(view_, {}, action, {}))
            other->load(action.request);
    }

    void didFinish() noexcept override
    {
        if (const auto delegate = view_.navigationDelegate.lock())
            delegate->webViewDidFinish(view_);
    }

private:
    WKWebView &view_;
};

WKWebView::WKWebView() : WKWebView(std::make_unique<Widget>(*Gtk::make_managed<Gtk::Box>())) {}

WKWebView::WKWebView(std::unique_ptr<Widget> box)
    : UIView(Box{std::move(box)}), observer_(std::make_unique<Observer>(*this))
{
    // While that is tried the engine is loaded.
    platform::interface::SandboxTrial sandbox;
    try {
        static const MakeWebPage makeWebPage = findMakeWebPage();
        if (sandbox.succeeds())
            makeWebPage(*observer_, page_);
        setContent(page_ ? std::make_unique<Widget>(*Glib::wrap(page_->widget()))
                         : messageSaying("Pages cannot be shown, since this system does not let "
                                         "them run in a sandbox."));
    } catch (const PlatformError &error) {
        printError(error.what());
        setContent(messageSaying("Pages cannot be shown, since the web engine is missing."));
    }
}

WKWebView::~WKWebView()
{
    setContent(nullptr);
}

void WKWebView::load(const URLRequest &request)
{
    if (page_ && request.url)
        page_->load(request.url->absoluteString().c_str());
}

void WKWebView::loadHTMLString(const std::string &string, const std::optional<URL> &baseURL)
{
    if (page_)
        page_->loadText(string.c_str(), baseURL ? baseURL->absoluteString().c_str() : nullptr);
}

std::optional<URL> WKWebView::url() const
{
    return page_ ? urlOf(page_->uri()) : std::nullopt;
}

std::string WKWebView::title() const
{
    const char *text = page_ ? page_->title() : nullptr;
    return text ? text : "";
}

bool WKWebView::isLoading() const
{
    return page_ && page_->isLoading();
}
