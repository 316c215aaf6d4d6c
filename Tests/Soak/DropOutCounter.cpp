// Counts, for each node of a running PipeWire graph, the cycles that it took part in and
// those that it was not done with in time: what pw-top shows as ERR, for programs.
//   drop_out_counter
// Ends at SIGTERM; then it prints a line for each node:
// cycles, missed cycles, name.

#include <pipewire/impl.h>

#include <pipewire/extensions/profiler.h>
#include <pipewire/pipewire.h>
#include <spa/param/profiler.h>
#include <spa/pod/iter.h>
#include <spa/pod/parser.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include <unistd.h>

namespace
{

struct Cycles {
    std::uint64_t all = 0;
    std::uint64_t missed = 0;
};

class Counter
{
public:
    int run()
    {
        loop_.reset(pw_main_loop_new(nullptr));
        pw_loop *const loop = pw_main_loop_get_loop(loop_.get());
        // Before the context, whose threads are not to take them.
        const auto quit = [](void *self, int) {
            pw_main_loop_quit(static_cast<Counter *>(self)->loop_.get());
        };
        pw_loop_add_signal(loop, SIGTERM, quit, this);
        pw_loop_add_signal(loop, SIGINT, quit, this);
        context_.reset(pw_context_new(loop, nullptr, 0));
        // It knows how the profiler's news are written.
        pw_context_load_module(context_.get(), PW_EXTENSION_MODULE_PROFILER, nullptr, nullptr);
        core_.reset(pw_context_connect(context_.get(), nullptr, 0));
        if (!core_) {
            std::fputs("drop_out_counter: there is no PipeWire\n", stderr);
            return 1;
        }
        registry_ = pw_core_get_registry(core_.get(), PW_VERSION_REGISTRY, 0);
        pw_registry_add_listener(registry_, &registryHook_, &registryEvents, this);
        pw_main_loop_run(loop_.get());
        for (const auto &[name, cycles] : nodes_)
            std::printf("%llu %llu %s\n", static_cast<unsigned long long>(cycles.all),
                        static_cast<unsigned long long>(cycles.missed), name.c_str());
        spa_hook_remove(&registryHook_);
        if (profiler_) {
            spa_hook_remove(&profilerHook_);
            pw_proxy_destroy(profiler_);
        }
        pw_proxy_destroy(reinterpret_cast<pw_proxy *>(registry_));
        return 0;
    }

private:
    static void onGlobal(void *self, std::uint32_t id, std::uint32_t /*permissions*/,
                         const char *type, std::uint32_t /*version*/, const spa_dict * /*props*/)
    {
        auto &counter = *static_cast<Counter *>(self);
        if (std::string_view(type) != PW_TYPE_INTERFACE_Profiler || counter.profiler_)
            return;
        counter.profiler_ = static_cast<pw_proxy *>(
            pw_registry_bind(counter.registry_, id, type, PW_VERSION_PROFILER, 0));
        if (counter.profiler_)
            pw_proxy_add_object_listener(counter.profiler_, &counter.profilerHook_, &profilerEvents,
                                         self);
    }

    static void onProfile(void *self, const spa_pod *pod)
    {
        auto &counter = *static_cast<Counter *>(self);
        // A run of cycles, each an object with a block for each node.
        const void *const cycles = SPA_POD_BODY_CONST(pod);
        const std::uint32_t size = SPA_POD_BODY_SIZE(pod);
        const auto *cycle = static_cast<const spa_pod *>(cycles);
        for (; spa_pod_is_inside(cycles, size, cycle); cycle = next(cycle))
            if (spa_pod_is_object_type(cycle, SPA_TYPE_OBJECT_Profiler))
                counter.noteCycle(*reinterpret_cast<const spa_pod_object *>(cycle));
    }

    static const spa_pod *next(const spa_pod *pod)
    {
        return static_cast<const spa_pod *>(spa_pod_next(pod));
    }

    void noteCycle(const spa_pod_object &cycle)
    {
        const spa_pod_prop *property = spa_pod_prop_first(&cycle.body);
        for (; spa_pod_prop_is_inside(&cycle.body, cycle.pod.size, property);
             property = spa_pod_prop_next(property))
            if (property->key == SPA_PROFILER_followerBlock)
                note(property->value);
    }

    void note(const spa_pod &block)
    {
        std::int32_t id = 0;
        const char *name = nullptr;
        std::int64_t before = 0;
        std::int64_t signal = 0;
        std::int64_t awake = 0;
        std::int64_t finish = 0;
        std::int32_t status = 0;
        if (spa_pod_parse_struct(&block, SPA_POD_Int(&id), SPA_POD_String(&name),
                                 SPA_POD_Long(&before), SPA_POD_Long(&signal), SPA_POD_Long(&awake),
                                 SPA_POD_Long(&finish), SPA_POD_Int(&status)) < 0)
            return;
        constexpr std::int32_t finished = 3; // of PipeWire's activation states
        Cycles &cycles = nodes_[name ? name : ""];
        ++cycles.all;
        cycles.missed += status == finished ? 0U : 1U;
    }

    static const pw_registry_events registryEvents;
    static const pw_profiler_events profilerEvents;

    std::unique_ptr<pw_main_loop, decltype(&pw_main_loop_destroy)> loop_{nullptr,
                                                                         &pw_main_loop_destroy};
    std::unique_ptr<pw_context, decltype(&pw_context_destroy)> context_{nullptr,
                                                                        &pw_context_destroy};
    std::unique_ptr<pw_core, decltype(&pw_core_disconnect)> core_{nullptr, &pw_core_disconnect};
    pw_registry *registry_ = nullptr;
    pw_proxy *profiler_ = nullptr;
    spa_hook registryHook_{};
    spa_hook profilerHook_{};
    std::map<std::string, Cycles> nodes_;
};

const pw_registry_events Counter::registryEvents = {PW_VERSION_REGISTRY_EVENTS, &Counter::onGlobal,
                                                    nullptr};
const pw_profiler_events Counter::profilerEvents = {PW_VERSION_PROFILER_EVENTS,
                                                    &Counter::onProfile};

} // namespace

int main(int count, char **arguments)
{
    pw_init(&count, &arguments);
    const int status = Counter().run();
    pw_deinit();
    return status;
}
