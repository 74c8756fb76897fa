# find_package(Lumiset) gives authors of hosts
#   Lumiset::host     the headers
#   Lumiset::module   the headers and the module itself, to link with
#   Lumiset::hostkit  the host kit, a static library, with the headers
#   Lumiset::c        the C interface, a shared library, where it is installed
#   Lumiset_MODULE    the module's file, to load when the program runs
# Found as /lib/cmake where /lib is a link to /usr/lib, the files lie below /usr all the same.
get_filename_component(Lumiset_PREFIX "${CMAKE_CURRENT_LIST_DIR}" REALPATH)
get_filename_component(Lumiset_PREFIX "${Lumiset_PREFIX}/../../.." ABSOLUTE)
set(Lumiset_MODULE "${Lumiset_PREFIX}/lib/lumiset/libvantrel_lumiset5.so")

if(NOT TARGET Lumiset::host)
  add_library(Lumiset::host INTERFACE IMPORTED)
  set_target_properties(Lumiset::host PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES "${Lumiset_PREFIX}/include/lumiset"
    INTERFACE_COMPILE_FEATURES cxx_std_20)
  add_library(Lumiset::module SHARED IMPORTED)
  set_target_properties(Lumiset::module PROPERTIES
    IMPORTED_LOCATION "${Lumiset_MODULE}"
    IMPORTED_SONAME libvantrel_lumiset5.so
    INTERFACE_LINK_LIBRARIES Lumiset::host)
  include(CMakeFindDependencyMacro)
  find_dependency(Threads)
  add_library(Lumiset::hostkit STATIC IMPORTED)
  set_target_properties(Lumiset::hostkit PROPERTIES
    IMPORTED_LOCATION "${Lumiset_PREFIX}/lib/liblumiset_hostkit.a"
    INTERFACE_LINK_LIBRARIES "Lumiset::host;Threads::Threads;${CMAKE_DL_LIBS}")
  if(EXISTS "${Lumiset_PREFIX}/lib/liblumiset.so")
    add_library(Lumiset::c SHARED IMPORTED)
    set_target_properties(Lumiset::c PROPERTIES
      IMPORTED_LOCATION "${Lumiset_PREFIX}/lib/liblumiset.so"
      IMPORTED_SONAME liblumiset.so.1
      INTERFACE_INCLUDE_DIRECTORIES "${Lumiset_PREFIX}/include")
  endif()
endif()
