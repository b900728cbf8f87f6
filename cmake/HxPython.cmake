# SPDX-License-Identifier: LicenseRef-HXAux
# Whether the Python package is built, and for which Python: Debian's, unless Python3_EXECUTABLE names another. Sets
# HX_BUILDS_PYTHON.
set(HX_PYTHON AUTO CACHE STRING "Build the Python package: ON, OFF, or AUTO: if it can be built")
set_property(CACHE HX_PYTHON PROPERTY STRINGS AUTO ON OFF)
set(HX_BUILDS_PYTHON OFF)
if(HX_PYTHON STREQUAL "AUTO" AND (HX_SANITIZE OR HX_COVERAGE OR HX_FUZZ) OR NOT HX_PYTHON)
  return()
endif()

# Not the first that PATH finds: that may be a user's own, without Debian's packages.
if(NOT Python3_EXECUTABLE AND EXISTS /usr/bin/python3)
  set(Python3_EXECUTABLE /usr/bin/python3 CACHE FILEPATH "The Python for which the package is built")
endif()
set(Python3_FIND_VIRTUALENV STANDARD)
find_package(Python3 3.9 QUIET COMPONENTS Interpreter OPTIONAL_COMPONENTS Development.Module)
set(PYBIND11_NOPYTHON ON)
find_package(pybind11 2.10 CONFIG QUIET)

if(Python3_Interpreter_FOUND)
  execute_process(COMMAND ${Python3_EXECUTABLE} -c "import struct; print('x86_64' if struct.calcsize('P') == 8 else 'i386')"
                  OUTPUT_VARIABLE abi OUTPUT_STRIP_TRAILING_WHITESPACE)
endif()
if(Python3_Interpreter_FOUND AND NOT abi STREQUAL HX_ABI)
  set(missing "a Python for ${HX_ABI}: ${Python3_EXECUTABLE} is for ${abi}")
elseif(NOT Python3_Development.Module_FOUND OR NOT pybind11_FOUND)
  set(missing "python3-dev and pybind11-dev, which 'scripts/install-deps.sh test' installs")
else()
  set(HX_BUILDS_PYTHON ON)
  return()
endif()

# The tests of the package are left out on request alone; the unit's own ABI has no Python on a PC.
if(HX_PYTHON STREQUAL "AUTO" AND NOT (HX_TESTS AND HX_ABI STREQUAL "x86_64"))
  message(STATUS "No Python package; it needs ${missing}")
else()
  message(FATAL_ERROR "The Python package needs ${missing}; HX_PYTHON=OFF leaves it out")
endif()
