# Toolchain file: 64-bit Windows.

set(lumiset_system win64)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
# The stack is aligned to 16 bytes here, and compilers of this line are known to keep vectors of 32 and 64 on it as though
# it were aligned to theirs. Debian's does not; under any other the assembler turns the moves that would trap into those
# that take any address, which cost no more.
set(CMAKE_C_FLAGS_INIT "-Wa,-muse-unaligned-vector-move")
set(CMAKE_CXX_FLAGS_INIT "${CMAKE_C_FLAGS_INIT}")

include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)

# What lumiset.exe is linked with.
set(ENV{PKG_CONFIG_LIBDIR} "${lumiset_root}/.deps/win64/lib/pkgconfig")
set(PKG_CONFIG_ARGN --static)
set(ZLIB_USE_STATIC_LIBS ON)
