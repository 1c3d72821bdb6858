#include "confcheck/config_files.h"

#include <cstddef>
#include <set>

#include "config/manager/current_correction.h"
#include "config/processors/auto_save_items.h"
#include "config/processors/dev_type_processor.h"
#include "config/processors/dev_var_system_processor.h"
#include "config/processors/preset_processor.h"
#include "config/processors/system_processor.h"
#include "support/format.h"

namespace confcheck {

namespace {

using namespace hxl_config_handler;
using Items = std::vector<sItem>;

constexpr int LAST_DEV_TYPE = 3;
constexpr char NOTHING[] = "";

std::string toText(const char* text) {
    return text;
}
template <typename Number>
std::string toText(Number number) {
    return tools::format(number);
}

Items devTypeItems(int) {
    return {{DEV_TYPE_SECTION, DEV_TYPE_KEY, eKind::IDENTITY, NOTHING, 0}};
}

template <typename Default, std::size_t COUNT>
void addItems(Items& items, const char* section, eKind kind,
              const sAutoSaveItem<Default> (&table)[COUNT], int devType) {
    for (const auto& item : table) {
        const std::string fallback = devType == 0 ? NOTHING : toText(item.defaults[devType - 1]);
        items.push_back({section, item.key, kind, fallback, static_cast<int>(items.size())});
    }
}

Items autoSaveItems(int devType) {
    Items items = {{STATUS_SECTION, STATE_KEY, eKind::STATE, NOTHING, 0}};
    addItems(items, NUMBERS_SECTION, eKind::DOUBLES, NUMBER_ITEMS, devType);
    addItems(items, BYTES_SECTION, eKind::BYTES, BYTE_ITEMS, devType);
    addItems(items, TEXTS_SECTION, eKind::TEXTS, TEXT_ITEMS, devType);
    return items;
}

Items presetItems(int devType) {
    constexpr char ZEROS[] = "0,0";
    Items items;
    for (int preset = 1; preset <= PRESET_COUNT; ++preset) {
        const std::string section = presetSection(preset, devType);
        for (const auto& setting : PRESET_NUMBERS)
            items.push_back({section, setting.key, eKind::FLOAT_PAIR, ZEROS, 0});
        for (const auto& setting : PRESET_STATES)
            items.push_back({section, setting.key, eKind::BYTE_PAIR, ZEROS, 0});
    }
    return items;
}

Items systemItems(int) {
    Items items;
    for (const char* key : SHARING_KEYS)
        items.push_back({SHARING_SECTION, key, eKind::DOUBLE, toText(SHARING_DEFAULT), 0});
    items.push_back({VERSION_SECTION, VERSION_KEY, eKind::TEXT, VERSION_DEFAULT, 1});
    items.push_back({SYNC_SECTION, SYNC_KEY, eKind::INTEGER, NOTHING, -1});
    return items;
}

Items devVarItems(int devType) {
    const std::string service = sectionOfVariant(SERVICE_SECTION, devType);
    const std::string drift = sectionOfVariant(DRIFT_SECTION, devType);
    Items items;
    for (const char* key : SERVICE_KEYS)
        items.push_back({service, key, eKind::FLOAT, toText(SERVICE_DEFAULT), 0});
    items.push_back({drift, TO_APPLY_KEY, eKind::INTEGER, toText(TO_APPLY_DEFAULT), 1});
    for (const sDriftKey& key : DRIFT_KEYS)
        items.push_back({drift, key.key, eKind::DOUBLE, toText(key.defaultValue), 1});
    return items;
}

Items correctionItems(int) {
    Items items;
    for (const char* key : CORRECTION_KEYS)
        items.push_back({CORRECTION_SECTION, key, eKind::FACTOR, NOTHING, -1});
    return items;
}

struct sFileItems {
    const char* name;
    Items (*itemsOf)(int devType);
};
constexpr sFileItems FILES[] = {
    {DEV_TYPE_FILE_NAME, devTypeItems}, {AUTO_SAVE_FILE_NAME, autoSaveItems},
    {PRESET_FILE_NAME, presetItems},    {SYSTEM_FILE_NAME, systemItems},
    {DEV_VAR_FILE_NAME, devVarItems},   {CORRECTION_FILE_NAME, correctionItems},
};

// What units of other types take from sections of their own.
Items otherItems(const sFileItems& file, const Items& own) {
    std::set<std::string> known;
    for (const sItem& item : own)
        known.insert(item.section);
    Items others;
    for (int devType = 0; devType <= LAST_DEV_TYPE; ++devType) {
        std::set<std::string> added;
        for (const sItem& item : file.itemsOf(devType)) {
            if (known.count(item.section) > 0) continue;
            added.insert(item.section);
            others.push_back(item);
        }
        known.merge(added);
    }
    return others;
}

}  // namespace

std::vector<sConfigFile> configFiles(int devType) {
    std::vector<sConfigFile> files;
    for (const sFileItems& file : FILES) {
        const Items items = file.itemsOf(devType);
        files.push_back({file.name, items, otherItems(file, items)});
    }
    return files;
}

}  // namespace confcheck
