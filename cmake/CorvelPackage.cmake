# The Debian package, made with: cpack --config BUILD/CPackConfig.cmake -G DEB
# Included after every install rule. Dependencies on libraries come from dpkg-shlibdeps; what no
# linker can see is named here.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME corvel)
set(CPACK_PACKAGE_CONTACT "corvel developers <maintainers@corvel.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "set up the SMPTE ST 2110 I/O of a video server")
set(CPACK_PACKAGE_DESCRIPTION
  "One dialog for the addresses, ports, formats, clock and NMOS settings of a\nvideo server's IP channels, with settings files, session descriptions, a\nsoftware PTP clock and command-line tools to look into each of them.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libcap2-bin")                                     # postinst calls setcap
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "linuxptp, fonts-noto-core | fonts-dejavu-core")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA "${CMAKE_SOURCE_DIR}/packaging/postinst")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
