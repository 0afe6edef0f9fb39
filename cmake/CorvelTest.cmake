# A test whose libraries bring definitions of their own does without the precompiled headers, and says nothing of it.
set(CMAKE_PCH_WARN_INVALID OFF)

# corvel_test(NAME [SOURCES files...] [LIBS targets...] [LABELS texts...] [TIMEOUT seconds] [ENV name=value...])
# One Qt Test program: NAME.cpp in this folder unless SOURCES says otherwise. It runs offscreen at 96 dpi,
# with every XDG folder below a folder of its own in the build tree, emptied before each run.
function(corvel_test name)
  cmake_parse_arguments(T "" "TIMEOUT" "SOURCES;LIBS;LABELS;ENV" ${ARGN})
  if(NOT T_SOURCES)
    set(T_SOURCES ${name}.cpp)
  endif()
  corvel_test_program(${name} SOURCES ${T_SOURCES} LIBS ${T_LIBS})
  corvel_test_env(${name} COMMAND $<TARGET_FILE:${name}> TIMEOUT "${T_TIMEOUT}" LABELS ${T_LABELS} ENV ${T_ENV})
endfunction()

# corvel_test_program(NAME SOURCES files... [LIBS targets...]): the program alone, in tests/bin. Its first source ends with
# the line that includes NAME.moc. moc is called for it directly: AUTOMOC would take two processes more and an empty
# source for each of so many programs.
function(corvel_test_program name)
  cmake_parse_arguments(T "" "" "SOURCES;LIBS" ${ARGN})
  list(GET T_SOURCES 0 first)
  qt5_generate_moc(${first} ${name}.moc TARGET ${name})
  add_executable(${name} ${T_SOURCES} ${name}.moc)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests/bin")
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}/tests" "${CMAKE_CURRENT_BINARY_DIR}")
  target_compile_definitions(${name} PRIVATE
    CORVEL_TEST_DATA="${CMAKE_SOURCE_DIR}/tests/data"
    CORVEL_BIN_DIR="${CMAKE_BINARY_DIR}/bin"
    CORVEL_BUILD_DIR="${CMAKE_BINARY_DIR}")
  target_link_libraries(${name} PRIVATE corvel_qt_options Qt5::Test ${T_LIBS})
  corvel_test_flags(${name})
  corvel_qt_part(part ${T_LIBS})
  corvel_test_headers(${part})
  target_precompile_headers(${name} REUSE_FROM corvel_test_headers_${part})
endfunction()

# What a test does is not hot, so it need not take long to compile.
function(corvel_test_flags name)
  target_compile_options(${name} PRIVATE "$<$<CONFIG:Release,RelWithDebInfo>:-O1;-g1>")
endfunction()

# corvel_qt_part(RESULT targets...): the part of Qt beside Core that a program with these libraries sees, Core if none.
function(corvel_qt_part result)
  set(known "")
  set(left ${ARGN})
  while(TRUE)
    list(POP_FRONT left target)
    if(NOT target)
      break()
    endif()
    if(TARGET "${target}" AND NOT target IN_LIST known)
      list(APPEND known "${target}")
      get_target_property(more "${target}" INTERFACE_LINK_LIBRARIES)
      if(more) # a library without others gives "more-NOTFOUND"
        list(APPEND left ${more})
      endif()
    endif()
  endwhile()
  set(${result} Core PARENT_SCOPE)
  foreach(part Network Gui Widgets)
    if("Qt5::${part}" IN_LIST known)
      set(${result} ${part} PARENT_SCOPE)
    endif()
  endforeach()
endfunction()

# corvel_test_headers(PART): the headers that every test of that part of Qt includes, compiled once. They are those of a
# program, because a program is not compiled as a library is.
function(corvel_test_headers part)
  set(name corvel_test_headers_${part})
  if(TARGET ${name})
    return()
  endif()
  add_executable(${name} EXCLUDE_FROM_ALL "${CMAKE_SOURCE_DIR}/tests/support/precompiled.cpp")
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests/bin")
  target_link_libraries(${name} PRIVATE corvel_qt_options Qt5::Test Qt5::${part})
  corvel_test_flags(${name})
  set(headers <QtTest>)
  if(part STREQUAL "Widgets")
    list(APPEND headers <QtWidgets>)
  endif()
  target_precompile_headers(${name} PRIVATE ${headers})
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
