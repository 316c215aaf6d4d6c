#pragma once

#include "Platform/Interface/WebPage.hpp"
#include "Platform/Web View/GObjectHandle.hpp"
#include "Platform/Web View/LoadingCover.hpp"
#include "Platform/Web View/OpenQuestions.hpp"

#include <gtk/gtk.h>
#include <webkit/webkit.h>

#include <memory>
#include <string>

namespace platform::interface
{

/// A page of WebKitGTK, and in its place, when it cannot be loaded or the process that
/// runs it has ended, a message with a button that loads it again.
class WebKitPage : public WebPage
{
public:
    explicit WebKitPage(WebPageObserver &observer);
    ~WebKitPage() override;

    GtkWidget *widget() const noexcept override { return GTK_WIDGET(places_.get()); }
    void load(const char *uri) noexcept override;
    void loadText(const char *html, const char *baseURI) noexcept override;
    const char *uri() const noexcept override;
    const char *title() const noexcept override;
    bool isLoading() const noexcept override;

private:
    void connectSignals();
    GtkWidget *makeMessage();
    /// Brings the page up for something new that is about to be loaded.
    void awaitPage();
    void didChange(WebKitLoadEvent event);
    void showMessage(const char *title, const char *detail, const char *uri);
    gboolean didFail(const char *uri, const GError *error);
    gboolean decide(WebKitPolicyDecision *decision, WebKitPolicyDecisionType type);
    void decideResponse(WebKitPolicyDecision *decision);

    WebPageObserver &observer_;
    GObjectHandle<WebKitWebView> view_;
    LoadingCover cover_;
    GtkLabel *messageTitle_ = nullptr;
    GtkLabel *messageDetail_ = nullptr;
    GtkWidget *message_;
    /// What the message offers to load.
    std::string uriToLoadAgain_;
    /// Holds the view with its cover and the message, one of them seen.
    GObjectHandle<GtkStack> places_;
    std::shared_ptr<OpenQuestions> questions_ = std::make_shared<OpenQuestions>();
};

} // namespace platform::interface
