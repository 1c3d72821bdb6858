# find_package(AppConfig) gives the libraries for peers of the daemon: AppConfig::peer for C++,
# AppConfig::peer_shared for C, and AppConfig::app_config, which has the configuration code too.
include(CMakeFindDependencyMacro)
find_dependency(Threads)
include(${CMAKE_CURRENT_LIST_DIR}/AppConfigTargets.cmake)
