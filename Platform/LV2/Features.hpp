#pragma once

#include "Platform/LV2/Exchange.hpp"
#include "Platform/LV2/RunLengths.hpp"
#include "Platform/LV2/Worker.hpp"

#include <lv2/core/lv2.h>
#include <lv2/options/options.h>
#include <lv2/resize-port/resize-port.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace platform::lv2
{

/// The option under which a plug-in reads what the host calls its context: a
/// string (atom:String).
inline constexpr const char *contextNameOption = "urn:qrvx:audio-component#contextName";

/// What one instance is offered: the features of LV2 and the options.
class Features
{
public:
    /// What the options say.
    struct Values {
        double sampleRate;                      ///< in Hz
        std::uint32_t maximumFrames;            ///< of a block
        RunLengths runLengths;                  ///< that the plug-in insists on
        std::uint32_t sequenceSize;             ///< of an atom port's buffer, in bytes
        std::optional<std::string> contextName; ///< none: the option is left out
    };

    /// Whether a plug-in may require the feature of this URI.
    static bool serves(std::string_view feature);
    /// Whether a plug-in may require the option of this URI.
    static bool servesOption(std::string_view option);

    /// Features whose pointers are valid as long as this, the exchange, the worker and
    /// what lets the plug-in enlarge its ports.
    Features(const Values &values, Exchange &exchange, Worker &worker,
             LV2_Resize_Port_Resize *resize);
    Features(const Features &) = delete;
    Features &operator=(const Features &) = delete;

    /// For `instantiate`; ends with null.
    const LV2_Feature *const *forInstance() const { return instanceList_.data(); }
    /// For saving and restoring state; ends with null.
    const LV2_Feature *const *forState() const { return stateList_.data(); }

    /// The context's name as a one-entry list of options, to be handed to a
    /// plug-in that runs already. Ends with a zero entry.
    const LV2_Options_Option *setContextName(std::optional<std::string> name);

private:
    LV2_Options_Option contextOption() const;
    void fillOptions();
    void fillLists(const RunLengths &lengths);

    float sampleRate_;
    std::int32_t minimumFrames_;
    std::int32_t maximumFrames_;
    std::int32_t sequenceSize_;
    std::string contextName_;
    std::array<LV2_Options_Option, 7> options_{};
    std::array<LV2_Options_Option, 2> contextOptions_{};

    LV2_Feature map_;
    LV2_Feature unmap_;
    LV2_Feature optionsFeature_;
    LV2_Feature log_;
    LV2_Feature schedule_;
    LV2_Feature scheduleInRestore_;
    LV2_Feature makePath_;
    LV2_Feature mapPath_;
    LV2_Feature freePath_;
    LV2_Feature resizePort_;
    std::array<const LV2_Feature *, 18> instanceList_{};
    std::array<const LV2_Feature *, 10> stateList_{};
};

} // namespace platform::lv2
