#include "Platform/Effect Process/LiveEffects.hpp"

#include "Platform/Effect Process/EffectProcess.hpp"
#include "Platform/Foundation/Immortal.hpp"

#include <cstdlib>

namespace platform::effect
{

LiveEffects &LiveEffects::shared()
{
    static foundation::Immortal<LiveEffects> effects([] { return LiveEffects(); });
    return effects.value;
}

LiveEffects::LiveEffects()
{
    std::at_quick_exit(&LiveEffects::endAll);
}

void LiveEffects::add(EffectProcess &effect)
{
    const std::lock_guard lock(mutex_);
    effects_.insert(&effect);
}

void LiveEffects::remove(EffectProcess &effect)
{
    const std::lock_guard lock(mutex_);
    effects_.erase(&effect);
}

void LiveEffects::endAll()
{
    LiveEffects &live = shared();
    const std::lock_guard lock(live.mutex_);
    for (EffectProcess *effect : live.effects_)
        effect->endByForce();
}

} // namespace platform::effect
