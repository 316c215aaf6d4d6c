#include "Effect/Ports.hpp"
#include "Platform/LV2/Lilv.hpp"
#include "Tests/Effect/Signals.hpp"
#include "Tests/Utilities/RealtimeProbe.hpp"

#include <gtest/gtest.h>

#include <lilv/lilv.h>
#include <lv2/atom/atom.h>
#include <lv2/atom/util.h>
#include <lv2/core/lv2.h>
#include <lv2/midi/midi.h>
#include <lv2/port-props/port-props.h>
#include <lv2/presets/presets.h>
#include <lv2/ui/ui.h>
#include <lv2/urid/urid.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

using effect::Port;
using platform::lv2::Release;
using test::RealtimeProbe;

namespace
{

using World = platform::lv2::WorldPointer;
using Node = platform::lv2::NodePointer;
using Nodes = platform::lv2::NodesPointer;
// Freed as any host would, without what ours does besides.
using Instance = std::unique_ptr<LilvInstance, Release<lilv_instance_free>>;

constexpr const char *uri = "urn:qrvx:parvane";

class Urids
{
public:
    LV2_URID of(const char *name)
    {
        return ids_.try_emplace(name, static_cast<LV2_URID>(ids_.size() + 1)).first->second;
    }

    LV2_URID_Map map{this, [](LV2_URID_Map_Handle handle, const char *name) {
                         return static_cast<Urids *>(handle)->of(name);
                     }};

private:
    std::map<std::string, LV2_URID> ids_;
};

/// A sequence of atoms with room for a capacity given in bytes.
class Sequence
{
public:
    explicit Sequence(std::uint32_t capacity) : words_(capacity / 8 + 2) {}

    LV2_Atom_Sequence *get() { return reinterpret_cast<LV2_Atom_Sequence *>(words_.data()); }
    std::uint32_t capacity() const { return static_cast<std::uint32_t>(words_.size() * 8 - 8); }

    void clearForInput(LV2_URID type)
    {
        get()->atom = {sizeof(LV2_Atom_Sequence_Body), type};
        get()->body = {0, 0};
    }
    void clearForOutput(LV2_URID type) { get()->atom = {capacity(), type}; }

    void append(std::int64_t frame, LV2_URID type, const std::vector<std::uint8_t> &bytes)
    {
        std::vector<std::uint64_t> words(4 + bytes.size() / 8);
        auto *event = reinterpret_cast<LV2_Atom_Event *>(words.data());
        event->time.frames = frame;
        event->body = {static_cast<std::uint32_t>(bytes.size()), type};
        std::copy(bytes.begin(), bytes.end(), reinterpret_cast<std::uint8_t *>(event + 1));
        ASSERT_NE(lv2_atom_sequence_append_event(get(), capacity(), event), nullptr);
    }

private:
    std::vector<std::uint64_t> words_;
};

struct Message {
    std::int64_t frame;
    std::vector<std::uint8_t> bytes;

    bool operator==(const Message &) const = default;
};

class Bundle : public testing::Test
{
protected:
    void SetUp() override
    {
        lilv_world_load_all(world.get());
        const Node node(lilv_new_uri(world.get(), uri));
        plugin = lilv_plugins_get_by_uri(lilv_world_get_all_plugins(world.get()), node.get());
        ASSERT_NE(plugin, nullptr) << "LV2_PATH leads to no bundle";
    }

    Node node(const char *name) const { return Node(lilv_new_uri(world.get(), name)); }
    std::string text(const char *predicate) const
    {
        const Nodes values(lilv_plugin_get_value(plugin, node(predicate).get()));
        const LilvNode *first = lilv_nodes_get_first(values.get());
        return first == nullptr ? "" : lilv_node_as_string(first);
    }

    World world{lilv_world_new()};
    const LilvPlugin *plugin = nullptr;
};

/// The plug-in with all its ports connected.
class RunningBundle : public Bundle
{
protected:
    static constexpr std::uint32_t mostFrames = 8192;

    void SetUp() override
    {
        Bundle::SetUp();
        if (!HasFatalFailure()) {
            start(signals::sampleRate);
        }
    }

    void start(double rate)
    {
        instance.reset(lilv_plugin_instantiate(plugin, rate, features.data()));
        ASSERT_NE(instance, nullptr);
        for (const effect::ControlRange &range : effect::controlRanges) {
            at(range.port) = range.standard;
        }
        for (std::size_t port = static_cast<std::size_t>(effect::firstControl);
             port < effect::portCount; ++port) {
            lilv_instance_connect_port(instance.get(), static_cast<std::uint32_t>(port),
                                       &controls[port]);
        }
        connect(Port::events, events.get());
        connect(Port::turns, turns.get());
        lilv_instance_activate(instance.get());
        events.clearForInput(urids.of(LV2_ATOM__Sequence));
    }

    float &at(Port port) { return controls[static_cast<std::size_t>(port)]; }

    void connect(Port port, void *data)
    {
        lilv_instance_connect_port(instance.get(), static_cast<std::uint32_t>(port), data);
    }

    /// Runs one block in place and gathers the messages.
    void runBlock(float *left, float *right, std::uint32_t frames)
    {
        connect(Port::leftIn, left);
        connect(Port::rightIn, right);
        connect(Port::leftOut, left);
        connect(Port::rightOut, right);
        turns.clearForOutput(urids.of(LV2_ATOM__Chunk));
        lilv_instance_run(instance.get(), frames);
        ASSERT_EQ(turns.get()->atom.type, urids.of(LV2_ATOM__Sequence));
        LV2_ATOM_SEQUENCE_FOREACH(turns.get(), event)
        {
            ASSERT_EQ(event->body.type, urids.of(LV2_MIDI__MidiEvent));
            ASSERT_GE(event->time.frames, 0);
            ASSERT_LT(event->time.frames, frames);
            const auto *bytes = reinterpret_cast<const std::uint8_t *>(event + 1);
            messages.push_back({done + event->time.frames, {bytes, bytes + event->body.size}});
        }
        done += frames;
        events.clearForInput(urids.of(LV2_ATOM__Sequence));
    }

    void runSilence(double seconds, std::uint32_t block = 480)
    {
        std::vector<float> left(block);
        std::vector<float> right(block);
        const std::int64_t end = done + static_cast<std::int64_t>(seconds * signals::sampleRate);
        while (done < end) {
            runBlock(left.data(), right.data(), block);
        }
    }

    void send(std::int64_t frame, const std::vector<std::uint8_t> &bytes)
    {
        events.append(frame, urids.of(LV2_MIDI__MidiEvent), bytes);
    }

    Urids urids;
    LV2_Feature mapFeature{LV2_URID__map, &urids.map};
    std::array<const LV2_Feature *, 2> features{&mapFeature, nullptr};
    Instance instance;
    std::array<float, effect::portCount> controls{};
    Sequence events{4096};
    Sequence turns{4096};
    std::vector<Message> messages;
    std::int64_t done = 0;
};

} // namespace

TEST_F(Bundle, IsRegisteredAsTheComponent)
{
    EXPECT_EQ(text("urn:qrvx:audio-component#type"), "aumf");
    EXPECT_EQ(text("urn:qrvx:audio-component#subtype"), "zvqr");
    EXPECT_EQ(text("urn:qrvx:audio-component#manufacturer"), "QRVX");
    EXPECT_EQ(text("urn:qrvx:audio-component#flags"), "2");
    const Node name(lilv_plugin_get_name(plugin));
    EXPECT_STREQ(lilv_node_as_string(name.get()), "QRVX: KOV TORVELD Parvane Extension (AU)");
    EXPECT_TRUE(lilv_plugin_verify(plugin));
}

TEST_F(Bundle, RequiresNothingButTheMap)
{
    const Nodes required(lilv_plugin_get_required_features(plugin));
    ASSERT_EQ(lilv_nodes_size(required.get()), 1U);
    EXPECT_STREQ(lilv_node_as_uri(lilv_nodes_get_first(required.get())), LV2_URID__map);
    EXPECT_TRUE(lilv_plugin_has_feature(plugin, node(LV2_CORE__hardRTCapable).get()));
}

TEST_F(Bundle, DescribesThePortsThatTheCodeHas)
{
    ASSERT_EQ(lilv_plugin_get_num_ports(plugin), effect::portCount);
    std::vector<float> least(effect::portCount);
    std::vector<float> most(effect::portCount);
    std::vector<float> standard(effect::portCount);
    lilv_plugin_get_port_ranges_float(plugin, least.data(), most.data(), standard.data());
    std::set<std::size_t> controls;
    for (const effect::ControlRange &range : effect::controlRanges) {
        const auto port = static_cast<std::size_t>(range.port);
        controls.insert(port);
        EXPECT_EQ(least[port], range.least) << port;
        EXPECT_EQ(most[port], range.most) << port;
        EXPECT_EQ(standard[port], range.standard) << port;
    }
    std::set<std::string> symbols;
    for (std::uint32_t index = 0; index < effect::portCount; ++index) {
        const LilvPort *port = lilv_plugin_get_port_by_index(plugin, index);
        symbols.insert(lilv_node_as_string(lilv_port_get_symbol(plugin, port)));
        const bool isControlInput =
            lilv_port_is_a(plugin, port, node(LV2_CORE__ControlPort).get()) &&
            lilv_port_is_a(plugin, port, node(LV2_CORE__InputPort).get());
        EXPECT_EQ(isControlInput, controls.count(index) == 1) << index;
    }
    EXPECT_EQ(symbols.size(), effect::portCount);
}

TEST_F(Bundle, MarksTheSpeedsOnTheirScale)
{
    const LilvPort *port =
        lilv_plugin_get_port_by_index(plugin, static_cast<std::uint32_t>(Port::speed));
    const std::unique_ptr<LilvScalePoints, Release<lilv_scale_points_free>> points(
        lilv_port_get_scale_points(plugin, port));
    std::map<float, std::string> marks;
    LILV_FOREACH(scale_points, i, points.get())
    {
        const LilvScalePoint *point = lilv_scale_points_get(points.get(), i);
        marks[lilv_node_as_float(lilv_scale_point_get_value(point))] =
            lilv_node_as_string(lilv_scale_point_get_label(point));
    }
    EXPECT_EQ(marks, (std::map<float, std::string>{{0, "Stop"}, {1, "Slow"}, {2, "Fast"}}));
}

TEST_F(Bundle, HasAViewForX11ThatRequiresLittle)
{
    const std::unique_ptr<LilvUIs, Release<lilv_uis_free>> views(lilv_plugin_get_uis(plugin));
    ASSERT_EQ(lilv_uis_size(views.get()), 1U);
    const LilvUI *view = lilv_uis_get(views.get(), lilv_uis_begin(views.get()));
    EXPECT_STREQ(lilv_node_as_uri(lilv_ui_get_uri(view)), "urn:qrvx:parvane#view");
    EXPECT_TRUE(lilv_ui_is_a(view, node(LV2_UI__X11UI).get()));
    const Nodes required(lilv_world_find_nodes(world.get(), lilv_ui_get_uri(view),
                                               node(LV2_CORE__requiredFeature).get(), nullptr));
    std::set<std::string> features;
    LILV_FOREACH(nodes, i, required.get())
    {
        features.insert(lilv_node_as_uri(lilv_nodes_get(required.get(), i)));
    }
    EXPECT_EQ(features, (std::set<std::string>{LV2_UI__parent, LV2_UI__idleInterface}));
}

TEST_F(Bundle, SendsTheRotorsToItsView)
{
    // The files are read when something of the plug-in is asked for.
    ASSERT_EQ(lilv_plugin_get_num_ports(plugin), effect::portCount);
    const Node view(lilv_new_uri(world.get(), "urn:qrvx:parvane#view"));
    const Nodes notifications(lilv_world_find_nodes(world.get(), view.get(),
                                                    node(LV2_UI__portNotification).get(), nullptr));
    std::set<std::uint32_t> ports;
    LILV_FOREACH(nodes, i, notifications.get())
    {
        const Node symbol(lilv_world_get(world.get(), lilv_nodes_get(notifications.get(), i),
                                         node(LV2_CORE__symbol).get(), nullptr));
        const LilvPort *port = lilv_plugin_get_port_by_symbol(plugin, symbol.get());
        ASSERT_NE(port, nullptr);
        ports.insert(lilv_port_get_index(plugin, port));
    }
    EXPECT_EQ(ports, (std::set<std::uint32_t>{15, 16, 17, 18}));
}

TEST_F(Bundle, InstantiatesAtReasonableRatesOnly)
{
    Urids urids;
    const LV2_Feature feature{LV2_URID__map, &urids.map};
    const std::array<const LV2_Feature *, 2> features{&feature, nullptr};
    for (const double rate : {8000.0, 44100.0, 192000.0}) {
        EXPECT_NE(Instance(lilv_plugin_instantiate(plugin, rate, features.data())), nullptr);
    }
    for (const double rate : {0.0, -48000.0, 1e9, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(Instance(lilv_plugin_instantiate(plugin, rate, features.data())), nullptr)
            << rate;
    }
}

TEST_F(Bundle, DoesNotInstantiateWithoutTheMap)
{
    const std::array<const LV2_Feature *, 1> none{nullptr};
    EXPECT_EQ(Instance(lilv_plugin_instantiate(plugin, 48000, none.data())), nullptr);
}

TEST_F(RunningBundle, LoadsPresetsThatSetEveryParameterWithinRange)
{
    const Nodes presets(lilv_plugin_get_related(plugin, node(LV2_PRESETS__Preset).get()));
    ASSERT_GE(lilv_nodes_size(presets.get()), 5U);
    std::set<std::string> labels;
    std::set<std::map<std::string, float>> sounds;
    LILV_FOREACH(nodes, i, presets.get())
    {
        const LilvNode *preset = lilv_nodes_get(presets.get(), i);
        ASSERT_GE(lilv_world_load_resource(world.get(), preset), 0);
        const std::unique_ptr<LilvState, Release<lilv_state_free>> state(
            lilv_state_new_from_world(world.get(), &urids.map, preset));
        ASSERT_NE(state, nullptr);
        labels.insert(lilv_state_get_label(state.get()));
        std::map<std::string, float> values;
        lilv_state_emit_port_values(
            state.get(),
            [](const char *symbol, void *data, const void *value, std::uint32_t size,
               std::uint32_t /*type*/) {
                ASSERT_EQ(size, sizeof(float));
                float number = 0;
                std::memcpy(&number, value, size);
                (*static_cast<std::map<std::string, float> *>(data))[symbol] = number;
            },
            &values);
        EXPECT_EQ(values.size(), effect::controlRanges.size() - 1) << "all but `enabled`";
        for (const auto &[symbol, value] : values) {
            const Node name(lilv_new_string(world.get(), symbol.c_str()));
            const LilvPort *port = lilv_plugin_get_port_by_symbol(plugin, name.get());
            ASSERT_NE(port, nullptr) << symbol;
            const std::uint32_t index = lilv_port_get_index(plugin, port);
            const effect::ControlRange &range =
                effect::controlRanges.at(index - static_cast<std::size_t>(effect::firstControl));
            EXPECT_GE(value, range.least) << symbol;
            EXPECT_LE(value, range.most) << symbol;
        }
        sounds.insert(values);
    }
    EXPECT_EQ(labels.size(), lilv_nodes_size(presets.get()));
    EXPECT_EQ(sounds.size(), lilv_nodes_size(presets.get()));
}

TEST_F(RunningBundle, TakesABlockOfNoFrames)
{
    at(Port::hornSpeed) = -1;
    runBlock(nullptr, nullptr, 0);
    EXPECT_TRUE(messages.empty());
    EXPECT_FLOAT_EQ(at(Port::hornSpeed), 0.8F);
}

TEST_F(RunningBundle, SendsANoteAtEachTurnOfTheHorn)
{
    at(Port::speed) = 2;
    runSilence(10, 333);
    ASSERT_EQ(messages.size(), 67U);
    for (std::size_t turn = 0; turn < messages.size(); ++turn) {
        EXPECT_EQ(messages[turn].bytes, (std::vector<std::uint8_t>{0x99, 76, 100}));
        // A tick passes before the rotors' first sound.
        const double frame = 16 + static_cast<double>(turn + 1) * signals::sampleRate / 6.7;
        EXPECT_NEAR(static_cast<double>(messages[turn].frame), std::ceil(frame), 1);
    }
}

TEST_F(RunningBundle, SendsNothingAtRest)
{
    at(Port::speed) = 0;
    runSilence(5);
    EXPECT_TRUE(messages.empty());
    EXPECT_EQ(at(Port::hornSpeed), 0);
    EXPECT_EQ(at(Port::drumSpeed), 0);
}

TEST_F(RunningBundle, LetsTurnsGoWithoutRoomForThem)
{
    at(Port::speed) = 2;
    Sequence small(24);
    std::vector<float> samples(mostFrames);
    connect(Port::leftIn, samples.data());
    connect(Port::rightIn, samples.data());
    connect(Port::leftOut, samples.data());
    connect(Port::rightOut, samples.data());
    for (LV2_Atom_Sequence *sequence : {small.get(), static_cast<LV2_Atom_Sequence *>(nullptr)}) {
        connect(Port::turns, sequence);
        for (int block = 0; block < 10; ++block) {
            small.get()->atom = {24, 0};
            lilv_instance_run(instance.get(), mostFrames);
            EXPECT_LE(small.get()->atom.size, 24U);
        }
    }
}

TEST_F(RunningBundle, FollowsWheelPedalAndNotes)
{
    send(0, {0xB0, 1, 127});
    runSilence(8);
    EXPECT_NEAR(at(Port::hornSpeed), 6.7, 0.01);
    EXPECT_NEAR(at(Port::drumSpeed), 5.7, 0.05);
    send(0, {0xB0, 121, 0});
    send(0, {0x90, 20, 1});
    runSilence(10);
    EXPECT_EQ(at(Port::hornSpeed), 0);
    EXPECT_EQ(at(Port::drumSpeed), 0);
    send(100, {0x80, 20, 1});
    runSilence(8);
    EXPECT_NEAR(at(Port::hornSpeed), 0.8, 0.01);
    send(100, {0xB3, 64, 127});
    runSilence(8);
    EXPECT_NEAR(at(Port::hornSpeed), 6.7, 0.01);
}

TEST_F(RunningBundle, GivesTheSameSamplesAndTurnsForAllBlockSizes)
{
    // Controllers and notes fall on frames of their own, in the midst of blocks.
    const std::map<std::int64_t, std::vector<std::uint8_t>> script{
        {100, {0xB0, 1, 100}}, {1003, {0x90, 72, 90}},  {1003, {0x90, 50, 90}},
        {9001, {0x80, 72, 0}}, {9500, {0xB0, 64, 127}}, {20011, {0xB0, 123, 0}}};
    constexpr std::uint32_t total = 34816;
    std::vector<std::vector<float>> results;
    std::vector<std::vector<Message>> notes;
    for (const std::uint32_t block : {8192U, 1U, 17U, 64U, 512U}) {
        start(signals::sampleRate);
        messages.clear();
        done = 0;
        std::vector<float> left = signals::noise(total, 1);
        std::vector<float> right = signals::noise(total, 2);
        while (done < total) {
            const auto frames =
                static_cast<std::uint32_t>(std::min<std::int64_t>(block, total - done));
            for (auto event = script.lower_bound(done);
                 event != script.end() && event->first < done + frames; ++event) {
                send(event->first - done, event->second);
            }
            runBlock(left.data() + done, right.data() + done, frames);
        }
        left.insert(left.end(), right.begin(), right.end());
        results.push_back(std::move(left));
        notes.push_back(messages);
        EXPECT_FALSE(messages.empty());
        EXPECT_EQ(results.back(), results.front()) << block;
        EXPECT_EQ(notes.back(), notes.front()) << block;
    }
}

TEST_F(RunningBundle, PassesTheInputUnchangedWhenNotEnabledOrNotMixed)
{
    for (const Port port : {Port::enabled, Port::mix}) {
        start(signals::sampleRate);
        at(port) = 0;
        std::vector<float> left = signals::noise(5000, 1);
        std::vector<float> right = signals::noise(5000, 2);
        const std::vector<float> leftBefore = left;
        const std::vector<float> rightBefore = right;
        runBlock(left.data(), right.data(), 5000);
        EXPECT_EQ(left, leftBefore);
        EXPECT_EQ(right, rightBefore);
    }
}

TEST_F(RunningBundle, SurvivesControlsOutOfRange)
{
    for (const float value : {std::numeric_limits<float>::quiet_NaN(), 1e30F, -1e30F,
                              std::numeric_limits<float>::infinity()}) {
        for (const effect::ControlRange &range : effect::controlRanges) {
            at(range.port) = value;
        }
        std::vector<float> left = signals::noise(mostFrames, 1);
        std::vector<float> right = left;
        runBlock(left.data(), right.data(), mostFrames);
        EXPECT_TRUE(signals::allFinite(left)) << value;
        EXPECT_LT(signals::largest(left), 20) << value;
    }
}

TEST_F(RunningBundle, PassesOverEventsThatMakeNoSense)
{
    send(-5, {0xB0, 1});
    send(1000000, {0xB0, 1, 10});
    send(3, {});
    events.append(4, urids.of("urn:qrvx:nothing"), {0xB0, 1, 127});
    std::vector<float> samples(256, 0.1F);
    runBlock(samples.data(), samples.data(), 256);
    EXPECT_TRUE(signals::allFinite(samples));
}

TEST_F(RunningBundle, RunsWithoutAllocatingLockingOrEnteringTheKernel)
{
    if (RealtimeProbe::obstacle() != nullptr) {
        GTEST_SKIP() << RealtimeProbe::obstacle();
    }
    std::vector<float> left = signals::noise(mostFrames, 1);
    std::vector<float> right = signals::noise(mostFrames, 2);
    connect(Port::leftIn, left.data());
    connect(Port::rightIn, right.data());
    connect(Port::leftOut, left.data());
    connect(Port::rightOut, right.data());
    send(3, {0x90, 60, 1});
    send(40, {0xB0, 64, 127});
    turns.clearForOutput(urids.of(LV2_ATOM__Chunk));
    std::size_t turned = 0;

    RealtimeProbe::enter();
    for (int block = 0; block < 40; ++block) {
        at(Port::drive) = static_cast<float>(block % 3) / 2;
        at(Port::spread) = static_cast<float>(block);
        at(Port::speed) = static_cast<float>(block % 2) + 1;
        turns.get()->atom.size = turns.capacity();
        lilv_instance_run(instance.get(), mostFrames);
        turned += turns.get()->atom.size > sizeof(LV2_Atom_Sequence_Body) ? 1 : 0;
    }
    lilv_instance_deactivate(instance.get());
    lilv_instance_activate(instance.get());
    lilv_instance_run(instance.get(), 1);
    const RealtimeProbe::Counts counts = RealtimeProbe::leave();

    EXPECT_EQ(counts, RealtimeProbe::Counts{});
    EXPECT_GT(turned, 0U) << "the path that writes events was not taken";
    RealtimeProbe::enter();
    const auto proof = std::make_unique<std::array<int, 100>>();
    EXPECT_GT(RealtimeProbe::leave().allocations, 0U) << "the counter does not count";
}
