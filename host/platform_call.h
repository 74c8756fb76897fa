#pragma once

// Calling convention of interface methods: stdcall where pointers have four bytes on Windows (hosts there
// call through the vtable with that convention), the platform's default everywhere else.
#if defined(_WIN32) && !defined(_WIN64)
#define LUMISET_CALL __stdcall
#else
#define LUMISET_CALL
#endif
