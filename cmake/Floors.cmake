# Functions that every room's CMakeLists uses, and the flags of all of them.

add_library(zel_flags INTERFACE)
target_include_directories(zel_flags INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_options(zel_flags INTERFACE -Wall -Wextra -Wshadow -Wpedantic -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # GCC 12 sees overlapping copies in plain concatenations of std::string.
  target_compile_options(zel_flags INTERFACE -Wno-restrict)
endif()
if(WIN32)
  # 0x0A00: Windows 10. Everything is linked statically, so that a product needs only the system's DLLs.
  target_compile_definitions(zel_flags INTERFACE UNICODE _UNICODE _WIN32_WINNT=0x0A00 NOMINMAX)
  # MinGW's GCC takes its own copy of an inline function for the one that the linker will choose, and keeps values in
  # registers that the other copy changes.
  target_compile_options(zel_flags INTERFACE -fno-ipa-ra)
  target_link_options(zel_flags INTERFACE -static)
endif()

if(ZEL_SANITIZE)
  add_compile_options(-fsanitize=${ZEL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ZEL_SANITIZE})
endif()

# zel_room(NAME SOURCES a.cpp b.cpp BELOW zel_common ...): one folder, one static library.
function(zel_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;BELOW" ${ARGN})
  if(ROOM_SOURCES)
    add_library(${name} STATIC ${ROOM_SOURCES})
    target_link_libraries(${name} PUBLIC zel_flags ${ROOM_BELOW})
  else()
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE zel_flags ${ROOM_BELOW})
  endif()
endfunction()

# zel_test(NAME SOURCES a.cpp LINK zel_common ...): the tests of one room in one program. Windows builds run
# under the emulator that the toolchain file names. SHARDS n: in n parts that run at the same time; for tests that
# only compute. All others have the machine to themselves.
function(zel_test name)
  cmake_parse_arguments(TEST "" "SHARDS" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${TEST_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  # A test runs once after it was compiled: what costs is the compiling.
  target_compile_options(${name} PRIVATE -O1)
  target_link_libraries(${name} PRIVATE zel_flags ${TEST_LINK} GTest::gmock GTest::gtest_main)
  # A path from the test's own folder: under Wine "/..." is no absolute path.
  file(RELATIVE_PATH results ${CMAKE_CURRENT_BINARY_DIR} ${PROJECT_BINARY_DIR}/results)
  if(NOT TEST_SHARDS)
    add_test(NAME ${name} COMMAND ${name} --gtest_brief=1 --gtest_output=json:${results}/${name}.json)
    set_tests_properties(${name} PROPERTIES TIMEOUT 900 RUN_SERIAL TRUE)
    return()
  endif()
  foreach(shard RANGE 1 ${TEST_SHARDS})
    math(EXPR index "${shard} - 1")
    set(part ${name}_${shard})
    add_test(NAME ${part} COMMAND ${name} --gtest_brief=1 --gtest_output=json:${results}/${part}.json)
    set_tests_properties(${part} PROPERTIES TIMEOUT 900
      ENVIRONMENT "GTEST_TOTAL_SHARDS=${TEST_SHARDS};GTEST_SHARD_INDEX=${index}")
  endforeach()
endfunction()
