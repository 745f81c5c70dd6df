# Installation: headers, the shared library (versioned SONAME), a CMake
# package (find_package(IxorFastInfoset) -> Ixor::FastInfoset) and a
# pkg-config file. fitool installs itself from tools/fitool.
include(CMakePackageConfigHelpers)

set(FASTINFOSET_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/IxorFastInfoset)

install(TARGETS FastInfoset EXPORT IxorFastInfosetTargets
	LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
	ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
	RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
	INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/Ixor DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT IxorFastInfosetTargets NAMESPACE Ixor:: DESTINATION ${FASTINFOSET_CMAKE_DIR})

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/IxorFastInfosetConfig.cmake.in
	${PROJECT_BINARY_DIR}/IxorFastInfosetConfig.cmake
	INSTALL_DESTINATION ${FASTINFOSET_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/IxorFastInfosetConfigVersion.cmake
	COMPATIBILITY SameMajorVersion)
install(FILES
	${PROJECT_BINARY_DIR}/IxorFastInfosetConfig.cmake
	${PROJECT_BINARY_DIR}/IxorFastInfosetConfigVersion.cmake
	DESTINATION ${FASTINFOSET_CMAKE_DIR})

# The .pc file finds its prefix from its own folder, so that an install
# tree can move (cmake --install --prefix, packaging stages).
file(RELATIVE_PATH FASTINFOSET_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" FASTINFOSET_PC_TO_PREFIX "${FASTINFOSET_PC_TO_PREFIX}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/IxorFastInfoset.pc.in ${PROJECT_BINARY_DIR}/IxorFastInfoset.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/IxorFastInfoset.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
