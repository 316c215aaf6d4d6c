#include "Platform/Interface/UIApplication.hpp"

#include "Platform/Foundation/Bundle.hpp"
#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Interface/ApplicationRunner.hpp"
#include "Platform/Interface/ClassRegistry.hpp"

#include <cstdlib>
#include <utility>

namespace
{

std::weak_ptr<UIApplication> &sharedApplication()
{
    static std::weak_ptr<UIApplication> application;
    return application;
}

template <typename Class>
std::shared_ptr<Class> makeByName(const std::string &name)
{
    auto instance = std::dynamic_pointer_cast<Class>(platform::interface::makeInstance(name));
    if (!instance)
        fatalError("The class '" + name + "' cannot take its part in the program.");
    return instance;
}

platform::interface::ApplicationProperties mainProperties()
{
    try {
        return platform::interface::ApplicationProperties::load(*Bundle::main());
    } catch (const PlatformError &error) {
        fatalError(error.what());
    }
}

} // namespace

UIApplication::UIApplication()
{
    lifecycle_ =
        std::make_unique<platform::interface::Lifecycle>(platform::interface::Lifecycle::Steps{
            [this] { delegate_->applicationDidBecomeActive(*this); },
            [this] { delegate_->applicationWillResignActive(*this); },
            [this] { delegate_->applicationDidEnterBackground(*this); },
            [this] { delegate_->applicationWillEnterForeground(*this); }});
}

UIApplication::~UIApplication() = default;

UIApplication &UIApplication::shared()
{
    const auto application = sharedApplication().lock();
    if (!application)
        fatalError("There is no application before UIApplicationMain.");
    return *application;
}

void UIApplication::setDelegate(std::shared_ptr<UIApplicationDelegate> delegate)
{
    delegate_ = std::move(delegate);
}

UIApplicationState UIApplication::applicationState() const
{
    return lifecycle_->state();
}

void UIApplication::terminate()
{
    delegate_->applicationWillTerminate(*this);
    // Queues, timers and threads are never destroyed while others run: the
    // process ends with all of them in place.
    std::quick_exit(0);
}

int UIApplicationMain(int /*argc*/, char * /*argv*/[],
                      const std::optional<std::string> &principalClassName,
                      const std::optional<std::string> &delegateClassName)
{
    if (!delegateClassName)
        fatalError("The program names no class for its delegate.");
    const auto application = principalClassName ? makeByName<UIApplication>(*principalClassName)
                                                : std::make_shared<UIApplication>();
    sharedApplication() = application;
    application->setDelegate(makeByName<UIApplicationDelegate>(*delegateClassName));
    return platform::interface::ApplicationRunner(*application, mainProperties()).run();
}
