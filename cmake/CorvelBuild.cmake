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
# ccache keeps nothing of a source with a precompiled header.
if(CMAKE_CXX_COMPILER_LAUNCHER MATCHES "ccache")
  set(CMAKE_DISABLE_PRECOMPILE_HEADERS ON)
endif()

# bin/corvel and lib/librk*.so below the build folder, found through a relative run path, so that
# a build tree or an installed tree can be moved and the libraries exchanged.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

# What makes an overflow fail instead of succeed, as far as the compiler knows it.
include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CheckPIESupported)
check_pie_supported(LANGUAGES C CXX)
set(CORVEL_HARDENING "")
foreach(flag stack-clash-protection cf-protection=full)
  string(MAKE_C_IDENTIFIER "CORVEL_HAS_${flag}" known)
  check_cxx_compiler_flag("-f${flag} -Werror" ${known})
  if(${known})
    list(APPEND CORVEL_HARDENING "-f${flag}")
  endif()
endforeach()
set(CMAKE_REQUIRED_FLAGS "-O2 -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
check_cxx_source_compiles("#include <features.h>
#if __USE_FORTIFY_LEVEL < 3
#error this compiler cannot tell sizes at run time
#endif
int main() {}" CORVEL_HAS_FORTIFY_3)
unset(CMAKE_REQUIRED_FLAGS)
set(CORVEL_FORTIFY 2)
if(CORVEL_HAS_FORTIFY_3)
  set(CORVEL_FORTIFY 3)
endif()

add_library(corvel_options INTERFACE)
target_compile_features(corvel_options INTERFACE cxx_std_17 c_std_11)
target_compile_options(corvel_options INTERFACE
  -Wall -Wextra -Wpedantic -Werror=switch -Wshadow -Wformat=2 -Wundef -Wcast-align
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual -Wextra-semi>
  -fstack-protector-strong ${CORVEL_HARDENING}
  $<$<BOOL:${CORVEL_WERROR}>:-Werror>)
if(NOT CORVEL_SANITIZE) # they check the same calls themselves, and more of them
  target_compile_options(corvel_options INTERFACE
    "$<$<CONFIG:Release,RelWithDebInfo>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=${CORVEL_FORTIFY}>")
endif()
target_link_options(corvel_options INTERFACE -Wl,--enable-new-dtags -Wl,-z,relro,-z,now,-z,noexecstack)
if(CORVEL_SANITIZE)
  target_compile_options(corvel_options INTERFACE -fsanitize=${CORVEL_SANITIZE} -fno-omit-frame-pointer
    -fno-sanitize-recover=all)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU") # what the sanitizers insert hides from it that an optional is empty
    target_compile_options(corvel_options INTERFACE -Wno-maybe-uninitialized)
  endif()
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
  if(type STREQUAL "SHARED_LIBRARY") # libcorvel; the platform libraries stand side by side
    set(path "$ORIGIN" "$ORIGIN/corvel")
  else()
    set(path "$ORIGIN/../lib" "$ORIGIN/../${CORVEL_PRIVATE_LIBDIR}")
  endif()
  set_target_properties(${target} PROPERTIES BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "${path}")
  if(CORVEL_PLATFORM_DIR)
    set_target_properties(${target} PROPERTIES INSTALL_RPATH_USE_LINK_PATH ON)
  endif()
endfunction()
