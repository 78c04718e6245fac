# What `cmake --install` puts in place: libqnl_rt.so with its soname links, the
# back-ends beside it (the loader looks there), the headers in include/qnl_rt
# so that cblas.h does not meet another provider's, a pkg-config file and the
# CMake package qnl_rt.
include(CMakePackageConfigHelpers)
set(QNL_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/qnl_rt)
set(QNL_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/qnl_rt)

install(TARGETS qnl_rt EXPORT qnl_rtTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${QNL_INSTALL_INCLUDEDIR})
install(FILES ${CMAKE_SOURCE_DIR}/include/cblas.h ${CMAKE_SOURCE_DIR}/include/qnl_service.h
  ${CMAKE_SOURCE_DIR}/include/qnl_vsl_defines.h
  DESTINATION ${QNL_INSTALL_INCLUDEDIR})
install(EXPORT qnl_rtTargets NAMESPACE qnl_rt:: DESTINATION ${QNL_INSTALL_CMAKEDIR})

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/qnl_rtConfig.cmake.in
  ${CMAKE_BINARY_DIR}/qnl_rtConfig.cmake INSTALL_DESTINATION ${QNL_INSTALL_CMAKEDIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/qnl_rtConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/qnl_rtConfig.cmake ${CMAKE_BINARY_DIR}/qnl_rtConfigVersion.cmake
  DESTINATION ${QNL_INSTALL_CMAKEDIR})

# The pkg-config file finds the prefix from its own folder, so the tree can move.
file(RELATIVE_PATH QNL_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" QNL_PC_TO_PREFIX "${QNL_PC_TO_PREFIX}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/qnl_rt.pc.in ${CMAKE_BINARY_DIR}/qnl_rt.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/qnl_rt.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
