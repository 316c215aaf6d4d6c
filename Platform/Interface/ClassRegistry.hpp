#pragma once

#include "Platform/Interface/NSCoder.hpp"
#include "Platform/Interface/UIResponder.hpp"

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>

namespace platform::interface
{

/// Makes an instance of a class, from a storyboard's scene where one is given.
using ClassMaker = std::function<std::shared_ptr<UIResponder>(NSCoder *)>;

/// Lets instances of the class `name` be made by name. Main thread, or before
/// `main`.
void registerClass(const std::string &name, ClassMaker maker);

/// A new instance of the class `name`; none when no such class is registered.
/// With a coder the class is made from it, without one by its plain constructor;
/// a class that lacks the constructor asked for yields none.
std::shared_ptr<UIResponder> makeInstance(const std::string &name, NSCoder *coder = nullptr);

/// The name of a type as it is written in code.
std::string typeName(const std::type_info &type);

template <typename Class>
std::shared_ptr<UIResponder> makeInstanceOf([[maybe_unused]] NSCoder *coder)
{
    if constexpr (std::is_constructible_v<Class, NSCoder &>) {
        if (coder)
            return std::make_shared<Class>(*coder);
    }
    if constexpr (std::is_default_constructible_v<Class>) {
        if (!coder)
            return std::make_shared<Class>();
    }
    return nullptr;
}

/// Registers `Class` under its name: as a constant beside a class that is named
/// in a storyboard only.
template <typename Class>
class ClassRegistration
{
public:
    ClassRegistration() { registerClass(typeName(typeid(Class)), makeInstanceOf<Class>); }
};

} // namespace platform::interface

/// The name of `Class` as text, by which the platform can make instances of it
/// from then on.
template <typename Class>
std::string NSStringFromClass() // NOLINT(readability-identifier-naming): the name users know
{
    const platform::interface::ClassRegistration<Class> registration;
    return platform::interface::typeName(typeid(Class));
}
