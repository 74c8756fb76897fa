# find_package(Lumiset) gives authors of hosts
#   Lumiset::host     the headers
#   Lumiset::module   the headers and the module itself, to link with
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
endif()
