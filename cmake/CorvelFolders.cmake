# Where things are installed, and into which package they go.

# On Debian the libraries go below the architecture's folder, whatever the prefix; CMake by itself does so below /usr
# only, and then what was staged and tested would not be what is packaged.
if(NOT DEFINED CMAKE_INSTALL_LIBDIR AND CMAKE_LIBRARY_ARCHITECTURE AND EXISTS /etc/debian_version)
  set(CMAKE_INSTALL_LIBDIR "lib/${CMAKE_LIBRARY_ARCHITECTURE}" CACHE PATH "Libraries, below the prefix")
endif()
include(GNUInstallDirs)
# The platform libraries: found by their relative run path, not by the system's loader.
set(CORVEL_PRIVATE_LIBDIR "${CMAKE_INSTALL_LIBDIR}/corvel")

# An install rule that names no component belongs to the program package, so a new program, its manual page and its
# completions need no further line. The others are "platform", "library" and "development" (see CorvelPackage.cmake).
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME program)
