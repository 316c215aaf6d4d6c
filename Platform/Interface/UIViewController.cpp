#include "Platform/Interface/UIViewController.hpp"

#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Interface/Scene.hpp"
#include "Platform/Interface/StoryboardBinding.hpp"
#include "Platform/Interface/UIStoryboard.hpp"
#include "Platform/Interface/UIStoryboardSegue.hpp"
#include "Platform/Interface/UIView.hpp"

#include <utility>

namespace
{

std::shared_ptr<UIViewController> shared(UIViewController &controller)
{
    return std::static_pointer_cast<UIViewController>(controller.shared_from_this());
}

} // namespace

UIViewController::UIViewController(std::optional<std::string> nibName,
                                   std::shared_ptr<Bundle> bundle)
    : nibName_(std::move(nibName)), bundle_(std::move(bundle))
{
}

UIViewController::UIViewController(NSCoder &coder)
    : scene_(coder.scene()), bundle_(scene_ ? scene_->bundle() : nullptr)
{
}

UIViewController::~UIViewController() = default;

const std::shared_ptr<UIView> &UIViewController::view()
{
    loadViewIfNeeded();
    return view_;
}

void UIViewController::setView(std::shared_ptr<UIView> view)
{
    view_ = std::move(view);
    if (view_)
        view_->controller_ = shared(*this);
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
        scene_ = platform::interface::Scene::load(*nibName_, bundle_);
    if (!scene_) {
        setView(std::make_shared<UIView>());
        return;
    }
    setView(scene_->rootView());
    StoryboardBinding binding(scene_->views());
    bindStoryboard(binding);
    segues_ = scene_->segues();
    firstResponder_ = scene_->firstResponder();
    auto actions = binding.actions();
    for (const auto &[identifier, destination] : segues_)
        actions["segue." + identifier] = [this, name = identifier](const auto &sender) {
            performSegue(name, sender);
        };
    scene_->connect(actions, shared_from_this());
    // The views are the view's from here on.
    scene_.reset();
}

// Containment. -------------------------------------------------------------------

void UIViewController::addChild(const std::shared_ptr<UIViewController> &child)
{
    for (auto above = shared(*this); above; above = above->parent()) {
        if (above == child)
            fatalError("A view controller cannot be its own child.");
    }
    if (child->parent().get() == this)
        return;
    child->removeFromParent();
    child->willMove(shared(*this));
    child->parent_ = shared(*this);
    children_.push_back(child);
}

void UIViewController::removeFromParent()
{
    const auto formerParent = parent();
    if (!formerParent)
        return;
    const auto self = shared(*this);
    std::erase(formerParent->children_, self);
    parent_.reset();
    didMove(nullptr);
}

// Appearance. --------------------------------------------------------------------

void UIViewController::beginAppearanceTransition(bool isAppearing, bool animated)
{
    const auto goal = isAppearing ? Appearance::appearing : Appearance::disappearing;
    const auto end = isAppearing ? Appearance::appeared : Appearance::disappeared;
    if (appearance_ == goal || appearance_ == end)
        return;
    const auto self = shared(*this);
    loadViewIfNeeded();
    appearance_ = goal;
    animated_ = animated;
    endsWithLayout_ = false;
    if (isAppearing)
        viewWillAppear(animated);
    else
        viewWillDisappear(animated);
    forEachVisibleChild(
        [&](UIViewController &child) { child.beginAppearanceTransition(isAppearing, animated); });
}

void UIViewController::endAppearanceTransition()
{
    const auto self = shared(*this);
    if (appearance_ == Appearance::appearing) {
        appearance_ = Appearance::appeared;
        viewDidAppear(animated_);
    } else if (appearance_ == Appearance::disappearing) {
        appearance_ = Appearance::disappeared;
        viewDidDisappear(animated_);
    } else {
        return;
    }
    forEachVisibleChild([](UIViewController &child) { child.endAppearanceTransition(); });
}

void UIViewController::windowDidLayout()
{
    const auto self = shared(*this);
    viewDidLayoutSubviews();
    forEachVisibleChild([](UIViewController &child) { child.windowDidLayout(); });
    if (std::exchange(endsWithLayout_, false))
        endAppearanceTransition();
}

void UIViewController::viewDidEnter()
{
    const auto owner = parent();
    if (!owner)
        return;
    if (owner->appearance_ == Appearance::appearing) {
        beginAppearanceTransition(true, owner->animated_);
    } else if (owner->appearance_ == Appearance::appeared) {
        beginAppearanceTransition(true, false);
        endAppearanceWithLayout();
    }
}

void UIViewController::viewWillLeave()
{
    beginAppearanceTransition(false, false);
}

void UIViewController::viewDidLeave()
{
    endAppearanceTransition();
}

void UIViewController::forEachVisibleChild(const std::function<void(UIViewController &)> &action)
{
    // A copy, since what is told may add and remove children.
    const auto children = children_;
    for (const auto &child : children) {
        if (child->view_ && view_ && child->view_->isDescendant(*view_))
            action(*child);
    }
}

void UIViewController::takeKeyboard()
{
    const auto chosen = firstResponder_.lock();
    // What is inside a view that takes no keys itself gets them, such as a web page.
    if (!chosen || !chosen->takeKeyboard())
        view()->takeKeyboard();
}

// Segues. ------------------------------------------------------------------------

void UIViewController::performSegue(const std::string &identifier,
                                    const std::shared_ptr<UIResponder> &sender)
{
    const auto segue = segues_.find(identifier);
    if (segue == segues_.end())
        fatalError("The screen has no segue with identifier '" + identifier + "'.");
    if (presentedViewController())
        return;
    UIStoryboardSegue way(identifier, shared(*this),
                          UIStoryboard(segue->second, bundle_).instantiateInitialViewController());
    prepare(way, sender);
    present(way.destination(), true);
}
