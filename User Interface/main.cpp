#include "Platform/Interface/ClassRegistry.hpp"
#include "Platform/Interface/UIApplication.hpp"
#include "User Interface/AppDelegate.hpp"

#include <optional>

int main(int argc, char *argv[])
{
    const auto appDelegateClassName = NSStringFromClass<AppDelegate>();
    UIApplicationMain(argc, argv, std::nullopt, appDelegateClassName);
    return 0;
}
