// Qt starts programs with a clone() that shares memory with its parent until the new program runs (vfork). The thread
// sanitizer knows that of vfork() alone, which it turns into fork(), and takes what the child does for its parent's
// doing: it ends with "CHECK failed" in SlotAttachAndLock. So the same is done to clone() here, in its builds only.

#include <sched.h>

#include <cstdarg>

// NOLINTBEGIN: names of the sanitizer's and the C library's.
extern "C" int ___interceptor_clone(int (*)(void*), void*, int, void*, void*, void*, void*);

extern "C" int clone(int (*function)(void*), void* stack, int flags, void* argument, ...) noexcept {
    va_list rest;
    va_start(rest, argument);
    void* const parent = va_arg(rest, void*);
    void* const local = va_arg(rest, void*);
    void* const child = va_arg(rest, void*);
    va_end(rest);
    if ((flags & CLONE_VFORK) != 0) {
        flags &= ~(CLONE_VFORK | CLONE_VM);
    }
    return ___interceptor_clone(function, stack, flags, argument, parent, local, child);
}

// NOLINTEND
