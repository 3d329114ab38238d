# The package: find_package(qelSystem) gives Qel::System, Qel::PoolHeap and qel_add_plugin().
include(CMakePackageConfigHelpers)

set(QEL_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qelSystem)
set(QEL_PLUGIN_INSTALL_DIR ${CMAKE_INSTALL_LIBDIR}/qelSystem/plugins)

install(TARGETS qelSystem PoolHeap EXPORT qelSystemTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qelSystem)
install(EXPORT qelSystemTargets NAMESPACE Qel:: DESTINATION ${QEL_PACKAGE_DIR})

get_property(plugins GLOBAL PROPERTY QEL_PLUGINS)
install(TARGETS ${plugins} LIBRARY DESTINATION ${QEL_PLUGIN_INSTALL_DIR})

configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/qelSystemConfig.cmake.in
    ${PROJECT_BINARY_DIR}/qelSystemConfig.cmake
    INSTALL_DESTINATION ${QEL_PACKAGE_DIR}
    PATH_VARS QEL_PLUGIN_INSTALL_DIR)
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/qelSystemConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/qelSystemConfig.cmake
    ${PROJECT_BINARY_DIR}/qelSystemConfigVersion.cmake
    ${PROJECT_SOURCE_DIR}/cmake/QelAddPlugin.cmake
    ${PROJECT_SOURCE_DIR}/cmake/plugin.map
    DESTINATION ${QEL_PACKAGE_DIR})
