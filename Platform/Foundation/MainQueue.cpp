#include "Platform/Foundation/MainQueue.hpp"

#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Foundation/MainSources.hpp"

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include <glib-unix.h>
#include <glib.h>
#include <sys/eventfd.h>

namespace platform::foundation
{

MainQueue::MainQueue()
    : DispatchQueue::Implementation("main"), wakeup_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (wakeup_ < 0)
        fatalError("Could not make the main queue: " +
                   std::system_category().default_error_condition(errno).message());
    const SourcePointer source(g_unix_fd_source_new(wakeup_, G_IO_IN));
    const GUnixFDSourceFunc drainQueue = [](int, GIOCondition, gpointer queue) -> gboolean {
        static_cast<MainQueue *>(queue)->drain();
        return G_SOURCE_CONTINUE;
    };
    g_source_set_static_name(source.get(), "main queue");
    g_source_set_callback(source.get(), G_SOURCE_FUNC(drainQueue), this, nullptr);
    attachToMainContext(source.get());
}

void MainQueue::async(std::function<void()> task)
{
    bool wasEmpty = false;
    {
        const std::lock_guard lock(mutex_);
        wasEmpty = waiting_.empty();
        waiting_.push_back(std::move(task));
    }
    // Later tasks find the loop woken already.
    if (wasEmpty)
        eventfd_write(wakeup_, 1);
}

void MainQueue::drain()
{
    eventfd_t count = 0;
    eventfd_read(wakeup_, &count);
    {
        const std::lock_guard lock(mutex_);
        batch_.swap(waiting_);
    }
    for (auto &task : batch_)
        perform(task);
    batch_.clear();
}

} // namespace platform::foundation
