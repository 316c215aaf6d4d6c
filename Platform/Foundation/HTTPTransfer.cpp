#include "Platform/Foundation/HTTPTransfer.hpp"

#include "Platform/Foundation/Module.hpp"

namespace platform::foundation
{

const HTTPFunctions &httpFunctions()
{
    // Initialised by one thread while others wait; tried again after a failure.
    static const auto *const functions = static_cast<const HTTPFunctions *>(
        moduleSymbol("http_transfer.so", httpFunctionsSymbol, "fetches from the web"));
    return *functions;
}

} // namespace platform::foundation
