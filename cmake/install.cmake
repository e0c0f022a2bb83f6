# The installed tree: library, headers, command, manual, and how other builds find them. Its
# components are the packages of packages.cmake.
include(CMakePackageConfigHelpers)

install(TARGETS lumo EXPORT LumoTargets LIBRARY
    DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS lumo-lapack LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dropin)
if(TARGET lumo-command)
    install(TARGETS lumo-command RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endif()
if(LUMO_HAVE_CUDA)
    # CUBLAS is found where the toolkit had it when the plugin was built.
    set_target_properties(lumo-cuda PROPERTIES INSTALL_RPATH_USE_LINK_PATH ON)
    install(TARGETS lumo-cuda LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT cuda)
endif()
install(FILES ${LUMO_HEADERS}
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

set(LUMO_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Lumo)
install(EXPORT LumoTargets NAMESPACE Lumo:: DESTINATION ${LUMO_CMAKE_DIR} COMPONENT development)
# Under this spelling find_package(Lumo) and find_package(lumo) find it, on any file system.
configure_package_config_file(cmake/lumo-config.cmake.in lumo-config.cmake
    INSTALL_DESTINATION ${LUMO_CMAKE_DIR})
write_basic_package_version_file(lumo-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/lumo-config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/lumo-config-version.cmake
    DESTINATION ${LUMO_CMAKE_DIR} COMPONENT development)

# Relative to itself, so that the tree may be installed anywhere.
file(RELATIVE_PATH LUMO_PC_PREFIX /p/${CMAKE_INSTALL_LIBDIR}/pkgconfig /p)
configure_file(cmake/lumo.pc.in lumo.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/lumo.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
