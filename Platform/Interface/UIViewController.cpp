#include "Platform/Interface/UIViewController.hpp"

#include "Platform/Interface/Scene.hpp"
#include "Platform/Interface/StoryboardBinding.hpp"
#include "Platform/Interface/UIView.hpp"

#include <utility>

UIViewController::UIViewController(std::optional<std::string> nibName,
                                   std::shared_ptr<Bundle> bundle)
    : nibName_(std::move(nibName)), bundle_(std::move(bundle))
{
}

UIViewController::UIViewController(NSCoder &coder) : scene_(coder.scene()) {}

UIViewController::~UIViewController() = default;

const std::shared_ptr<UIView> &UIViewController::view()
{
    loadViewIfNeeded();
    return view_;
}

void UIViewController::setView(std::shared_ptr<UIView> view)
{
    view_ = std::move(view);
}

void UIViewController::loadViewIfNeeded()
{
    if (view_)
        return;
    loadView();
    if (view_)
        viewDidLoad();
}

void UIViewController::loadView()
{
    if (!scene_ && nibName_)
        scene_ = platform::interface::Scene::load(*nibName_, bundle_ ? *bundle_ : *Bundle::main());
    if (!scene_) {
        setView(std::make_shared<UIView>());
        return;
    }
    setView(scene_->rootView());
    StoryboardBinding binding(scene_->views());
    bindStoryboard(binding);
    scene_->connect(binding.actions(), shared_from_this());
    // The views are the view's from here on.
    scene_.reset();
}
