#include "Platform/Foundation/URLSession.hpp"

#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/HTTPTransfer.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/URL.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>

using platform::foundation::HTTPAnswer;

namespace
{

void fail(const URLSession::Completion &completion, const std::string &reason)
{
    completion({}, nullptr, std::make_exception_ptr(PlatformError(reason)));
}

void deliver(const URLSession::Completion &completion, HTTPAnswer answer)
{
    if (!answer.error.empty()) {
        fail(completion, answer.error);
        return;
    }
    auto type = answer.mimeType.empty() ? std::nullopt : std::optional(answer.mimeType);
    completion(Data(std::move(answer.bytes)),
               std::make_shared<HTTPURLResponse>(URL::fromString(answer.address), std::move(type),
                                                 answer.status),
               nullptr);
}

unsigned wholeSeconds(double interval)
{
    constexpr double longest = 1e6;
    // Not a number means no more patience than the least.
    return interval > 1 ? static_cast<unsigned>(std::ceil(std::min(interval, longest))) : 1;
}

void fetch(const URLRequest &request, const URLSession::Completion &completion)
{
    try {
        platform::foundation::httpFunctions().fetchLater(
            request.url->absoluteString().c_str(), wholeSeconds(request.timeoutInterval),
            [completion](HTTPAnswer answer) { deliver(completion, std::move(answer)); });
    } catch (const PlatformError &error) {
        fail(completion, error.what());
    }
}

void read(const URL &url, const URLSession::Completion &completion)
{
    Data data;
    std::exception_ptr error;
    try {
        data = Data::contentsOf(url);
    } catch (const PlatformError &) {
        error = std::current_exception();
    }
    DispatchQueue::main().async([url, completion, data = std::move(data), error] {
        auto response = error ? nullptr : std::make_shared<URLResponse>(url, std::nullopt);
        completion(data, std::move(response), error);
    });
}

} // namespace

URLSession &URLSession::shared()
{
    static URLSession session;
    return session;
}

void URLSession::data(const URLRequest &request, Completion completion)
{
    if (!request.url)
        DispatchQueue::main().async(
            [completion = std::move(completion)] { fail(completion, "There is no address."); });
    else if (request.url->isFileURL())
        DispatchQueue::global().async(
            [url = *request.url, completion = std::move(completion)] { read(url, completion); });
    else
        DispatchQueue::main().async(
            [request, completion = std::move(completion)] { fetch(request, completion); });
}
