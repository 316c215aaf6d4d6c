#include "Support/DiagnosticPrinting.hpp"

#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/Print.hpp"

#include <utility>

namespace
{

void printOnMainQueue(std::string text)
{
    DispatchQueue::main().async([text = std::move(text)] { print(text); });
}

} // namespace

void debugprint(std::string text)
{
    printOnMainQueue(std::move(text));
}

void safeprint(std::string text)
{
    printOnMainQueue(std::move(text));
}
