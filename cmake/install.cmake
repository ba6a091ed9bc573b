# Where `cmake --install` puts things. Samples, tests and fuzz targets stay behind.
include(GNUInstallDirs)

if(CMAKE_SYSTEM_NAME STREQUAL "Darwin")
  # The launch agents name this place, so that no prefix moves it. Of the other, /usr/local is all that is
  # in everybody's path.
  set(program_folder "/Library/Application Support/Vantre/OrlanUpdater/1.0")
  set(tool_folder "/usr/local/bin")
  set(document_folder "/Library/Documentation/Wakerly")
else()
  # The system starts it, and section 8 describes it.
  set(program_folder "${CMAKE_INSTALL_SBINDIR}")
  set(tool_folder "${CMAKE_INSTALL_BINDIR}")
  set(document_folder "${CMAKE_INSTALL_DOCDIR}")
endif()
install(TARGETS wakerly RUNTIME DESTINATION "${program_folder}")
install(TARGETS wakerlyctl RUNTIME DESTINATION "${tool_folder}")
install(FILES packaging/completions/wakerlyctl.bash
  DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" RENAME wakerlyctl)
install(FILES packaging/completions/_wakerlyctl DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions")
install(FILES packaging/wakerly.8 packaging/wakerlyctl.8 DESTINATION "${CMAKE_INSTALL_MANDIR}/man8")
# In the same folders as here: they link to each other.
install(FILES README.md CHANGELOG.md CONTRIBUTING.md DESTINATION "${document_folder}")
install(DIRECTORY docs DESTINATION "${document_folder}" FILES_MATCHING PATTERN *.md PATTERN *.svg PATTERN *.json)
