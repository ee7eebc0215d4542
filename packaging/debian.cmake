# Brings what is to be packed into the form that Debian asks for: pages of the manual and lists of changes compressed,
# without the time of day.
file(GLOB MANUAL ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share/man/man1/*.1)
set(CHANGES ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share/doc/vantro/changelog)
file(COPY_FILE ${CMAKE_CURRENT_LIST_DIR}/changelog ${CHANGES})
execute_process(COMMAND gzip -9 --no-name ${MANUAL} ${CHANGES} COMMAND_ERROR_IS_FATAL ANY)
