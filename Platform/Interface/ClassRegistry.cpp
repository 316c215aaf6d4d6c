#include "Platform/Interface/ClassRegistry.hpp"

#include <boost/core/demangle.hpp>

#include <map>
#include <utility>

namespace platform::interface
{

namespace
{

std::map<std::string, ClassMaker> &registry()
{
    static std::map<std::string, ClassMaker> makers;
    return makers;
}

} // namespace

void registerClass(const std::string &name, ClassMaker maker)
{
    registry().insert_or_assign(name, std::move(maker));
}

std::shared_ptr<UIResponder> makeInstance(const std::string &name, NSCoder *coder)
{
    const auto entry = registry().find(name);
    return entry == registry().end() ? nullptr : entry->second(coder);
}

std::string typeName(const std::type_info &type)
{
    return boost::core::demangle(type.name());
}

} // namespace platform::interface
