#pragma once

#include "Platform/Interface/UIButton.hpp"
#include "Platform/Interface/UIViewController.hpp"
#include "Platform/Interface/WKWebView.hpp"

#include <functional>
#include <memory>
#include <optional>
#include <string>

/// The screen behind Help and Info: shows the manual or the maker's web site. All
/// links stay inside; pages that want a new window do not get one. Main thread.
class HelpViewController : public UIViewController, public WKNavigationDelegate, public WKUIDelegate
{
public:
    HelpViewController(std::optional<std::string> nibName, std::shared_ptr<Bundle> bundle);
    explicit HelpViewController(NSCoder &coder);

private:
    std::string identifier = "ShowHelp";

public:
    std::shared_ptr<WKWebView> webView;
    std::shared_ptr<UIButton> buttonExit;

    void viewDidLoad() override;
    /// Loads what `prepareInfo` chose, each time anew.
    void viewWillAppear(bool animated) override;
    void didReceiveMemoryWarning() override;

    /// Leaves the screen.
    virtual void onButtonExit(const std::shared_ptr<UIResponder> &sender);

    /// Allows all that has a location; what has none stays unanswered.
    void webViewDecidePolicyFor(
        WKWebView &view, const WKNavigationAction &navigationAction,
        const std::function<void(WKNavigationActionPolicy)> &decisionHandler) override;
    /// Allows PDF, HTML and what has no extension; what has no location stays
    /// unanswered.
    void webViewDecidePolicyFor(
        WKWebView &view, const WKNavigationResponse &navigationResponse,
        const std::function<void(WKNavigationResponsePolicy)> &decisionHandler) override;
    /// Answers none.
    std::shared_ptr<WKWebView>
    webViewCreateWebViewWith(WKWebView &view, const WKWebViewConfiguration &configuration,
                             const WKNavigationAction &navigationAction,
                             const WKWindowFeatures &windowFeatures) override;

protected:
    void bindStoryboard(StoryboardBinding &binding) override;

    /// Loads the help as a page; one that cannot be read is told and leaves all as it
    /// is, one that is not there is a fatal error.
    virtual void loadHelpHtml();
    /// Loads the manual; its absence is a fatal error.
    virtual void loadHelpPdf();
    virtual void navigateWeb();

public:
    /// Chooses the content: "ShowHelp" is the manual, "ShowInfo" the web site, all
    /// else nothing.
    virtual void prepareInfo(const std::string &which);
};
