# What `cmake --install` puts beside the programs (examples, documentation) and the Debian
# package CPack makes of it all (`cpack -G DEB` in the build folder).

set(tamlo_share_dir ${CMAKE_INSTALL_DATADIR}/tamlo_matlab_dispatch)

# The example scenarios name their series and strategies relative to themselves, so the
# folder is installed whole.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/
  DESTINATION ${tamlo_share_dir}/examples
  FILES_MATCHING PATTERN "*.json" PATTERN "*.csv" PATTERN "*.m" PATTERN "*.md")
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}
  FILES_MATCHING PATTERN "*.md")

# Debian wants a copyright file and a compressed changelog in the documentation folder, and
# compressed manual pages.
set(tamlo_debian_dir ${PROJECT_SOURCE_DIR}/cmake/debian)
set(tamlo_changelog_gz ${PROJECT_BINARY_DIR}/packaging/changelog.Debian.gz)
set(tamlo_manual_gz ${PROJECT_BINARY_DIR}/packaging/dispatch-bench.1.gz)
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/packaging)
add_custom_command(OUTPUT ${tamlo_changelog_gz} ${tamlo_manual_gz}
  COMMAND gzip -9nc ${tamlo_debian_dir}/changelog > ${tamlo_changelog_gz}
  COMMAND gzip -9nc ${tamlo_debian_dir}/dispatch-bench.1 > ${tamlo_manual_gz}
  DEPENDS ${tamlo_debian_dir}/changelog ${tamlo_debian_dir}/dispatch-bench.1
  VERBATIM)
add_custom_target(tamlo_debian_files ALL DEPENDS ${tamlo_changelog_gz} ${tamlo_manual_gz})
install(FILES ${tamlo_debian_dir}/copyright ${tamlo_changelog_gz} DESTINATION ${CMAKE_INSTALL_DOCDIR})
if(TARGET dispatch-bench)
  install(FILES ${tamlo_manual_gz} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()
install(FILES ${tamlo_debian_dir}/lintian-overrides
  DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME tamlo-matlab-dispatch)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tamlo-matlab-dispatch)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "tamlo developers")
set(CPACK_PACKAGE_CONTACT "tamlo developers <tamlo-dev@lists.tamlo.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "MATLAB dispatch strategies for a hybrid power system simulator")
set(CPACK_PACKAGE_DESCRIPTION
"A shared library that a time-step simulator of hybrid power systems loads to
hand each time step's dispatch decision to MATLAB functions the user writes,
and that checks every decision against the system's physical and contractual
rules.
.
Without MATLAB, the library runs the user's .m files in GNU Octave, through
stand-ins for MATLAB's libmx and libeng. The package also holds
dispatch-bench, a simulator of one hybrid system for trying strategies, an
example system with two strategies, and the documentation.")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# Runtime dependencies (Octave for the engine, the C++ runtime) from the binaries themselves.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
