# find_package(AppConfig) gives AppConfig::app_config, the library for peers of the daemon.
include(CMakeFindDependencyMacro)
find_dependency(Threads)
include(${CMAKE_CURRENT_LIST_DIR}/AppConfigTargets.cmake)
