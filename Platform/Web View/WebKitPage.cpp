#include "Platform/Web View/WebKitPage.hpp"

#include "Platform/Interface/StackPages.hpp"

#include <array>
#include <string_view>

namespace platform::interface
{
namespace
{

/// The viewer that WebKit shows PDF documents in: pages of its own.
constexpr std::string_view viewerScheme = "webkit-pdfjs-viewer:";

void refuseDownload(WebKitNetworkSession * /*session*/, WebKitDownload *download, gpointer /*data*/)
{
    webkit_download_cancel(download);
}

/// One session for all pages. It forgets everything with the program.
WebKitNetworkSession *session()
{
    static const GObjectHandle<WebKitNetworkSession> shared = [] {
        GObjectHandle<WebKitNetworkSession> made(webkit_network_session_new_ephemeral());
        webkit_network_session_set_tls_errors_policy(made.get(), WEBKIT_TLS_ERRORS_POLICY_FAIL);
        g_signal_connect(made.get(), "download-started", G_CALLBACK(refuseDownload), nullptr);
        return made;
    }();
    return shared.get();
}

/// Pages are drawn without OpenGL, as the program around them: starting it where there
/// is no graphics card takes longer than all the rest of showing the manual.
WebKitSettings *settings()
{
    static const GObjectHandle<WebKitSettings> shared = [] {
        GObjectHandle<WebKitSettings> made(webkit_settings_new());
        webkit_settings_set_hardware_acceleration_policy(made.get(),
                                                         WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);
        return made;
    }();
    return shared.get();
}

/// Takes what leads nowhere here out of the viewer: its tools for writing into a
/// document, and the ways to save it or to open another.
WebKitUserContentManager *contentManager()
{
    static const GObjectHandle<WebKitUserContentManager> shared = [] {
        constexpr const char *hideTools =
            "#editorModeButtons, #editorModeSeparator, #download, #secondaryDownload, "
            "#secondaryOpenFile, #viewBookmark, #viewBookmarkSeparator "
            "{ display: none !important }";
        constexpr std::array<const char *, 2> viewerAlone{"webkit-pdfjs-viewer://*/*", nullptr};
        GObjectHandle<WebKitUserContentManager> made(webkit_user_content_manager_new());
        WebKitUserStyleSheet *sheet =
            webkit_user_style_sheet_new(hideTools, WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES,
                                        WEBKIT_USER_STYLE_LEVEL_USER, viewerAlone.data(), nullptr);
        webkit_user_content_manager_add_style_sheet(made.get(), sheet);
        webkit_user_style_sheet_unref(sheet);
        return made;
    }();
    return shared.get();
}

GObjectHandle<WebKitWebView> makeView()
{
    return takeFloating<WebKitWebView>(
        g_object_new(WEBKIT_TYPE_WEB_VIEW, "network-session", session(), "settings", settings(),
                     "user-content-manager", contentManager(), nullptr));
}

const char *uriOf(WebKitNavigationAction *action)
{
    return webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
}

/// Whether a menu's entry would open a window or leave something on the disk.
bool isUnwelcome(WebKitContextMenuItem *item)
{
    constexpr std::array unwelcome{WEBKIT_CONTEXT_MENU_ACTION_OPEN_LINK_IN_NEW_WINDOW,
                                   WEBKIT_CONTEXT_MENU_ACTION_DOWNLOAD_LINK_TO_DISK,
                                   WEBKIT_CONTEXT_MENU_ACTION_OPEN_IMAGE_IN_NEW_WINDOW,
                                   WEBKIT_CONTEXT_MENU_ACTION_DOWNLOAD_IMAGE_TO_DISK,
                                   WEBKIT_CONTEXT_MENU_ACTION_OPEN_FRAME_IN_NEW_WINDOW,
                                   WEBKIT_CONTEXT_MENU_ACTION_OPEN_VIDEO_IN_NEW_WINDOW,
                                   WEBKIT_CONTEXT_MENU_ACTION_OPEN_AUDIO_IN_NEW_WINDOW,
                                   WEBKIT_CONTEXT_MENU_ACTION_DOWNLOAD_VIDEO_TO_DISK,
                                   WEBKIT_CONTEXT_MENU_ACTION_DOWNLOAD_AUDIO_TO_DISK};
    const auto action = webkit_context_menu_item_get_stock_action(item);
    for (const auto each : unwelcome) {
        if (action == each)
            return true;
    }
    return false;
}

gboolean trimMenu(WebKitWebView * /*view*/, WebKitContextMenu *menu,
                  WebKitHitTestResult * /*result*/, gpointer /*data*/)
{
    const std::unique_ptr<GList, decltype(&g_list_free)> items(
        g_list_copy(webkit_context_menu_get_items(menu)), &g_list_free);
    for (const GList *link = items.get(); link; link = link->next) {
        auto *item = static_cast<WebKitContextMenuItem *>(link->data);
        if (isUnwelcome(item))
            webkit_context_menu_remove(menu, item);
    }
    return FALSE;
}

} // namespace

WebKitPage::WebKitPage(WebPageObserver &observer)
    : observer_(observer), view_(makeView()), cover_(GTK_WIDGET(view_.get())),
      message_(makeMessage()), places_(takeFloating<GtkStack>(gtk_stack_new()))
{
    gtk_stack_add_child(places_.get(), cover_.widget());
    gtk_stack_add_child(places_.get(), message_);
    showPageOf(places_.get(), cover_.widget());
    connectSignals();
}

WebKitPage::~WebKitPage()
{
    g_signal_handlers_disconnect_by_data(view_.get(), this);
    // Left to itself its process ends some time later. Should the program end before, it
    // warns that the message bus is not there any more.
    webkit_web_view_terminate_web_process(view_.get());
    gtk_stack_remove(places_.get(), cover_.widget());
    gtk_stack_remove(places_.get(), message_);
}

void WebKitPage::connectSignals()
{
    g_signal_connect(view_.get(), "decide-policy",
                     G_CALLBACK(+[](WebKitWebView *, WebKitPolicyDecision *decision,
                                    WebKitPolicyDecisionType type, gpointer self) {
                         return static_cast<WebKitPage *>(self)->decide(decision, type);
                     }),
                     this);
    g_signal_connect(
        view_.get(), "create",
        G_CALLBACK(+[](WebKitWebView *, WebKitNavigationAction *action, gpointer self) {
            static_cast<WebKitPage *>(self)->observer_.openWindow(uriOf(action));
            return static_cast<GtkWidget *>(nullptr);
        }),
        this);
    g_signal_connect(view_.get(), "load-changed",
                     G_CALLBACK(+[](WebKitWebView *, WebKitLoadEvent event, gpointer self) {
                         static_cast<WebKitPage *>(self)->didChange(event);
                     }),
                     this);
    g_signal_connect(
        view_.get(), "web-process-terminated",
        G_CALLBACK(+[](WebKitWebView *view, WebKitWebProcessTerminationReason, gpointer self) {
            static_cast<WebKitPage *>(self)->showMessage("This page has stopped working.", "",
                                                         webkit_web_view_get_uri(view));
        }),
        this);
    g_signal_connect(view_.get(), "load-failed",
                     G_CALLBACK(+[](WebKitWebView *, WebKitLoadEvent, const char *uri,
                                    GError *error, gpointer self) {
                         return static_cast<WebKitPage *>(self)->didFail(uri, error);
                     }),
                     this);
    g_signal_connect(view_.get(), "load-failed-with-tls-errors",
                     G_CALLBACK(+[](WebKitWebView *, const char *uri, GTlsCertificate *,
                                    GTlsCertificateFlags, gpointer self) {
                         static_cast<WebKitPage *>(self)->showMessage(
                             "This page cannot be shown.",
                             "The site does not prove that it is the one that is meant.", uri);
                         return TRUE;
                     }),
                     this);
    g_signal_connect(view_.get(), "context-menu", G_CALLBACK(trimMenu), this);
}

GtkWidget *WebKitPage::makeMessage()
{
    GtkWidget *box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 14);
    gtk_widget_add_css_class(box, "page-message");
    gtk_widget_set_halign(box, GTK_ALIGN_CENTER);
    gtk_widget_set_valign(box, GTK_ALIGN_CENTER);
    for (GtkLabel **label : {&messageTitle_, &messageDetail_}) {
        *label = GTK_LABEL(gtk_label_new(nullptr));
        gtk_label_set_wrap(*label, TRUE);
        gtk_label_set_justify(*label, GTK_JUSTIFY_CENTER);
        gtk_box_append(GTK_BOX(box), GTK_WIDGET(*label));
    }
    gtk_widget_add_css_class(GTK_WIDGET(messageTitle_), "title");
    GtkWidget *button = gtk_button_new_with_mnemonic("_Load Again");
    gtk_widget_set_halign(button, GTK_ALIGN_CENTER);
    g_signal_connect_swapped(button, "clicked", G_CALLBACK(+[](gpointer data) {
                                 auto *self = static_cast<WebKitPage *>(data);
                                 self->load(self->uriToLoadAgain_.c_str());
                             }),
                             this);
    gtk_box_append(GTK_BOX(box), button);
    return box;
}

void WebKitPage::awaitPage()
{
    cover_.show();
    showPageOf(places_.get(), cover_.widget());
}

void WebKitPage::didChange(WebKitLoadEvent event)
{
    // From here on the page shows itself what there is of it.
    if (event == WEBKIT_LOAD_COMMITTED || event == WEBKIT_LOAD_FINISHED)
        cover_.hide();
    if (event == WEBKIT_LOAD_FINISHED)
        observer_.didFinish();
}

void WebKitPage::showMessage(const char *title, const char *detail, const char *uri)
{
    cover_.hide();
    uriToLoadAgain_ = uri ? uri : "";
    gtk_label_set_text(messageTitle_, title);
    gtk_label_set_text(messageDetail_, detail);
    gtk_widget_set_visible(GTK_WIDGET(messageDetail_), *detail != '\0');
    // The stack hands the keyboard on to the message.
    showPageOf(places_.get(), message_);
}

gboolean WebKitPage::didFail(const char *uri, const GError *error)
{
    // A navigation that was not allowed, or that another one has overtaken, leaves the
    // page as it is.
    if (error->domain == WEBKIT_POLICY_ERROR ||
        g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED))
        return FALSE;
    showMessage("This page cannot be shown.", error->message, uri);
    return TRUE;
}

gboolean WebKitPage::decide(WebKitPolicyDecision *decision, WebKitPolicyDecisionType type)
{
    if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE) {
        decideResponse(decision);
        return TRUE;
    }
    const char *uri = uriOf(webkit_navigation_policy_decision_get_navigation_action(
        WEBKIT_NAVIGATION_POLICY_DECISION(decision)));
    if (uri && std::string_view(uri).starts_with(viewerScheme))
        webkit_policy_decision_use(decision);
    else
        observer_.decideAction(uri, questions_->add(decision));
    return TRUE;
}

void WebKitPage::decideResponse(WebKitPolicyDecision *decision)
{
    WebKitURIResponse *response =
        webkit_response_policy_decision_get_response(WEBKIT_RESPONSE_POLICY_DECISION(decision));
    const char *uri = webkit_uri_response_get_uri(response);
    if (uri && std::string_view(uri).starts_with(viewerScheme))
        webkit_policy_decision_use(decision);
    else
        observer_.decideResponse(uri, webkit_uri_response_get_mime_type(response),
                                 questions_->add(decision));
}

void WebKitPage::load(const char *uri) noexcept
{
    awaitPage();
    webkit_web_view_load_uri(view_.get(), uri);
}

void WebKitPage::loadText(const char *html, const char *baseURI) noexcept
{
    awaitPage();
    webkit_web_view_load_html(view_.get(), html, baseURI);
}

const char *WebKitPage::uri() const noexcept
{
    return webkit_web_view_get_uri(view_.get());
}

const char *WebKitPage::title() const noexcept
{
    return webkit_web_view_get_title(view_.get());
}

bool WebKitPage::isLoading() const noexcept
{
    return webkit_web_view_is_loading(view_.get()) != FALSE;
}

} // namespace platform::interface
