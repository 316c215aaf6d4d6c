#pragma once

namespace platform::foundation
{

/// A value made at its first use and never destroyed, for what other threads may
/// still need while the process ends.
template <typename T>
union Immortal {
    /// Holds what `make()` answers; `T` need not be movable.
    template <typename Make>
    explicit Immortal(Make make) : value(make())
    {
    }
    ~Immortal() {}
    Immortal(const Immortal &) = delete;
    Immortal &operator=(const Immortal &) = delete;

    /// The object itself.
    T value;
};

} // namespace platform::foundation
