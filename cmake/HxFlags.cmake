# SPDX-License-Identifier: LicenseRef-HXAux
# Compiler and linker flags, each with its reason; nothing else in the project sets global flags.

# i386 is the unit's ABI. SSE2 arithmetic keeps every intermediate double a double, as on x86-64.
set(HX_COMPILE_i386 -m32 -msse2 -mfpmath=sse)
set(HX_LINK_i386 -m32)
set(HX_COMPILE_x86_64 -m64)
set(HX_LINK_x86_64 -m64)
if(HX_ABI STREQUAL "i386")
  add_compile_options(${HX_COMPILE_i386})
  add_link_options(${HX_LINK_i386})
  set(CMAKE_LIBRARY_ARCHITECTURE "i386-linux-gnu")
  set(HX_OTHER_ABI x86_64)
elseif(HX_ABI STREQUAL "x86_64")
  set(HX_OTHER_ABI i386)
else()
  message(FATAL_ERROR "HX_ABI is ${HX_ABI}; it must be i386 or x86_64")
endif()

# What goes into programs of both ABIs is built for both. HX_OTHER_ABI is empty where the compiler has only one.
include(CheckCXXSourceCompiles)
set(CMAKE_REQUIRED_FLAGS "${HX_LINK_${HX_OTHER_ABI}}")
set(CMAKE_REQUIRED_LINK_OPTIONS "${HX_LINK_${HX_OTHER_ABI}}")
check_cxx_source_compiles("#include <string>\nint main() { return int(std::string{\"\"}.size()); }" HX_BUILDS_BOTH_ABIS)
unset(CMAKE_REQUIRED_FLAGS)
unset(CMAKE_REQUIRED_LINK_OPTIONS)
if(NOT HX_BUILDS_BOTH_ABIS)
  message(STATUS "No compiler for ${HX_OTHER_ABI}: programs of that ABI will not see a unit of this build")
  set(HX_OTHER_ABI "")
endif()

# hx_build_for(target abi): nothing for the tree's own ABI, else that of the target alone.
function(hx_build_for target abi)
  if(abi STREQUAL HX_ABI)
    return()
  endif()
  target_compile_options(${target} PRIVATE ${HX_COMPILE_${abi}})
  target_link_options(${target} PRIVATE ${HX_LINK_${abi}})
  if(HX_SANITIZE)
    target_compile_options(${target} PRIVATE -fno-sanitize=all)
    target_link_options(${target} PRIVATE -fno-sanitize=all)
  endif()
endfunction()

# hx_unity(target count): compiles this many files of a target at once, which shares the cost of headers and templates.
# Each file still includes what it needs (HX_UNITY=OFF builds them one by one), and names of its own differ from those of
# the other files of its target. The compiler takes every file but the first for a header in one of its warnings.
function(hx_unity target count)
  if(HX_UNITY)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${count})
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-subobject-linkage>)
  endif()
endfunction()

# Large files and 64-bit inode numbers: the library must open any file of a 32-bit unit's file system.
add_compile_definitions(_FILE_OFFSET_BITS=64)
# Plain char carries signed bytes between drivers and callers.
add_compile_options(-fsigned-char)
# No path of the build machine in any artefact; compiler caches can then share results.
add_compile_options("-ffile-prefix-map=${CMAKE_SOURCE_DIR}=." -fno-omit-frame-pointer)

# Below a gigabyte the compiler collects no garbage, which would take an eighth of its time.
add_compile_options($<$<COMPILE_LANG_AND_ID:CXX,GNU>:--param=ggc-min-heapsize=1048576>)

find_program(HX_CCACHE ccache)
if(HX_CCACHE)
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>) # so that the cache supports precompiled headers
  set(CMAKE_C_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_NOHASHDIR=1
      CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_SLOPPINESS=pch_defines,time_macros ${HX_CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_C_COMPILER_LAUNCHER})
endif()

if(HX_SANITIZE)
  add_compile_options("-fsanitize=${HX_SANITIZE}" -O1)
  if(HX_SANITIZE MATCHES "undefined")
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
  add_link_options("-fsanitize=${HX_SANITIZE}")
endif()
if(HX_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(HX_COVERAGE)
  add_compile_options(--coverage -O0)
  add_link_options(--coverage)
endif()

add_library(hx_warnings INTERFACE)
target_compile_options(hx_warnings INTERFACE -Wall -Wextra -Wconversion -Wshadow -Wformat=2 -Wundef
                       $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
                       $<$<BOOL:${HX_WERROR}>:-Werror>)

# For all programs but the library: debug information beyond line numbers would take a third of their compile time. They
# wait for people, files and processes, and gain nothing from a higher optimisation: a request takes the same time.
add_library(hx_lines INTERFACE)
target_compile_options(hx_lines INTERFACE -g1)
add_library(hx_quick INTERFACE)
target_link_libraries(hx_quick INTERFACE hx_lines)
if(NOT HX_COVERAGE)
  target_compile_options(hx_quick INTERFACE -O1)
endif()

# For programs of tests, which run once: optimisation and debug information beyond line numbers do not pay. Undefined
# behaviour is checked in the code under test; checks in the tests themselves would take most of their compile time.
add_library(hx_run_once INTERFACE)
target_compile_options(hx_run_once INTERFACE -g1 -O0)
if(HX_SANITIZE MATCHES "undefined")
  target_compile_options(hx_run_once INTERFACE -fno-sanitize=undefined)
endif()

# Debian's hardening flags, plus control-flow protection. Sanitizers have their own checks.
add_library(hx_hardening INTERFACE)
if(NOT HX_SANITIZE AND NOT HX_COVERAGE)
  target_compile_options(hx_hardening INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2
                         -fstack-protector-strong -fcf-protection)
endif()
target_link_options(hx_hardening INTERFACE LINKER:-z,relro LINKER:-z,now)
