// A host that ends in the way its first argument names, with an effect that its second
// one names: the process that holds it must go along. Prints the process' number once
// the effect renders, and goes on when its input ends.

#include "Bundle/SabotageFolder.hpp"

#include "Platform/Effect Process/EffectProcess.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/Print.hpp"
#include "Tests/Utilities/Places.hpp"

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>

#include <unistd.h>

namespace
{

using platform::effect::Block;
using platform::effect::EffectProcess;
using std::chrono::milliseconds;

constexpr std::uint32_t frames = 64;

bool render(EffectProcess &effect)
{
    static std::array<float, frames> samples{};
    static std::array<float, frames> rendered{};
    static std::int64_t time = 0;
    const std::array<const float *, 2> inputs{samples.data(), samples.data()};
    const std::array<float *, 2> outputs{rendered.data(), rendered.data()};
    const bool isRendered = effect.render({inputs.data(), outputs.data(), frames, time});
    time += frames;
    return isRendered;
}

std::atomic<bool> interrupted{false};

/// Says whether Ctrl+C left the effect alone.
[[noreturn]] void outliveInterrupt(EffectProcess &effect)
{
    while (!interrupted)
        std::this_thread::sleep_for(milliseconds(1));
    const pid_t before = effect.processIdentifier();
    // Time in which a signal to the effect would have shown.
    std::this_thread::sleep_for(milliseconds(300));
    bool isFine = effect.isUp() && effect.processIdentifier() == before;
    for (int block = 0; block < 200 && isFine; ++block)
        if (render(effect))
            std::quick_exit(0);
    std::quick_exit(4);
}

/// Asks for something when it is told to, and says so, and what came of it.
[[noreturn]] void ask(EffectProcess &effect)
{
    while (!interrupted)
        std::this_thread::sleep_for(milliseconds(1));
    std::thread asking([&effect] {
        try {
            effect.presets();
            print("answered");
        } catch (const PlatformError &error) {
            print(error.what());
        }
        std::quick_exit(0);
    });
    // By now it most likely has.
    std::this_thread::sleep_for(milliseconds(100));
    print("asked");
    asking.join();
    std::quick_exit(6);
}

[[noreturn]] void end(const std::string &way, EffectProcess &effect)
{
    if (way == "ask")
        ask(effect);
    if (way == "interrupt")
        outliveInterrupt(effect);
    if (way == "quick_exit")
        std::quick_exit(0);
    // To be brought back to a preset, the effect saves what it may keep in files.
    if (way.ends_with("_with_files") && !effect.loadPreset(0))
        std::quick_exit(5);
    if (way == "quick_exit_with_files")
        std::quick_exit(0);
    if (way == "_exit_with_files")
        ::_exit(0);
    if (way == "exit")
        std::exit(0);
    if (way == "abort")
        std::abort();
    if (way == "_exit")
        ::_exit(0);
    for (;;)
        ::pause();
}

} // namespace

int main(int count, char **arguments)
{
    if (count != 3)
        return 2;
    std::signal(SIGINT, [](int) { interrupted = true; });
    // Not destroyed at any end but a regular one, like those of a program.
    EffectProcess::Limits limits;
    limits.request = milliseconds(3000);
    EffectProcess effect(test::buildPath(EFFECT_PROGRAM),
                         {arguments[2], {test::buildPath(SABOTAGE_LV2_FOLDER "/sabotage.lv2")}},
                         limits);
    effect.prepare(48000.0, frames);
    // Until it hangs, if it is one that does.
    const SabotageFolder sabotage(std::getenv("SABOTAGE_FOLDER"));
    const bool hangs = std::string_view(arguments[2]).ends_with("loop");
    for (int block = 0; block < (hangs ? 5000 : 40) && sabotage.faults().empty(); ++block) {
        render(effect);
        std::this_thread::sleep_for(milliseconds(2));
    }
    print(std::to_string(effect.processIdentifier()));
    while (std::getchar() != EOF)
        continue;
    end(arguments[1], effect);
}
