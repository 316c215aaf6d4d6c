#pragma once

#include "Platform/Effect Process/EffectView.hpp"
#include "Platform/Interface/AUViewController.hpp"

#include <memory>

namespace platform::effectview
{

class EffectFrame;

/// Shows the view of an effect that lives in another process.
class EffectViewController final : public AUViewController
{
public:
    explicit EffectViewController(std::shared_ptr<effect::EffectView> effectView);

    /// Closes the effect's view, whoever still has ours.
    ~EffectViewController() override;

    void loadView() override;
    void viewWillAppear(bool animated) override;
    void viewDidAppear(bool animated) override;
    void viewWillDisappear(bool animated) override;

private:
    const std::shared_ptr<effect::EffectView> effectView_;
    // Belongs to the view.
    EffectFrame *frame_ = nullptr;
    std::weak_ptr<EffectFrame *> frameIsThere_;
};

} // namespace platform::effectview
