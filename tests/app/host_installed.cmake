# Installs this build below STAGE, builds the example host there as an application of its own would be
# (find_package, nothing of this tree but the example's folder) and runs it.
#   cmake -DBUILD= -DSTAGE= -DEXAMPLE= -DGENERATOR= -DCOMPILER= -DFLAGS= -P host_installed.cmake

function(step)
  cmake_parse_arguments(S "" "OUTPUT" "COMMAND" ${ARGN})
  execute_process(COMMAND ${S_COMMAND} RESULT_VARIABLE code OUTPUT_VARIABLE output ERROR_VARIABLE errors)
  if(NOT code EQUAL 0)
    string(REPLACE ";" " " command "${S_COMMAND}")
    message(FATAL_ERROR "${command}\nended with ${code}\n${output}\n${errors}")
  endif()
  set(${S_OUTPUT} "${output}" PARENT_SCOPE)
endfunction()

# expect(BUTTON PATTERN): pressing the dialog's button gives this outcome.
function(expect button pattern)
  step(COMMAND "${STAGE}/build/corvel_host" --press "${button}" OUTPUT output)
  if(NOT output MATCHES "${pattern}")
    message(FATAL_ERROR "\"${button}\" should give ${pattern}, but gave\n${output}")
  endif()
  message(STATUS "${button}: ${CMAKE_MATCH_0}")
endfunction()

file(REMOVE_RECURSE "${STAGE}")
step(COMMAND "${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${STAGE}/first" OUTPUT ignored)
# The package finds its files from where it stands, so the tree may be moved.
file(RENAME "${STAGE}/first" "${STAGE}/prefix")
step(COMMAND "${CMAKE_COMMAND}" -S "${EXAMPLE}" -B "${STAGE}/build" -G "${GENERATOR}"
  "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DCMAKE_CXX_FLAGS=${FLAGS}" -DCMAKE_BUILD_TYPE=Debug
  "-DCMAKE_PREFIX_PATH=${STAGE}/prefix" OUTPUT ignored)
step(COMMAND "${CMAKE_COMMAND}" --build "${STAGE}/build" --parallel 2 OUTPUT ignored)

expect("Done" "75120 channel 0 .*\nresult 1: settings kept\n")
expect("Cancel" "75122 channel 0 element 0x20000 flow 7 .*\nresult 0: stored settings given back\n")
expect("Show URLs" "result 3: ")
execute_process(COMMAND "${STAGE}/build/corvel_host" --press "No such button" RESULT_VARIABLE code
  OUTPUT_QUIET ERROR_QUIET)
if(NOT code EQUAL 100)
  message(FATAL_ERROR "a button that is not there should end with 100, but ended with ${code}")
endif()

# What the host runs on is what was installed, library by library.
step(COMMAND ldd "${STAGE}/build/corvel_host" OUTPUT libraries)
foreach(name libcorvel.so.8 librkcfg.so librkos.so librkptp.so)
  if(NOT libraries MATCHES "${name} => ([^ ]+)")
    message(FATAL_ERROR "${name} is not linked:\n${libraries}")
  endif()
  get_filename_component(found "${CMAKE_MATCH_1}" REALPATH)
  if(NOT SITE_LIBRARIES AND NOT found MATCHES "^${STAGE}/prefix/")
    message(FATAL_ERROR "${name} comes from ${found}")
  endif()
endforeach()
