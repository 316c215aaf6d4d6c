#pragma once

namespace platform::interface
{

/// Whether WebKit can put a page's process into its sandbox here. Where it cannot, it ends
/// the whole program: kernels may forbid what bubblewrap does, and containers do. Tries
/// it, which takes a process of some milliseconds. Main thread.
bool canSandbox();

} // namespace platform::interface
