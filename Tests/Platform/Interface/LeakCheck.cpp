#include "Tests/Platform/Interface/LeakCheck.hpp"

#include <dlfcn.h>

namespace
{

bool tableIsOutgrown = false;

/// The leak sanitizer's own scan ends in a fault with WebKit's libraries loaded.
bool isWebEngineLoaded()
{
    return dlopen("libwebkitgtk-6.0.so.4", RTLD_NOLOAD | RTLD_LAZY) != nullptr;
}

} // namespace

void test::outgrowTheTableOfNames()
{
    tableIsOutgrown = true;
}

/// The sanitizer asks this before it checks.
extern "C" int __lsan_is_turned_off(); // NOLINT: the sanitizer's name
extern "C" int __lsan_is_turned_off()  // NOLINT
{
    return tableIsOutgrown || isWebEngineLoaded() ? 1 : 0;
}
