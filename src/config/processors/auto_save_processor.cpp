#include "config/processors/auto_save_processor.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <type_traits>

#include "config/processors/auto_save_items.h"
#include "config/processors/value_list.h"
#include "config/records/auto_save_data.h"
#include "shared_memory/shared_memory.h"

namespace hxl_config_handler {

namespace {

// What differs between the three types of items: section, table, conversion.
template <typename T>
struct sGroup;

template <>
struct sGroup<double> {
    static constexpr auto& SECTION = NUMBERS_SECTION;
    static constexpr auto& ITEMS = NUMBER_ITEMS;

    static void append(std::vector<double>& values, const std::string& piece, bool) {
        values.push_back(core_utils::toDouble(piece.c_str()));
    }
};

template <>
struct sGroup<unsigned char> {
    static constexpr auto& SECTION = BYTES_SECTION;
    static constexpr auto& ITEMS = BYTE_ITEMS;

    static void append(std::vector<unsigned char>& values, const std::string& piece, bool last) {
        try {
            values.push_back(toByte(piece));
        } catch (const std::logic_error&) {
            std::puts(last ? "!!!!!!!!!!! CConfigAutoSaveMngr::parseConfigAutoSaveFileNewVal "
                             "exception catch 2 !!!!!!!!!!!!"
                           : "!!!!!!!!!!! CConfigAutoSaveMngr::parseConfigAutoSaveFileNewVal "
                             "exception catch 1 !!!!!!!!!!!!");
        }
    }
};

template <>
struct sGroup<std::string> {
    static constexpr auto& SECTION = TEXTS_SECTION;
    static constexpr auto& ITEMS = TEXT_ITEMS;

    static void append(std::vector<std::string>& values, const std::string& piece, bool) {
        values.push_back(piece);
    }
};

template <typename T>
bool isItemOf(int id) {
    const auto& items = sGroup<T>::ITEMS;
    return std::any_of(std::begin(items), std::end(items),
                       [id](const auto& item) { return item.id == id; });
}

// Calls `operation` with a value of the type of item `id`; an identifier of no type yields the
// result's zero.
template <typename Operation>
auto withTypeOf(int id, Operation operation) -> decltype(operation(double())) {
    if (isItemOf<double>(id)) return operation(double());
    if (isItemOf<unsigned char>(id)) return operation(static_cast<unsigned char>(0));
    if (isItemOf<std::string>(id)) return operation(std::string());
    return {};
}

}  // namespace

CConfigAutoSaveProcessor::CConfigAutoSaveProcessor()
    : CAbsConfigProcesor("ConfigAutoSaveProcessor") {}

int CConfigAutoSaveProcessor::LoadDefaults() {
    const int devType = getDevTypeInfo().first;
    if (devType < 1 || devType > 3) return 0;
    if (!mpFileConfig || !mpFileConfig->isOpen()) openFile(AUTO_SAVE_FILE_NAME, "r+b");
    core_utils::CFileConfig::CBatch batch(*mpFileConfig);
    const bool numbers = writeDefaults<double>(devType);
    const bool bytes = writeDefaults<unsigned char>(devType);
    const bool texts = writeDefaults<std::string>(devType);
    if (!numbers || !bytes || !texts) return 0;
    if (!batch.commit()) {
        std::puts("FAILED TO WRITE ON PRIO KEY ");
        return 0;
    }
    mpFileConfig->close();
    recordDefaults<double>(devType);
    recordDefaults<unsigned char>(devType);
    recordDefaults<std::string>(devType);
    return 1;
}

int CConfigAutoSaveProcessor::Initialise() {
    addRecords<double>();
    addRecords<unsigned char>();
    addRecords<std::string>();
    return 1;
}

CConfData* CConfigAutoSaveProcessor::GetConfData(int id) {
    return withTypeOf(id, [&](auto type) -> CConfData* {
        // A text look-up in an empty table leaves no entry behind, unlike the other types.
        if (std::is_same_v<decltype(type), std::string> && mMapConfData.empty()) return nullptr;
        return getRecord(id);
    });
}

CConfData* CConfigAutoSaveProcessor::GetSharedMemData(int id) {
    if (mpSharedMemoryMngr == nullptr) return nullptr;
    return withTypeOf(id, [&](auto type) -> CConfData* {
        using T = decltype(type);
        return new CConfAutoSaveData<T>(id, mpSharedMemoryMngr->getVector<T>(id));
    });
}

int CConfigAutoSaveProcessor::SaveConfData(int id, CConfData* record) {
    return withTypeOf(id, [&](auto type) { return save<decltype(type)>(id, record); });
}

int CConfigAutoSaveProcessor::SetSharedMemData(int id, CConfData* record) {
    auto* sharedMemory = sharedMemoryForWrite();
    if (sharedMemory == nullptr || !hasRecord(id)) return 0;
    return withTypeOf(id, [&](auto type) {
        using T = decltype(type);
        const auto* data = dynamic_cast<CConfAutoSaveData<T>*>(record);
        if (data == nullptr) return 0;
        sharedMemory->setVector(id, data->GetValues());
        return 1;
    });
}

int CConfigAutoSaveProcessor::parseConfigAutoSaveFile() {
    if (!openFile(AUTO_SAVE_FILE_NAME, "r+b")) {
        std::puts("failed to open dev type file config ");
        return 0;
    }
    std::string text;
    if (!mpFileConfig->read(STATUS_SECTION, STATE_KEY, text)) {
        std::printf(" failed to read conf status : %s , %s \n", STATUS_SECTION, STATE_KEY);
        return 0;
    }
    bool saved = true;
    try {
        // Only the low byte counts: 256 is a fresh file too.
        saved = toByte(text) != 0;
    } catch (const std::logic_error&) {
        std::puts(
            "!!!!!!!!!!!!!! CConfigAutoSaveMngr::parseConfigAutoSaveFile expception catch "
            "!!!!!!!!!!!!!!!!!!");
    }
    const int result = saved ? parseConfigAutoSaveFileNewVal() : parseDefaults();
    if (result != 0) markInitialised();
    return result;
}

int CConfigAutoSaveProcessor::parseConfigAutoSaveFileNewVal() {
    loadGroup<double>();
    loadGroup<unsigned char>();
    loadGroup<std::string>();
    return 1;
}

int CConfigAutoSaveProcessor::parseDefaults() {
    std::puts("parse defult val ");
    switch (getDevTypeInfo().first) {
        case 1:
            std::puts("running ZEV 35V parse ");
            break;
        case 2:
            std::puts("running ZEV 100V parse ");
            break;
        case 3:
            std::puts("running KOL 35V parse ");
            break;
        default:
            return 0;
    }
    return LoadDefaults();
}

// From now on the file is loaded as saved.
void CConfigAutoSaveProcessor::markInitialised() {
    if (!openForWriting()) return;
    mpFileConfig->write(STATUS_SECTION, STATE_KEY, "1");
    mpFileConfig->close();
}

template <typename T>
void CConfigAutoSaveProcessor::loadGroup() {
    for (const auto& item : sGroup<T>::ITEMS) {
        std::string text;
        if (!mpFileConfig->read(sGroup<T>::SECTION, item.key, text)) {
            std::printf(" failed to read section : %s with key : %s\n", sGroup<T>::SECTION,
                        item.key);
            continue;
        }
        const std::vector<std::string> pieces = splitList(text);
        std::vector<T> values;
        for (const std::string& piece : pieces) {
            sGroup<T>::append(values, piece, &piece == &pieces.back());
        }
        CConfAutoSaveData<T> record(item.id, values);
        SetSharedMemData(item.id, &record);
    }
}

template <typename T>
bool CConfigAutoSaveProcessor::writeDefaults(int devType) {
    bool written = true;
    for (const auto& item : sGroup<T>::ITEMS) {
        CConfAutoSaveData<T> record(item.id, std::vector<T>{item.defaults[devType - 1]});
        SetSharedMemData(item.id, &record);
        written = write<T>(item.id, &record) != nullptr && written;
    }
    return written;
}

template <typename T>
void CConfigAutoSaveProcessor::recordDefaults(int devType) {
    for (const auto& item : sGroup<T>::ITEMS)
        getRecordAs<CConfAutoSaveData<T>>(item.id)->SetValues({item.defaults[devType - 1]});
}

template <typename T>
void CConfigAutoSaveProcessor::addRecords() {
    for (const auto& item : sGroup<T>::ITEMS) {
        addRecord(std::make_unique<CConfAutoSaveData<T>>(item.id, std::string(item.key)));
    }
}

template <typename T>
int CConfigAutoSaveProcessor::save(int id, CConfData* record) {
    CConfAutoSaveData<T>* stored = write<T>(id, record);
    if (stored == nullptr) return 0;
    stored->SetValues(static_cast<CConfAutoSaveData<T>*>(record)->GetValues());
    mpFileConfig->close();
    return 1;
}

template <typename T>
CConfAutoSaveData<T>* CConfigAutoSaveProcessor::write(int id, CConfData* record) {
    const auto* data = dynamic_cast<CConfAutoSaveData<T>*>(record);
    auto* stored = hasRecord(id) ? getRecordAs<CConfAutoSaveData<T>>(id) : nullptr;
    if (data == nullptr || stored == nullptr || !openForWriting()) return nullptr;
    // The record passed in may have been made without the item's key.
    if (!mpFileConfig->write(sGroup<T>::SECTION, stored->GetKey(), joinList(data->GetValues()))) {
        std::puts("FAILED TO WRITE ON PRIO KEY ");
        return nullptr;
    }
    return stored;
}

bool CConfigAutoSaveProcessor::openForWriting() {
    if (mpFileConfig && mpFileConfig->isOpen()) return true;
    if (openFile(AUTO_SAVE_FILE_NAME, "r+b")) return true;
    std::puts("failed to open dev type file config ");
    return false;
}

}  // namespace hxl_config_handler
