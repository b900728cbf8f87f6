# SPDX-License-Identifier: LicenseRef-HXAux
# The files that `cmake --install` installs; the Debian packages contain the same files.
include(CMakePackageConfigHelpers)

install(TARGETS hx-aux EXPORT hx-aux LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/hx-aux DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

set(HX_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/hx-aux)
install(EXPORT hx-aux NAMESPACE hx-aux:: FILE hx-auxTargets.cmake DESTINATION ${HX_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/hx-auxConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES packaging/cmake/hx-auxConfig.cmake ${CMAKE_BINARY_DIR}/hx-auxConfigVersion.cmake
        DESTINATION ${HX_CMAKE_DIR})
file(RELATIVE_PATH HX_PREFIX_FROM_PC "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" HX_PREFIX_FROM_PC "${HX_PREFIX_FROM_PC}")
configure_file(packaging/cmake/hx-aux.pc.in ${CMAKE_BINARY_DIR}/hx-aux.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/hx-aux.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set(HX_SIM_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/hx-sim)
install(EXPORT hx-sim NAMESPACE hx-sim:: FILE hx-simTargets.cmake DESTINATION ${HX_SIM_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/hx-simConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES packaging/cmake/hx-simConfig.cmake ${CMAKE_BINARY_DIR}/hx-simConfigVersion.cmake
        DESTINATION ${HX_SIM_CMAKE_DIR})

# Access to the devices for a group, the folder of the settings; the automatic backlight and the metrics as services.
install(FILES packaging/70-hx-aux.rules DESTINATION lib/udev/rules.d)
install(FILES packaging/hxaux-backlight.service packaging/hxaux-metrics.service packaging/hxaux-metrics.timer
              packaging/hxaux-metrics-server.service
        DESTINATION lib/systemd/system)
install(FILES packaging/hx-aux.tmpfiles DESTINATION lib/tmpfiles.d RENAME hx-aux.conf)
install(FILES packaging/hx-aux.sysusers DESTINATION lib/sysusers.d RENAME hx-aux.conf)
