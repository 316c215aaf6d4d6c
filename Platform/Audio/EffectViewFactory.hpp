#pragma once

#include "Platform/Effect Process/EffectView.hpp"

#include <functional>
#include <memory>

class AUViewController;

namespace platform::audio
{

/// Makes the view controller around an effect's view; none where views cannot be
/// shown. Main thread.
using EffectViewFactory =
    std::function<std::shared_ptr<AUViewController>(std::shared_ptr<effect::EffectView>)>;

/// Sets how view controllers are made: audio knows nothing of the interface. Before
/// units are asked for theirs; without it they have none.
void setEffectViewFactory(EffectViewFactory factory);

/// A view controller for the view, or none.
std::shared_ptr<AUViewController>
makeEffectViewController(const std::shared_ptr<effect::EffectView> &view);

} // namespace platform::audio
