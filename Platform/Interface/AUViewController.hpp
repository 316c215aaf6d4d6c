#pragma once

#include "Platform/Interface/UIViewController.hpp"

/// The view controller that an audio unit hands out for its own view.
class AUViewController : public UIViewController
{
public:
    using UIViewController::UIViewController;
};
