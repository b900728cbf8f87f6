# find_package(hx-aux) gives the target hx-aux::hx-aux.
include("${CMAKE_CURRENT_LIST_DIR}/hx-auxTargets.cmake")
