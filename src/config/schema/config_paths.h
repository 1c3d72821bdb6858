// Where the configuration files lie.
#ifndef CONFIG_SCHEMA_CONFIG_PATHS_H
#define CONFIG_SCHEMA_CONFIG_PATHS_H

#include <string>

namespace hxl_config_handler {

inline constexpr char CONFIG_FOLDER[] = "/etc/quenvel/config/system";

// The path of a configuration file, from its name.
inline std::string configFilePath(const std::string& fileName) {
    return CONFIG_FOLDER + ('/' + fileName);
}

}  // namespace hxl_config_handler

#endif
