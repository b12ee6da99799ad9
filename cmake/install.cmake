# What is installed where, and the Debian packages: `quarl`, the program, and `libquarl-dev`, the
# library under it.
include(CMakePackageConfigHelpers)

set(dev_docdir ${CMAKE_INSTALL_DATAROOTDIR}/doc/libquarl-dev)
set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/quarl)

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME runtime)
install(TARGETS ${QUARL_TARGETS} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES etc/quarl.pf ${CMAKE_BINARY_DIR}/share/quarl/quarl.schema.json
        DESTINATION ${CMAKE_INSTALL_DATADIR}/quarl)
install(FILES doc/quarl.pf.5 DESTINATION ${CMAKE_INSTALL_MANDIR}/man5)
install(FILES ${CMAKE_BINARY_DIR}/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES examples/sample.seed DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
install(FILES doc/quarl-html.png doc/quarl-data.png DESTINATION ${CMAKE_INSTALL_DOCDIR}/doc)
# What the documents say of files that are in the source tree alone is a text there, and no link.
set(documents README.md CHANGELOG.md SECURITY.md)
set(linked ${documents} examples/sample.seed doc/quarl-html.png doc/quarl-data.png)
install(CODE "
  set(documents ${documents})
  set(linked ${linked})
  set(source_folder \"${CMAKE_SOURCE_DIR}\")
  set(made_folder \"${CMAKE_BINARY_DIR}/documents\")
  include(\"${CMAKE_SOURCE_DIR}/cmake/documents.cmake\")
  foreach(document \${documents})
    if(EXISTS \"\${made_folder}/\${document}\")
      file(INSTALL \"\${made_folder}/\${document}\"
           DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DOCDIR}\")
    endif()
  endforeach()")
foreach(program ${QUARL_PROGRAMS})
  install(FILES doc/${program}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES completion/${program}.bash RENAME ${program}
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
endforeach()
# Below /usr, Debian's zsh looks into a folder of its own; elsewhere zsh has one name for it.
set(zsh_dir ${CMAKE_INSTALL_DATADIR}/zsh)
install(CODE "
  set(directory site-functions)
  if(CMAKE_INSTALL_PREFIX MATCHES \"/usr/?$\")
    set(directory vendor-completions)
  endif()
  foreach(program ${QUARL_PROGRAMS})
    file(INSTALL \"${CMAKE_SOURCE_DIR}/completion/_\${program}\"
         DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${zsh_dir}/\${directory}\")
  endforeach()")

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)
install(TARGETS quarl_lib EXPORT quarl_targets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
set_target_properties(quarl_lib PROPERTIES EXPORT_NAME quarl)
install(EXPORT quarl_targets NAMESPACE quarl:: FILE quarl-config.cmake DESTINATION ${config_dir})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/quarl-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/quarl-config-version.cmake DESTINATION ${config_dir})
install(DIRECTORY include/quarl ${CMAKE_BINARY_DIR}/include/quarl
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
# The prefix is taken from where the file lies, so that an installed tree can be moved.
file(RELATIVE_PATH pc_to_prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/quarl.pc.in ${CMAKE_BINARY_DIR}/quarl.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/quarl.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
install(FILES LICENSE DESTINATION ${dev_docdir} RENAME copyright)
install(DIRECTORY examples DESTINATION ${dev_docdir}
        FILES_MATCHING PATTERN "*.cpp" PATTERN CMakeLists.txt)

# Installing and packaging take what was built, and build nothing themselves: tests do both.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quarl)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package's description begins with its own
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_SOURCE_DIR}/cmake/package_tools.cmake)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_SOURCE_DIR}/cmake/package_permissions.cmake)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "the quarl developers")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME quarl)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION science)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "lists what SEED volumes hold, exact to the byte
quarl reads a volume in the FDSN Standard for the Exchange of Earthquake Data and lists every
control-header blockette and data record in it, with counts, bytes and shares at the end.
Volumes may be compressed, and may come from standard input or a tape. quarl-json prints the same
as lines of JSON for programs, quarl-check tells whether it is sound, quarl-html shows it as a
page for browsers, quarl-mseed writes its data records as miniSEED, quarl-stationxml its headers
as FDSN StationXML, and quarl-db merges volumes into a database.")
# What the program is linked with is found by dpkg-shlibdeps. The rest is loaded when it is needed:
# zlib and liblzma are on every Debian system; ISA-L reads gzip faster than zlib; libarchive reads
# the rarer compressions; SOCI's backends bring SOCI and the databases' client libraries along.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "zlib1g, liblzma5")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS
    "libisal2, libarchive13, libsoci-sqlite3-4.0, libsoci-postgresql4.0")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libquarl-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS "libisal2, libarchive13, zlib1g, liblzma5")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "reads SEED volumes: static library and headers
The library under quarl: framing and parsing of SEED volumes, for C++20 programs. Found by CMake's
find_package(quarl) and by pkg-config.")
include(CPack)
