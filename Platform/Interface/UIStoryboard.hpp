#pragma once

#include "Platform/Foundation/Bundle.hpp"

#include <memory>
#include <string>

class UIViewController;

/// The screens of a program as a designer laid them out. Main thread.
class UIStoryboard
{
public:
    /// The storyboard `name` of `bundle`; null means the main bundle.
    UIStoryboard(std::string name, std::shared_ptr<Bundle> bundle);

    /// A new view controller of the class that the storyboard names, its view not
    /// loaded yet. A storyboard that is missing or malformed, and a class that is
    /// not registered or is no view controller, are fatal errors.
    std::shared_ptr<UIViewController> instantiateInitialViewController() const;

private:
    std::string name_;
    std::shared_ptr<Bundle> bundle_;
};
