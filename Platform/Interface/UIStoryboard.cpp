#include "Platform/Interface/UIStoryboard.hpp"

#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Interface/ClassRegistry.hpp"
#include "Platform/Interface/Scene.hpp"
#include "Platform/Interface/UIViewController.hpp"

#include <utility>

UIStoryboard::UIStoryboard(std::string name, std::shared_ptr<Bundle> bundle)
    : name_(std::move(name)), bundle_(std::move(bundle))
{
}

std::shared_ptr<UIViewController> UIStoryboard::instantiateInitialViewController() const
{
    const auto scene = platform::interface::Scene::load(name_, bundle_);
    NSCoder coder(scene);
    auto controller = std::dynamic_pointer_cast<UIViewController>(
        platform::interface::makeInstance(scene->controllerClass(), &coder));
    if (!controller)
        fatalError("The storyboard '" + name_ + "' names the class '" + scene->controllerClass() +
                   "', which is no view controller.");
    return controller;
}
