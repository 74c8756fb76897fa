# Toolchain file: 32-bit Windows.

set(lumiset_system win32)
set(CMAKE_SYSTEM_PROCESSOR i686)
# Callers on this platform keep the stack aligned to four bytes; whatever wants more has to see to it itself.
set(CMAKE_C_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")
set(CMAKE_CXX_FLAGS_INIT "${CMAKE_C_FLAGS_INIT}")

include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
