#pragma once

#include <lv2/state/state.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

namespace platform::lv2
{

/// A plug-in's settings at one moment, enough to bring another instance of it to
/// the same: what it stored itself and the values of its control inputs.
struct State {
    /// A value that the plug-in stored itself.
    struct Property {
        std::string type;        ///< the URI of its type
        std::uint32_t flags = 0; ///< as `LV2_State_Flags`
        /// Its bytes, of any kind. A zero always stands behind them: plug-ins read texts
        /// to it, also those that were stored without one.
        std::string value;
    };

    /// By the key's URI.
    std::map<std::string, Property> properties;
    /// By the port's symbol.
    std::map<std::string, float> controls;
};

/// LV2's store function on a `State *`. Only values that can be copied are taken.
LV2_State_Status storeProperty(LV2_State_Handle state, std::uint32_t key, const void *value,
                               std::size_t size, std::uint32_t type, std::uint32_t flags);

/// LV2's retrieve function on a `const State *`.
const void *retrieveProperty(LV2_State_Handle state, std::uint32_t key, std::size_t *size,
                             std::uint32_t *type, std::uint32_t *flags);

} // namespace platform::lv2
