#pragma once

#include "Platform/LV2/ViewDescription.hpp"

#include <lv2/ui/ui.h>

namespace platform::lv2
{

/// Loads the library of a view and answers its descriptor, which stays valid: what
/// a toolkit has set up does not survive that its library is unloaded. A
/// `PlatformError` when it does not load or does not hold the view.
const LV2UI_Descriptor &loadView(const ViewDescription &description);

} // namespace platform::lv2
