#pragma once

namespace platform::foundation
{

/// Loads a module of this program, a shared library that is too costly for every
/// start, and answers the address of its function `symbol`. `file` is its name in
/// the program's module folder, `purpose` what it does in words that complete "The
/// module that …". Throws a `PlatformError` when it cannot be had. Loaded once, a
/// module stays: its libraries may leave thread-local data behind that points into
/// them. Any thread.
void *moduleSymbol(const char *file, const char *symbol, const char *purpose);

} // namespace platform::foundation
