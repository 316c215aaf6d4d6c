#pragma once

#include "Platform/Interface/UIButton.hpp"
#include "Platform/Interface/UIViewController.hpp"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// A view controller that notes what it is told.
class Recorder : public UIViewController
{
public:
    using UIViewController::UIViewController;

    void viewDidLoad() override;
    void viewWillAppear(bool animated) override;
    void viewDidAppear(bool animated) override;
    void viewWillDisappear(bool animated) override;
    void viewDidDisappear(bool animated) override;
    void viewDidLayoutSubviews() override;

    std::shared_ptr<UIButton> first;
    std::shared_ptr<UIButton> second;
    std::shared_ptr<UIView> area;
    std::shared_ptr<UIView> absent;

    /// Senders of `onPress`, in order.
    std::vector<std::shared_ptr<UIButton>> senders;
    /// Names of the calls, repeated layouts once.
    std::vector<std::string> calls;
    /// Gets each call's name as well.
    std::function<void(const std::string &)> onCall;

protected:
    void bindStoryboard(StoryboardBinding &binding) override;

private:
    void onPress(const std::shared_ptr<UIButton> &sender);
    void note(const std::string &call);
};
