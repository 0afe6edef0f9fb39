# Whether the fleet's service is built: it needs what speaks to etcd, which nothing else here does.
find_package(Protobuf QUIET)
find_package(gRPC CONFIG QUIET)
find_path(CORVEL_INI_INCLUDE ini.h)
find_library(CORVEL_INI_LIBRARY inih)
mark_as_advanced(CORVEL_INI_INCLUDE CORVEL_INI_LIBRARY)

set(CORVEL_FLEET_FOUND OFF)
if(TARGET gRPC::grpc++ AND TARGET gRPC::grpc_cpp_plugin AND TARGET protobuf::libprotobuf-lite
    AND CORVEL_INI_INCLUDE AND CORVEL_INI_LIBRARY)
  set(CORVEL_FLEET_FOUND ON)
endif()
option(CORVEL_FLEET "Build the service that keeps the settings of many machines equal" ${CORVEL_FLEET_FOUND})
if(CORVEL_FLEET AND NOT CORVEL_FLEET_FOUND)
  message(FATAL_ERROR
    "CORVEL_FLEET needs libgrpc++-dev, protobuf-compiler-grpc, libprotobuf-dev, protobuf-compiler and libinih-dev")
elseif(NOT CORVEL_FLEET)
  message(STATUS "corvel-fleet is not built: it is switched off (CORVEL_FLEET), or gRPC, protobuf or inih is not there")
endif()
