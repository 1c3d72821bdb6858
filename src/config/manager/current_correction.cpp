#include "config/manager/current_correction.h"

#include <cstdio>
#include <exception>

#include "config/processors/config_processor.h"
#include "ini_file/file_config.h"

namespace hxl_config_handler {

namespace {

// A number that cannot be converted is a key that cannot be read.
bool readNumber(core_utils::CFileConfig& file, const char* key, double& value) {
    try {
        return file.read(CORRECTION_SECTION, key, value);
    } catch (const std::exception&) {
        return false;
    }
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
    bool anyWritten = false;
    for (const char* key : CORRECTION_KEYS) {
        if (file.write(CORRECTION_SECTION, key, *values++)) {
            anyWritten = true;
        } else {
            std::printf("failed to write section : %s with key : %s\n", CORRECTION_SECTION, key);
        }
    }
    return anyWritten;
}

}  // namespace hxl_config_handler
