#pragma once

#include <memory>

/// Base of everything that takes part in the interface: the application, its
/// delegate, views and view controllers. Held by `std::shared_ptr`. Main thread.
class UIResponder : public std::enable_shared_from_this<UIResponder>
{
public:
    UIResponder() = default;
    virtual ~UIResponder() = default;
    UIResponder(const UIResponder &) = delete;
    UIResponder &operator=(const UIResponder &) = delete;
};
