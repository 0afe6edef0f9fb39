# The three platform libraries. Ours are built from platform/; a site that has its own points
# CORVEL_PLATFORM_DIR at a folder with include/<name>.h and lib/lib<name>.so, and ours are left out.

include(CorvelPkgConfig)
set(platform_purpose_rkos "files, folders, named events, time, interfaces and the log")
set(platform_purpose_rkcfg "a store of named values")
set(platform_purpose_rkptp "a software PTP client that adjusts no clock")

# Private headers of all three: a site may exchange the libraries one by one, so each compiles its own copy.
add_library(corvel_platform_common INTERFACE)
target_include_directories(corvel_platform_common INTERFACE "${CMAKE_SOURCE_DIR}/platform/common")

# corvel_platform_library(NAME sources...): one C library with hidden visibility. It has no version
# in its soname on purpose: a site exchanges the file librk*.so itself. So it is installed into a folder
# of its own, where the system's loader, which tells libraries apart by version, does not look.
function(corvel_platform_library name)
  add_library(${name} SHARED ${ARGN})
  target_include_directories(${name}
    PUBLIC $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
    PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/src)
  set_target_properties(${name} PROPERTIES
    C_VISIBILITY_PRESET hidden CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  set(exports "${CMAKE_SOURCE_DIR}/platform/common/platform.map")
  target_link_options(${name} PRIVATE "LINKER:--version-script=${exports}")
  set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS "${exports}")
  string(TOUPPER ${name} upper)
  target_compile_definitions(${name} PRIVATE ${upper}_BUILD)
  target_link_libraries(${name} PRIVATE corvel_options corvel_platform_common)
  corvel_run_path(${name})
  install(TARGETS ${name} LIBRARY DESTINATION ${CORVEL_PRIVATE_LIBDIR} COMPONENT platform)
  install(FILES include/${name}.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
  corvel_pkg_config(${name} "${platform_purpose_${name}}" LIBS "-l${name}" LIBDIR "${CORVEL_PRIVATE_LIBDIR}")
endfunction()

if(CORVEL_PLATFORM_DIR)
  foreach(name rkos rkcfg rkptp)
    find_library(CORVEL_${name}_LIBRARY ${name} PATHS "${CORVEL_PLATFORM_DIR}/lib" "${CORVEL_PLATFORM_DIR}"
      NO_DEFAULT_PATH REQUIRED)
    add_library(${name} SHARED IMPORTED GLOBAL)
    set_target_properties(${name} PROPERTIES
      IMPORTED_LOCATION "${CORVEL_${name}_LIBRARY}"
      IMPORTED_NO_SONAME OFF
      INTERFACE_INCLUDE_DIRECTORIES "${CORVEL_PLATFORM_DIR}/include")
  endforeach()
else()
  add_subdirectory(platform/rkos)
  add_subdirectory(platform/rkcfg)
  add_subdirectory(platform/rkptp)
endif()
