#pragma once

#include "Platform/Interface/WebPage.hpp"
#include "Platform/Web View/GObjectHandle.hpp"

#include <webkit/webkit.h>

#include <memory>
#include <vector>

namespace platform::interface
{

/// The decisions that WebKit waits for. One that is not answered is kept to the end:
/// WebKit takes one that is let go for a yes.
class OpenQuestions : public std::enable_shared_from_this<OpenQuestions>
{
public:
    OpenQuestions() = default;
    /// Answers no to what is still open.
    ~OpenQuestions();
    OpenQuestions(const OpenQuestions &) = delete;
    OpenQuestions &operator=(const OpenQuestions &) = delete;

    /// Keeps `decision` and answers what settles it.
    WebAnswer add(WebKitPolicyDecision *decision);

private:
    void settle(const WebKitPolicyDecision *decision, bool allowed);

    std::vector<GObjectHandle<WebKitPolicyDecision>> open_;
};

} // namespace platform::interface
