#include <gtkmm.h>

/// The least that a gtkmm program with a window does: the yardstick for start-up.
int main(int argc, char *argv[])
{
    const auto application =
        Gtk::Application::create("example.qrvx.BareWindow", Gio::Application::Flags::NON_UNIQUE);
    return application->make_window_and_run<Gtk::Window>(argc, argv);
}
