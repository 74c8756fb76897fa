# What is installed, and where. The folders are the same under every prefix: hosts search lib/frei0r-1 alone, not the
# folders that some systems have for each architecture. Everything finds its neighbours from its own place, so an
# installed tree can be moved.
install(TARGETS lumiset RUNTIME DESTINATION bin)
install(TARGETS vantrel_lumiset5 LIBRARY DESTINATION lib/lumiset)
install(TARGETS gpu_monitor RUNTIME DESTINATION lib/lumiset)  # beside the module, which starts it
install(TARGETS ${LUMISET_FREI0R_PLUGINS} LIBRARY DESTINATION lib/frei0r-1)
# Hosts look in /usr/OFX/Plugins; where the prefix is another one OFX_PLUGIN_PATH tells them.
install(DIRECTORY ${CMAKE_BINARY_DIR}/Lumiset.ofx.bundle DESTINATION OFX/Plugins USE_SOURCE_PERMISSIONS)

# For authors of hosts: the boundary, and the host kit in one archive.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/host DESTINATION include/lumiset
  FILES_MATCHING PATTERN "*.h")
foreach(header ${LUMISET_HOSTKIT_HEADERS})
  cmake_path(GET header PARENT_PATH folder)
  install(FILES ${PROJECT_SOURCE_DIR}/hostkit/${header} DESTINATION include/lumiset/hostkit/${folder})
endforeach()
add_library(lumiset_hostkit_archive STATIC
  $<TARGET_OBJECTS:lumiset_hostkit> $<TARGET_OBJECTS:lumiset_hostkit_gl> $<TARGET_OBJECTS:lumiset_module_file>
  "$<FILTER:$<TARGET_OBJECTS:lumiset_platform>,INCLUDE,/(pending_[a-z]+|environment|text)\\.cpp>")  # what the kit uses of it
set_target_properties(lumiset_hostkit_archive PROPERTIES
  LINKER_LANGUAGE CXX
  OUTPUT_NAME lumiset_hostkit
  ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/archive)
install(TARGETS lumiset_hostkit_archive ARCHIVE DESTINATION lib)
set(packages lumiset lumiset-hostkit)
if(LUMISET_BUILD_C)
  install(TARGETS lumiset_c LIBRARY DESTINATION lib)
  install(FILES ${PROJECT_SOURCE_DIR}/bindings/c/lumiset.h DESTINATION include)
  list(APPEND packages lumiset-c)
endif()
foreach(package ${packages})
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${package}.pc.in ${CMAKE_BINARY_DIR}/${package}.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/${package}.pc DESTINATION lib/pkgconfig)
endforeach()
include(CMakePackageConfigHelpers)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/LumisetConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/LumisetConfig.cmake ${CMAKE_BINARY_DIR}/LumisetConfigVersion.cmake
  DESTINATION lib/cmake/Lumiset)

if(LUMISET_BUILD_PYTHON)
  install(DIRECTORY ${LUMISET_PYTHON_PACKAGE} DESTINATION lib/python3/dist-packages COMPONENT python
    PATTERN __pycache__ EXCLUDE)
endif()

# The pages, with their pictures and examples.
set(documents ${CMAKE_BINARY_DIR}/documents)
file(GLOB_RECURSE pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/* ${PROJECT_SOURCE_DIR}/examples/*)
add_custom_command(OUTPUT ${documents}/README.md
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${documents}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${documents}
  COMMAND ${PROJECT_SOURCE_DIR}/scripts/docs --installed ${documents}
  DEPENDS ${pages} ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_SOURCE_DIR}/scripts/docs
  VERBATIM)
add_custom_target(lumiset_documents ALL DEPENDS ${documents}/README.md)
install(DIRECTORY ${documents}/ DESTINATION share/doc/lumiset)

# Made from the tables by the build: manual page, completions, descriptions for editors.
install(DIRECTORY ${CMAKE_BINARY_DIR}/share/ DESTINATION share)
install(FILES ${PROJECT_SOURCE_DIR}/docs/lumilook.schema.json DESTINATION share/lumiset)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION share/doc/lumiset RENAME copyright)
# The terms of the font that the program carries along.
install(FILES /usr/share/doc/fonts-dejavu-core/copyright DESTINATION share/doc/lumiset RENAME copyright.DejaVu)

# The desktop program, a package of its own: who renders on a server wants no window system.
if(TARGET lumiset-studio)
  set(studio ${PROJECT_SOURCE_DIR}/apps/studio)
  install(TARGETS lumiset-studio RUNTIME DESTINATION bin COMPONENT studio)
  install(FILES ${studio}/share/lumiset-studio.desktop DESTINATION share/applications COMPONENT studio)
  install(FILES ${studio}/icons/lumiset-studio.svg DESTINATION share/icons/hicolor/scalable/apps COMPONENT studio)
  install(FILES ${studio}/share/org.lumiset.Studio.metainfo.xml DESTINATION share/metainfo COMPONENT studio)
  install(FILES ${studio}/share/lumiset-studio.xml DESTINATION share/mime/packages COMPONENT studio)
  install(FILES ${studio}/share/lumiset-studio.1 DESTINATION share/man/man1 COMPONENT studio)
  install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION share/doc/lumiset-studio RENAME copyright COMPONENT studio)
endif()
