#include "config/manager/current_correction.h"

#include <cstdio>
#include <exception>
#include <vector>

#include "config/schema/config_paths.h"
#include "config/schema/correction_schema.h"
#include "ini_file/file_config.h"

namespace hxl_config_handler {

namespace {

// Non-numeric text counts as a key that cannot be read.
bool readNumber(core_utils::CFileConfig& file, const char* key, double& value) {
    try {
        return file.read(CORRECTION_SECTION, key, value);
    } catch (const std::exception&) {
        return false;
    }
}

void reportUnwritten(const char* key) {
    std::printf("failed to write section : %s with key : %s\n", CORRECTION_SECTION, key);
}

}  // namespace

bool readCurrentCorrection(double values[4]) {
    core_utils::CFileConfig file;
    if (!file.open(configFilePath(CORRECTION_FILE_NAME), "rb")) return false;
    bool anyRead = false;
    for (const char* key : CORRECTION_KEYS) {
        if (readNumber(file, key, *values++)) {
            anyRead = true;
        } else {
            std::printf("failed to read section : %s with key : %s\n", CORRECTION_SECTION, key);
        }
    }
    return anyRead;
}

bool writeCurrentCorrection(const double values[4]) {
    std::puts("CConfigManager::writeCurrentCorrection came in");
    core_utils::CFileConfig file;
    if (!file.open(configFilePath(CORRECTION_FILE_NAME), "r+b")) return false;
    core_utils::CFileConfig::CBatch batch(file);
    std::vector<const char*> written;
    for (const char* key : CORRECTION_KEYS) {
        if (file.write(CORRECTION_SECTION, key, *values++))
            written.push_back(key);
        else
            reportUnwritten(key);
    }
    if (batch.commit()) return !written.empty();
    for (const char* key : written)
        reportUnwritten(key);
    return false;
}

}  // namespace hxl_config_handler
