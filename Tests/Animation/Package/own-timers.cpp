// A program without GLib brings a driver of its own; this one lets no time pass.
#include <Animation/Animator.hpp>
#include <Platform/Foundation/TimerDriver.hpp>

#include <cstdio>
#include <functional>
#include <memory>
#include <utility>

namespace
{

class ImpatientDriver final : public TimerDriver
{
public:
    std::unique_ptr<Schedule> schedule(double, std::function<void()> tick) override
    {
        tick_ = std::move(tick);
        return std::make_unique<Claim>(*this);
    }
    void run()
    {
        while (const auto tick = tick_)
            tick();
    }

private:
    struct Claim final : Schedule {
        explicit Claim(ImpatientDriver &of) : driver(of) {}
        ~Claim() override { driver.tick_ = nullptr; }
        ImpatientDriver &driver;
    };
    std::function<void()> tick_;
};

} // namespace

int main()
{
    const auto driver = std::make_shared<ImpatientDriver>();
    TimerDriver::install(driver);
    const auto animator = Animator::create(0, 100, 4, 0.01F, EASING_easeInOutQuad);
    animator->onAnimation = [](Animator &, float value) { std::printf("%g\n", value); };
    animator->start();
    driver->run();
}
