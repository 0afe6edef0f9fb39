# The platform libraries as a site may have them: the original calls and no other. The objects are those of our own.
find_package(SQLite3 REQUIRED)
function(corvel_plain_library name)
  set(map "${CMAKE_CURRENT_BINARY_DIR}/plain-${name}.map")
  list(JOIN ARGN ";\n  " calls)
  file(GENERATE OUTPUT "${map}" CONTENT "{\nglobal:\n  ${calls};\nlocal:\n  *;\n};\n")
  add_library(plain_${name} SHARED $<TARGET_OBJECTS:${name}>)
  set_target_properties(plain_${name} PROPERTIES OUTPUT_NAME ${name} LINKER_LANGUAGE CXX LINK_DEPENDS "${map}"
    LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests/plain")
  target_link_options(plain_${name} PRIVATE "LINKER:--version-script=${map}")
  target_link_libraries(plain_${name} PRIVATE corvel_options rkos $<TARGET_PROPERTY:${name},LINK_LIBRARIES>)
endfunction()

corvel_plain_library(rkcfg rkCFGValueString rkCFGValueDword rkCFGSave rkCFGClose rkCFGSetDefaultName
  rkCFGGetDefaultName)
corvel_plain_library(rkptp rkPTPStart rkPTPEnd rkPTPGetStatus rkPTPSetTargetDomain rkPTPSetTargetMacAddress
  rkPTPGetVersion rkPTPGetDomain rkPTPGetSourcePortID rkPTPGetIPAddress rkPTPGetGrandmasterID rkPTPGetTime_Nano
  rkPTPGetOffset_Nano)
corvel_test(test_plainlibraries LIBS corvel_app ${CMAKE_DL_LIBS} LABELS app)
add_dependencies(test_plainlibraries plain_rkcfg plain_rkptp rkcfg_tool)
# They have the names of ours, and are found first.
set_target_properties(test_plainlibraries PROPERTIES BUILD_RPATH "${CMAKE_BINARY_DIR}/tests/plain")
target_link_options(test_plainlibraries PRIVATE "LINKER:--disable-new-dtags")
