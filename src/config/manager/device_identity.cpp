#include "config/manager/device_identity.h"

#include "shared_memory/shared_memory.h"

namespace hxl_config_handler {

namespace {

constexpr char NO_IDENTITY[] = "UNKNOWN";
constexpr int SETTLING_MS = 100;
constexpr int SETTLING_IF_CUT_SHORT_MS = 1000;

constexpr int ANY_COUNT = 0;
struct sModel {
    int devType;
    int chnCount;
    const char* devString;
};
constexpr sModel MODELS[] = {
    {2, 2, "100_VOLTS_DEV_2CH"},
    {1, 2, "35_VOLTS_DEV_2CH"},
    {2, 1, "100_VOLTS_DEV_1CH"},
    {1, 1, "35_VOLTS_DEV_1CH"},
    {3, ANY_COUNT, "KOL_35_VOLTS_DEV_2CH"},
};

bool isBeginningOf(const std::string& whole, const std::string& text) {
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

int settlingTimeOf(const std::string& devString) {
    if (devString.empty() || devString == NO_IDENTITY) return 0;
    bool cutShort = isBeginningOf(NO_IDENTITY, devString) || devString == core_utils::FILL_TEXT;
    for (const sModel& model : MODELS) {
        if (devString == model.devString) return 0;
        cutShort = cutShort || isBeginningOf(model.devString, devString);
    }
    return cutShort ? SETTLING_IF_CUT_SHORT_MS : SETTLING_MS;
}

}  // namespace hxl_config_handler
