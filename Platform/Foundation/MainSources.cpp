#include "Platform/Foundation/MainSources.hpp"

#include "Platform/Foundation/Immortal.hpp"

#include <mutex>
#include <vector>

namespace platform::foundation
{

namespace
{

struct MainSources {
    std::mutex mutex;
    int priority = G_PRIORITY_DEFAULT;
    std::vector<GSource *> attached;
};

MainSources &mainSources()
{
    static Immortal<MainSources> sources([] { return MainSources(); });
    return sources.value;
}

} // namespace

void attachToMainContext(GSource *source)
{
    MainSources &sources = mainSources();
    const std::lock_guard lock(sources.mutex);
    g_source_set_priority(source, sources.priority);
    g_source_attach(source, nullptr);
    sources.attached.push_back(source);
}

void setMainSourcePriority(int priority)
{
    MainSources &sources = mainSources();
    const std::lock_guard lock(sources.mutex);
    sources.priority = priority;
    for (GSource *source : sources.attached)
        g_source_set_priority(source, priority);
}

int mainSourcePriority()
{
    MainSources &sources = mainSources();
    const std::lock_guard lock(sources.mutex);
    return sources.priority;
}

} // namespace platform::foundation
