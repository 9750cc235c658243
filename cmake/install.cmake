# What is installed, in the components that become packages: lib, dev, server and client. The tree may be moved:
# nothing in it names its place.
include(CMakePackageConfigHelpers)

# How programs find the library of the same tree. A package for the system's own folders needs no help.
file(RELATIVE_PATH to_libraries /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
set(CMAKE_INSTALL_RPATH $ORIGIN/${to_libraries})

set_target_properties(tavisys_shared PROPERTIES EXPORT_NAME tavisys)
install(TARGETS tavisys_shared tavisys_static EXPORT tavisys
        LIBRARY COMPONENT lib NAMELINK_COMPONENT dev
        ARCHIVE COMPONENT dev
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tavisys COMPONENT dev)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/tavisys)
install(EXPORT tavisys NAMESPACE tavisys:: FILE tavisysTargets.cmake DESTINATION ${package_folder} COMPONENT dev)
configure_package_config_file(cmake/tavisysConfig.cmake.in tavisysConfig.cmake
                              INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(tavisysConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tavisysConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/tavisysConfigVersion.cmake
        DESTINATION ${package_folder} COMPONENT dev)

file(RELATIVE_PATH from_pkgconfig /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" from_pkgconfig ${from_pkgconfig})
list(TRANSFORM zlog_library PREPEND "-l" OUTPUT_VARIABLE zlog_flag)
configure_file(cmake/tavisys.pc.in tavisys.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tavisys.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

if(TAVISYS_BUILD_PROGRAMS)
  install(FILES packaging/tavisys-server.service DESTINATION lib/systemd/system COMPONENT server)
  # Where it is read from when the tree is the system's own; any other tree keeps it within.
  install(CODE "set(configuration \"${CMAKE_CURRENT_SOURCE_DIR}/packaging/tavisys-server.toml\")" COMPONENT server)
  install(CODE [[
    set(folder /etc/tavisys)
    if(NOT CMAKE_INSTALL_PREFIX STREQUAL /usr)
      string(PREPEND folder "${CMAKE_INSTALL_PREFIX}")
    endif()
    file(INSTALL ${configuration} DESTINATION ${folder})
  ]] COMPONENT server)
  # Where the shells of Debian look for what packages bring; from a tree elsewhere they are sourced.
  install(FILES packaging/completions/tavisys.bash DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions
          RENAME tavisys COMPONENT client)
  install(FILES packaging/completions/_tavisys DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/zsh/vendor-completions
          COMPONENT client)
endif()

# Manual pages, where there is Doxygen to make them of the headers.
find_program(DOXYGEN doxygen)
if(DOXYGEN)
  set(pages ${CMAKE_CURRENT_BINARY_DIR}/reference)
  file(GLOB page_sources CONFIGURE_DEPENDS docs/man/* docs/reference/*)
  list(TRANSFORM public_headers PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/ OUTPUT_VARIABLE header_paths)
  add_custom_command(OUTPUT ${pages}/made
                     COMMAND ${CMAKE_COMMAND} -E make_directory ${pages}
                     COMMAND docs/reference/man-pages ${pages} ${PROJECT_VERSION}
                     COMMAND ${CMAKE_COMMAND} -E touch ${pages}/made
                     DEPENDS ${header_paths} ${page_sources} WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}
                     COMMENT "Making the manual pages" VERBATIM)
  add_custom_target(man_pages ALL DEPENDS ${pages}/made)
  foreach(page "3;dev" "1;client" "8;server")
    list(GET page 0 section)
    list(GET page 1 component)
    install(DIRECTORY ${pages}/man/man${section} DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT ${component} OPTIONAL)
  endforeach()
else()
  message(STATUS "manual pages: none, doxygen isn't installed")
endif()
