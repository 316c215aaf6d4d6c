#include "Platform/LV2/Worker.hpp"

namespace platform::lv2
{

namespace
{

constexpr std::size_t ringSize = 65536;

// The callback wakes nobody; a plug-in waits for its answer this much longer.
constexpr std::chrono::milliseconds pollInterval{2};

std::span<const std::byte> bytesOf(const void *data, uint32_t size)
{
    return {static_cast<const std::byte *>(data), data ? size : 0};
}

} // namespace

Worker::Worker(bool offline)
    : offline_(offline), requests_(ringSize),
      responses_(ringSize), fromRun_{this,
                                     [](LV2_Worker_Schedule_Handle handle, uint32_t size,
                                        const void *data) {
                                         return static_cast<Worker *>(handle)->request(
                                             bytesOf(data, size));
                                     }},
      fromRestore_{this, [](LV2_Worker_Schedule_Handle handle, uint32_t size, const void *data) {
                       return static_cast<Worker *>(handle)->doNow(bytesOf(data, size));
                   }}
{
}

Worker::~Worker()
{
    stop();
}

void Worker::attach(LV2_Handle instance, const LV2_Worker_Interface *interface)
{
    instance_ = instance;
    interface_ = interface;
}

void Worker::start()
{
    if (!interface_)
        return;
    thread_ = std::make_unique<PollingThread>("lv2-worker", pollInterval, [this] {
        while (!offline_.load() && doNext()) {
        }
    });
}

void Worker::stop()
{
    thread_.reset();
}

void Worker::setOffline(bool offline)
{
    offline_.store(offline);
    while (offline && interface_ && doNext()) {
    }
}

LV2_Worker_Status Worker::request(std::span<const std::byte> message)
{
    if (!interface_)
        return LV2_WORKER_ERR_UNKNOWN;
    if (offline_.load(std::memory_order_relaxed))
        return doNow(message);
    return requests_.write(message) ? LV2_WORKER_SUCCESS : LV2_WORKER_ERR_NO_SPACE;
}

LV2_Worker_Status Worker::doNow(std::span<const std::byte> message)
{
    if (!interface_)
        return LV2_WORKER_ERR_UNKNOWN;
    if (message.size() > requests_.longestMessage())
        return LV2_WORKER_ERR_NO_SPACE;
    const std::lock_guard lock(working_);
    return interface_->work(instance_, &Worker::respond, this,
                            static_cast<uint32_t>(message.size()), message.data());
}

bool Worker::doNext()
{
    const std::lock_guard lock(working_);
    const auto message = requests_.read();
    if (!message)
        return false;
    begun_.store(Clock::now().time_since_epoch().count());
    interface_->work(instance_, &Worker::respond, this, static_cast<uint32_t>(message->size()),
                     message->data());
    begun_.store(0);
    return true;
}

std::chrono::nanoseconds Worker::workingFor() const
{
    const Clock::rep begun = begun_.load();
    return begun == 0 ? Clock::duration(0)
                      : Clock::now() - Clock::time_point(Clock::duration(begun));
}

LV2_Worker_Status Worker::respond(LV2_Worker_Respond_Handle handle, uint32_t size, const void *data)
{
    auto *worker = static_cast<Worker *>(handle);
    return worker->responses_.write(bytesOf(data, size)) ? LV2_WORKER_SUCCESS
                                                         : LV2_WORKER_ERR_NO_SPACE;
}

void Worker::finishRun() noexcept
{
    if (!interface_)
        return;
    if (interface_->work_response)
        while (const auto message = responses_.read())
            interface_->work_response(instance_, static_cast<uint32_t>(message->size()),
                                      message->data());
    if (interface_->end_run)
        interface_->end_run(instance_);
}

} // namespace platform::lv2
