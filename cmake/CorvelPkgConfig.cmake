# corvel_pkg_config(NAME PURPOSE LIBS flags... [LIBDIR folder] [CFLAGS flags...] [REQUIRES packages...]): installs NAME.pc.
# Its paths start at the place of the file, so an installed tree may be moved. LIBDIR is where the library is.
function(corvel_pkg_config name purpose)
  cmake_parse_arguments(PC "" "LIBDIR" "LIBS;CFLAGS;REQUIRES" ${ARGN})
  file(RELATIVE_PATH up "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
  string(REGEX REPLACE "/$" "" up "${up}")
  if(NOT PC_LIBDIR)
    set(PC_LIBDIR "${CMAKE_INSTALL_LIBDIR}")
  endif()
  list(JOIN PC_LIBS " " libs)
  list(JOIN PC_CFLAGS " " cflags)
  list(JOIN PC_REQUIRES ", " requires)
  file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/${name}.pc"
    "prefix=\${pcfiledir}/${up}\n"
    "libdir=\${prefix}/${PC_LIBDIR}\n"
    "includedir=\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}\n\n"
    "Name: ${name}\n"
    "Description: ${purpose}\n"
    "Version: ${PROJECT_VERSION}\n"
    "Requires: ${requires}\n"
    "Libs: -L\${libdir} ${libs}\n"
    "Cflags: -I\${includedir} ${cflags}\n")
  install(FILES "${CMAKE_CURRENT_BINARY_DIR}/${name}.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT development)
endfunction()
