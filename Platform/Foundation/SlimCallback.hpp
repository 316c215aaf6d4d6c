#pragma once

#include "Platform/Foundation/Callback.hpp"

#include <concepts>
#include <cstddef>
#include <memory>
#include <utility>

/// A `Callback` that takes one word in its object, for those that are seldom called: a
/// closure is always allocated.
template <typename... Args>
class SlimCallback
{
public:
    SlimCallback() = default;
    /// A property without a closure.
    SlimCallback(std::nullptr_t) {}

    /// A property with `closure`; without one for an empty function or a null pointer.
    template <typename Closure>
    requires(!std::same_as<Closure, SlimCallback> &&
             std::constructible_from<Callback<Args...>, Closure>) SlimCallback(Closure closure)
    {
        if (Callback<Args...> callback(std::move(closure)); callback)
            callback_ = std::make_unique<Callback<Args...>>(std::move(callback));
    }

    /// Shares the closure.
    SlimCallback(const SlimCallback &other)
        : callback_(other.callback_ ? std::make_unique<Callback<Args...>>(*other.callback_)
                                    : nullptr)
    {
    }
    /// Takes the closure over.
    SlimCallback(SlimCallback &&other) noexcept = default;
    /// Takes another closure; the old one lives on while it runs.
    SlimCallback &operator=(SlimCallback other) noexcept
    {
        std::swap(callback_, other.callback_);
        return *this;
    }
    ~SlimCallback() = default;

    /// Whether there is a closure.
    explicit operator bool() const { return callback_ != nullptr; }

    /// Calls the closure; does nothing when there is none.
    void operator()(Args... args) const
    {
        if (callback_)
            (*callback_)(std::forward<Args>(args)...);
    }

private:
    std::unique_ptr<Callback<Args...>> callback_;
};
