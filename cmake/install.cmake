# Where `cmake --install` puts things. Samples, tests and fuzz targets stay behind.
include(GNUInstallDirs)

if(CMAKE_SYSTEM_NAME STREQUAL "Darwin")
  # The launch agents name this place, so that no prefix moves it.
  set(program_folder "/Library/Application Support/Vantre/OrlanUpdater/1.0")
else()
  # The system starts it, and section 8 describes it.
  set(program_folder "${CMAKE_INSTALL_SBINDIR}")
endif()
install(TARGETS wakerly RUNTIME DESTINATION "${program_folder}")
install(FILES packaging/wakerly.8 DESTINATION "${CMAKE_INSTALL_MANDIR}/man8")
# In the same folders as here: they link to each other.
install(FILES README.md CHANGELOG.md CONTRIBUTING.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(DIRECTORY docs DESTINATION "${CMAKE_INSTALL_DOCDIR}" FILES_MATCHING PATTERN *.md PATTERN *.svg PATTERN performance.json)
