find_package(GTest REQUIRED)
include(GoogleTest)

# lumiset_test(NAME SOURCES file... LINKS library... ) declares a GoogleTest program whose cases CTest lists. Where
# programs run in an emulator CTest lists the programs alone: starting one costs more than most cases. The user's own
# options neither change what tests see nor are changed by them, and hosts under test have a crash monitor of their own.
function(lumiset_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE lumiset_options ${ARG_LINKS} GTest::gtest_main)
  if(CMAKE_CROSSCOMPILING)
    add_test(NAME ${name} COMMAND ${name})
    # GoogleTest's last words are the skipped cases, unless some failed: then CTest calls the program skipped too.
    set_tests_properties(${name} PROPERTIES
      SKIP_REGULAR_EXPRESSION "\\[  SKIPPED \\] [^[]*$"
      FIXTURES_REQUIRED Monitor)
  else()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
      PROPERTIES
        ENVIRONMENT XDG_CONFIG_HOME=${CMAKE_BINARY_DIR}/config
        ENVIRONMENT_MODIFICATION XDG_RUNTIME_DIR=set:${CMAKE_BINARY_DIR}/runtime
        FIXTURES_REQUIRED Monitor)
  endif()
endfunction()
