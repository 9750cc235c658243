# `cpack -G DEB` in the build folder of the preset release: four Debian packages, one for each component of
# cmake/install.cmake. Their folders are those of the prefix /usr.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR "")
set(CPACK_PACKAGE_CONTACT "libtavisys developers <developers@tavisys.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_SET_DESTDIR ON) # also of what goes to /etc
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL lib dev server client)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEB_COMPONENT_INSTALL ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=") # packages of others run with every later one
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Where dpkg-shlibdeps finds the library, which isn't installed; whose package that is it can't know.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_CURRENT_BINARY_DIR})
set(this_version "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
set(soname_package libtavisys${PROJECT_VERSION_MAJOR})

# What a package is called, its section, its first line and the rest of its description.
function(tavisys_package component name section summary description)
  string(TOUPPER ${component} upper)
  foreach(setting PACKAGE_NAME=${name} PACKAGE_SECTION=${section} "DESCRIPTION=${summary}\n${description}")
    string(REGEX MATCH "^[A-Z_]+" key ${setting})
    string(REPLACE "${key}=" "" value ${setting})
    set(CPACK_DEBIAN_${upper}_${key} ${value} PARENT_SCOPE)
  endforeach()
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${summary}\n${description}" PARENT_SCOPE)
  set(documents ${CMAKE_INSTALL_DATAROOTDIR}/doc/${name})
  install(FILES packaging/copyright DESTINATION ${documents} COMPONENT ${component})
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian.gz DESTINATION ${documents} COMPONENT ${component})
endfunction()

file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIB_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_BINARY_DIR}/triggers)
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/conffiles "/etc/tavisys/tavisys-server.toml\n")
set(server_scripts ${CMAKE_CURRENT_SOURCE_DIR}/packaging/server)
set(CPACK_DEBIAN_SERVER_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_BINARY_DIR}/conffiles ${server_scripts}/postinst
    ${server_scripts}/prerm ${server_scripts}/postrm)
# Without a time inside, so that the same sources make the same packages.
configure_file(packaging/changelog.in changelog.Debian @ONLY)
execute_process(COMMAND gzip -9 -n -f -k ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)

tavisys_package(lib ${soname_package} libs "shared library of a movie cabinet"
"The messages and their channel, a codec for every record, the in-memory
catalogue, the metadata parser and the client calls that the server, the
players and the touch screens of a movie cabinet share.")
tavisys_package(dev libtavisys-dev libdevel "headers and static library of a movie cabinet"
"What is needed to build programs with libtavisys, in C, C++ and other
languages: headers, libraries, files for pkg-config and CMake.")
foreach(component DEV SERVER CLIENT)
  set(CPACK_DEBIAN_${component}_PACKAGE_DEPENDS "${soname_package} ${this_version}")
endforeach()
string(APPEND CPACK_DEBIAN_DEV_PACKAGE_DEPENDS ", libxml2-dev")
set(CPACK_DEBIAN_DEV_PACKAGE_SHLIBDEPS OFF)
tavisys_package(server tavisys-server net "server of a movie cabinet"
"Keeps a catalogue of the movies on its disks, read from their XML metadata,
and answers players, touch screens and other servers over TCP port 40001.")
tavisys_package(client tavisys-client net "command-line client of a movie cabinet"
"Browses the movies of a cabinet, shows its status and its disks and fetches
the metadata of their movies.")
include(CPack)
