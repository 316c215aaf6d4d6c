#include "Support/DiagnosticPrinting.hpp"

#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/Print.hpp"

#include <string>
#include <utility>

namespace
{

void printOnMainQueue(std::string_view text)
{
    // Made ready here, so that the main thread only has to write.
    std::string line;
    line.reserve(text.size() + 1);
    line.append(text).push_back('\n');
    DispatchQueue::main().async([line = std::move(line)] { printBytes(line); });
}

} // namespace

void debugprint(std::string_view text)
{
    printOnMainQueue(text);
}

void safeprint(std::string_view text)
{
    printOnMainQueue(text);
}
