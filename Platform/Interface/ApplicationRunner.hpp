#pragma once

#include "Platform/Interface/ApplicationProperties.hpp"

#include <gtkmm/application.h>

#include <memory>

class UIApplication;
class UIWindow;

namespace platform::interface
{

/// Runs a UIApplication as a program of the desktop.
class ApplicationRunner
{
public:
    /// Connects to the display; a missing one is a fatal error.
    ApplicationRunner(UIApplication &application, ApplicationProperties properties);

    /// Launches the program and serves it; does not return while it runs.
    int run();

private:
    void launch();
    void openMainWindow();
    void followWindow();
    void updateLifecycle();
    void endOnSignals();
    void addShortcuts();
    void addStyleSheet() const;

    UIApplication &application_;
    ApplicationProperties properties_;
    Glib::RefPtr<Gtk::Application> gtkApplication_;
    std::shared_ptr<UIWindow> window_;
};

} // namespace platform::interface
