# libcorvel: the dialog as a shared library for other applications, with its headers and a CMake package.
# The program itself does not use it; it is made of the same objects. Included by app/.
#
#   find_package(corvel 8 REQUIRED)
#   target_link_libraries(host PRIVATE corvel::corvel)

include(CMakePackageConfigHelpers)

add_library(corvel_library SHARED
  $<TARGET_OBJECTS:corvel_app>
  $<TARGET_OBJECTS:corvel_view>
  $<TARGET_OBJECTS:corvel_keys>
  $<TARGET_OBJECTS:corvel_store>
  $<TARGET_OBJECTS:corvel_files>
  $<TARGET_OBJECTS:corvel_fileload>
  $<TARGET_OBJECTS:corvel_theme>)
# The names that the package gives them, so that an example reads the same in this tree and outside.
add_library(corvel::corvel ALIAS corvel_library)
foreach(name rkos rkcfg rkptp)
  add_library(corvel::${name} ALIAS ${name})
endforeach()
set_target_properties(corvel_library PROPERTIES
  OUTPUT_NAME corvel
  VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR}
  LINKER_LANGUAGE CXX
  LINK_DEPENDS "${CMAKE_SOURCE_DIR}/cmake/libcorvel.map")
target_include_directories(corvel_library INTERFACE "${CMAKE_SOURCE_DIR}")
target_compile_features(corvel_library INTERFACE cxx_std_17)
# Of what is shared with the command line only the words of the history are in it: an archive, not objects.
target_link_libraries(corvel_library PUBLIC Qt5::Widgets rkptp
  PRIVATE corvel_ops rkcfg rkos corvel_options ${CMAKE_DL_LIBS})
# Only what the headers declare is visible, so that nothing inside meets a host's names.
target_link_options(corvel_library PRIVATE "-Wl,--version-script=${CMAKE_SOURCE_DIR}/cmake/libcorvel.map")
corvel_run_path(corvel_library)
if(CORVEL_PLATFORM_DIR) # a site's own libraries are not installed beside this one
  set_target_properties(corvel_library PROPERTIES INSTALL_RPATH_USE_LINK_PATH ON)
endif()

# The headers include each other by their place in the tree, so that place is kept below include/corvel.
set(CORVEL_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}/corvel")
set(CORVEL_CMAKEDIR "${CMAKE_INSTALL_LIBDIR}/cmake/corvel")
set(headers app/corvel.h app/mediacommand.h channel/channelkeys.h channel/valuenames.h theme/lineaddress.h)
foreach(header ${headers})
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES "${CMAKE_SOURCE_DIR}/${header}" DESTINATION "${CORVEL_INCLUDEDIR}/${folder}" COMPONENT development)
endforeach()
if(CORVEL_PLATFORM_DIR)
  set(platform_part CFLAGS "-I\${includedir}/corvel -I${CORVEL_PLATFORM_DIR}/include" REQUIRES Qt5Widgets)
else()
  set(platform_part CFLAGS "-I\${includedir}/corvel" REQUIRES Qt5Widgets rkptp)
endif()
corvel_pkg_config(corvel "the IP Video Setup dialog for use in another application" LIBS -lcorvel ${platform_part})
list(TRANSFORM headers PREPEND "${CMAKE_SOURCE_DIR}/")
set_target_properties(corvel_library PROPERTIES CORVEL_HEADERS "${headers}")
install(TARGETS corvel_library LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  COMPONENT library NAMELINK_COMPONENT development)

configure_package_config_file("${CMAKE_SOURCE_DIR}/cmake/corvel-config.cmake.in"
  "${CMAKE_CURRENT_BINARY_DIR}/corvel-config.cmake"
  INSTALL_DESTINATION "${CORVEL_CMAKEDIR}"
  PATH_VARS CMAKE_INSTALL_INCLUDEDIR CMAKE_INSTALL_LIBDIR CORVEL_INCLUDEDIR CORVEL_PRIVATE_LIBDIR)
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/corvel-config-version.cmake"
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES
  "${CMAKE_CURRENT_BINARY_DIR}/corvel-config.cmake"
  "${CMAKE_CURRENT_BINARY_DIR}/corvel-config-version.cmake"
  DESTINATION "${CORVEL_CMAKEDIR}" COMPONENT development)
install(DIRECTORY "${CMAKE_SOURCE_DIR}/examples/host" DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/libcorvel-dev/examples"
  COMPONENT development)
