#include "Platform/Foundation/Data.hpp"

#include "Platform/Foundation/FileContents.hpp"
#include "Platform/Foundation/HTTPTransfer.hpp"
#include "Platform/Foundation/PlatformError.hpp"

#include <string>
#include <utility>

Data Data::contentsOf(const URL &url)
{
    constexpr unsigned timeout = 60;
    if (url.isFileURL())
        return Data(platform::foundation::fileContents(url.path()));
    auto answer =
        platform::foundation::httpFunctions().fetch(url.absoluteString().c_str(), timeout);
    if (!answer.error.empty())
        throw PlatformError(answer.error);
    if (answer.status < 200 || answer.status >= 300)
        throw PlatformError("The server answered with the status " + std::to_string(answer.status) +
                            ".");
    return Data(std::move(answer.bytes));
}
