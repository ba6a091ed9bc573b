# The Debian package, for `cpack -G DEB`: what is installed, and what Debian wants beside it.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "Wakerly developers <wakerly@wakerly.invalid>")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Loaded when they are first called, if they are there.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "libplist3, libsystemd0")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "start-up companion of a desktop software updater")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Wakerly is started when a user logs on, or on a schedule. It reads the
updater's preferences, logs what it finds, starts the updates notifier when a
check is due, drives the updater's client library, and ends.

The macOS program is the product. This build runs the same code over a folder
tree of the same shape, to try and test it.")

configure_file(packaging/debian/changelog.in debian/changelog @ONLY)
set(CPACK_WAKERLY_DOCUMENTS "${CMAKE_CURRENT_BINARY_DIR}/debian/changelog"
                            "${CMAKE_CURRENT_SOURCE_DIR}/packaging/debian/copyright")
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/package_files.cmake")
include(CPack)
