#include "../TestPlugin.hpp"

#include <lv2/atom/atom.h>
#include <lv2/state/state.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

namespace
{

/// Port 0 sets the value where it is not 0. What it saves is a number and a file
/// with the value. Port 1 tells in its samples: the value, the sample rate, the
/// restored number, and how often `restore` and `run` met.
class Stateful
{
public:
    Stateful(double rate, const LV2_Feature *const *) : rate_(rate) {}

    void connect(std::uint32_t port, void *data)
    {
        (port == 0 ? set_ : report_) = static_cast<float *>(data);
    }

    void run(std::uint32_t frames)
    {
        running_.store(true);
        if (restoring_.load())
            ++meetings_;
        if (*set_ != 0.0F)
            value_ = *set_;
        const float values[] = {value_.load(), static_cast<float>(rate_), number_.load(),
                                static_cast<float>(meetings_.load())};
        for (std::uint32_t i = 0; i < frames && i < 4; ++i)
            report_[i] = values[i];
        running_.store(false);
    }

    static const void *extension(const char *uri)
    {
        static const LV2_State_Interface state{&Stateful::save, &Stateful::restore};
        return std::strcmp(uri, LV2_STATE__interface) == 0 ? &state : nullptr;
    }

private:
    static LV2_State_Status save(LV2_Handle handle, LV2_State_Store_Function store,
                                 LV2_State_Handle state, std::uint32_t,
                                 const LV2_Feature *const *features)
    {
        const auto &self = *static_cast<Stateful *>(handle);
        auto *makePath = testplugin::feature<LV2_State_Make_Path>(features, LV2_STATE__makePath);
        auto *mapPath = testplugin::feature<LV2_State_Map_Path>(features, LV2_STATE__mapPath);
        auto *freePath = testplugin::feature<LV2_State_Free_Path>(features, LV2_STATE__freePath);
        if (!makePath || !mapPath || !freePath)
            return LV2_STATE_ERR_NO_FEATURE;

        char *path = makePath->path(makePath->handle, "deep/value.txt");
        if (!path)
            return LV2_STATE_ERR_UNKNOWN;
        std::ofstream(path) << self.value_.load();
        char *abstract = mapPath->abstract_path(mapPath->handle, path);
        store(state, testplugin::map(features, "urn:test:state:file"), abstract,
              std::strlen(abstract) + 1, testplugin::map(features, LV2_ATOM__Path),
              LV2_STATE_IS_POD);
        freePath->free_path(freePath->handle, abstract);
        freePath->free_path(freePath->handle, path);

        const float number = 42.0F;
        return store(state, testplugin::map(features, "urn:test:state:number"), &number,
                     sizeof number, testplugin::map(features, LV2_ATOM__Float), LV2_STATE_IS_POD);
    }

    static LV2_State_Status restore(LV2_Handle handle, LV2_State_Retrieve_Function retrieve,
                                    LV2_State_Handle state, std::uint32_t,
                                    const LV2_Feature *const *features)
    {
        auto &self = *static_cast<Stateful *>(handle);
        self.restoring_.store(true);
        if (self.running_.load())
            ++self.meetings_;
        // Long enough for a run to meet it, were it let in.
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        std::size_t size = 0;
        std::uint32_t type = 0;
        std::uint32_t flags = 0;
        const void *number = retrieve(state, testplugin::map(features, "urn:test:state:number"),
                                      &size, &type, &flags);
        if (number && size == sizeof(float)) {
            float value = 0.0F;
            std::memcpy(&value, number, sizeof value);
            self.number_ = value;
        }
        if (const void *file = retrieve(state, testplugin::map(features, "urn:test:state:file"),
                                        &size, &type, &flags)) {
            float value = 0.0F;
            std::ifstream(static_cast<const char *>(file)) >> value;
            self.value_ = value;
        }
        self.restoring_.store(false);
        return LV2_STATE_SUCCESS;
    }

    double rate_;
    float *set_ = nullptr;
    float *report_ = nullptr;
    std::atomic<float> value_{0.0F};
    std::atomic<float> number_{0.0F};
    std::atomic<bool> running_{false};
    std::atomic<bool> restoring_{false};
    std::atomic<int> meetings_{0};
};

} // namespace

TEST_PLUGINS(testplugin::describe<Stateful>("urn:test:state"),
             testplugin::describe<Stateful>("urn:test:state:default"),
             testplugin::describe<Stateful>("urn:test:state:thread-safe"))
