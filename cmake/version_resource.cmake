# lumiset_version_resource(TARGET "DESCRIPTION") has Windows show version and origin of a program or library; elsewhere
# files carry no such thing.
function(lumiset_version_resource target description)
  if(NOT WIN32)
    return()
  endif()
  get_target_property(type ${target} TYPE)
  set(file_type VFT_DLL)
  if(type STREQUAL "EXECUTABLE")
    set(file_type VFT_APP)
  endif()
  set(resource ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${resource}.in @ONLY)
  file(GENERATE OUTPUT ${resource} INPUT ${resource}.in)  # the file's name
  target_sources(${target} PRIVATE ${resource})
endfunction()
