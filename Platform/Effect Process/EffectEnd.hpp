#pragma once

#include "Platform/Effect Process/LinkMemory.hpp"
#include "Platform/Effect Process/SpinBudget.hpp"
#include "Platform/Foundation/ThreadPriority.hpp"
#include "Platform/LV2/Exchange.hpp"
#include "Platform/LV2/Instance.hpp"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

namespace platform::effect
{

/// The effect's end of a link: a thread that renders the blocks that the host asks
/// for, where they lie.
class EffectEnd
{
public:
    /// Begins the thread. The instance is of the memory's shape, and it and the
    /// exchange outlive this object. `spin` is for how long at most it looks for a block
    /// before it sleeps.
    EffectEnd(LinkMemory memory, lv2::Instance &instance, lv2::Exchange &exchange,
              std::chrono::nanoseconds spin = usualSpin());
    /// Waits for the end of a block that is under way.
    ~EffectEnd();
    EffectEnd(const EffectEnd &) = delete;
    EffectEnd &operator=(const EffectEnd &) = delete;

private:
    void serve() noexcept;
    bool awaitRequest(std::uint32_t served) noexcept;
    void adoptPriority() noexcept;
    void renderBlock() noexcept;
    void takeEvents(std::uint32_t bytes) noexcept;
    void giveEvents() noexcept;
    void giveLatency() noexcept;

    LinkMemory memory_;
    lv2::Instance &instance_;
    lv2::Exchange &exchange_;
    SpinBudget spin_;
    foundation::ThreadPriority adoptedPriority_ = 0;
    std::atomic<bool> ending_{false};
    std::thread thread_;
};

} // namespace platform::effect
