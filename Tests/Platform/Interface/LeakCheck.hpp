#pragma once

namespace test
{

/// Says that this process goes on to use so many of GTK's types that GLib's table of
/// names outgrows its room and is replaced by a larger one. GLib keeps the former on
/// purpose, and nothing in its stack tells the leak sanitizer that; so this process is
/// not checked for leaks.
void outgrowTheTableOfNames();

} // namespace test
