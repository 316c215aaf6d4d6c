#pragma once

#include <mutex>
#include <set>

namespace platform::effect
{

class EffectProcess;

/// All effects that are there, so that their processes and files go with the program
/// also when it ends by `std::quick_exit`, which destroys nothing. Any thread.
class LiveEffects
{
public:
    static LiveEffects &shared();

    void add(EffectProcess &effect);
    void remove(EffectProcess &effect);

private:
    LiveEffects();
    static void endAll();

    std::mutex mutex_;
    std::set<EffectProcess *> effects_;
};

} // namespace platform::effect
