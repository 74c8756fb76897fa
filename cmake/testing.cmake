find_package(GTest REQUIRED)
include(GoogleTest)

# What CTest reads before it runs the tests of a folder and those below, and so the environment of all of them: the
# user's own options, looks and reports of crashes neither change what tests see nor are changed by them, and hosts under
# test have a crash monitor of their own.
set(LUMISET_TEST_ENVIRONMENT ${PROJECT_BINARY_DIR}/test_environment.cmake)
file(CONFIGURE OUTPUT ${LUMISET_TEST_ENVIRONMENT} @ONLY CONTENT [[
set(ENV{XDG_CONFIG_HOME} "@PROJECT_BINARY_DIR@/config")
set(ENV{XDG_DATA_HOME} "@PROJECT_BINARY_DIR@/data")
set(ENV{XDG_RUNTIME_DIR} "@PROJECT_BINARY_DIR@/runtime")
]])

# lumiset_test(NAME SOURCES file... LINKS library... ) declares a GoogleTest program whose cases CTest lists. Where
# programs run in an emulator CTest lists the programs alone: starting one costs more than most cases. With BY_HAND it is
# neither listed nor built unless somebody asks for it.
function(lumiset_test name)
  cmake_parse_arguments(ARG "BY_HAND" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE lumiset_options ${ARG_LINKS} GTest::gtest_main)
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${LUMISET_TEST_ENVIRONMENT})
  if(ARG_BY_HAND)
    set_target_properties(${name} PROPERTIES EXCLUDE_FROM_ALL ON)
  elseif(CMAKE_CROSSCOMPILING)
    add_test(NAME ${name} COMMAND ${name})
    # GoogleTest's last words are the skipped cases, unless some failed: then CTest calls the program skipped too.
    set_tests_properties(${name} PROPERTIES
      SKIP_REGULAR_EXPRESSION "\\[  SKIPPED \\] [^[]*$"
      FIXTURES_REQUIRED Monitor)
  else()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES FIXTURES_REQUIRED Monitor)
  endif()
endfunction()
