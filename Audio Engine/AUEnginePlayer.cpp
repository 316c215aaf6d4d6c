#include "Audio Engine/AUEnginePlayer.hpp"

#include "Platform/Audio/AVAudioSession.hpp"
#include "Platform/Foundation/Bundle.hpp"
#include "Platform/Foundation/CheckedArithmetic.hpp"
#include "Platform/Foundation/Description.hpp"
#include "Platform/Foundation/FatalError.hpp"
#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Foundation/Print.hpp"
#include "Platform/Foundation/Unwrap.hpp"

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <utility>

namespace
{

using platform::foundation::describe;

constexpr int demonstrationFiles = 80;

int randomFileNumber()
{
    thread_local std::mt19937 generator{std::random_device{}()};
    return std::uniform_int_distribution<int>(1, demonstrationFiles)(generator);
}

constexpr std::int64_t shownBytes = 3;

void printMIDIEvent(std::int64_t sampleTime, std::int64_t length,
                    const std::array<std::uint8_t, shownBytes> &bytes)
{
    if (length != shownBytes)
        print("AUEnginePlayer::WARNING: The MIDI data length is not as expected.");
    print("AUEnginePlayer: MIDI event from audio unit at: " + std::to_string(sampleTime) +
          ", data: " + std::to_string(bytes[0]) + ", " + std::to_string(bytes[1]) + ", " +
          std::to_string(bytes[2]));
}

/// Takes the bytes along, since they are the unit's again on return.
std::int32_t reportMIDIEvent(std::int64_t eventSampleTime, std::uint8_t /*cable*/,
                             std::int64_t length, const std::uint8_t *bytes)
{
    std::array<std::uint8_t, shownBytes> shown{};
    std::copy_n(bytes, std::clamp<std::int64_t>(length, 0, shownBytes), shown.begin());
    DispatchQueue::main().async(
        [eventSampleTime, length, shown] { printMIDIEvent(eventSampleTime, length, shown); });
    return 0;
}

} // namespace

AUEnginePlayer::AUEnginePlayer() : AUEnginePlayer(std::make_shared<AVAudioEngine>()) {}

AUEnginePlayer::AUEnginePlayer(std::shared_ptr<AVAudioEngine> givenEngine)
    : midiOutBlock(reportMIDIEvent), engine(std::move(givenEngine))
{
    engine->attach(player);
}

AUEnginePlayer::~AUEnginePlayer()
{
    // From here on no completion comes that would need the queue.
    player->stop();
}

void AUEnginePlayer::finalize()
{
    stop();
    disconnect();
}

void AUEnginePlayer::disconnect()
{
    connect(nullptr, [] { print("AUEnginePlayer: Performed audio unit disconnection."); });
}

void AUEnginePlayer::randomizeFile()
{
    fileURL.store(Bundle::main()->urlForResource(std::to_string(randomFileNumber()), "m4a"));
    if (const auto url = fileURL.load()) {
        load(url);
        print(url->path());
        engine->prepare();
    } else {
        print("AUEnginePlayer::ERROR: The audio file '" + unwrap(fileURL.load()).path() +
              "' was not found inside the resource folder for the app.");
    }
}

void AUEnginePlayer::load(const std::optional<URL> &url)
{
    const std::string path = unwrap(url).path();
    print("AUEnginePlayer: Audio file at '" + path + "' was selected for loading into the player.");
    fileURL.store(url);
    try {
        file.store(std::make_shared<AVAudioFile>(*url));
    } catch (const PlatformError &error) {
        print("AUEnginePlayer::ERROR: Could not create AVAudioFile instance for URL '" +
              describe(url) + "'. error: " + error.what() + ".");
        return;
    }
    const auto opened = file.load();
    if (const auto receiver = delegate.load())
        receiver->onFileSelect(path);
    const std::lock_guard lock(wiring);
    if (const auto effect = activeAVAudioUnit.load())
        rewirePlayerToEffect(*opened, effect);
    else
        rewirePlayerToMixer(*opened);
}

void AUEnginePlayer::rewirePlayerToMixer(const AVAudioFile &opened)
{
    if (isPlaying)
        player->stop();
    engine->disconnectNodeInput(engine->mainMixerNode());
    engine->connect(player, engine->mainMixerNode(), opened.processingFormat());
    print("AUEnginePlayer: The player was connected to the mainMixerNode.");
    if (isPlaying)
        player->play();
}

void AUEnginePlayer::rewirePlayerToEffect(const AVAudioFile &opened,
                                          const std::shared_ptr<AVAudioUnit> &effect)
{
    if (isPlaying)
        player->stop();
    engine->disconnectNodeInput(engine->mainMixerNode());
    print("AUEnginePlayer: Player was (temporarily) disconnecting from the main mixer.");
    engine->disconnectNodeInput(effect);
    print("AUEnginePlayer: Audio unit was (temporarily) disconnecting from the player.");
    engine->connect(player, effect, nullptr);
    print(std::to_string(opened.processingFormat()->channelCount()));
    print("AUEnginePlayer: Audio unit re-connecting to the player.");
    engine->connect(effect, engine->mainMixerNode(), nullptr);
    print("AUEnginePlayer: Audio unit re-connectingto the main mixer.");
    if (isPlaying)
        player->play();
}

void AUEnginePlayer::setSessionActive(bool active)
{
    try {
        AVAudioSession &session = AVAudioSession::sharedInstance();
        session.setCategory(AVAudioSessionCategoryPlayback, AVAudioSessionModeDefault, 0);
        session.setActive(active, 0);
    } catch (const PlatformError &error) {
        fatalError("AUEnginePlayer::ERROR: Could not set audio session active " + describe(active) +
                   ". system error: " + error.what() + ".");
    }
    print("AUEnginePlayer: Audio session was set active.");
}

void AUEnginePlayer::start()
{
    randomizeFile();
    stateChangeQueue.sync([this] {
        if (isPlaying)
            return;
        startPlayingInternal();
        reportState(true);
    });
}

void AUEnginePlayer::startPlayingInternal()
{
    setSessionActive(true);
    scheduleEffectLoop();
    connectMixerToOutput();
    try {
        engine->start();
    } catch (const PlatformError &error) {
        isPlaying = false;
        fatalError(std::string("AUEnginePlayer::ERROR: Could not start audio engine. error: ") +
                   error.what() + ".");
    }
    player->play();
    isPlaying = true;
}

void AUEnginePlayer::scheduleEffectLoop()
{
    const auto scheduled = file.load();
    if (!scheduled) {
        print("AUEnginePlayer::ERROR: `file` parameter must not be nil.");
        return;
    }
    // The completion belongs to the node, which this owns: a strong hold on this
    // would be a circle. The destructor stops the node, so the queue is there
    // whenever the completion runs.
    player->scheduleFile(scheduled, [this, weakSelf = weak_from_this()] {
        stateChangeQueue.async([weakSelf] {
            if (const auto self = weakSelf.lock())
                self->fileEnded();
        });
    });
}

void AUEnginePlayer::fileEnded()
{
    if (!isPlaying)
        return;
    DispatchQueue::main().async([self = shared_from_this()] { self->reportLoop(); });
    scheduleEffectLoop();
}

void AUEnginePlayer::reportLoop()
{
    // The receiver sees the count before this loop, the line the one after it.
    if (const auto receiver = delegate.load())
        receiver->onLoop(loopCount);
    loopCount = checkedAdd<std::int64_t>(loopCount, 1);
    print("AUEnginePlayer: Current audio file '" + unwrap(fileURL.load()).path() +
          "' looped: " + std::to_string(loopCount) + ".");
}

void AUEnginePlayer::reportState(bool playing)
{
    DispatchQueue::main().async([self = shared_from_this(), playing] {
        print(playing ? "AUEnginePlayer: Audio engine starting."
                      : "AUEnginePlayer: Audio engine stopping.");
        if (const auto receiver = self->delegate.load())
            receiver->onPlayerStateChanged(playing);
    });
}

void AUEnginePlayer::stop()
{
    stateChangeQueue.sync([this] {
        if (!isPlaying)
            return;
        stopPlayingInternal();
        reportState(false);
    });
}

void AUEnginePlayer::stopPlayingInternal()
{
    player->stop();
    engine->stop();
    isPlaying = false;
    setSessionActive(false);
}

bool AUEnginePlayer::toggle()
{
    if (isPlaying)
        stop();
    else
        start();
    return isPlaying;
}

void AUEnginePlayer::connect(const std::shared_ptr<AVAudioUnit> &avAudioUnit,
                             const std::function<void()> &completion)
{
    print(avAudioUnit ? "AUEnginePlayer: A new audio unit will be connected."
                      : "AUEnginePlayer::WARNING: Function connect() with argument 'nil' causes "
                        "disconnection.");
    replaceEffect(avAudioUnit);
    completion();
    if (!avAudioUnit)
        print("AUEnginePlayer: The audio unit was set to 'nil'.");
}

void AUEnginePlayer::replaceEffect(const std::shared_ptr<AVAudioUnit> &avAudioUnit)
{
    const std::lock_guard lock(wiring);
    bool loopIsToBeReset = true;
    if (const auto effect = activeAVAudioUnit.load()) {
        detachEffect(effect);
        loopIsToBeReset = false;
    }
    activeAVAudioUnit.store(avAudioUnit);
    connectMixerToOutput();
    if (isPlaying)
        player->pause();
    if (avAudioUnit)
        attachEffect(avAudioUnit);
    else if (loopIsToBeReset)
        resetAudioLoop();
    if (isPlaying)
        player->play();
}

void AUEnginePlayer::detachEffect(const std::shared_ptr<AVAudioUnit> &effect)
{
    engine->disconnectNodeInput(effect);
    engine->disconnectNodeInput(engine->mainMixerNode());
    resetAudioLoop();
    engine->detach(effect);
    print("AUEnginePlayer: Audio unit was disconnecting and detaching.");
    activeAVAudioUnit.store(nullptr);
}

void AUEnginePlayer::attachEffect(const std::shared_ptr<AVAudioUnit> &effect)
{
    AUAudioUnit &unit = *effect->auAudioUnit();
    if (!unit.MIDIOutputNames().empty()) {
        print("AUEnginePlayer: The audio unit reports MIDI output names. Assigning a handling "
              "block.");
        unit.setMIDIOutputEventBlock(midiOutBlock);
    }
    engine->attach(effect);
    print("AUEnginePlayer: Audio unit was attached.");
    engine->disconnectNodeInput(engine->mainMixerNode());
    const auto format = fileFormat();
    if (!format) {
        print("AUEnginePlayer::ERROR: There was a problem with the file processing format or the "
              "file is nil (yet).");
        return;
    }
    engine->connect(player, effect, format);
    print("AUEnginePlayer: Audio Unit was connected to the player.");
    engine->connect(effect, engine->mainMixerNode(), format);
    print("AUEnginePlayer: Audio Unit was connected to the main mixer.");
}

void AUEnginePlayer::resetAudioLoop()
{
    if (const auto format = fileFormat())
        engine->connect(player, engine->mainMixerNode(), format);
    else
        print("AUEnginePlayer: ERROR: There is a problem with the audio file processing format.");
}

void AUEnginePlayer::connectMixerToOutput()
{
    engine->connect(engine->mainMixerNode(), engine->outputNode(),
                    engine->outputNode()->outputFormat(0));
}

std::shared_ptr<AVAudioFormat> AUEnginePlayer::fileFormat() const
{
    const auto opened = file.load();
    return opened ? opened->processingFormat() : nullptr;
}
