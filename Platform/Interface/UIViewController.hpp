#pragma once

#include "Platform/Foundation/Bundle.hpp"
#include "Platform/Interface/NSCoder.hpp"
#include "Platform/Interface/UIResponder.hpp"

#include <memory>
#include <optional>
#include <string>

class StoryboardBinding;
class UIView;

/// One screen or a part of one: owns a view and reacts to its life. A subclass
/// calls the base class in what it overrides. Main thread.
///
/// The order of a view's life: `loadView`, the outlets, `viewDidLoad`;
/// `viewWillAppear`, `viewDidLayoutSubviews` with each layout, `viewDidAppear`;
/// `viewWillDisappear`, `viewDidDisappear`.
class UIViewController : public UIResponder
{
public:
    /// A controller whose view is in the file `nibName`.ui of `bundle` (none: the
    /// main bundle); with no name its view is an empty one.
    UIViewController(std::optional<std::string> nibName, std::shared_ptr<Bundle> bundle);
    /// A controller made from a storyboard's scene.
    explicit UIViewController(NSCoder &coder);
    ~UIViewController() override;

    /// The view, loaded at the first use; none if `loadView` set none.
    const std::shared_ptr<UIView> &view();
    void setView(std::shared_ptr<UIView> view);
    bool isViewLoaded() const { return view_ != nullptr; }
    void loadViewIfNeeded();

    /// Sets the view from the scene or file, and the outlets with it. A file that
    /// is missing or does not load is a fatal error.
    virtual void loadView();
    virtual void viewDidLoad() {}
    virtual void viewWillAppear(bool /*animated*/) {}
    virtual void viewDidAppear(bool /*animated*/) {}
    virtual void viewWillDisappear(bool /*animated*/) {}
    virtual void viewDidDisappear(bool /*animated*/) {}
    virtual void viewDidLayoutSubviews() {}

protected:
    /// Names the outlets and actions that a scene may provide.
    virtual void bindStoryboard(StoryboardBinding & /*binding*/) {}

private:
    std::shared_ptr<platform::interface::Scene> scene_;
    std::optional<std::string> nibName_;
    std::shared_ptr<Bundle> bundle_;
    std::shared_ptr<UIView> view_;
};
