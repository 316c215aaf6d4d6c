#include "User Interface/HelpViewController.hpp"

#include "Platform/Foundation/Bundle.hpp"
#include "Platform/Foundation/NSString.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/Print.hpp"
#include "Platform/Foundation/Unwrap.hpp"
#include "Platform/Interface/ClassRegistry.hpp"
#include "Platform/Interface/StoryboardBinding.hpp"

#include <algorithm>
#include <utility>

namespace
{

/// The storyboard names the class.
const platform::interface::ClassRegistration<HelpViewController> registration;

constexpr const char *webSite = "https://qrvx.example/";

/// Of ASCII, the only letters in the extensions that are looked for.
std::string uppercased(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return text;
}

} // namespace

HelpViewController::HelpViewController(std::optional<std::string> nibName,
                                       std::shared_ptr<Bundle> bundle)
    : UIViewController(std::move(nibName), std::move(bundle))
{
}

HelpViewController::HelpViewController(NSCoder &coder) : UIViewController(coder) {}

void HelpViewController::bindStoryboard(StoryboardBinding &binding)
{
    UIViewController::bindStoryboard(binding);
    binding.outlet("webView", webView);
    binding.outlet("buttonExit", buttonExit);
    binding.action("onButtonExit", *this, &HelpViewController::onButtonExit);
}

void HelpViewController::viewDidLoad()
{
    UIViewController::viewDidLoad();
    const auto self = std::static_pointer_cast<HelpViewController>(shared_from_this());
    unwrapImplicitly(webView).uiDelegate = self;
    unwrapImplicitly(webView).navigationDelegate = self;
}

void HelpViewController::viewWillAppear(bool animated)
{
    UIViewController::viewWillAppear(animated);
    if (identifier == "ShowHelp")
        loadHelpPdf();
    else if (identifier == "ShowInfo")
        navigateWeb();
}

void HelpViewController::didReceiveMemoryWarning()
{
    UIViewController::didReceiveMemoryWarning();
}

void HelpViewController::onButtonExit(const std::shared_ptr<UIResponder> & /*sender*/)
{
    dismiss(true, [] {});
}

void HelpViewController::webViewDecidePolicyFor(
    WKWebView & /*view*/, const WKNavigationAction &navigationAction,
    const std::function<void(WKNavigationActionPolicy)> &decisionHandler)
{
    print("navigationAction: ");
    const auto &url = navigationAction.request.url;
    if (!url)
        return;
    print(url->absoluteString());
    decisionHandler(WKNavigationActionPolicy::allow);
}

void HelpViewController::webViewDecidePolicyFor(
    WKWebView & /*view*/, const WKNavigationResponse &navigationResponse,
    const std::function<void(WKNavigationResponsePolicy)> &decisionHandler)
{
    print("navigationResponse: ");
    const auto &url = navigationResponse.response->url();
    if (!url)
        return;
    print(url->absoluteString());
    const std::string extension = uppercased(url->pathExtension());
    const bool allowed = extension.empty() || extension == "PDF" || extension == "HTML";
    decisionHandler(allowed ? WKNavigationResponsePolicy::allow
                            : WKNavigationResponsePolicy::cancel);
}

std::shared_ptr<WKWebView> HelpViewController::webViewCreateWebViewWith(
    WKWebView & /*view*/, const WKWebViewConfiguration & /*configuration*/,
    const WKNavigationAction &navigationAction, const WKWindowFeatures & /*windowFeatures*/)
{
    print("createWebViewWith:");
    if (const auto &url = navigationAction.request.url)
        print(url->absoluteString());
    return nullptr;
}

void HelpViewController::loadHelpHtml()
{
    const std::string path = unwrap(Bundle::main()->pathForResource("help", "html"));
    try {
        const std::string text = stringWithContentsOfFile(path);
        unwrapImplicitly(webView).loadHTMLString(text, URL::fileURLWithPath(path));
    } catch (const PlatformError &error) {
        print(error.what());
    }
}

void HelpViewController::loadHelpPdf()
{
    const URL url = unwrap(Bundle::main()->urlForResource("manual", "pdf"));
    unwrapImplicitly(webView).load(URLRequest(url));
}

void HelpViewController::navigateWeb()
{
    const URL url = unwrap(URL::fromString(webSite));
    unwrapImplicitly(webView).load(URLRequest(url));
}

void HelpViewController::prepareInfo(const std::string &which)
{
    identifier = which;
}
