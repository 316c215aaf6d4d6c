#pragma once

#include "Platform/Effect Process/ChildProcess.hpp"
#include "Platform/Effect Process/EffectView.hpp"
#include "Platform/Effect Process/FaultRecord.hpp"
#include "Platform/Effect Process/LinkSlot.hpp"
#include "Platform/Effect Process/LivedTime.hpp"
#include "Platform/Effect Process/Messages.hpp"
#include "Platform/Effect Process/Requests.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/Realtime.hpp"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace platform::effect
{

/// An effect that failed instead of answering, or is down.
class EffectFault : public PlatformError
{
public:
    using PlatformError::PlatformError;
};

/// A plug-in in a process of its own, seen from the host.
///
/// Whatever the plug-in does there, this object lives: a process that dies, hangs or
/// breaks the protocol is ended and reaped, standard error says so in one line, and
/// it is started again with the settings that were last known. Until it is up again,
/// and after too many faults until it is asked to, it renders nothing.
///
/// Control operations may be called on any thread but the audio callback's. Where a
/// fault of the effect keeps one from its answer it throws an `EffectFault`.
class EffectProcess
{
public:
    /// How long the effect may owe an answer before it counts as hung. Time in which
    /// this process does not run itself is not counted.
    struct Limits {
        std::chrono::milliseconds audio{2000};    ///< for a block
        std::chrono::milliseconds request{10000}; ///< for any other request
        /// For instantiating it and restoring its settings.
        std::chrono::milliseconds instantiation{30000};
        std::chrono::milliseconds work{30000}; ///< for a piece of a worker's work
        /// For getting ready, before rendering that is bound to time begins without it.
        std::chrono::milliseconds preparation{500};
        std::chrono::milliseconds ending{500}; ///< for its end, before it is killed
        FaultRecord::Limit faults;             ///< how often it may fail
    };

    /// What the process is to hold.
    struct Plugin {
        std::string uri;                  ///< of the plug-in
        std::vector<std::string> bundles; ///< paths: its own, and those of its presets
    };

    /// Starts the program `executable` and has it instantiate the plug-in. A
    /// `PlatformError` says why that cannot be.
    EffectProcess(std::string executable, Plugin plugin, const Limits &limits);
    /// Has the effect end, by force when that takes too long.
    ~EffectProcess();
    EffectProcess(const EffectProcess &) = delete;
    EffectProcess &operator=(const EffectProcess &) = delete;

    /// What the effect said of itself when it was first instantiated.
    const Description &description() const { return description_; }

    /// Sends MIDI for the next block. Answers false when it is no whole message or
    /// too much waits. Controllers reach an effect that is started again, too.
    bool sendMIDI(std::uint32_t frame, std::span<const std::uint8_t> message);
    /// What the effect emits. It may outlive this object.
    std::shared_ptr<lv2::MidiOutput> midiOutput() const { return {midi_, &midi_->output}; }

    /// The names of the presets, in their order.
    std::vector<std::string> presets();
    /// Brings the effect into the state of a preset, counted from 0. Answers false
    /// when there is none of that number.
    bool loadPreset(std::uint64_t number);

    /// What was last set; none at first.
    std::optional<std::string> contextName() const;
    /// An effect that is started again later has it, too.
    void setContextName(const std::optional<std::string> &name);
    /// Whether rendering is not bound to time: `render` then waits for the effect.
    void setOffline(bool offline);

    /// Makes ready to render blocks of up to `maximumFrames` frames at `sampleRate`
    /// Hz, also after another start. A `PlatformError` when the plug-in cannot run
    /// so; an effect that is down or fails here is silent, and no error. So is one that
    /// takes longer than `Limits::preparation`, until it is ready: it is waited for
    /// offline alone, and a refusal that comes later is told on standard error. Never
    /// while `render` may run.
    void prepare(double sampleRate, std::uint32_t maximumFrames);
    /// Renders nothing from now on.
    void unprepare();

    /// Frames; 0 when nothing is rendered.
    double latency() const;
    /// Blocks that the effect did not render in time. Where that lasts, standard error
    /// says so once.
    std::uint64_t lateBlocks() const;

    /// Renders a block on the audio callback. Live, it waits for three quarters of
    /// the block's time at most. Answers false, with the output undefined, when
    /// there is no block to be had.
    REALTIME bool render(const Block &block) noexcept { return slot_.render(block); }

    /// Whoever waits for an answer waits half a second more at most; an effect that
    /// does not give it counts as hung. For an end that is not to wait for it.
    void hurry();

    /// The effect's own view; `description` says whether it has one. May outlive this
    /// object.
    const std::shared_ptr<EffectView> &view() const { return view_; }

    /// Whether the effect is there and answers.
    bool isUp() const;
    /// Starts an effect again that is left down.
    void restart();
    /// The process that holds the effect; -1 when there is none.
    pid_t processIdentifier() const;

    /// Ends the effect at once, for a program that ends without destroying anything.
    void endByForce();

private:
    using Clock = LivedTime::Clock;
    using Lock = std::unique_lock<std::mutex>;
    enum class Phase { starting, up, down };

    struct Rendering {
        double sampleRate = 0.0;
        std::uint32_t maximumFrames = 0;
        bool operator==(const Rendering &) const = default;
    };

    /// A preparation that was asked for; its link is used once the effect has answered.
    struct Preparing {
        std::uint64_t number = 0; // of those that were asked for
        Rendering rendering;
        bool isOffline = false;
        std::unique_ptr<HostEnd> link;
        std::atomic<bool> isWaitedFor{true};
    };

    // Control threads.
    using Take = std::function<void(std::span<const std::byte>)>;
    /// Answers with the connection over which the answer came.
    std::shared_ptr<MessageSocket> ask(MessageKind kind, std::span<const std::byte> body,
                                       const Take &take, int descriptor = -1);
    bool beginPreparing(Preparing &preparing);
    bool isPreparedWithin(std::chrono::milliseconds patience) const;
    void finishPreparing(Preparing &preparing);
    void askToPrepare(Preparing &preparing);
    bool giveUpPreparing(const Preparing &preparing);
    struct Ticket {
        std::shared_ptr<MessageSocket> socket;
        std::uint64_t number;
    };
    std::optional<Ticket> beginWhenUp();
    Message call(const Ticket &ticket, MessageKind kind, std::span<const std::byte> body,
                 int descriptor);
    void blame(const std::shared_ptr<MessageSocket> &socket, const std::string &what);

    // The supervising thread.
    void supervise();
    bool waitForNews() const;
    bool takesRestart();
    void startChild();
    Instantiation instantiation();
    Preparation startingPreparation(const Lock &lock);
    void sendOwn(MessageKind kind, std::span<const std::byte> body);
    void takeMessages();
    void takeMessage(Message message);
    void takeStartAnswer(const Message &message);
    void takeDescription(Description description);
    void becomeUp();
    void checkPatience();
    std::string takeSlowness();
    void childHasDied();
    std::string takeDeath(const Lock &lock);
    std::string afterFault();
    void endChild();

    // Either; `mutex_` is held where a lock is asked for.
    LinkShape shape(std::uint32_t maximumFrames) const;
    std::string name() const;
    void fault(const Lock &lock, const std::string &what);
    void stayDown(const Lock &lock, const std::string &reason);
    void startHasFailed(const std::string &reason);
    void wakeSupervisor() const;

    const std::string executable_;
    const Plugin plugin_;
    const Limits limits_;
    const std::string scratchFolder_;
    const std::shared_ptr<MidiTraffic> midi_;
    const std::shared_ptr<EffectView> view_ = std::make_shared<EffectView>();
    Description description_; // set by the first start

    LinkSlot slot_;
    Requests requests_;

    std::mutex controlling_; // one control operation after the other
    std::mutex preparing_;   // one preparation after the other is asked for
    // The last one, while it goes on although nobody waits.
    std::future<void> preparation_;
    mutable std::mutex mutex_;
    std::condition_variable phaseChanged_;
    Phase phase_ = Phase::starting;
    bool isEnding_ = false;
    bool restartIsWanted_ = false;
    std::uint64_t hurries_ = 0; // counts the calls
    std::string downReason_;
    FaultRecord faults_;
    // Says what the fault was where the process did not end of itself.
    std::string faultReason_;

    // What the next start is to have.
    std::optional<std::string> contextName_;
    bool isOffline_ = false;
    std::optional<Rendering> rendering_;
    std::uint64_t preparations_ = 0; // how often that was changed
    std::optional<lv2::State> settings_;

    std::unique_ptr<ChildProcess> child_;
    std::shared_ptr<MessageSocket> socket_;

    // The supervising thread's own.
    FileDescriptor wakeup_;
    bool hasBeenUp_ = false;
    bool socketIsOpen_ = false;
    bool isRestoring_ = false;
    LivedTime time_;
    Clock::duration audioOwed_{0};
    std::uint64_t blocksSeen_ = 0;
    std::uint64_t lateBlocksSeen_ = 0;
    int slowGlances_ = 0;
    bool slownessIsTold_ = false;
    bool awaitsOwnAnswer_ = false;
    Clock::duration startPatience_{0};
    // The link that comes with a start, and what it is for.
    std::unique_ptr<HostEnd> startingLink_;
    std::optional<Rendering> startingRendering_;

    std::thread supervisor_;
};

} // namespace platform::effect
