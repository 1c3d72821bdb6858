#include "config/manager/device_identity.h"

#include "config/schema/dev_type_schema.h"
#include "shared_memory/vector_access.h"

namespace hxl_config_handler {

namespace {

constexpr int SETTLING_MS = 100;
constexpr int SETTLING_OF_PREFIX_MS = 1000;

bool isPrefixOf(const std::string& whole, const std::string& text) {
    return whole.compare(0, text.size(), text) == 0;
}

}  // namespace

std::string devStringOf(int devType, int chnCount) {
    for (const sModel& model : MODELS) {
        const bool countFits = model.chnCount == chnCount || model.chnCount == ANY_COUNT;
        if (model.devType == devType && countFits) return model.devString;
    }
    return "";
}

std::pair<int, int> identityOf(const std::string& devString) {
    const auto contains = [&](const char* part) {
        return devString.find(part) != std::string::npos;
    };
    if (devString.empty() || devString == NO_IDENTITY) return {0, 0};
    const int devType = contains("100_VOLTS_DEV") ? 2 : contains("KOL") ? 3 : 1;
    return {devType, contains("1CH") ? 1 : 2};
}

int settlingTimeMs(const std::string& devString) {
    if (devString.empty() || devString == NO_IDENTITY) return 0;
    bool isPrefix = isPrefixOf(NO_IDENTITY, devString) || devString == core_utils::FILL_TEXT;
    for (const sModel& model : MODELS) {
        if (devString == model.devString) return 0;
        isPrefix = isPrefix || isPrefixOf(model.devString, devString);
    }
    return isPrefix ? SETTLING_OF_PREFIX_MS : SETTLING_MS;
}

}  // namespace hxl_config_handler
