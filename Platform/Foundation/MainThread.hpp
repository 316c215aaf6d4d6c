#pragma once

namespace platform::foundation
{

/// True on the thread that runs the main run loop: the one that started the
/// process.
bool isMainThread();

} // namespace platform::foundation
