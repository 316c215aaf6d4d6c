#include "../TestPlugin.hpp"

#include <lv2/state/state.h>
#include <lv2/worker/worker.h>

#include <atomic>
#include <iterator>

namespace
{

/// Asks for work as often in a block as port 0 says, and tells in the samples of
/// port 1 what became of it: requests accepted, requests refused for want of
/// room, answers, ends of runs, times that two pieces of work ran side by side,
/// answers to work that was asked for in `restore`, and answers for which there was
/// no room.
class Worker
{
public:
    Worker(double, const LV2_Feature *const *features)
        : schedule_(testplugin::feature<LV2_Worker_Schedule>(features, LV2_WORKER__schedule))
    {
    }

    void connect(std::uint32_t port, void *data)
    {
        (port == 0 ? requests_ : report_) = static_cast<float *>(data);
    }

    void run(std::uint32_t frames)
    {
        const auto wanted = static_cast<int>(*requests_);
        for (int i = 0; i < wanted; ++i) {
            const char payload[64] = {'r'};
            if (schedule_->schedule_work(schedule_->handle, sizeof payload, payload) ==
                LV2_WORKER_SUCCESS)
                ++accepted_;
            else
                ++refused_;
        }
        const int values[] = {accepted_, refused_,        answers_,    ends_,
                              overlaps_, restoreAnswers_, lostAnswers_};
        for (std::uint32_t i = 0; i < frames && i < std::size(values); ++i)
            report_[i] = static_cast<float>(values[i]);
    }

    static const void *extension(const char *uri)
    {
        static const LV2_Worker_Interface worker{&Worker::work, &Worker::answer, &Worker::endRun};
        static const LV2_State_Interface state{&Worker::save, &Worker::restore};
        if (std::strcmp(uri, LV2_WORKER__interface) == 0)
            return &worker;
        return std::strcmp(uri, LV2_STATE__interface) == 0 ? &state : nullptr;
    }

private:
    static LV2_Worker_Status work(LV2_Handle handle, LV2_Worker_Respond_Function respond,
                                  LV2_Worker_Respond_Handle responder, std::uint32_t size,
                                  const void *data)
    {
        auto &self = *static_cast<Worker *>(handle);
        if (self.working_.exchange(true))
            ++self.overlaps_;
        const LV2_Worker_Status status = respond(responder, size, data);
        if (status != LV2_WORKER_SUCCESS)
            ++self.lostAnswers_;
        self.working_.store(false);
        return status;
    }

    static LV2_Worker_Status answer(LV2_Handle handle, std::uint32_t, const void *data)
    {
        auto &self = *static_cast<Worker *>(handle);
        ++(*static_cast<const char *>(data) == 'r' ? self.answers_ : self.restoreAnswers_);
        return LV2_WORKER_SUCCESS;
    }

    static LV2_Worker_Status endRun(LV2_Handle handle)
    {
        ++static_cast<Worker *>(handle)->ends_;
        return LV2_WORKER_SUCCESS;
    }

    static LV2_State_Status save(LV2_Handle, LV2_State_Store_Function store, LV2_State_Handle state,
                                 std::uint32_t, const LV2_Feature *const *features)
    {
        const std::int32_t one = 1;
        return store(state, testplugin::map(features, "urn:test:worker:one"), &one, sizeof one,
                     testplugin::map(features, "http://lv2plug.in/ns/ext/atom#Int"),
                     LV2_STATE_IS_POD);
    }

    static LV2_State_Status restore(LV2_Handle, LV2_State_Retrieve_Function, LV2_State_Handle,
                                    std::uint32_t, const LV2_Feature *const *features)
    {
        const auto *schedule =
            testplugin::feature<LV2_Worker_Schedule>(features, LV2_WORKER__schedule);
        const char payload = 's';
        return schedule->schedule_work(schedule->handle, 1, &payload) == LV2_WORKER_SUCCESS
                   ? LV2_STATE_SUCCESS
                   : LV2_STATE_ERR_UNKNOWN;
    }

    LV2_Worker_Schedule *schedule_;
    float *requests_ = nullptr;
    float *report_ = nullptr;
    int accepted_ = 0;
    int refused_ = 0;
    int answers_ = 0;
    int restoreAnswers_ = 0;
    int ends_ = 0;
    std::atomic<int> overlaps_{0};
    std::atomic<int> lostAnswers_{0};
    std::atomic<bool> working_{false};
};

} // namespace

TEST_PLUGINS(testplugin::describe<Worker>("urn:test:worker"))
