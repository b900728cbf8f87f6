# SPDX-License-Identifier: LicenseRef-HXAux
# GoogleTest is built here from Debian's sources, because a ready-made library exists for one ABI only.
find_path(HX_GOOGLETEST_SOURCE googlemock/CMakeLists.txt PATHS /usr/src/googletest NO_DEFAULT_PATH REQUIRED)
set(INSTALL_GTEST OFF)
add_subdirectory(${HX_GOOGLETEST_SOURCE} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
include(GoogleTest)

# Each of thousands of processes registers all tests of its program, which pays for some optimisation.
foreach(target gtest gtest_main gmock gmock_main)
  target_link_libraries(${target} PRIVATE hx_quick)
endforeach()

set(HX_TEST_TIMEOUT 120) # seconds; thousands of cases in one test may have more

# hx_add_test(name sources...): a program of GoogleTest cases over the internal archive, with the simulated unit's
# in-process backend in front of the C library. Tests are compiled without optimisation: they run once.
function(hx_add_test name)
  hx_add_test_on(hx_test_support ${name} ${ARGN})
  target_link_libraries(${name} PRIVATE hx-aux-internal)
endfunction()

# hx_add_driver_test(name sources...): the same, but each test scripts the calls on the drivers one by one; the
# program's own `open` and `ioctl` answer them.
function(hx_add_driver_test name)
  hx_add_test_on(hx_test_driver ${name} ${ARGN})
  target_link_libraries(${name} PRIVATE hx-aux-internal)
endfunction()

# hx_add_scripted_test(name sources...): a program with its own version of LinuxWrapper's device access, which gives the
# answers that no driver can (a wrong count).
function(hx_add_scripted_test name)
  hx_add_test_on(hx_test_scripted ${name} ${ARGN})
  target_link_libraries(${name} PRIVATE hx-aux-internal)
endfunction()

# The test framework's headers cost more to compile than most tests: they are compiled once for all programs.
file(GENERATE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/precompiled.cpp CONTENT "int main() {}\n")
add_executable(hx_test_precompiled EXCLUDE_FROM_ALL ${CMAKE_CURRENT_BINARY_DIR}/precompiled.cpp)
target_link_libraries(hx_test_precompiled PRIVATE GTest::gmock hx_warnings hx_run_once)
target_precompile_headers(hx_test_precompiled PRIVATE <gmock/gmock.h> <gtest/gtest.h> <algorithm> <array> <chrono>
                          <filesystem> <fstream> <functional> <map> <memory> <optional> <set> <span> <string> <thread>
                          <vector>)

function(hx_add_test_on support name)
  add_executable(${name} ${ARGN} $<TARGET_OBJECTS:hx-test-rows>)
  target_link_libraries(${name} PRIVATE ${support} hx_warnings hx_run_once)
  target_precompile_headers(${name} REUSE_FROM hx_test_precompiled)
  hx_unity(${name} 8)
  set_target_properties(${name} PROPERTIES ENABLE_EXPORTS ON DEFINE_SYMBOL "" RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
  set(timeout ${HX_TEST_TIMEOUT})
  if(HX_SANITIZE)
    math(EXPR timeout "${timeout} * 5")
  endif()
  # Those that may last long begin first. A test that its filter does not select would pass.
  gtest_discover_tests(${name} TEST_PREFIX "${HX_TEST_LABEL}:" DISCOVERY_TIMEOUT 60
                       PROPERTIES TIMEOUT ${timeout} COST ${timeout} FAIL_REGULAR_EXPRESSION "Running 0 tests")
endfunction()

if(HX_SANITIZE MATCHES "thread")
  set(HX_TEST_LABEL tsan)
elseif(HX_SANITIZE)
  set(HX_TEST_LABEL asan)
else()
  set(HX_TEST_LABEL ${HX_ABI})
endif()

# Common parts of all test programs: the in-process backend of the simulated unit and its helpers.
set(HX_TESTING ${CMAKE_SOURCE_DIR}/testing)
function(hx_add_test_helper name)
  list(TRANSFORM ARGN PREPEND ${HX_TESTING}/)
  add_library(${name} OBJECT ${ARGN})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/include ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(${name} PRIVATE GTest::gmock hx_warnings hx_run_once)
endfunction()
hx_add_test_helper(hx-test-rows RowTest.cpp)
hx_add_test_helper(hx-test-unit SimulatedUnit.cpp FirmwareFile.cpp)
hx_add_test_helper(hx-test-driver-objects driver/Driver.cpp)
hx_add_test_helper(hx-test-scripted-objects scripted/ScriptedDevice.cpp)
# What the headers document, and ways to call every operation.
hx_add_test_helper(hx-test-operations Documented.cpp ErasedOperations.cpp OperationCalls.cpp)
target_compile_definitions(hx-test-operations PRIVATE "HX_HEADERS=\"${CMAKE_SOURCE_DIR}/include/hx-aux\"")
add_library(hx_test_support INTERFACE)
target_sources(hx_test_support INTERFACE $<TARGET_OBJECTS:hx-test-unit>)
target_include_directories(hx_test_support INTERFACE ${CMAKE_SOURCE_DIR})
target_link_libraries(hx_test_support INTERFACE hx-firmware-files GTest::gmock_main -Wl,--whole-archive hx-sim-inprocess
                      -Wl,--no-whole-archive)

add_library(hx_test_driver INTERFACE)
target_sources(hx_test_driver INTERFACE $<TARGET_OBJECTS:hx-test-driver-objects>)
target_include_directories(hx_test_driver INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_definitions(hx-test-driver-objects PRIVATE "HX_SOURCE_DIR=\"${CMAKE_SOURCE_DIR}\"")
target_compile_definitions(hx_test_driver INTERFACE "HX_SOURCE_DIR=\"${CMAKE_SOURCE_DIR}\"")
target_link_libraries(hx_test_driver INTERFACE GTest::gmock_main)

add_library(hx_test_scripted INTERFACE)
target_sources(hx_test_scripted INTERFACE $<TARGET_OBJECTS:hx-test-scripted-objects>)
target_link_libraries(hx_test_scripted INTERFACE hx_test_support)

# Programs that tests start, and their units.
set(HX_TEST_PROGRAMS ${CMAKE_BINARY_DIR}/tests)
add_library(hx-test-processes STATIC ${HX_TESTING}/Command.cpp ${HX_TESTING}/Process.cpp)
target_include_directories(hx-test-processes PUBLIC ${CMAKE_SOURCE_DIR})
target_compile_definitions(
  hx-test-processes PUBLIC HXAUX_TEST_PATH="${HX_TEST_PROGRAMS}:${CMAKE_BINARY_DIR}" HXSIM_PROGRAM="$<TARGET_FILE:hx-sim>"
                           HXAUX_PROGRAM="$<TARGET_FILE:hxaux>" HXCHILD_PROGRAM="${HX_TEST_PROGRAMS}/hx-child")
target_link_libraries(hx-test-processes PRIVATE hx_warnings hx_run_once PUBLIC hx-firmware-files GTest::gmock util)
add_dependencies(hx-test-processes hx-sim hxaux)

# hx_add_process_test(name sources...): a program of GoogleTest cases about other programs.
function(hx_add_process_test name)
  hx_add_test_on(hx-test-processes ${name} ${ARGN})
  target_link_libraries(${name} PRIVATE GTest::gmock_main)
endfunction()
