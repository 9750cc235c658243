# What compares the library with floors and with its peers.

# What these benchmarks share: the movies that they work on.
add_library(bench_corpus STATIC corpus.cpp)
target_include_directories(bench_corpus PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
target_compile_definitions(bench_corpus PUBLIC SAMPLE_LIBRARY="${PROJECT_SOURCE_DIR}/samples/library")
target_link_libraries(bench_corpus PUBLIC tavisys_server_parts)

add_executable(codec_bench codec_bench.cpp codec_library.cpp codec_floor.cpp)
add_executable(exchange_bench exchange_bench.cpp transport_channel.cpp)
foreach(name codec_bench exchange_bench)
  target_link_libraries(${name} PRIVATE bench_corpus benchmark::benchmark)
endforeach()

# What scripts/bench.sh --check counts the instructions of.
add_executable(instructions instructions.cpp)
target_link_libraries(instructions PRIVATE bench_corpus)

# The codecs and transports that the library is compared with. Those that aren't installed are left out.
function(have_peer name found)
  if(found)
    message(STATUS "benchmarks: ${name}")
  else()
    message(STATUS "benchmarks: ${name} isn't installed; not compared with")
  endif()
endfunction()
# Generated code is not ours: its warnings aren't either.
set(generated ${CMAKE_CURRENT_BINARY_DIR}/generated)
file(MAKE_DIRECTORY ${generated})
function(generate)
  cmake_parse_arguments(ARG "" "" "OUTPUT;COMMAND" ${ARGN})
  add_custom_command(OUTPUT ${ARG_OUTPUT} COMMAND ${ARG_COMMAND} DEPENDS ${ARG_UNPARSED_ARGUMENTS} VERBATIM)
endfunction()

find_package(Protobuf QUIET)
have_peer(protobuf "${Protobuf_FOUND}")
if(Protobuf_FOUND)
  generate(${CMAKE_CURRENT_SOURCE_DIR}/records.proto
           OUTPUT ${generated}/records.pb.cc ${generated}/records.pb.h
           COMMAND protobuf::protoc --cpp_out=${generated} -I ${CMAKE_CURRENT_SOURCE_DIR} records.proto)
  add_library(bench_protobuf STATIC ${generated}/records.pb.cc)
  target_compile_options(bench_protobuf PRIVATE -w)
  target_include_directories(bench_protobuf SYSTEM PUBLIC ${generated})
  target_link_libraries(bench_protobuf PUBLIC protobuf::libprotobuf)
  target_sources(codec_bench PRIVATE codec_protobuf.cpp)
  target_compile_definitions(codec_bench PRIVATE BENCH_PROTOBUF)
  target_link_libraries(codec_bench PRIVATE bench_protobuf)
endif()

find_path(MSGPACK_INCLUDE_DIR msgpack.hpp)
mark_as_advanced(MSGPACK_INCLUDE_DIR)
have_peer(MessagePack "${MSGPACK_INCLUDE_DIR}")
if(MSGPACK_INCLUDE_DIR)
  target_sources(codec_bench PRIVATE codec_msgpack.cpp)
  target_compile_definitions(codec_bench PRIVATE BENCH_MSGPACK MSGPACK_NO_BOOST)
  target_include_directories(codec_bench SYSTEM PRIVATE ${MSGPACK_INCLUDE_DIR})
endif()

find_program(FLATC flatc)
find_path(FLATBUFFERS_INCLUDE_DIR flatbuffers/flatbuffers.h)
mark_as_advanced(FLATC FLATBUFFERS_INCLUDE_DIR)
if(FLATC AND FLATBUFFERS_INCLUDE_DIR)
  generate(${CMAKE_CURRENT_SOURCE_DIR}/records.fbs
           OUTPUT ${generated}/records_generated.h
           COMMAND ${FLATC} --cpp -o ${generated} ${CMAKE_CURRENT_SOURCE_DIR}/records.fbs)
  target_sources(codec_bench PRIVATE codec_flatbuffers.cpp ${generated}/records_generated.h)
  target_compile_definitions(codec_bench PRIVATE BENCH_FLATBUFFERS)
  target_include_directories(codec_bench SYSTEM PRIVATE ${generated} ${FLATBUFFERS_INCLUDE_DIR})
  have_peer(FlatBuffers TRUE)
else()
  have_peer(FlatBuffers FALSE)
endif()

find_package(nlohmann_json QUIET)
have_peer("nlohmann JSON" "${nlohmann_json_FOUND}")
if(nlohmann_json_FOUND)
  target_sources(codec_bench PRIVATE codec_json.cpp)
  target_compile_definitions(codec_bench PRIVATE BENCH_JSON)
  target_link_libraries(codec_bench PRIVATE nlohmann_json::nlohmann_json)
endif()

find_path(HTTPLIB_INCLUDE_DIR httplib.h)
find_library(HTTPLIB_LIBRARY cpp-httplib)
mark_as_advanced(HTTPLIB_INCLUDE_DIR HTTPLIB_LIBRARY)
if(HTTPLIB_INCLUDE_DIR AND HTTPLIB_LIBRARY AND nlohmann_json_FOUND)
  target_sources(exchange_bench PRIVATE transport_http.cpp codec_json.cpp)
  target_compile_definitions(exchange_bench PRIVATE BENCH_HTTP)
  target_include_directories(exchange_bench SYSTEM PRIVATE ${HTTPLIB_INCLUDE_DIR})
  target_link_libraries(exchange_bench PRIVATE ${HTTPLIB_LIBRARY} nlohmann_json::nlohmann_json)
  have_peer("HTTP and JSON" TRUE)
else()
  have_peer("HTTP and JSON" FALSE)
endif()

find_package(gRPC QUIET)
have_peer(gRPC "${gRPC_FOUND}")
if(gRPC_FOUND AND Protobuf_FOUND)
  set(service ${generated}/records_service)
  generate(${CMAKE_CURRENT_SOURCE_DIR}/records_service.proto ${CMAKE_CURRENT_SOURCE_DIR}/records.proto
           OUTPUT ${service}.pb.cc ${service}.pb.h ${service}.grpc.pb.cc ${service}.grpc.pb.h
           COMMAND protobuf::protoc --cpp_out=${generated} --grpc_out=${generated}
                   --plugin=protoc-gen-grpc=$<TARGET_FILE:gRPC::grpc_cpp_plugin>
                   -I ${CMAKE_CURRENT_SOURCE_DIR} records_service.proto)
  add_library(bench_grpc STATIC ${service}.pb.cc ${service}.grpc.pb.cc)
  target_compile_options(bench_grpc PRIVATE -w)
  target_link_libraries(bench_grpc PUBLIC bench_protobuf gRPC::grpc++)
  target_sources(exchange_bench PRIVATE transport_grpc.cpp codec_protobuf.cpp)
  target_compile_definitions(exchange_bench PRIVATE BENCH_GRPC)
  target_link_libraries(exchange_bench PRIVATE bench_grpc)
endif()
