# Run by CPack over the tree that becomes the Debian package.
set(share "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share")
file(COPY ${CPACK_WAKERLY_DOCUMENTS} DESTINATION "${share}/doc/wakerly"
     FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
execute_process(COMMAND gzip -9n "${share}/doc/wakerly/changelog" "${share}/man/man8/wakerly.8"
                        "${share}/man/man8/wakerlyctl.8"
                COMMAND_ERROR_IS_FATAL ANY)
# Where Debian's zsh looks.
file(RENAME "${share}/zsh/site-functions" "${share}/zsh/vendor-completions")
