# corvel_test(NAME [SOURCES files...] [LIBS targets...] [LABELS texts...] [TIMEOUT seconds] [ENV name=value...])
# One Qt Test program: NAME.cpp in this folder unless SOURCES says otherwise. It runs offscreen at 96 dpi,
# with every XDG folder below a folder of its own in the build tree, emptied before each run.
function(corvel_test name)
  cmake_parse_arguments(T "" "TIMEOUT" "SOURCES;LIBS;LABELS;ENV" ${ARGN})
  if(NOT T_SOURCES)
    set(T_SOURCES ${name}.cpp)
  endif()
  add_executable(${name} ${T_SOURCES})
  set_target_properties(${name} PROPERTIES AUTOMOC ON
    RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests/bin")
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}/tests")
  target_compile_definitions(${name} PRIVATE
    CORVEL_TEST_DATA="${CMAKE_SOURCE_DIR}/tests/data"
    CORVEL_BIN_DIR="${CMAKE_BINARY_DIR}/bin"
    CORVEL_BUILD_DIR="${CMAKE_BINARY_DIR}")
  target_link_libraries(${name} PRIVATE corvel_qt_options Qt5::Test ${T_LIBS})
  corvel_test_env(${name} COMMAND $<TARGET_FILE:${name}> TIMEOUT "${T_TIMEOUT}" LABELS ${T_LABELS} ENV ${T_ENV})
endfunction()

# corvel_test_env(NAME COMMAND command... ...): the same surroundings for any command (a script, a tool).
# The time limit ends a test that hangs. It says nothing about how fast one has to be: a busy machine and the sanitizers
# take many times as long as a test at rest.
function(corvel_test_env name)
  cmake_parse_arguments(T "" "TIMEOUT" "COMMAND;LABELS;ENV" ${ARGN})
  if(NOT T_TIMEOUT)
    set(T_TIMEOUT 180)
  endif()
  if(CORVEL_SANITIZE)
    math(EXPR T_TIMEOUT "3 * ${T_TIMEOUT}")
  endif()
  set(home "${CMAKE_BINARY_DIR}/tests/home/${name}")
  # Qt waits with means that the thread sanitizer does not see, and would be accused of races with itself. Tests that fork
  # start threads in their children.
  set(sanitizers "UBSAN_OPTIONS=print_stacktrace=1" "TSAN_OPTIONS=ignore_noninstrumented_modules=1:die_after_fork=0"
    "LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/support/lsan.supp:print_suppressions=0")
  add_test(NAME ${name} COMMAND "${CMAKE_SOURCE_DIR}/tests/support/inhome" "${home}" ${T_COMMAND})
  set_tests_properties(${name} PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT ${T_TIMEOUT} LABELS "${T_LABELS}"
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;QT_FONT_DPI=96;${sanitizers};${T_ENV}")
endfunction()

# corvel_with_threads(NAME...): these tests run under the thread sanitizer as well (preset tsan), because in them two threads
# meet in our code. The target tests_with_threads makes their programs.
add_custom_target(tests_with_threads)
function(corvel_with_threads)
  foreach(name ${ARGN})
    add_dependencies(tests_with_threads ${name})
    set_property(TEST ${name} APPEND PROPERTY LABELS threads)
  endforeach()
endfunction()
