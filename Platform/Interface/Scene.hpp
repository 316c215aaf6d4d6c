#pragma once

#include "Platform/Foundation/Bundle.hpp"
#include "Platform/Interface/StoryboardBinding.hpp"

#include <gtkmm/builder.h>
#include <gtkmm/widget.h>

#include <memory>
#include <string>
#include <string_view>

namespace platform::interface
{

/// One screen of a storyboard: a file of GtkBuilder's format that holds one
/// top-level widget, the view, whose id is the class of its view controller. The
/// ids of the widgets inside are the names of outlets. A control with the GTK
/// action name `screen.NAME` sends the action NAME.
class Scene
{
public:
    /// Reads the file `name`.ui of `bundle`. One that is missing or malformed is a
    /// fatal error: it is part of the program.
    static std::shared_ptr<Scene> load(std::string_view name, const Bundle &bundle);

    /// Reads the file at `path`; a `PlatformError` tells what is wrong with it.
    explicit Scene(const std::string &path);

    const std::string &controllerClass() const { return controllerClass_; }
    const std::shared_ptr<UIView> &rootView() const { return rootView_; }
    /// The views by their ids, the root apart.
    const StoryboardBinding::Views &views() const { return views_; }

    /// Has the scene's controls send `actions` to `receiver`. A control whose
    /// action is unknown cannot be pressed. The sender is the control that was
    /// pressed; a shortcut sends for the first control that carries the action.
    void connect(const StoryboardBinding::Actions &actions,
                 const std::shared_ptr<UIResponder> &receiver) const;

private:
    void addViewsInside(Gtk::Widget &widget, UIView &owner);

    std::string controllerClass_;
    std::shared_ptr<UIView> rootView_;
    StoryboardBinding::Views views_;
};

} // namespace platform::interface
