#include "Platform/Web View/OpenQuestions.hpp"

#include <algorithm>

namespace platform::interface
{

OpenQuestions::~OpenQuestions()
{
    for (const auto &decision : open_)
        webkit_policy_decision_ignore(decision.get());
}

WebAnswer OpenQuestions::add(WebKitPolicyDecision *decision)
{
    open_.push_back(newReference(decision));
    return [weakSelf = weak_from_this(), decision](bool allowed) {
        if (const auto self = weakSelf.lock())
            self->settle(decision, allowed);
    };
}

void OpenQuestions::settle(const WebKitPolicyDecision *decision, bool allowed)
{
    const auto found = std::find_if(open_.begin(), open_.end(),
                                    [&](const auto &open) { return open.get() == decision; });
    // Answered before.
    if (found == open_.end())
        return;
    const auto settled = std::move(*found);
    open_.erase(found);
    if (allowed)
        webkit_policy_decision_use(settled.get());
    else
        webkit_policy_decision_ignore(settled.get());
}

} // namespace platform::interface
