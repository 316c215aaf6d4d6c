#include "Platform/Foundation/TimerDriver.hpp"

#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Foundation/Immortal.hpp"

#include <utility>

namespace
{

struct Drivers {
    std::shared_ptr<TimerDriver> (*makeDefault)() = nullptr;
    /// Kept when another is installed: timers made before still run on it.
    std::shared_ptr<TimerDriver> provided;
    std::shared_ptr<TimerDriver> installed;
};

// Never destroyed: the end of the program may still find timers running.
Drivers &drivers()
{
    static platform::foundation::Immortal<Drivers> instance([] { return Drivers(); });
    return instance.value;
}

} // namespace

void TimerDriver::install(std::shared_ptr<TimerDriver> driver)
{
    drivers().installed = std::move(driver);
}

TimerDriver &TimerDriver::installed()
{
    Drivers &known = drivers();
    if (known.installed)
        return *known.installed;
    if (!known.provided && known.makeDefault)
        known.provided = known.makeDefault();
    if (!known.provided)
        fatalError("A timer was scheduled without a driver that could run it");
    return *known.provided;
}

void TimerDriver::setDefault(std::shared_ptr<TimerDriver> (*make)())
{
    drivers().makeDefault = make;
}
