#include "confcheck/config_files.h"

#include <cstddef>
#include <set>

#include "config/schema/auto_save_schema.h"
#include "config/schema/correction_schema.h"
#include "config/schema/dev_type_schema.h"
#include "config/schema/dev_var_schema.h"
#include "config/schema/preset_schema.h"
#include "config/schema/system_schema.h"
#include "support/format.h"

namespace confcheck {

namespace {

using namespace hxl_config_handler;
using Items = std::vector<sItem>;

constexpr char NOTHING[] = "";

std::string toText(const char* text) {
    return text;
}
template <typename Number>
std::string toText(Number number) {
    return tools::format(number);
}

constexpr eKind KINDS_OF_NUMBERS[] = {eKind::INTEGER, eKind::FLOAT, eKind::DOUBLE};

template <std::size_t COUNT>
void addNumbers(Items& items, const std::string& section, const sNumberRow (&rows)[COUNT],
                int step) {
    for (const sNumberRow& row : rows) {
        items.push_back({section, row.key, KINDS_OF_NUMBERS[static_cast<int>(row.type)],
                         toText(row.fallback), step, row.unit});
    }
}

Items devTypeItems(int) {
    return {{DEV_TYPE_SECTION, DEV_TYPE_KEY, eKind::IDENTITY, NOTHING, 0}};
}

constexpr eKind kindOf(double) {
    return eKind::DOUBLES;
}
constexpr eKind kindOf(unsigned char) {
    return eKind::BYTES;
}
eKind kindOf(const std::string&) {
    return eKind::TEXTS;
}

Items autoSaveItems(int devType) {
    Items items = {{STATUS_SECTION, STATE_KEY, eKind::STATE, NOTHING, 0}};
    forEachGroup([&](auto type) {
        using Group = sAutoSaveGroup<decltype(type)>;
        for (const auto& item : Group::ITEMS) {
            const std::string fallback =
                isKnownDevType(devType) ? toText(item.defaults[devType - 1]) : NOTHING;
            items.push_back({Group::SECTION, item.key, kindOf(type), fallback,
                             static_cast<int>(items.size()), item.unit});
        }
    });
    return items;
}

Items presetItems(int devType) {
    constexpr char ZEROS[] = "0,0";
    Items items;
    for (const sPresetMemory& memory : PRESET_MEMORIES) {
        const std::string section = presetSection(memory.number, devType);
        for (const auto& setting : PRESET_NUMBERS)
            items.push_back({section, setting.key, eKind::FLOAT_PAIR, ZEROS, 0, setting.unit});
        for (const auto& setting : PRESET_STATES)
            items.push_back({section, setting.key, eKind::BYTE_PAIR, ZEROS, 0, setting.unit});
    }
    return items;
}

Items systemItems(int) {
    Items items;
    addNumbers(items, SHARING_SECTION, SHARING_ROWS, 0);
    items.push_back({VERSION_SECTION, VERSION_KEY, eKind::TEXT, VERSION_FALLBACK, 1});
    items.push_back({SYNC_SECTION, SYNC_KEY, eKind::INTEGER, NOTHING, -1});
    return items;
}

Items devVarItems(int devType) {
    Items items;
    addNumbers(items, sectionOfVariant(SERVICE_SECTION, devType), SERVICE_ROWS, 0);
    addNumbers(items, sectionOfVariant(DRIFT_SECTION, devType), DRIFT_ROWS, 1);
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
    for (int devType = 0; devType <= DEV_TYPE_COUNT; ++devType) {
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
