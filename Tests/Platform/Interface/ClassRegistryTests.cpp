#include "Platform/Interface/ClassRegistry.hpp"

#include <gtest/gtest.h>

namespace
{

class Plain : public UIResponder
{
};

class FromCoder : public UIResponder
{
public:
    explicit FromCoder(NSCoder & /*coder*/) {}
};

const platform::interface::ClassRegistration<FromCoder> registration;

} // namespace

/// At global scope, as the application's classes are.
class NamedClass : public UIResponder
{
};

TEST(ClassRegistry, NamesAClassAsItIsWritten)
{
    EXPECT_EQ(NSStringFromClass<NamedClass>(), "NamedClass");
}

TEST(ClassRegistry, MakesAClassByTheNameItGave)
{
    const auto instance = platform::interface::makeInstance(NSStringFromClass<Plain>());
    EXPECT_NE(std::dynamic_pointer_cast<Plain>(instance), nullptr);
}

TEST(ClassRegistry, MakesAClassFromItsCoder)
{
    NSCoder coder(nullptr);
    const auto name = platform::interface::typeName(typeid(FromCoder));
    EXPECT_NE(std::dynamic_pointer_cast<FromCoder>(platform::interface::makeInstance(name, &coder)),
              nullptr);
}

TEST(ClassRegistry, MakesNothingWithoutTheConstructorAskedFor)
{
    NSCoder coder(nullptr);
    EXPECT_EQ(platform::interface::makeInstance(platform::interface::typeName(typeid(FromCoder))),
              nullptr);
    EXPECT_EQ(platform::interface::makeInstance(NSStringFromClass<Plain>(), &coder), nullptr);
}

TEST(ClassRegistry, KnowsNoClassThatWasNotRegistered)
{
    EXPECT_EQ(platform::interface::makeInstance("Nobody"), nullptr);
}
