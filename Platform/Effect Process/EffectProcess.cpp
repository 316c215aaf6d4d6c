#include "Platform/Effect Process/EffectProcess.hpp"

#include "Platform/Effect Process/CheckedMessages.hpp"
#include "Platform/Effect Process/LiveEffects.hpp"
#include "Platform/Effect Process/ScratchFolderName.hpp"
#include "Platform/Foundation/Print.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>
#include <utility>

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>

namespace platform::effect
{

namespace
{

using std::chrono::milliseconds;

// Until somebody allocates render resources it is most likely this.
constexpr double likelySampleRate = 48000.0;
constexpr std::uint32_t likelyFrames = 4096;

// How often the supervisor looks whether the callback waits in vain.
constexpr milliseconds glanceInterval{100};

// Two seconds in which most blocks are late are more than a busy machine.
constexpr int slowGlances = 20;

// Between two glances no more than this is waiting; the rest, this process was stopped.
constexpr milliseconds longestGlance{1000};

// A process that dies closes its socket a moment before it is dead.
constexpr milliseconds timeToDie{200};

// Of the supervisor's own requests; those of others count from 1.
constexpr std::uint64_t ownNumber = 0;

bool isReadable(int descriptor, milliseconds patience)
{
    pollfd wait{descriptor, POLLIN, 0};
    return ::poll(&wait, 1, static_cast<int>(patience.count())) > 0;
}

void expectNothing(std::span<const std::byte> body)
{
    if (!body.empty())
        throw ProtocolBreach("an answer says more than was asked");
}

std::string breachText(const ProtocolBreach &breach)
{
    return fmt::format("broke the agreement ({})", breach.what());
}

/// Text of somebody else's as part of a line, and without control of a terminal.
std::string oneLine(std::string text)
{
    constexpr unsigned char firstPrintable = 0x20;
    constexpr unsigned char deletion = 0x7F;
    std::replace_if(
        text.begin(), text.end(),
        [](unsigned char c) { return c < firstPrintable || c == deletion; }, ' ');
    return text;
}

std::string seconds(milliseconds time)
{
    return fmt::format("{:g} s", std::chrono::duration<double>(time).count());
}

} // namespace

EffectProcess::EffectProcess(std::string executable, Plugin plugin, const Limits &limits)
    : executable_(std::move(executable)), plugin_(std::move(plugin)), limits_(limits),
      scratchFolder_(newScratchFolderName()), midi_(std::make_shared<MidiTraffic>()),
      slot_(limits.audio + 2 * glanceInterval), faults_(limits.faults),
      wakeup_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), time_(longestGlance)
{
    if (!wakeup_)
        throw PlatformError("The system has no file descriptor for another effect.");
    removeAbandonedScratchFolders();
    supervisor_ = std::thread([this] {
        pthread_setname_np(pthread_self(), "effect-process");
        supervise();
    });
    Lock lock(mutex_);
    phaseChanged_.wait(lock, [this] { return phase_ != Phase::starting; });
    const bool isThere = phase_ == Phase::up;
    isEnding_ = !isThere;
    // Whoever ends all effects takes the two locks the other way round.
    lock.unlock();
    if (isThere) {
        LiveEffects::shared().add(*this);
        view_->setRestart([this] { restart(); });
        return;
    }
    wakeSupervisor();
    supervisor_.join();
    throw PlatformError(downReason_);
}

EffectProcess::~EffectProcess()
{
    LiveEffects::shared().remove(*this);
    view_->setRestart(nullptr);
    const bool isPrepared = isPreparedWithin(milliseconds(0));
    {
        const Lock lock(mutex_);
        isEnding_ = true;
        phaseChanged_.notify_all();
        slot_.clear();
        // It would not hear that it is to end.
        if (phase_ == Phase::starting && child_)
            child_->kill();
        else if (!isPrepared)
            fault(lock, "was still getting ready at its end; it was ended by force");
    }
    requests_.loseAll();
    if (preparation_.valid())
        preparation_.wait();
    wakeSupervisor();
    supervisor_.join();
    view_->end();
    std::error_code ignored;
    std::filesystem::remove_all(scratchFolder_, ignored);
}

void EffectProcess::endByForce()
{
    const Lock lock(mutex_);
    isEnding_ = true;
    // Whoever supervises it has nothing to tell of this.
    stayDown(lock, "The program ends.");
    if (child_) {
        child_->kill();
        // Until then it could still write files.
        isReadable(child_->descriptor(), timeToDie);
    }
    std::error_code ignored;
    std::filesystem::remove_all(scratchFolder_, ignored);
}

// --- Control operations ---------------------------------------------------------

bool EffectProcess::sendMIDI(std::uint32_t frame, std::span<const std::uint8_t> message)
{
    if (!description_.takesMIDI || !midi_->input.push(frame, message))
        return false;
    midi_->controllers.note(message);
    return true;
}

std::vector<std::string> EffectProcess::presets()
{
    std::vector<std::string> names;
    ask(MessageKind::listPresets, {}, [&](auto body) { names = checkedNames(body); });
    return names;
}

bool EffectProcess::loadPreset(std::uint64_t number)
{
    bool isLoaded = false;
    ask(MessageKind::loadPreset, MessageWriter::message(number),
        [&](auto body) { isLoaded = MessageReader::read<bool>(body); });
    return isLoaded;
}

std::optional<std::string> EffectProcess::contextName() const
{
    const Lock lock(mutex_);
    return contextName_;
}

void EffectProcess::setContextName(const std::optional<std::string> &name)
{
    {
        const Lock lock(mutex_);
        contextName_ = name;
    }
    ask(MessageKind::setContextName, MessageWriter::message(name), expectNothing);
}

void EffectProcess::setOffline(bool offline)
{
    {
        const Lock lock(mutex_);
        if (isOffline_ == offline)
            return;
        isOffline_ = offline;
        slot_.setOffline(offline);
    }
    ask(MessageKind::setOffline, MessageWriter::message(offline), expectNothing);
}

void EffectProcess::prepare(double sampleRate, std::uint32_t maximumFrames)
{
    const std::lock_guard oneAtATime(preparing_);
    const auto wanted = std::make_shared<Preparing>();
    wanted->rendering = {sampleRate, maximumFrames};
    wanted->link = std::make_unique<HostEnd>(shape(maximumFrames), *midi_);
    if (!beginPreparing(*wanted))
        return; // the next start brings it about
    // What has had its time already is not waited for once more.
    const bool isBehindAnother = !isPreparedWithin(milliseconds(0));
    preparation_ = std::async(std::launch::async, [this, wanted, before = std::move(preparation_)] {
        pthread_setname_np(pthread_self(), "effect-prepare");
        if (before.valid())
            before.wait();
        finishPreparing(*wanted);
    });
    if (wanted->isOffline)
        preparation_.wait();
    else if (!isPreparedWithin(isBehindAnother ? milliseconds(0) : limits_.preparation) &&
             wanted->isWaitedFor.exchange(false))
        return;
    preparation_.get();
}

bool EffectProcess::beginPreparing(Preparing &preparing)
{
    const Lock lock(mutex_);
    slot_.clear();
    rendering_ = preparing.rendering;
    preparing.number = ++preparations_;
    preparing.isOffline = isOffline_;
    return phase_ == Phase::up;
}

bool EffectProcess::isPreparedWithin(milliseconds patience) const
{
    if (!preparation_.valid())
        return true;
    LivedTime time(glanceInterval);
    Clock::duration left = patience;
    do {
        const auto look = std::min<Clock::duration>(left, glanceInterval);
        if (preparation_.wait_for(look) == std::future_status::ready)
            return true;
        left -= time.look();
    } while (left > Clock::duration(0));
    return false;
}

void EffectProcess::finishPreparing(Preparing &preparing)
{
    try {
        askToPrepare(preparing);
    } catch (const EffectFault &) {
        // The next start brings it about.
    } catch (const PlatformError &error) {
        if (!giveUpPreparing(preparing))
            return;
        if (preparing.isWaitedFor.exchange(false))
            throw;
        printError(fmt::format("The effect '{}' cannot render: {}", name(), error.what()));
    }
}

void EffectProcess::askToPrepare(Preparing &preparing)
{
    const auto [sampleRate, maximumFrames] = preparing.rendering;
    const LinkMemory &memory = preparing.link->memory();
    Preparation preparation{sampleRate, maximumFrames, false, memory.shape()};
    {
        const Lock lock(mutex_);
        if (preparing.number != preparations_)
            return;
        preparation.isOffline = isOffline_;
    }
    const auto answered = ask(MessageKind::prepare, MessageWriter::message(preparation),
                              expectNothing, memory.descriptor());
    const Lock lock(mutex_);
    // One that has failed since comes up again with a link of its own.
    if (preparing.number == preparations_ && phase_ == Phase::up && socket_ == answered)
        slot_.put(std::move(preparing.link), sampleRate);
}

/// Answers whether anybody still wanted it.
bool EffectProcess::giveUpPreparing(const Preparing &preparing)
{
    const Lock lock(mutex_);
    if (preparing.number != preparations_)
        return false;
    rendering_.reset();
    slot_.clear();
    return true;
}

void EffectProcess::unprepare()
{
    const Lock lock(mutex_);
    rendering_.reset();
    ++preparations_;
    slot_.clear();
}

double EffectProcess::latency() const
{
    const Lock lock(mutex_);
    return slot_.latency();
}

std::uint64_t EffectProcess::lateBlocks() const
{
    const Lock lock(mutex_);
    return slot_.lateBlocks();
}

void EffectProcess::hurry()
{
    requests_.hurry(limits_.ending);
    const Lock lock(mutex_);
    ++hurries_;
    phaseChanged_.notify_all();
}

bool EffectProcess::isUp() const
{
    const Lock lock(mutex_);
    return phase_ == Phase::up;
}

void EffectProcess::restart()
{
    {
        const Lock lock(mutex_);
        if (phase_ != Phase::down)
            return;
        faults_.clear();
        phase_ = Phase::starting;
        restartIsWanted_ = true;
    }
    wakeSupervisor();
}

pid_t EffectProcess::processIdentifier() const
{
    const Lock lock(mutex_);
    return child_ ? child_->identifier() : -1;
}

std::shared_ptr<MessageSocket> EffectProcess::ask(MessageKind kind, std::span<const std::byte> body,
                                                  const Take &take, int descriptor)
{
    const std::lock_guard oneAtATime(controlling_);
    const auto ticket = beginWhenUp();
    if (!ticket)
        throw EffectFault(fmt::format("The effect '{}' is not running.", name()));
    const Message answer = call(*ticket, kind, body, descriptor);
    std::string refusal;
    try {
        if (answer.kind == MessageKind::answer)
            take(answer.body);
        else
            refusal = checkedText(answer.body);
    } catch (const ProtocolBreach &breach) {
        blame(ticket->socket, breachText(breach));
        throw EffectFault(fmt::format("The effect '{}' gave no proper answer.", name()));
    }
    if (answer.kind == MessageKind::refusal)
        throw PlatformError(refusal);
    return ticket->socket;
}

std::optional<EffectProcess::Ticket> EffectProcess::beginWhenUp()
{
    Lock lock(mutex_);
    phaseChanged_.wait_for(lock, limits_.request, [this, before = hurries_] {
        return phase_ != Phase::starting || isEnding_ || hurries_ != before;
    });
    if (phase_ != Phase::up || isEnding_)
        return std::nullopt;
    return Ticket{socket_, requests_.begin()};
}

Message EffectProcess::call(const Ticket &ticket, MessageKind kind, std::span<const std::byte> body,
                            int descriptor)
{
    // Preparing may instantiate the plug-in anew, and restores its settings then.
    const auto limit = kind == MessageKind::prepare ? limits_.instantiation : limits_.request;
    const auto deadline = Clock::now() + limit;
    // When it is not taken there will be no answer either.
    ticket.socket->send(kind, ticket.number, body, descriptor, deadline);
    Message answer;
    const Requests::Outcome outcome =
        requests_.wait(ticket.number, deadline - Clock::now(), answer);
    if (outcome == Requests::Outcome::late)
        blame(ticket.socket, "gave no answer for " + seconds(limit));
    else if (outcome == Requests::Outcome::hurried)
        blame(ticket.socket, "gave no answer before its end");
    if (outcome != Requests::Outcome::answered)
        throw EffectFault(fmt::format("The effect '{}' failed instead of answering.", name()));
    return answer;
}

void EffectProcess::blame(const std::shared_ptr<MessageSocket> &socket, const std::string &what)
{
    const Lock lock(mutex_);
    // Not for what its predecessor did.
    if (socket == socket_)
        fault(lock, what);
}

LinkShape EffectProcess::shape(std::uint32_t maximumFrames) const
{
    return {description_.inputs, description_.outputs, maximumFrames,
            static_cast<std::uint32_t>(description_.midiOutputNames.size())};
}

// --- Supervision ----------------------------------------------------------------

void EffectProcess::supervise()
{
    startChild();
    while (waitForNews()) {
        takeMessages();
        if (child_ && isReadable(child_->descriptor(), milliseconds(0)))
            childHasDied();
        checkPatience();
        if (const std::string line = takeSlowness(); !line.empty())
            printError(line);
        if (takesRestart())
            startChild();
    }
    endChild();
}

bool EffectProcess::takesRestart()
{
    const Lock lock(mutex_);
    return std::exchange(restartIsWanted_, false);
}

bool EffectProcess::waitForNews() const
{
    {
        const Lock lock(mutex_);
        if (isEnding_)
            return false;
    }
    std::array<pollfd, 3> news{{{wakeup_.get(), POLLIN, 0},
                                {child_ ? child_->descriptor() : -1, POLLIN, 0},
                                {socketIsOpen_ ? socket_->descriptor() : -1, POLLIN, 0}}};
    ::poll(news.data(), news.size(), child_ ? static_cast<int>(glanceInterval.count()) : -1);
    eventfd_t ignored = 0;
    ::eventfd_read(wakeup_.get(), &ignored);
    const Lock lock(mutex_);
    return !isEnding_;
}

void EffectProcess::startChild()
{
    try {
        auto [ours, theirs] = MessageSocket::connection();
        auto socket = std::make_shared<MessageSocket>(std::move(ours));
        auto child = std::make_unique<ChildProcess>(executable_, std::move(theirs));
        {
            const Lock lock(mutex_);
            child_ = std::move(child);
            socket_ = std::move(socket);
            faultReason_.clear();
            if (isEnding_)
                child_->kill();
        }
        socketIsOpen_ = true;
        audioOwed_ = {};
        startPatience_ = limits_.instantiation;
        sendOwn(MessageKind::instantiate, MessageWriter::message(instantiation()));
    } catch (const PlatformError &error) {
        // The system is out of something; the effect is not to blame.
        startHasFailed(error.what());
        view_->effectHasGone(false);
    }
}

Instantiation EffectProcess::instantiation()
{
    const Lock lock(mutex_);
    Instantiation result;
    result.uri = plugin_.uri;
    result.bundles = plugin_.bundles;
    result.scratchFolder = scratchFolder_;
    result.workLimit = static_cast<std::uint64_t>(limits_.work.count());
    result.contextName = contextName_;
    result.state = settings_;
    // Notes that nobody heard are not made up for; what they were to change is.
    midi_->input.clear();
    result.midi = midi_->controllers.messages();
    result.preparation = startingPreparation(lock);
    result.hasLink = startingLink_ != nullptr;
    isRestoring_ = settings_.has_value();
    return result;
}

Preparation EffectProcess::startingPreparation(const Lock & /*held*/)
{
    startingLink_.reset();
    startingRendering_ = rendering_;
    if (!rendering_)
        return {likelySampleRate, likelyFrames, isOffline_, {}};
    startingLink_ = std::make_unique<HostEnd>(shape(rendering_->maximumFrames), *midi_);
    return {rendering_->sampleRate, rendering_->maximumFrames, isOffline_,
            startingLink_->memory().shape()};
}

void EffectProcess::sendOwn(MessageKind kind, std::span<const std::byte> body)
{
    awaitsOwnAnswer_ = true;
    // When it is not taken the process has died or hangs.
    if (!socket_->send(kind, ownNumber, body,
                       startingLink_ ? startingLink_->memory().descriptor() : -1,
                       Clock::now() + startPatience_))
        startPatience_ = {};
}

void EffectProcess::takeMessages()
{
    if (!socketIsOpen_)
        return;
    try {
        socketIsOpen_ = socket_->receive();
        for (auto &messages = socket_->received(); !messages.empty(); messages.pop_front())
            takeMessage(std::move(messages.front()));
        if (!socketIsOpen_ && !isReadable(child_->descriptor(), timeToDie))
            throw ProtocolBreach("it hung up");
    } catch (const ProtocolBreach &breach) {
        socketIsOpen_ = false;
        const Lock lock(mutex_);
        fault(lock, breachText(breach));
    }
}

void EffectProcess::takeMessage(Message message)
{
    if (message.descriptor)
        throw ProtocolBreach("it sends file descriptors that nobody asked for");
    switch (message.kind) {
    case MessageKind::answer:
    case MessageKind::refusal:
        if (message.number == ownNumber && std::exchange(awaitsOwnAnswer_, false))
            takeStartAnswer(message);
        else if (!requests_.fulfil(std::move(message)))
            throw ProtocolBreach("it answers what nobody asked");
        break;
    case MessageKind::settings: {
        auto settings = MessageReader::read<lv2::State>(message.body);
        const Lock lock(mutex_);
        settings_ = std::move(settings);
        break;
    }
    case MessageKind::workHangs: {
        expectNothing(message.body);
        const Lock lock(mutex_);
        fault(lock, "gave no end to its work for " + seconds(limits_.work));
        break;
    }
    case MessageKind::viewResized:
    case MessageKind::viewClosed:
    case MessageKind::viewWaits:
    case MessageKind::viewLives:
        view_->take(message);
        break;
    default:
        throw ProtocolBreach("it sends what only the host may send");
    }
}

void EffectProcess::takeStartAnswer(const Message &message)
{
    if (message.kind == MessageKind::answer) {
        // What follows an instantiation is told apart by its emptiness.
        if (!message.body.empty())
            takeDescription(checkedDescription(message.body));
        becomeUp();
        return;
    }
    startHasFailed(oneLine(checkedText(message.body)));
}

void EffectProcess::startHasFailed(const std::string &reason)
{
    {
        const Lock lock(mutex_);
        if (child_)
            child_->kill();
        stayDown(lock, reason);
    }
    // Whoever reads it may start the effect again.
    if (hasBeenUp_)
        printError(fmt::format("The effect '{}' cannot be started again: {}", name(), reason));
}

void EffectProcess::takeDescription(Description description)
{
    const Lock lock(mutex_);
    if (!hasBeenUp_)
        description_ = std::move(description);
    else if (!hasSameShape(description, description_))
        throw ProtocolBreach("it has become another effect");
    hasBeenUp_ = true;
    isRestoring_ = false;
}

void EffectProcess::becomeUp()
{
    Lock lock(mutex_);
    if (!hasBeenUp_)
        throw ProtocolBreach("it does not say what it is");
    if (rendering_ && rendering_ != startingRendering_) {
        // Asked for while it was starting.
        const Preparation preparation = startingPreparation(lock);
        lock.unlock();
        sendOwn(MessageKind::prepare, MessageWriter::message(preparation));
        return;
    }
    if (startingLink_ && rendering_)
        slot_.put(std::move(startingLink_), rendering_->sampleRate);
    startingLink_.reset();
    phase_ = Phase::up;
    phaseChanged_.notify_all();
    const auto socket = socket_;
    lock.unlock();
    view_->effectIsUp(socket);
}

void EffectProcess::checkPatience()
{
    const auto waited = time_.look();
    const Lock lock(mutex_);
    if (const char *breach = slot_.breach())
        fault(lock, breachText(ProtocolBreach(breach)));
    startPatience_ -= waited;
    if (phase_ == Phase::starting && child_ && startPatience_ < Clock::duration(0))
        fault(lock, "was not there after " + seconds(limits_.instantiation));
    audioOwed_ = std::min<Clock::duration>(audioOwed_ + waited, slot_.overdue());
    if (audioOwed_ > limits_.audio)
        fault(lock, "gave no audio for " + seconds(limits_.audio));
    if (view_->isOverdue(waited, limits_.request, limits_.instantiation))
        fault(lock, "gave no sign of life from its view");
}

// Of an effect that does answer, but too late; one that does not is hung.
std::string EffectProcess::takeSlowness()
{
    const Lock lock(mutex_);
    const std::uint64_t late = slot_.lateBlocks();
    const std::uint64_t blocks = slot_.blocks();
    const std::uint64_t newLate = late - std::exchange(lateBlocksSeen_, late);
    const std::uint64_t newBlocks = blocks - std::exchange(blocksSeen_, blocks);
    const bool isSlow = 2 * newLate > newBlocks;
    slowGlances_ = isSlow ? slowGlances_ + 1 : 0;
    if (slowGlances_ < slowGlances || slot_.overdue() > glanceInterval ||
        std::exchange(slownessIsTold_, true))
        return {};
    return fmt::format("Blocks of the effect '{}' come too late, {} so far, and are silent.",
                       name(), late);
}

void EffectProcess::fault(const Lock & /*held*/, const std::string &what)
{
    if (!child_ || !faultReason_.empty())
        return;
    faultReason_ = what;
    child_->kill();
}

void EffectProcess::childHasDied()
{
    Lock lock(mutex_);
    const std::string line = takeDeath(lock);
    const bool isStartedAgain = restartIsWanted_;
    const bool isEnding = isEnding_;
    lock.unlock();
    requests_.loseAll();
    if (!isEnding)
        view_->effectHasGone(isStartedAgain);
    // Without the mutex: whoever reads standard error may be slow.
    if (!line.empty())
        printError(line);
}

std::string EffectProcess::takeDeath(const Lock &lock)
{
    const std::string how = child_->reap();
    child_.reset();
    socket_.reset();
    socketIsOpen_ = false;
    slot_.clear();
    if (phase_ == Phase::down || isEnding_)
        return {};
    const std::string what =
        faultReason_.empty() ? fmt::format("ended unexpectedly ({})", how) : faultReason_;
    const std::string sequel = afterFault();
    std::string line = fmt::format("The effect '{}' {}; {}.", name(), what, sequel);
    if (restartIsWanted_)
        phase_ = Phase::starting;
    else
        stayDown(lock, line);
    return line;
}

std::string EffectProcess::afterFault()
{
    if (!hasBeenUp_)
        return "it was never ready";
    const bool isOneTooMany = faults_.note(Clock::now());
    // Settings that it did not survive are not tried again.
    const bool forgets = std::exchange(isRestoring_, false) && phase_ == Phase::starting;
    if (forgets)
        settings_.reset();
    if (isOneTooMany)
        return fmt::format("it stays silent after {} faults within {}", limits_.faults.faults,
                           seconds(limits_.faults.within));
    restartIsWanted_ = true;
    return forgets ? "it is started again without its last settings" : "it is started again";
}

void EffectProcess::stayDown(const Lock & /*held*/, const std::string &reason)
{
    phase_ = Phase::down;
    downReason_ = reason;
    phaseChanged_.notify_all();
}

void EffectProcess::endChild()
{
    if (!child_)
        return;
    const auto deadline = Clock::now() + limits_.ending;
    if (!isUp() || !socketIsOpen_) {
        child_->kill();
        child_->reap();
        return;
    }
    socket_->send(MessageKind::end, ownNumber, {}, -1, deadline);
    const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
    if (!isReadable(child_->descriptor(), std::max(left, milliseconds(0)))) {
        child_->kill();
        child_->reap();
        printError(fmt::format("The effect '{}' did not end within {}; it was ended by force.",
                               name(), seconds(limits_.ending)));
    } else if (!faultReason_.empty()) {
        child_->reap();
        printError(fmt::format("The effect '{}' {}.", name(), faultReason_));
    } else if (const std::string how = child_->reap(); how != "exit code 0") {
        printError(fmt::format("The effect '{}' failed at its end ({}).", name(), how));
    }
}

void EffectProcess::wakeSupervisor() const
{
    ::eventfd_write(wakeup_.get(), 1);
}

std::string EffectProcess::name() const
{
    return oneLine(description_.name.empty() ? plugin_.uri : description_.name);
}

} // namespace platform::effect
