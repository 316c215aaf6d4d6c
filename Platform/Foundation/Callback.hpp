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
/// Copies share the closure. One thread at a time, the copies among them.
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
        if (isSet(closure))
            target_ = std::make_unique<Holder<Closure>>(std::move(closure)).release();
    }

    Callback(const Callback &other) : target_(other.target_)
    {
        if (target_)
            ++target_->holds;
    }
    Callback(Callback &&other) noexcept : target_(std::exchange(other.target_, nullptr)) {}
    Callback &operator=(Callback other) noexcept
    {
        std::swap(target_, other.target_);
        return *this;
    }
    ~Callback()
    {
        if (target_ && --target_->holds == 0)
            std::unique_ptr<Target>(target_).reset();
    }

    explicit operator bool() const { return target_ != nullptr; }

    /// Calls the closure; does nothing when there is none.
    void operator()(Args... args) const
    {
        if (const Callback running(*this); running)
            running.target_->run(std::forward<Args>(args)...);
    }

private:
    /// A closure and the number of those that hold it. The count is a plain one:
    /// an atomic one, as shared pointers have, costs more than a short closure.
    struct Target {
        virtual ~Target() = default;
        virtual void run(Args... args) = 0;
        std::size_t holds = 1;
    };

    template <typename Closure>
    struct Holder final : Target {
        explicit Holder(Closure &&given) : closure(std::move(given)) {}
        void run(Args... args) override { std::invoke(closure, std::forward<Args>(args)...); }
        Closure closure;
    };

    template <typename Closure>
    static bool isSet(const Closure & /*closure*/)
    {
        return true;
    }
    template <typename Signature>
    static bool isSet(const std::function<Signature> &function)
    {
        return static_cast<bool>(function);
    }
    template <typename Result, typename... Parameters>
    static bool isSet(Result (*const &function)(Parameters...))
    {
        return function != nullptr;
    }

    Target *target_ = nullptr;
};
