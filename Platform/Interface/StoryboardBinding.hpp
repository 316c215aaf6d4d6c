#pragma once

#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Interface/UIView.hpp"

#include <functional>
#include <map>
#include <memory>
#include <string>

/// What ties the names of a scene to a view controller's members: the
/// controller names its outlets and actions, the loader connects them.
class StoryboardBinding
{
public:
    /// The control that sends an action.
    using Sender = std::shared_ptr<UIResponder>;
    /// The views of a scene by their ids.
    using Views = std::map<std::string, std::shared_ptr<UIView>>;
    /// What to call for an action by its name.
    using Actions = std::map<std::string, std::function<void(const Sender &)>>;

    /// A binding to the named views of a scene.
    explicit StoryboardBinding(const Views &views) : views_(views) {}

    /// Sets `member` to the scene's object `name`. It stays empty when there is
    /// none; an object of another class is a fatal error.
    template <typename View>
    void outlet(const std::string &name, std::shared_ptr<View> &member)
    {
        const auto found = views_.find(name);
        if (found == views_.end())
            return;
        member = std::dynamic_pointer_cast<View>(found->second);
        if (!member)
            fatalError("The storyboard's object '" + name + "' is not of its outlet's class.");
    }

    /// Has controls that send `name` call `operation` of `controller`, with
    /// themselves as sender. A sender of another class is a fatal error.
    template <typename Controller, typename View>
    void action(const std::string &name, Controller &controller,
                void (Controller::*operation)(const std::shared_ptr<View> &))
    {
        actions_["screen." + name] = [name, &controller, operation](const Sender &sender) {
            const auto view = std::dynamic_pointer_cast<View>(sender);
            if (!view)
                fatalError("The sender of '" + name + "' is not of its parameter's class.");
            (controller.*operation)(view);
        };
    }

    /// By the names that GTK knows them under: with the prefix `screen.`.
    const Actions &actions() const { return actions_; }

private:
    const Views &views_;
    Actions actions_;
};
