/* Linked into every program and module of a coverage build. The counters are
 * otherwise written by exit() alone, which a program that ends in another way of
 * ours does not come to. */
#include <stdlib.h>

void __gcov_dump(void);
void __real_abort(void) __attribute__((noreturn));
void __real__exit(int status) __attribute__((noreturn));
void __wrap_abort(void) __attribute__((noreturn));
void __wrap__exit(int status) __attribute__((noreturn));

static void writeCounters(void)
{
    __gcov_dump();
}

__attribute__((constructor)) static void writeCountersAtQuickExit(void)
{
    at_quick_exit(writeCounters);
}

void __wrap_abort(void)
{
    __gcov_dump();
    __real_abort();
}

void __wrap__exit(int status)
{
    __gcov_dump();
    __real__exit(status);
}
