# Headers that are read once for all files of a target. They hide what a file forgot to include, so
# that at least one preset must build without them: dev does, and what ships. Only clang++ takes those
# of a target with other definitions.
set(headers <boost/interprocess/managed_shared_memory.hpp> <filesystem> <fstream> <functional> <map>
    <sstream> <thread>)

target_precompile_headers(app_config PRIVATE ${headers})
target_precompile_headers(segment PRIVATE ${headers})

if(TARGET shmconf)
    target_precompile_headers(tool_support REUSE_FROM app_config)
    target_precompile_headers(confcheck_check REUSE_FROM app_config)
    target_precompile_headers(shmconf PRIVATE ${headers} <CLI/CLI.hpp> <nlohmann/json.hpp>)
    target_precompile_headers(confcheck REUSE_FROM shmconf)
endif()

if(TARGET test_support)
    target_precompile_headers(test_support PRIVATE ${headers} <gtest/gtest.h>)
    get_property(programs DIRECTORY tests PROPERTY BUILDSYSTEM_TARGETS)
    list(FILTER programs INCLUDE REGEX _tests$)
    foreach(program IN LISTS programs)
        target_precompile_headers(${program} REUSE_FROM test_support)
    endforeach()
endif()
