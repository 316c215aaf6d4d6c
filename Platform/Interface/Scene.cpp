#include "Platform/Interface/Scene.hpp"

#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Interface/UIButton.hpp"
#include "Platform/Interface/Widget.hpp"

#include <giomm/simpleactiongroup.h>
#include <glibmm/error.h>
#include <gtkmm/actionable.h>
#include <gtkmm/button.h>

#include <utility>
#include <vector>

namespace platform::interface
{

namespace
{

constexpr std::string_view actionPrefix = "screen.";

/// The id that the file gives a widget; empty where it gives none (GtkBuilder
/// then makes one up that begins with underscores).
std::string idOf(Gtk::Widget &widget)
{
    const char *id = gtk_buildable_get_buildable_id(GTK_BUILDABLE(widget.gobj()));
    const std::string text = id ? id : "";
    return text.starts_with("___") ? std::string() : text;
}

Gtk::Widget &topLevelWidget(const Gtk::Builder &builder, const std::string &path)
{
    Gtk::Widget *top = nullptr;
    const std::unique_ptr<GSList, decltype(&g_slist_free)> objects(
        gtk_builder_get_objects(const_cast<GtkBuilder *>(builder.gobj())), &g_slist_free);
    for (const GSList *link = objects.get(); link; link = link->next) {
        if (!GTK_IS_WIDGET(link->data) || gtk_widget_get_parent(GTK_WIDGET(link->data)))
            continue;
        if (top)
            throw PlatformError("'" + path + "' holds more than one top-level widget.");
        top = Glib::wrap(GTK_WIDGET(link->data));
    }
    if (!top)
        throw PlatformError("'" + path + "' holds no widget.");
    return *top;
}

std::shared_ptr<UIView> makeView(Gtk::Widget &widget)
{
    auto handle = std::make_unique<Widget>(widget);
    if (dynamic_cast<Gtk::Button *>(&widget))
        return UIButton::create(std::move(handle));
    return std::make_shared<UIView>(std::move(handle));
}

/// The name of the action that `view` sends; empty when it sends none.
std::string actionOf(const UIView &view)
{
    const auto *control = dynamic_cast<Gtk::Actionable *>(&view.widget().get());
    const std::string name = control ? control->get_action_name().raw() : std::string();
    return name.starts_with(actionPrefix) ? name.substr(actionPrefix.size()) : std::string();
}

} // namespace

std::shared_ptr<Scene> Scene::load(std::string_view name, const Bundle &bundle)
{
    const auto path = bundle.pathForResource(name, "ui");
    if (!path)
        fatalError("Could not find a storyboard named '" + std::string(name) + "'.");
    try {
        return std::make_shared<Scene>(*path);
    } catch (const PlatformError &error) {
        fatalError(std::string("Could not load a storyboard: ") + error.what());
    }
}

Scene::Scene(const std::string &path)
{
    const auto builder = Gtk::Builder::create();
    try {
        builder->add_from_file(path);
    } catch (const Glib::Error &error) {
        throw PlatformError("'" + path + "': " + error.what());
    }
    Gtk::Widget &root = topLevelWidget(*builder.get(), path);
    controllerClass_ = idOf(root);
    rootView_ = makeView(root);
    addViewsInside(root, *rootView_);
}

void Scene::addViewsInside(Gtk::Widget &widget, UIView &owner)
{
    for (auto *child = widget.get_first_child(); child; child = child->get_next_sibling()) {
        const std::string id = idOf(*child);
        if (id.empty()) {
            addViewsInside(*child, owner);
            continue;
        }
        const auto view = makeView(*child);
        views_[id] = view;
        owner.adopt(view);
        addViewsInside(*child, *view);
    }
}

void Scene::connect(const StoryboardBinding::Actions &actions,
                    const std::shared_ptr<UIResponder> &receiver) const
{
    const auto group = Gio::SimpleActionGroup::create();
    for (const auto &[id, view] : views_) {
        const std::string name = actionOf(*view);
        const auto action = actions.find(name);
        const auto button = std::dynamic_pointer_cast<UIButton>(view);
        if (!button || action == actions.end())
            continue;
        button->addTarget(receiver, action->second);
        // Pressed, the button sends for itself; the named action is left to
        // shortcuts.
        auto &control = dynamic_cast<Gtk::Button &>(button->widget().get());
        gtk_actionable_set_action_name(GTK_ACTIONABLE(control.gobj()), nullptr);
        control.set_sensitive(true);
        if (group->has_action(name))
            continue;
        group->add_action(name, [weakButton = std::weak_ptr(button)] {
            if (const auto sender = weakButton.lock())
                sender->sendActions();
        });
    }
    rootView_->widget().get().insert_action_group("screen", group);
}

} // namespace platform::interface
