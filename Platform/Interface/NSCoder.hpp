#pragma once

#include <memory>

namespace platform::interface
{
class Scene;
}

/// What a storyboard holds of one screen, handed to the view controller that is
/// made from it.
class NSCoder
{
public:
    /// Hands out that scene.
    explicit NSCoder(std::shared_ptr<platform::interface::Scene> scene);

    /// What was read of the storyboard's file.
    const std::shared_ptr<platform::interface::Scene> &scene() const { return scene_; }

private:
    std::shared_ptr<platform::interface::Scene> scene_;
};
