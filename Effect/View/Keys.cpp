#include "Effect/View/Keys.hpp"

#define XK_LATIN1
#define XK_MISCELLANY
#define XK_XKB_KEYS
#include <X11/keysymdef.h>

#include <algorithm>
#include <array>

namespace effect::view
{

namespace
{

struct Row {
    KeySym symbol;
    Key key;
};

constexpr std::array<Row, 28> rows{{
    {XK_Tab, Key::next},
    {XK_ISO_Left_Tab, Key::previous},
    {XK_Up, Key::up},
    {XK_Right, Key::up},
    {XK_Down, Key::down},
    {XK_Left, Key::down},
    {XK_Page_Up, Key::pageUp},
    {XK_Page_Down, Key::pageDown},
    {XK_Home, Key::home},
    {XK_End, Key::end},
    {XK_space, Key::toggle},
    {XK_Return, Key::toggle},
    {XK_Delete, Key::reset},
    {XK_BackSpace, Key::reset},
    {XK_KP_Tab, Key::next},
    {XK_KP_Up, Key::up},
    {XK_KP_Right, Key::up},
    {XK_KP_Add, Key::up},
    {XK_KP_Down, Key::down},
    {XK_KP_Left, Key::down},
    {XK_KP_Subtract, Key::down},
    {XK_KP_Page_Up, Key::pageUp},
    {XK_KP_Page_Down, Key::pageDown},
    {XK_KP_Home, Key::home},
    {XK_KP_End, Key::end},
    {XK_KP_Space, Key::toggle},
    {XK_KP_Enter, Key::toggle},
    {XK_KP_Delete, Key::reset},
}};

} // namespace

std::optional<Key> keyFor(KeySym symbol)
{
    const auto *found = std::find_if(rows.begin(), rows.end(),
                                     [symbol](const Row &row) { return row.symbol == symbol; });
    if (found == rows.end()) {
        return std::nullopt;
    }
    return found->key;
}

} // namespace effect::view
