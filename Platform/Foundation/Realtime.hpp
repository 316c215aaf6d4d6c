#pragma once

/// Marks every function that the audio callback may call: it does not allocate,
/// lock, wait, log or enter the kernel. Newer compilers check the promise; for
/// the others a test interposes on the calls that would break it.
#if defined(__has_cpp_attribute)
#if __has_cpp_attribute(clang::nonblocking)
#define REALTIME [[clang::nonblocking]]
#endif
#endif
#ifndef REALTIME
#define REALTIME
#endif
