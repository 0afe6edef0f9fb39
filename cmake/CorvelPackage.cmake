# The Debian packages, made of what was built and tested: cpack --config BUILD/CPackConfig.cmake -B FOLDER
# Included after every install rule. Each component of the install rules is a package: "fleet" would be corvel-fleet and
# needs its description here. Dependencies on libraries come from dpkg-shlibdeps; what no linker can see is named here.
# What Debian wants inside every package (copyright, change log, compressed manual pages) packaging/debian.cmake puts there.
set(CPACK_GENERATOR DEB)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_NAME corvel)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # else it heads each package's own
set(CPACK_PACKAGE_CONTACT "corvel developers <maintainers@corvel.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS # whatever the umask of who makes the package
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_SOURCE_DIR}/packaging/debian.cmake")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE) # a package for each
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 0corvel1) # Debian's own would start at 1 and be newer
set(CPACK_DEBIAN_PACKAGE_SOURCE corvel)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")

set(version "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")
set(single "corvel (<< 8.0.0-0corvel1)") # which held all of it
set(about "corvel sets up the SMPTE ST 2110 inputs and outputs of a video record and\nplayback server.")

# Programs, papers, desktop file.
set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME corvel)
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION "dialog and tools to set up the SMPTE ST 2110 I/O of a video server
One dialog for the addresses, ports, formats, clock and NMOS settings of a
video server's IP channels, with settings files, session descriptions, a
software PTP clock and command-line tools to look into each of them.")
# At least this version, so that a site's own libraries can stand in: "Provides: corvel-platform (= ${PROJECT_VERSION})".
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "corvel-platform (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_RECOMMENDS "fonts-noto-core | fonts-dejavu-core")

# What a site may exchange for its own: the three C libraries, and what the PTP client needs.
set(CPACK_DEBIAN_PLATFORM_PACKAGE_NAME corvel-platform)
set(CPACK_DEBIAN_PLATFORM_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PLATFORM_DESCRIPTION "configuration store and PTP client of corvel
${about}
.
This package holds the three libraries below the dialog: rkcfg
(configuration store), rkos (files, events, log) and rkptp (software PTP
clock), in a folder of their own because a site may put its own in their place.")
set(CPACK_DEBIAN_PLATFORM_PACKAGE_DEPENDS "libcap2-bin") # postinst calls setcap
set(CPACK_DEBIAN_PLATFORM_PACKAGE_RECOMMENDS linuxptp)
set(CPACK_DEBIAN_PLATFORM_PACKAGE_BREAKS "${single}")
set(CPACK_DEBIAN_PLATFORM_PACKAGE_REPLACES "${single}")
set(CPACK_DEBIAN_PLATFORM_PACKAGE_CONTROL_EXTRA "${CMAKE_SOURCE_DIR}/packaging/postinst")

# The fleet's service, apart because of what it needs.
set(CPACK_DEBIAN_FLEET_PACKAGE_NAME corvel-fleet)
set(CPACK_DEBIAN_FLEET_PACKAGE_SECTION net)
set(CPACK_DEBIAN_FLEET_DESCRIPTION "settings of many video servers in one replicated store
${about}
.
This package holds the service that keeps the settings of one server, or a
desk's copies of many, equal with an etcd cluster; its commands for people; and
a script for the certificates, users and roles of a plant.")
set(CPACK_DEBIAN_FLEET_PACKAGE_DEPENDS "corvel-platform (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_FLEET_PACKAGE_RECOMMENDS "corvel, etcd-client, openssl")

# The dialog for other applications.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libcorvel${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_MULTIARCH same)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "IP Video Setup dialog for other applications - runtime
${about}
.
This package holds the library with which another application shows the dialog
and passes its edits on to a recording engine.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "corvel-platform (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_BREAKS "${single}")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_REPLACES "${single}")
# CPack itself would call ldconfig from a postinst, where Debian has a trigger. So it is not shown the library:
# packaging/debian.cmake asks dpkg-shlibdeps, and the two files are made here.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS OFF)
set(control "${CMAKE_BINARY_DIR}/packaging/control")
file(WRITE "${control}/triggers" "activate-noawait ldconfig\n")
file(WRITE "${control}/shlibs"
  "libcorvel ${PROJECT_VERSION_MAJOR} ${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME} (>= ${PROJECT_VERSION})\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${control}/triggers" "${control}/shlibs")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libcorvel-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "IP Video Setup dialog for other applications - development files
${about}
.
This package holds the headers, the CMake package and the pkg-config files of
the dialog's library and of the three platform libraries, and an example.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME} (= ${version}), corvel-platform (>= ${PROJECT_VERSION}), qtbase5-dev (>= 5.15)")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_BREAKS "${single}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_REPLACES "${single}")

# For packaging/debian.cmake.
set(CPACK_CORVEL_SOURCE "${CMAKE_SOURCE_DIR}")
include(CPack)
