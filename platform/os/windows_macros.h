/// Takes back the macros of windows.h that would rename operations of the public interfaces.
#pragma once

#if defined(_WIN32)

// Included first, so that a later include of it cannot bring the macros back.
#include <windows.h>

#undef GetClassInfo

#endif
