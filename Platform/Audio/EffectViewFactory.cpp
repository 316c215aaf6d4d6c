#include "Platform/Audio/EffectViewFactory.hpp"

#include <utility>

namespace platform::audio
{

namespace
{

EffectViewFactory &sharedFactory()
{
    static EffectViewFactory factory;
    return factory;
}

} // namespace

void setEffectViewFactory(EffectViewFactory factory)
{
    sharedFactory() = std::move(factory);
}

std::shared_ptr<AUViewController>
makeEffectViewController(const std::shared_ptr<effect::EffectView> &view)
{
    const EffectViewFactory &factory = sharedFactory();
    return factory ? factory(view) : nullptr;
}

} // namespace platform::audio
