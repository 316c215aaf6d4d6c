#pragma once

#include <string_view>

/// Writes `line` and a newline to standard output in one write, at once.
/// Any thread; lines of several threads do not mix. May block on a slow reader.
void print(std::string_view line);

/// The same for text that brings its newline along.
void printBytes(std::string_view bytes);

/// As `print`, on standard error: for faults of the platform itself.
void printError(std::string_view line);
