#pragma once

#include "Platform/Foundation/Bundle.hpp"
#include "Platform/Interface/NSCoder.hpp"
#include "Platform/Interface/UIResponder.hpp"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class StoryboardBinding;
class UIStoryboardSegue;
class UIView;
class UIWindow;

/// One screen or a part of one: owns a view and reacts to its life. A subclass
/// calls the base class in what it overrides. Main thread.
///
/// The order of a view's life: `loadView`, the outlets, `viewDidLoad`;
/// `viewWillAppear`, `viewDidLayoutSubviews` with each layout of the window,
/// `viewDidAppear`; `viewWillDisappear`, `viewDidDisappear`. Children whose views are
/// inside hear of each step after their parent.
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
    /// Puts another view in its place; for `loadView`.
    void setView(std::shared_ptr<UIView> view);
    /// Whether there is a view already.
    bool isViewLoaded() const { return view_ != nullptr; }
    /// Loads the view unless it is there; then `viewDidLoad`.
    void loadViewIfNeeded();

    /// Sets the view from the scene or file, and the outlets with it. A file that
    /// is missing or does not load is a fatal error.
    virtual void loadView();
    ///@{
    /// The view has been loaded and its outlets are set. Once.
    virtual void viewDidLoad() {}
    ///@}
    ///@{
    /// The view is about to come onto the screen or to leave it, or just has.
    virtual void viewWillAppear(bool /*animated*/) {}
    virtual void viewDidAppear(bool /*animated*/) {}
    virtual void viewWillDisappear(bool /*animated*/) {}
    virtual void viewDidDisappear(bool /*animated*/) {}
    ///@}
    /// The frames of the view's subviews are those of now.
    virtual void viewDidLayoutSubviews() {}
    /// The system is short of memory.
    virtual void didReceiveMemoryWarning() {}

    // Containment. ---------------------------------------------------------------

    /// The controller that this one is part of; null for none.
    std::shared_ptr<UIViewController> parent() const { return parent_.lock(); }
    /// The controllers that are part of this one, in the order they came.
    const std::vector<std::shared_ptr<UIViewController>> &children() const { return children_; }
    /// Makes `child` one of this controller's, which then owns it, after taking it
    /// from the parent it had. Says `willMove` to it; whoever adds it puts its view
    /// into the tree and says `didMove`.
    void addChild(const std::shared_ptr<UIViewController> &child);
    /// The opposite, after `willMove(nullptr)` and the view's removal; says
    /// `didMove(nullptr)`.
    void removeFromParent();
    /// The parent is about to change; null: to none.
    virtual void willMove(const std::shared_ptr<UIViewController> & /*parent*/) {}
    /// The parent has changed; null: to none.
    virtual void didMove(const std::shared_ptr<UIViewController> & /*parent*/) {}

    // Presentation. --------------------------------------------------------------

    /// Shows another controller over the window that this one is in, which owns it
    /// until it is dismissed: a page slides over the screen. `completion` runs when
    /// it has appeared. Not in a window, or with another one presented, standard
    /// error says so and nothing happens.
    void present(const std::shared_ptr<UIViewController> &controller, bool animated,
                 std::function<void()> completion = nullptr);
    /// Takes what this controller presents away again, or else this controller if it
    /// is presented. `completion` runs afterwards. Otherwise nothing happens.
    void dismiss(bool animated, std::function<void()> completion = nullptr);
    /// What this controller or the one it is part of presents; none without.
    std::shared_ptr<UIViewController> presentedViewController();
    /// What presents this controller or the one it is part of; none without.
    std::shared_ptr<UIViewController> presentingViewController() const;

    // Segues. --------------------------------------------------------------------

    /// Makes the screen that the storyboard names for the segue, lets `prepare` see
    /// it and presents it. A segue that the storyboard lacks is a fatal error. While
    /// a screen is presented already, nothing happens.
    void performSegue(const std::string &identifier, const std::shared_ptr<UIResponder> &sender);
    /// A segue from this screen is about to happen.
    virtual void prepare(UIStoryboardSegue & /*segue*/,
                         const std::shared_ptr<UIResponder> & /*sender*/)
    {
    }

    // For the platform's own use: ------------------------------------------------

    ///@{
    /// Frame a change of the view's visibility: they call the appearance callbacks,
    /// each once.
    void beginAppearanceTransition(bool isAppearing, bool animated);
    void endAppearanceTransition();
    ///@}
    /// The view gets its last step to having appeared with the next layout.
    void endAppearanceWithLayout() { endsWithLayout_ = true; }
    /// The window that the view is in has been laid out.
    void windowDidLayout();
    /// Gives the keyboard to the control that the storyboard chose, or else to the
    /// first one.
    void takeKeyboard();

protected:
    /// Names the outlets and actions that a scene may provide.
    virtual void bindStoryboard(StoryboardBinding & /*binding*/) {}

    /// Comes up over `window` and calls `done` when it is there. The presenting
    /// controller learns of its disappearance when it is covered.
    virtual void comeUp(UIWindow &window, UIViewController &presenting, bool animated,
                        std::function<void()> done);
    /// Goes away again and calls `done` when it is gone.
    virtual void goAway(UIWindow &window, UIViewController &presenting, bool animated,
                        std::function<void()> done);

private:
    friend class UIView;

    enum class Appearance { disappeared, appearing, appeared, disappearing };

    /// The view has been put into a tree; it is about to be, and has been, taken out.
    void viewDidEnter();
    void viewWillLeave();
    void viewDidLeave();
    void forEachVisibleChild(const std::function<void(UIViewController &)> &action);
    /// The controller that covers the window: this one, or the one it is part of.
    std::shared_ptr<UIViewController> screen();
    void dismissPresented(bool animated, std::function<void()> completion);

    std::shared_ptr<platform::interface::Scene> scene_;
    std::optional<std::string> nibName_;
    std::shared_ptr<Bundle> bundle_;
    std::shared_ptr<UIView> view_;
    /// The storyboard's names of the screens that segues lead to, by identifier.
    std::map<std::string, std::string> segues_;
    std::weak_ptr<UIView> firstResponder_;
    std::weak_ptr<UIViewController> parent_;
    std::vector<std::shared_ptr<UIViewController>> children_;
    std::weak_ptr<UIViewController> presenting_;
    std::shared_ptr<UIViewController> presented_;
    bool isBeingDismissed_ = false;
    Appearance appearance_ = Appearance::disappeared;
    bool animated_ = false;
    bool endsWithLayout_ = false;
};
