#include "Platform/Interface/ApplicationRunner.hpp"

#include "Platform/Foundation/Bundle.hpp"
#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Foundation/RunLoop.hpp"
#include "Platform/Interface/UIApplication.hpp"
#include "Platform/Interface/UIStoryboard.hpp"
#include "Platform/Interface/UIViewController.hpp"
#include "Platform/Interface/UIWindow.hpp"
#include "Platform/Interface/Widget.hpp"

#include <gdkmm/toplevel.h>
#include <glib-unix.h>
#include <gtkmm/cssprovider.h>
#include <gtkmm/settings.h>
#include <gtkmm/stylecontext.h>
#include <gtkmm/window.h>

#include <array>
#include <csignal>
#include <string>
#include <utility>

#include <malloc.h>

namespace platform::interface
{

namespace
{

/// Each frame is painted into room of its own, of some megabytes. By default it would go
/// back to the system after the frame, and be fetched anew, page by page, for the next,
/// which takes a good part of the painting's time.
void keepRoomForFrames()
{
    constexpr int largestFrame = 32 << 20;
    mallopt(M_MMAP_THRESHOLD, largestFrame);
    mallopt(M_TRIM_THRESHOLD, 2 * largestFrame);
}

/// An audio unit's own view is an X window, which a Wayland surface cannot hold,
/// so X11 comes first; `GDK_BACKEND` in the environment decides all the same.
constexpr const char *backends = "x11,*";

} // namespace

ApplicationRunner::ApplicationRunner(UIApplication &application, ApplicationProperties properties)
    : application_(application), properties_(std::move(properties))
{
    keepRoomForFrames();
    // Painting comes before timers and queued work, so that neither can starve it.
    RunLoop::main().setSourcePriority(GDK_PRIORITY_REDRAW + 1);
    g_set_prgname(properties_.identifier.c_str());
    g_set_application_name(properties_.name.c_str());
    // A quiet screen is painted as fast without OpenGL, whose shaders would have
    // to be compiled before the window opens: at every start, since the program
    // leaves nothing in the home folder, where Mesa would keep them.
    g_setenv("GSK_RENDERER", "cairo", FALSE);
    g_setenv("MESA_SHADER_CACHE_DISABLE", "true", FALSE);
    gdk_set_allowed_backends(backends);
    if (!gtk_init_check())
        fatalError("There is no display to open a window on.");
    // Non-unique: a program that is started twice runs twice, and no session bus
    // is needed to find that out.
    gtkApplication_ =
        Gtk::Application::create(properties_.identifier, Gio::Application::Flags::NON_UNIQUE);
}

int ApplicationRunner::run()
{
    endOnSignals();
    gtkApplication_->signal_activate().connect([this] { launch(); });
    return gtkApplication_->run();
}

void ApplicationRunner::launch()
{
    addStyleSheet();
    addShortcuts();
    openMainWindow();
    application_.delegate()->application(application_, {});
    window_->makeKeyAndVisible();
}

void ApplicationRunner::openMainWindow()
{
    Gtk::Window::set_default_icon_name(properties_.identifier);
    window_ = UIWindow::create(properties_.name, properties_.windowWidth, properties_.windowHeight);
    const UIStoryboard storyboard(properties_.mainStoryboard, nullptr);
    window_->setRootViewController(storyboard.instantiateInitialViewController());
    window_->setCloseHandler([this] { application_.terminate(); });
    gtkApplication_->add_window(static_cast<Gtk::Window &>(window_->widget().get()));
    followWindow();
    application_.delegate()->setWindow(window_);
}

void ApplicationRunner::followWindow()
{
    auto &window = static_cast<Gtk::Window &>(window_->widget().get());
    window.property_is_active().signal_changed().connect([this] { updateLifecycle(); });
    window.signal_realize().connect([this, &window] {
        const auto toplevel = std::dynamic_pointer_cast<Gdk::Toplevel>(window.get_surface());
        toplevel->property_state().signal_changed().connect([this] { updateLifecycle(); });
    });
}

void ApplicationRunner::updateLifecycle()
{
    auto &window = static_cast<Gtk::Window &>(window_->widget().get());
    const auto toplevel = std::dynamic_pointer_cast<Gdk::Toplevel>(window.get_surface());
    const bool minimised = toplevel && (toplevel->get_state() & Gdk::Toplevel::State::MINIMIZED) ==
                                           Gdk::Toplevel::State::MINIMIZED;
    application_.lifecycle_->update(window.is_active(), minimised);
}

void ApplicationRunner::endOnSignals()
{
    for (const int number : std::array{SIGTERM, SIGINT}) {
        g_unix_signal_add(
            number,
            [](gpointer application) -> gboolean {
                static_cast<UIApplication *>(application)->terminate();
            },
            &application_);
    }
}

void ApplicationRunner::addShortcuts()
{
    gtkApplication_->add_action("quit", [this] { application_.terminate(); });
    gtkApplication_->set_accel_for_action("app.quit", "<Control>q");
    gtkApplication_->set_accel_for_action("window.close", "<Control>w");
}

void ApplicationRunner::addStyleSheet() const
{
    const auto path = Bundle::main()->pathForResource(properties_.styleSheet, "css");
    if (!path)
        fatalError("The style sheet '" + properties_.styleSheet + "' is missing.");
    const auto provider = Gtk::CssProvider::create();
    provider->load_from_path(*path);
    Gtk::StyleContext::add_provider_for_display(Gdk::Display::get_default(), provider,
                                                GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    // Dialogs have header bars as the window has, whatever the desktop's own have.
    Gtk::Settings::get_default()->property_gtk_dialogs_use_header() = true;
}

} // namespace platform::interface
