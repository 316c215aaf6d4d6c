#pragma once

#include "Effect/View/Panel.hpp"

#include <lv2/core/lv2.h>
#include <lv2/ui/ui.h>

#include <cstdint>

namespace effect::view
{

/// What the host gives to its view: functions to call, and its features.
class Host final : public PanelListener
{
public:
    /// `features` ends with a null pointer; it may be one itself.
    Host(LV2UI_Write_Function write, LV2UI_Controller controller,
         const LV2_Feature *const *features);

    /// The X window to be a child of, 0 if the host has none.
    std::uintptr_t parent() const { return parent_; }
    /// Pixels a point, within reason; 1 where the host does not say.
    float scale() const { return scale_; }

    void announceSize(int width, int height) const;
    void touched(std::size_t control, bool held) override;
    void changed(std::size_t control, float value) override;

private:
    LV2UI_Write_Function write_;
    LV2UI_Controller controller_;
    std::uintptr_t parent_;
    const LV2UI_Resize *resize_;
    const LV2UI_Touch *touch_;
    float scale_;
};

} // namespace effect::view
