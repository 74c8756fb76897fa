# What the toolchain files of Windows share: mingw-w64 with POSIX threads. What the compiler brings along is linked in, so
# that a program or the module needs nothing beside it but Windows. scripts/setup --windows puts the libraries in place.

get_filename_component(lumiset_root "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)
set(lumiset_triplet ${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32)

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${lumiset_triplet}-gcc-posix)
set(CMAKE_CXX_COMPILER ${lumiset_triplet}-g++-posix)
set(CMAKE_RC_COMPILER ${lumiset_triplet}-windres)

set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static")

set(CMAKE_FIND_ROOT_PATH /usr/${lumiset_triplet} "${lumiset_root}/.deps/${lumiset_system}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR "${lumiset_root}/scripts/wine")
