#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
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
    /// A property without a closure.
    Callback(std::nullptr_t) {}

    /// A property with `closure`; without one for an empty function or a null pointer.
    /// A small closure that can be copied byte by byte is kept in place, any other is
    /// allocated.
    template <typename Closure>
    requires(!std::same_as<Closure, Callback> && std::is_invocable_v<Closure &, Args...>)
        Callback(Closure closure)
    {
        if (!isSet(closure))
            return;
        if constexpr (isSmall<Closure>)
            std::memcpy(&word_, &closure, sizeof(Closure));
        else
            word_ = static_cast<Shared *>(
                std::make_unique<Holder<Closure>>(std::move(closure)).release());
        operations_ = &operationsOf<Closure>;
    }

    /// Shares the closure.
    Callback(const Callback &other) : operations_(other.operations_), word_(other.word_)
    {
        if (isShared())
            ++shared().holds;
    }
    /// Takes the closure over.
    Callback(Callback &&other) noexcept
        : operations_(std::exchange(other.operations_, nullptr)), word_(other.word_)
    {
    }
    /// Takes another closure; the old one lives on while it runs.
    Callback &operator=(Callback other) noexcept
    {
        std::swap(operations_, other.operations_);
        std::swap(word_, other.word_);
        return *this;
    }
    ~Callback()
    {
        if (isShared())
            shared().release();
    }

    /// Whether there is a closure.
    explicit operator bool() const { return operations_ != nullptr; }

    /// Calls the closure; does nothing when there is none.
    void operator()(Args... args) const
    {
        if (operations_)
            operations_->run(word_, std::forward<Args>(args)...);
    }

private:
    /// Whether a closure of this type is kept in the callback itself. It is run as a
    /// copy, so it must be one that does not change.
    template <typename Closure>
    static constexpr bool isSmall =
        sizeof(Closure) <= sizeof(void *) &&
        std::is_trivially_copyable_v<Closure> &&std::is_invocable_v<const Closure &, Args...>;

    /// A closure elsewhere, with the number of those that hold it. The count is a
    /// plain one: an atomic one, as shared pointers have, costs more than a short
    /// closure does.
    struct Shared {
        virtual ~Shared() = default;
        void release()
        {
            if (--holds == 0)
                std::unique_ptr<Shared>(this).reset();
        }
        std::size_t holds = 1;
    };
    template <typename Closure>
    struct Holder final : Shared {
        explicit Holder(Closure &&given) : closure(std::move(given)) {}
        Closure closure;
    };

    struct Operations {
        void (*run)(void *word, Args... args);
        bool isShared;
    };

    template <typename Closure>
    static void run(void *word, Args... args)
    {
        if constexpr (isSmall<Closure>) {
            alignas(void *) std::array<std::byte, sizeof(void *)> bytes;
            std::memcpy(bytes.data(), &word, bytes.size());
            std::invoke(*std::launder(reinterpret_cast<const Closure *>(bytes.data())),
                        std::forward<Args>(args)...);
        } else {
            auto &holder = static_cast<Holder<Closure> &>(*static_cast<Shared *>(word));
            ++holder.holds;
            const std::unique_ptr<Shared, Release> running(&holder);
            std::invoke(holder.closure, std::forward<Args>(args)...);
        }
    }
    struct Release {
        void operator()(Shared *shared) const { shared->release(); }
    };

    template <typename Closure>
    static constexpr Operations operationsOf{&run<Closure>, !isSmall<Closure>};

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

    bool isShared() const { return operations_ && operations_->isShared; }
    Shared &shared() const { return *static_cast<Shared *>(word_); }

    const Operations *operations_ = nullptr;
    /// A small closure, or the address of a `Shared`.
    void *word_ = nullptr;
};
