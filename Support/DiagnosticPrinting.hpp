#pragma once

#include <string_view>

/// Both write a copy of `text` and a newline to standard output on the main queue, so
/// that it does not come in the middle of what the main thread prints. They return at
/// once. Lines of one thread keep their order; those still waiting when the
/// process ends are lost. Any thread.
void debugprint(std::string_view text);
void safeprint(std::string_view text);
