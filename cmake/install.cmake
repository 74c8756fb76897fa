# What is installed, and where. The folders are the same under every prefix: hosts search lib/frei0r-1 alone, not the
# folders that some systems have for each architecture. Everything finds its neighbours from its own place, so an
# installed tree can be moved.
install(TARGETS lumiset RUNTIME DESTINATION bin)
install(TARGETS vantrel_lumiset5 LIBRARY DESTINATION lib/lumiset)
install(TARGETS gpu_monitor RUNTIME DESTINATION lib/lumiset)  # beside the module, which starts it
install(TARGETS ${LUMISET_FREI0R_PLUGINS} LIBRARY DESTINATION lib/frei0r-1)
# Hosts look in /usr/OFX/Plugins; where the prefix is another one OFX_PLUGIN_PATH tells them.
install(DIRECTORY ${CMAKE_BINARY_DIR}/Lumiset.ofx.bundle DESTINATION OFX/Plugins USE_SOURCE_PERMISSIONS)

# For authors of hosts.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/host DESTINATION include/lumiset
  FILES_MATCHING PATTERN "*.h")
configure_file(${CMAKE_CURRENT_LIST_DIR}/lumiset.pc.in ${CMAKE_BINARY_DIR}/lumiset.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/lumiset.pc DESTINATION lib/pkgconfig)
include(CMakePackageConfigHelpers)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/LumisetConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/LumisetConfig.cmake ${CMAKE_BINARY_DIR}/LumisetConfigVersion.cmake
  DESTINATION lib/cmake/Lumiset)

# Made from the tables by the build: manual page, completions, descriptions for editors.
install(DIRECTORY ${CMAKE_BINARY_DIR}/share/ DESTINATION share)
install(FILES ${PROJECT_SOURCE_DIR}/docs/lumilook.schema.json DESTINATION share/lumiset)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION share/doc/lumiset RENAME copyright)
# The terms of the font that the program carries along.
install(FILES /usr/share/doc/fonts-dejavu-core/copyright DESTINATION share/doc/lumiset RENAME copyright.DejaVu)
