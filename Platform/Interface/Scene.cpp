#include "Platform/Interface/Scene.hpp"

#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Interface/UIButton.hpp"
#include "Platform/Interface/UIImageView.hpp"
#include "Platform/Interface/WKWebView.hpp"
#include "Platform/Interface/Widget.hpp"

#include <giomm/simpleactiongroup.h>
#include <glibmm/error.h>
#include <gtkmm/actionable.h>
#include <gtkmm/box.h>
#include <gtkmm/builder.h>
#include <gtkmm/button.h>

#include <utility>
#include <vector>

namespace platform::interface
{

namespace
{

constexpr std::string_view actionGroup = "screen";
constexpr std::string_view segueGroup = "segue";
constexpr const char *firstResponderClass = "first-responder";

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

/// Whether a plain view is meant: the file puts nothing inside.
bool isEmptyBox(Gtk::Widget &widget)
{
    return dynamic_cast<Gtk::Box *>(&widget) && !widget.get_first_child();
}

/// The name of the action that `view` sends, its group included; empty when it sends
/// none.
std::string actionOf(const UIView &view)
{
    const auto *control = dynamic_cast<Gtk::Actionable *>(&view.widget().get());
    return control ? control->get_action_name().raw() : std::string();
}

/// The text that goes with the action of `view`; empty where there is none.
std::string actionTargetOf(const UIView &view)
{
    auto *actionable = GTK_ACTIONABLE(view.widget().get().gobj());
    GVariant *target = gtk_actionable_get_action_target_value(actionable);
    return target && g_variant_is_of_type(target, G_VARIANT_TYPE_STRING)
               ? g_variant_get_string(target, nullptr)
               : "";
}

/// What follows the group in the name of an action of `group`; empty for others.
std::string nameWithin(std::string_view group, const std::string &action)
{
    const std::string prefix = std::string(group) + ".";
    return action.starts_with(prefix) ? action.substr(prefix.size()) : std::string();
}

/// Has `button` alone send its action; the named one in `group` is left to shortcuts.
void release(const std::shared_ptr<UIButton> &button, Gio::SimpleActionGroup &group,
             const std::string &name)
{
    auto &control = dynamic_cast<Gtk::Button &>(button->widget().get());
    auto *actionable = GTK_ACTIONABLE(control.gobj());
    gtk_actionable_set_action_target_value(actionable, nullptr);
    gtk_actionable_set_action_name(actionable, nullptr);
    control.set_sensitive(true);
    if (group.has_action(name))
        return;
    group.add_action(name, [weakButton = std::weak_ptr(button)] {
        if (const auto sender = weakButton.lock())
            sender->sendActions();
    });
}

} // namespace

std::shared_ptr<Scene> Scene::load(std::string_view name, std::shared_ptr<Bundle> bundle)
{
    const auto path = (bundle ? bundle : Bundle::main())->pathForResource(name, "ui");
    if (!path)
        fatalError("Could not find a storyboard named '" + std::string(name) + "'.");
    try {
        return std::make_shared<Scene>(*path, std::move(bundle));
    } catch (const PlatformError &error) {
        fatalError(std::string("Could not load a storyboard: ") + error.what());
    }
}

Scene::Scene(const std::string &path, std::shared_ptr<Bundle> bundle) : bundle_(std::move(bundle))
{
    const auto builder = Gtk::Builder::create();
    try {
        builder->add_from_file(path);
    } catch (const Glib::Error &error) {
        throw PlatformError("'" + path + "': " + error.what());
    }
    Gtk::Widget &root = topLevelWidget(*builder.get(), path);
    controllerClass_ = idOf(root);
    // A plain view around it all, so that the screen takes subviews.
    rootView_ = std::make_shared<UIView>();
    rootView_->setContent(std::make_unique<Widget>(root));
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
        const bool plain = isEmptyBox(*child);
        const auto view = makeView(*child);
        view->keepsPlace_ = plain;
        owner.adopt(view, UIView::Placement::storyboard);
        if (!plain)
            addViewsInside(*child, *view);
        add(view, id);
    }
}

std::shared_ptr<UIView> Scene::makeView(Gtk::Widget &widget)
{
    auto handle = std::make_unique<Widget>(widget);
    if (dynamic_cast<Gtk::Button *>(&widget))
        return UIButton::create(std::move(handle));
    if (!isEmptyBox(widget))
        return std::make_shared<UIView>(std::move(handle));
    if (widget.get_name() == "UIImageView")
        return std::make_shared<UIImageView>(std::move(handle));
    if (widget.get_name() == "WKWebView")
        return std::make_shared<WKWebView>(std::move(handle));
    return std::shared_ptr<UIView>(new UIView(UIView::Box{std::move(handle)}));
}

void Scene::add(const std::shared_ptr<UIView> &view, const std::string &id)
{
    views_[id] = view;
    if (view->widget().get().has_css_class(firstResponderClass))
        firstResponder_ = view;
    const std::string identifier = nameWithin(segueGroup, actionOf(*view));
    if (!identifier.empty())
        segues_[identifier] = actionTargetOf(*view);
}

void Scene::connect(const StoryboardBinding::Actions &actions,
                    const std::shared_ptr<UIResponder> &receiver) const
{
    for (const std::string_view groupName : {actionGroup, segueGroup}) {
        const auto group = Gio::SimpleActionGroup::create();
        for (const auto &[id, view] : views_) {
            const std::string name = nameWithin(groupName, actionOf(*view));
            const auto action = name.empty() ? actions.end() : actions.find(actionOf(*view));
            const auto button = std::dynamic_pointer_cast<UIButton>(view);
            if (!button || action == actions.end())
                continue;
            button->addTarget(receiver, action->second);
            release(button, *group.get(), name);
        }
        rootView_->content_->get().insert_action_group(std::string(groupName), group);
    }
}

} // namespace platform::interface
