#include "Platform/LV2/State.hpp"

#include "Platform/LV2/Symbols.hpp"

namespace platform::lv2
{

LV2_State_Status storeProperty(LV2_State_Handle state, std::uint32_t key, const void *value,
                               std::size_t size, std::uint32_t type, std::uint32_t flags)
{
    const SymbolTable &symbols = SymbolTable::shared();
    const char *keyURI = symbols.unmap(key);
    const char *typeURI = symbols.unmap(type);
    if (!keyURI || (!value && size > 0))
        return LV2_STATE_ERR_UNKNOWN;
    if (!typeURI)
        return LV2_STATE_ERR_BAD_TYPE;
    // Anything else may hold pointers; a path is text whatever its flags say.
    if ((flags & LV2_STATE_IS_POD) == 0 && type != Symbols::shared().atomPath)
        return LV2_STATE_ERR_BAD_FLAGS;
    const auto *bytes = static_cast<const char *>(value);
    static_cast<State *>(state)->properties.insert_or_assign(
        keyURI, State::Property{typeURI, flags, {bytes, size}});
    return LV2_STATE_SUCCESS;
}

const void *retrieveProperty(LV2_State_Handle state, std::uint32_t key, std::size_t *size,
                             std::uint32_t *type, std::uint32_t *flags)
{
    SymbolTable &symbols = SymbolTable::shared();
    const auto &properties = static_cast<const State *>(state)->properties;
    const char *keyURI = symbols.unmap(key);
    const auto found = keyURI ? properties.find(keyURI) : properties.end();
    if (found == properties.end())
        return nullptr;
    const State::Property &property = found->second;
    // Some plug-ins pass no place for what they do not ask.
    if (size)
        *size = property.value.size();
    if (type)
        *type = symbols.map(property.type);
    if (flags)
        *flags = property.flags;
    return property.value.data();
}

} // namespace platform::lv2
