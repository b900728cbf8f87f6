# SPDX-License-Identifier: LicenseRef-HXAux
# find_package(hx-sim): the target hx-sim::hx-sim-client for C++ tests against a simulated unit, and scenarios as tests.
include(CMakeFindDependencyMacro)
find_dependency(Threads)
include(${CMAKE_CURRENT_LIST_DIR}/hx-simTargets.cmake)
find_program(HX_SIM_PROGRAM hx-sim HINTS ${CMAKE_CURRENT_LIST_DIR}/../../../bin ${CMAKE_CURRENT_LIST_DIR}/../../../../bin)

# hx_sim_add_test(NAME name SCENARIO file [COMMAND program...] [OPTIONS option...]): plays the scenario with the program
# as a test of CTest. A program may be a target of the project. OPTIONS are those of `hx-sim play scenario`.
function(hx_sim_add_test)
  cmake_parse_arguments(PARSE_ARGV 0 test "" "NAME;SCENARIO" "COMMAND;OPTIONS")
  if(NOT test_NAME OR NOT test_SCENARIO OR test_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "hx_sim_add_test(NAME name SCENARIO file [COMMAND program...] [OPTIONS option...])")
  endif()
  if(NOT HX_SIM_PROGRAM)
    message(FATAL_ERROR "hx_sim_add_test needs the program hx-sim, of the package hx-sim")
  endif()
  cmake_path(ABSOLUTE_PATH test_SCENARIO)
  if(test_COMMAND)
    list(POP_FRONT test_COMMAND program)
    if(TARGET ${program})
      set(program $<TARGET_FILE:${program}>)
    endif()
    list(PREPEND test_COMMAND -- ${program})
  endif()
  add_test(NAME ${test_NAME} COMMAND ${HX_SIM_PROGRAM} play scenario ${test_OPTIONS} ${test_SCENARIO} ${test_COMMAND})
endfunction()
