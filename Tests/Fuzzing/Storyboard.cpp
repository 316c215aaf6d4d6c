// A screen that a designer laid out, and a slip of the editor: it loads or is refused.
// Classes that no screen of ours has are left out: GTK would make any object of any
// library by name, and those it cannot stand are no business of the loader.

#include "Platform/Foundation/PlatformError.hpp"
#include "Platform/Interface/Scene.hpp"
#include "Platform/Interface/UIResponder.hpp"
#include "Tests/Fuzzing/InputFile.hpp"
#include "Tests/Fuzzing/Require.hpp"
#include "Tests/Platform/Interface/StartInterface.hpp"
#include "Tests/Utilities/XServer.hpp"

#include <glib.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace
{

using platform::interface::Scene;

constexpr std::array<std::string_view, 9> classes = {
    "GtkBox",   "GtkButton",  "GtkCenterBox", "GtkHeaderBar",          "GtkImage",
    "GtkLabel", "GtkOverlay", "GtkShortcut",  "GtkShortcutController",
};

/// What makes objects by other ways, or a browser.
constexpr std::array<std::string_view, 10> elsewhere = {
    "<menu",     "<lookup",   "<closure", "<binding", "<template",
    "<constant", "type-func", "<signal",  "<item",    "WKWebView",
};

bool contains(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

/// Whether no class is named but ours.
bool isWithinOurs(std::string_view text)
{
    if (std::any_of(elsewhere.begin(), elsewhere.end(),
                    [&](std::string_view part) { return contains(text, part); }))
        return false;
    constexpr std::string_view attribute = "class";
    for (std::size_t place = text.find(attribute); place != std::string_view::npos;
         place = text.find(attribute, place + 1)) {
        const bool isElement = place > 0 && (text[place - 1] == '<' || text[place - 1] == '/');
        const std::size_t open = text.find_first_of("\"'", place);
        if (isElement || open == std::string_view::npos)
            continue;
        const std::size_t close = text.find(text[open], open + 1);
        if (std::find(classes.begin(), classes.end(), text.substr(open + 1, close - open - 1)) ==
            classes.end())
            return false;
    }
    return true;
}

class Receiver : public UIResponder
{
};

void load(const std::string &path)
{
    Scene scene(path, nullptr);
    StoryboardBinding::Actions actions;
    for (const char *name : {"screen.onPlayButton", "segue.ShowHelp"})
        actions[name] = [](const StoryboardBinding::Sender &) {};
    scene.connect(actions, std::make_shared<Receiver>());
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int * /*count*/, char *** /*arguments*/)
{
    static const test::XServer server;
    useDisplay(server.display());
    startInterface();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (!isWithinOurs({reinterpret_cast<const char *>(data), size}))
        return -1;
    static const fuzzing::InputFile input;
    input.hold(data, size);
    try {
        load(input.path());
    } catch (const PlatformError &error) {
        fuzzing::require(*error.what() != '\0');
    }
    // What was put off until the main loop turns.
    while (g_main_context_iteration(nullptr, 0) != 0)
        ;
    return 0;
}
