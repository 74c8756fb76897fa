# Compiler settings that every target shares, and the helper that declares one of the project's libraries.

set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O2 -g")

find_program(LUMISET_CCACHE ccache)
if(LUMISET_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${LUMISET_CCACHE})
  set(CMAKE_C_COMPILER_LAUNCHER ${LUMISET_CCACHE})
endif()

set(LUMISET_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize= takes them")

add_library(lumiset_options INTERFACE)
target_include_directories(lumiset_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(lumiset_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor -Werror
  # One rounding per written operation, so that every platform gives the same bytes. Without trapping and
  # errno semantics guarded divisions and square roots vectorise; results do not change.
  -ffp-contract=off -fno-trapping-math -fno-math-errno)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  target_compile_options(lumiset_options INTERFACE -msse2 -mfpmath=sse -mstackrealign)
endif()
# What makes a fault in a program that loads us hard to use: guarded stacks, copies checked against the size of their
# target, marks for indirect jumps, and tables of addresses that are read-only once it runs. The sanitizers do the same
# and more, and builds without optimisation have no checked copies.
if(NOT LUMISET_SANITIZE)
  target_compile_options(lumiset_options INTERFACE
    -fstack-protector-strong $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  if(WIN32)
    target_link_options(lumiset_options INTERFACE -fstack-protector-strong)  # finds what the guards call
  else()
    target_compile_options(lumiset_options INTERFACE -fcf-protection)
    target_link_options(lumiset_options INTERFACE -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
  endif()
endif()
if(LUMISET_SANITIZE)
  # Vector files would take minutes each to compile. Line tables are all that a report needs, and vectors of a real
  # processor take a quarter of the time that the portable ones do.
  target_compile_options(lumiset_options INTERFACE
    -fsanitize=${LUMISET_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -O1 -g1
    -msse4.2 -maes -mpclmul)
  target_link_options(lumiset_options INTERFACE -fsanitize=${LUMISET_SANITIZE})
endif()

option(LUMISET_NATIVE "Build for the processor of this machine alone; takes half the time" OFF)

find_package(hwy REQUIRED)
add_library(lumiset_vectors INTERFACE)
target_link_libraries(lumiset_vectors INTERFACE hwy::hwy)
# Vector code is built for AVX-512, AVX2 and SSE4.1; older processors take the portable 128-bit vectors, which
# the compiler turns into SSE2. Highway avoids these for compilers before GCC 12.3 because of one wrong
# high-half multiplication, which nothing here uses. Every file that includes Highway must see the same set.
set(disabled_targets HWY_SSSE3)
if(LUMISET_SANITIZE)
  set(disabled_targets "(HWY_SSSE3|HWY_AVX3|HWY_AVX3_DL)")  # two widths show what many do
endif()
target_compile_definitions(lumiset_vectors INTERFACE HWY_DISABLED_TARGETS=${disabled_targets} HWY_BROKEN_EMU128=0)
if(LUMISET_NATIVE)
  target_compile_options(lumiset_options INTERFACE -march=native)
  target_compile_definitions(lumiset_vectors INTERFACE HWY_COMPILE_ONLY_STATIC)
endif()

# lumiset_library(NAME SOURCES... ) declares a static library of the project. What it builds on is linked
# with target_link_libraries(NAME PUBLIC ...).
# Files that Highway includes once for each instruction set are left out of unity builds, which join files into one. They
# hold the loops over pixels, so a preset that saves on optimisation does not save on theirs.
function(lumiset_library name)
  add_library(${name} STATIC ${ARGN})
  foreach(source IN LISTS ARGN)
    if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${source})
      file(STRINGS ${source} vectors REGEX "^#include \"hwy/foreach_target.h\"|^#include <hwy/foreach_target.h>" LIMIT_COUNT 1)
      if(vectors)
        set_source_files_properties(${source} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
        if(CMAKE_BUILD_TYPE STREQUAL Release AND NOT CMAKE_CXX_FLAGS_RELEASE MATCHES -O3)
          set_source_files_properties(${source} PROPERTIES COMPILE_OPTIONS -O3)
        endif()
      endif()
    endif()
  endforeach()
  target_link_libraries(${name} PUBLIC lumiset_options)
endfunction()
