#include "Platform/Effect View/Shortcuts.hpp"

#include <gtk/gtk.h>

#include <memory>

namespace platform::effectview
{

namespace
{

struct Release {
    void operator()(void *object) const { g_object_unref(object); }
};
using ListPointer = std::unique_ptr<GListModel, Release>;

struct Key {
    guint symbol = 0;
    GdkModifierType modifiers{};
};

bool isFor(GtkShortcutTrigger *trigger, const Key &key)
{
    if (GTK_IS_ALTERNATIVE_TRIGGER(trigger))
        return isFor(gtk_alternative_trigger_get_first(GTK_ALTERNATIVE_TRIGGER(trigger)), key) ||
               isFor(gtk_alternative_trigger_get_second(GTK_ALTERNATIVE_TRIGGER(trigger)), key);
    if (!GTK_IS_KEYVAL_TRIGGER(trigger))
        return false;
    auto *const wanted = GTK_KEYVAL_TRIGGER(trigger);
    return gtk_keyval_trigger_get_keyval(wanted) == key.symbol &&
           gtk_keyval_trigger_get_modifiers(wanted) == key.modifiers;
}

/// Calls `visit(item)` until it answers true; answers whether it did.
template <typename Visit>
bool visitUntil(GListModel *list, Visit visit)
{
    for (guint i = 0; i < g_list_model_get_n_items(list); ++i) {
        const std::unique_ptr<void, Release> item(g_list_model_get_item(list, i));
        if (visit(item.get()))
            return true;
    }
    return false;
}

bool activateOwn(GtkWidget *widget, const Key &key)
{
    const ListPointer controllers(gtk_widget_observe_controllers(widget));
    return visitUntil(controllers.get(), [&](void *controller) {
        return GTK_IS_SHORTCUT_CONTROLLER(controller) &&
               visitUntil(G_LIST_MODEL(controller), [&](void *item) {
                   auto *shortcut = GTK_SHORTCUT(item);
                   return isFor(gtk_shortcut_get_trigger(shortcut), key) &&
                          gtk_shortcut_action_activate(gtk_shortcut_get_action(shortcut),
                                                       GTK_SHORTCUT_ACTION_EXCLUSIVE, widget,
                                                       gtk_shortcut_get_arguments(shortcut));
               });
    });
}

bool activateWithin(GtkWidget *widget, const Key &key)
{
    if (!gtk_widget_get_mapped(widget) || !gtk_widget_is_sensitive(widget))
        return false;
    if (activateOwn(widget, key))
        return true;
    for (GtkWidget *child = gtk_widget_get_first_child(widget); child;
         child = gtk_widget_get_next_sibling(child))
        if (activateWithin(child, key))
            return true;
    return false;
}

bool activateOfProgram(GtkWidget *root, const std::string &accelerator)
{
    GtkApplication *application =
        GTK_IS_WINDOW(root) ? gtk_window_get_application(GTK_WINDOW(root)) : nullptr;
    if (!application)
        return false;
    const std::unique_ptr<char *, decltype(&g_strfreev)> actions(
        gtk_application_get_actions_for_accel(application, accelerator.c_str()), &g_strfreev);
    for (char **action = actions.get(); *action; ++action)
        if (gtk_widget_activate_action_variant(root, *action, nullptr))
            return true;
    return false;
}

} // namespace

bool activateShortcut(Gtk::Widget &root, const std::string &accelerator)
{
    Key key;
    gtk_accelerator_parse(accelerator.c_str(), &key.symbol, &key.modifiers);
    return activateWithin(root.gobj(), key) || activateOfProgram(root.gobj(), accelerator);
}

} // namespace platform::effectview
