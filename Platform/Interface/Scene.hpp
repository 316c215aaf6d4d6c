#pragma once

#include "Platform/Foundation/Bundle.hpp"
#include "Platform/Interface/StoryboardBinding.hpp"

#include <gtkmm/widget.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace platform::interface
{

/// One screen of a storyboard: a file of GtkBuilder's format that holds one
/// top-level widget, the view, whose id is the class of its view controller. The
/// ids of the widgets inside are the names of outlets. A control with the GTK
/// action name `screen.NAME` sends the action NAME; one with `segue.IDENTIFIER`
/// leads to the screen that its action target, a text, names. An empty box is a
/// plain view, of the view class that its widget name gives. The control or view of
/// the style class `first-responder` has the keyboard when the screen appears.
class Scene
{
public:
    /// Reads the file `name`.ui of `bundle`. One that is missing or malformed is a
    /// fatal error: it is part of the program.
    static std::shared_ptr<Scene> load(std::string_view name, std::shared_ptr<Bundle> bundle);

    /// Reads the file at `path`; a `PlatformError` tells what is wrong with it.
    Scene(const std::string &path, std::shared_ptr<Bundle> bundle);

    /// Where the other screens are; null is the main bundle.
    const std::shared_ptr<Bundle> &bundle() const { return bundle_; }

    const std::string &controllerClass() const { return controllerClass_; }
    const std::shared_ptr<UIView> &rootView() const { return rootView_; }
    /// The views by their ids, the root apart.
    const StoryboardBinding::Views &views() const { return views_; }
    /// The names of the screens that segues lead to, by the segues' identifiers.
    const std::map<std::string, std::string> &segues() const { return segues_; }
    /// None where the file says nothing.
    const std::shared_ptr<UIView> &firstResponder() const { return firstResponder_; }

    /// Has the scene's controls send `actions`, which go by their whole GTK names, to
    /// `receiver`. A control whose
    /// action is unknown cannot be pressed. The sender is the control that was
    /// pressed; a shortcut sends for the first control that carries the action.
    void connect(const StoryboardBinding::Actions &actions,
                 const std::shared_ptr<UIResponder> &receiver) const;

private:
    static std::shared_ptr<UIView> makeView(Gtk::Widget &widget);
    void addViewsInside(Gtk::Widget &widget, UIView &owner);
    void add(const std::shared_ptr<UIView> &view, const std::string &id);

    std::string controllerClass_;
    std::shared_ptr<UIView> rootView_;
    std::shared_ptr<Bundle> bundle_;
    StoryboardBinding::Views views_;
    std::map<std::string, std::string> segues_;
    std::shared_ptr<UIView> firstResponder_;
};

} // namespace platform::interface
