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
    /// The program's one list.
    static LiveEffects &shared();

    ///@{
    /// Called by the effect itself as it comes and goes.
    void add(EffectProcess &effect);
    void remove(EffectProcess &effect);
    ///@}

private:
    LiveEffects();
    static void endAll();

    std::mutex mutex_;
    std::set<EffectProcess *> effects_;
};

} // namespace platform::effect
