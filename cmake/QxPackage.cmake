# Installation and the Debian package: the module with its public headers, the loader of
# registered classes with its pkg-config file; the plug-ins, qxfx and the content pack
# install from their own folders.
set(QX_SOVERSION 5)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/qxdynamiceffects DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# The way from the pkg-config folder up to the prefix.
file(RELATIVE_PATH QX_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/qxdynamiceffects.pc.in ${PROJECT_BINARY_DIR}/qxdynamiceffects.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qxdynamiceffects.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qxdynamiceffects)
set(CPACK_PACKAGE_VENDOR "QXDynamicEffects")
set(CPACK_PACKAGE_CONTACT "QXDynamicEffects maintainers <qxdynamiceffects@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Video effects for Linux video editors: library, frei0r and GStreamer plug-ins, qxfx")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
# Dependencies from the libraries the binaries link.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
include(CPack)
