# What every target of the project shares: language level, warnings, output folders, run path.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Build type" FORCE)
endif()

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_CXX_STANDARD 17) # named here too, so that the compile commands carry it
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# bin/corvel and lib/librk*.so below the build folder, found through a relative run path, so that
# a build tree or an installed tree can be moved and the libraries exchanged.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

add_library(corvel_options INTERFACE)
target_compile_features(corvel_options INTERFACE cxx_std_17 c_std_11)
target_compile_options(corvel_options INTERFACE
  -Wall -Wextra -Wpedantic -Werror=switch -Wshadow -Wformat=2 -Wundef -Wcast-align
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual -Wextra-semi>
  -fstack-protector-strong
  $<$<BOOL:${CORVEL_WERROR}>:-Werror>)
target_compile_definitions(corvel_options INTERFACE
  $<$<CONFIG:Release,RelWithDebInfo>:_FORTIFY_SOURCE=2>)
target_link_options(corvel_options INTERFACE -Wl,--enable-new-dtags -Wl,-z,relro,-z,now)
if(CORVEL_SANITIZE)
  target_compile_options(corvel_options INTERFACE -fsanitize=${CORVEL_SANITIZE} -fno-omit-frame-pointer
    -fno-sanitize-recover=all)
  target_link_options(corvel_options INTERFACE -fsanitize=${CORVEL_SANITIZE})
endif()

# Adds the Qt rules: no implicit text casts, no narrowing in connects.
add_library(corvel_qt_options INTERFACE)
target_link_libraries(corvel_qt_options INTERFACE corvel_options)
target_compile_definitions(corvel_qt_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_CAST_FROM_BYTEARRAY
  QT_NO_NARROWING_CONVERSIONS_IN_CONNECT QT_NO_FOREACH QT_DEPRECATED_WARNINGS)

# corvel_run_path(TARGET): one relative run path for the build tree and the installed one; two of them, and
# CMake pads the shorter with an empty entry, which the loader takes for the current folder. A site's own
# platform libraries are found where CMake was pointed at.
function(corvel_run_path target)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "SHARED_LIBRARY")
    set(path "$ORIGIN")
  else()
    set(path "$ORIGIN/../lib" "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
    list(REMOVE_DUPLICATES path)
  endif()
  set_target_properties(${target} PROPERTIES BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "${path}")
  if(CORVEL_PLATFORM_DIR)
    set_target_properties(${target} PROPERTIES INSTALL_RPATH_USE_LINK_PATH ON)
  endif()
endfunction()
