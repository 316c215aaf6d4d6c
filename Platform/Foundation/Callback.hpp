#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

/// A property that holds a closure or none: assigned from any closure, cleared
/// with `nullptr`, true when set. The closure that runs is kept until it returns,
/// so it may replace or clear the property, and destroy the object that has it.
/// Copies share the closure. One thread at a time.
template <typename... Args>
class Callback
{
public:
    Callback() = default;
    Callback(std::nullptr_t) {}

    template <typename Closure>
    requires(!std::same_as<Closure, Callback> && std::is_invocable_v<Closure &, Args...>)
        Callback(Closure closure)
    {
        std::function<void(Args...)> function(std::move(closure));
        if (function)
            closure_ = std::make_shared<Function>(std::move(function));
    }

    explicit operator bool() const { return closure_ != nullptr; }

    /// Calls the closure; does nothing when there is none.
    void operator()(Args... args) const
    {
        if (const auto running = closure_)
            (*running)(std::forward<Args>(args)...);
    }

private:
    using Function = std::function<void(Args...)>;
    std::shared_ptr<Function> closure_;
};
