# The Debian packages, below /usr: everything that is installed, but for the Python package and the desktop program,
# which are ones of their own: servers need no window system.
set(LUMISET_MAINTAINER "The Lumiset authors <lumiset@example.org>" CACHE STRING "Who maintains the package")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME lumiset)
set(CPACK_PACKAGE_CONTACT "${LUMISET_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR})
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_NAME lumiset)
set(CPACK_DEBIAN_UNSPECIFIED_DESCRIPTION
"Ten effects, among them outlines, old television sets and viewfinders, with
presets. The program lumiset renders images and video through them, frei0r
plug-ins bring them to ffmpeg, melt, Kdenlive, Shotcut and GStreamer, an OpenFX
bundle to editors and compositors. For programmers there are a host kit in C++,
a C interface and the documents.")
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-lumiset)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_DESCRIPTION
"Ten effects, among them outlines, old television sets and viewfinders, with
presets, for NumPy arrays.")
if(LUMISET_BUILD_PYTHON)
  math(EXPR after "${LUMISET_PYTHON_MINOR} + 1")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "lumiset (= ${PROJECT_VERSION}), python3-numpy, \
python3 (>= 3.${LUMISET_PYTHON_MINOR}), python3 (<< 3.${after})")
endif()
set(CPACK_DEBIAN_STUDIO_PACKAGE_NAME lumiset-studio)
set(CPACK_DEBIAN_STUDIO_PACKAGE_DEPENDS "lumiset (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_STUDIO_DESCRIPTION
"The desktop program: looks and presets as pictures of the present frame, values
and corners to drag, keys, comparison with the source, and export to what was
seen, byte for byte.")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# These are looked for while the program runs, so they are not among the libraries that it is linked with.
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_RECOMMENDS "libegl1, libgl1, libgl1-mesa-dri")
set(CPACK_DEBIAN_UNSPECIFIED_PACKAGE_SUGGESTS "ffmpeg, kdenlive, melt, parallel, python3-lumiset, slurm-client, zenity")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

configure_file(${CMAKE_CURRENT_LIST_DIR}/debian.cmake.in ${CMAKE_BINARY_DIR}/debian.cmake @ONLY)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_BINARY_DIR}/debian.cmake)
include(CPack)
