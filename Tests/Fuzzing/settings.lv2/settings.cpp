#include "Tests/Platform/LV2/Bundles/TestPlugin.hpp"

#include <lv2/atom/atom.h>
#include <lv2/state/state.h>

#include <numeric>
#include <string>

namespace
{

/// Reads its settings as plug-ins do, to the last byte: a number, texts up to their
/// zero, and whatever else there is.
class Settings
{
public:
    Settings(double, const LV2_Feature *const *features)
        : text_(testplugin::map(features, LV2_ATOM__String)),
          path_(testplugin::map(features, LV2_ATOM__Path))
    {
    }

    void connect(std::uint32_t port, void *data)
    {
        if (port == 0)
            set_ = static_cast<float *>(data);
    }
    void run(std::uint32_t) { sum_ += *set_; }

    static const void *extension(const char *uri)
    {
        static const LV2_State_Interface state{&Settings::save, &Settings::restore};
        return std::strcmp(uri, LV2_STATE__interface) == 0 ? &state : nullptr;
    }

private:
    static LV2_State_Status save(LV2_Handle handle, LV2_State_Store_Function store,
                                 LV2_State_Handle state, std::uint32_t,
                                 const LV2_Feature *const *features)
    {
        const auto &self = *static_cast<Settings *>(handle);
        return store(state, testplugin::map(features, "urn:test:settings:text"), self.kept_.c_str(),
                     self.kept_.size() + 1, self.text_, LV2_STATE_IS_POD);
    }

    static LV2_State_Status restore(LV2_Handle handle, LV2_State_Retrieve_Function retrieve,
                                    LV2_State_Handle state, std::uint32_t,
                                    const LV2_Feature *const *features)
    {
        auto &self = *static_cast<Settings *>(handle);
        for (const char *name : {"urn:test:settings:number", "urn:test:settings:text",
                                 "urn:test:settings:path", "urn:a"}) {
            std::size_t size = 0;
            std::uint32_t type = 0;
            std::uint32_t flags = 0;
            const void *const value =
                retrieve(state, testplugin::map(features, name), &size, &type, &flags);
            if (value)
                self.take(static_cast<const char *>(value), size, type);
        }
        return LV2_STATE_SUCCESS;
    }

    void take(const char *value, std::size_t size, std::uint32_t type)
    {
        if (type == text_ || type == path_)
            kept_ = value;
        sum_ += std::accumulate(value, value + size, 0.0F);
    }

    const std::uint32_t text_;
    const std::uint32_t path_;
    float *set_ = nullptr;
    float sum_ = 0.0F;
    std::string kept_;
};

} // namespace

TEST_PLUGINS(testplugin::describe<Settings>("urn:test:settings"))
