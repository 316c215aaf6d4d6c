#include <gtkmm.h>
#include <webkit/webkit.h>

#include <string_view>

/// The least that a program with a page of the web in it does: a window, and in it,
/// at the press of F1, the document that is named on the command line; with the word
/// "software" behind it, drawn without OpenGL. The yardstick for the manual.
int main(int argc, char *argv[])
{
    const auto application =
        Gtk::Application::create("example.qrvx.BarePage", Gio::Application::Flags::NON_UNIQUE);
    const Glib::ustring document = argc > 1 ? argv[1] : "about:blank";
    const bool software = argc > 2 && std::string_view(argv[2]) == "software";
    Gtk::Window window;
    window.set_title("Bare page");
    window.set_default_size(900, 640);
    const auto keys = Gtk::EventControllerKey::create();
    keys->signal_key_pressed().connect(
        [&](guint symbol, guint, Gdk::ModifierType) {
            if (symbol != GDK_KEY_F1)
                return false;
            auto *session = webkit_network_session_new_ephemeral();
            auto *settings = webkit_settings_new();
            if (software)
                webkit_settings_set_hardware_acceleration_policy(
                    settings, WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);
            auto *page = static_cast<GtkWidget *>(g_object_new(
                WEBKIT_TYPE_WEB_VIEW, "network-session", session, "settings", settings, nullptr));
            gtk_window_set_child(window.gobj(), page);
            webkit_web_view_load_uri(WEBKIT_WEB_VIEW(page), document.c_str());
            return true;
        },
        false);
    window.add_controller(keys);
    application->signal_activate().connect([&] {
        application->add_window(window);
        window.present();
    });
    return application->run();
}
