#include "Platform/Foundation/FatalError.hpp"

#include "Platform/Foundation/Print.hpp"

#include <cstdlib>
#include <string>

void fatalError(std::string_view message)
{
    printError(std::string("Fatal error: ").append(message));
    std::abort();
}
