# Benchmarks of the three file formats, each beside a reader that others wrote, on the same text.
find_package(PkgConfig REQUIRED)
pkg_check_modules(GST_SDP REQUIRED IMPORTED_TARGET gstreamer-sdp-1.0)
pkg_check_modules(GLIB REQUIRED IMPORTED_TARGET glib-2.0)

function(corvel_files_bench name)
  add_executable(${name} ${name}.cpp)
  set_target_properties(${name} PROPERTIES AUTOMOC ON RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bench/bin")
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}/tests")
  target_link_libraries(${name} PRIVATE corvel_files corvel_qt_options Qt5::Test ${ARGN})
endfunction()

corvel_files_bench(sdp_bench PkgConfig::GST_SDP)
corvel_files_bench(settings_bench PkgConfig::GLIB)
