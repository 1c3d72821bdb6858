#include "config/processors/auto_save_processor.h"

#include <cstdio>
#include <stdexcept>
#include <type_traits>

#include "config/schema/auto_save_schema.h"
#include "config/schema/value_text.h"
#include "shared_memory/shared_memory.h"

namespace hxl_config_handler {

namespace {

// Converts one piece of a list; a piece that is not a byte is dropped.
void append(std::vector<double>& values, const std::string& piece, bool) {
    values.push_back(toDouble(piece));
}
void append(std::vector<unsigned char>& values, const std::string& piece, bool last) {
    try {
        values.push_back(toByte(piece));
    } catch (const std::logic_error&) {
        std::puts(last ? "!!!!!!!!!!! CConfigAutoSaveMngr::parseConfigAutoSaveFileNewVal "
                         "exception catch 2 !!!!!!!!!!!!"
                       : "!!!!!!!!!!! CConfigAutoSaveMngr::parseConfigAutoSaveFileNewVal "
                         "exception catch 1 !!!!!!!!!!!!");
    }
}
void append(std::vector<std::string>& values, const std::string& piece, bool) {
    values.push_back(piece);
}

template <typename T>
std::vector<T> parseList(const std::string& text) {
    const std::vector<std::string> pieces = splitList(text);
    std::vector<T> values;
    for (const std::string& piece : pieces)
        append(values, piece, &piece == &pieces.back());
    return values;
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
    : CAbsConfigProcesor("ConfigAutoSaveProcessor", AUTO_SAVE_FILE_NAME) {}

int CConfigAutoSaveProcessor::LoadDefaults() {
    const int devType = getDevTypeInfo().first;
    if (!isKnownDevType(devType)) return 0;
    if (!mpFileConfig || !mpFileConfig->isOpen()) openFile("r+b");
    core_utils::CFileConfig::CBatch batch(*mpFileConfig);
    bool written = true;
    forEachGroup([&](auto type) { written = writeDefaults<decltype(type)>(devType) && written; });
    if (!written) return 0;
    if (!batch.commit()) {
        std::puts("FAILED TO WRITE ON PRIO KEY ");
        return 0;
    }
    mpFileConfig->close();
    forEachGroup([&](auto type) { recordDefaults<decltype(type)>(devType); });
    return 1;
}

int CConfigAutoSaveProcessor::Initialise() {
    forEachGroup([&](auto type) { addRecords<decltype(type)>(); });
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
    return withTypeOf(id, [&](auto type) {
        const auto* data = dynamic_cast<CConfAutoSaveData<decltype(type)>*>(record);
        return data == nullptr ? 0 : saveItem(id, data->GetValues());
    });
}

int CConfigAutoSaveProcessor::SetSharedMemData(int id, CConfData* record) {
    if (sharedMemoryForWrite() == nullptr) return 0;
    return withTypeOf(id, [&](auto type) {
        const auto* data = dynamic_cast<CConfAutoSaveData<decltype(type)>*>(record);
        return data == nullptr ? 0 : publishItem(id, data->GetValues());
    });
}

int CConfigAutoSaveProcessor::parseConfigAutoSaveFile() {
    if (!openFile("r+b")) {
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
    forEachGroup([&](auto type) { loadGroup<decltype(type)>(); });
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
    mpFileConfig->write(STATUS_SECTION, STATE_KEY, STATE_SAVED);
    mpFileConfig->close();
}

template <typename T>
void CConfigAutoSaveProcessor::loadGroup() {
    using Group = sAutoSaveGroup<T>;
    for (const auto& item : Group::ITEMS) {
        std::string text;
        if (!mpFileConfig->read(Group::SECTION, item.key, text)) {
            std::printf(" failed to read section : %s with key : %s\n", Group::SECTION, item.key);
            continue;
        }
        publishItem(item.id, parseList<T>(text));
    }
}

template <typename T>
bool CConfigAutoSaveProcessor::writeDefaults(int devType) {
    bool written = true;
    for (const auto& item : sAutoSaveGroup<T>::ITEMS) {
        const std::vector<T> values{item.defaults[devType - 1]};
        publishItem(item.id, values);
        written = writeItem(item.id, values) != nullptr && written;
    }
    return written;
}

template <typename T>
void CConfigAutoSaveProcessor::recordDefaults(int devType) {
    for (const auto& item : sAutoSaveGroup<T>::ITEMS)
        getRecordAs<CConfAutoSaveData<T>>(item.id)->SetValues({item.defaults[devType - 1]});
}

template <typename T>
void CConfigAutoSaveProcessor::addRecords() {
    for (const auto& item : sAutoSaveGroup<T>::ITEMS)
        addRecord(std::make_unique<CConfAutoSaveData<T>>(item.id, std::string(item.key)));
}

template <typename T>
int CConfigAutoSaveProcessor::publishItem(int id, const std::vector<T>& values) {
    auto* sharedMemory = sharedMemoryForWrite();
    if (sharedMemory == nullptr || !hasRecord(id)) return 0;
    sharedMemory->setVector(id, values);
    return 1;
}

template <typename T>
int CConfigAutoSaveProcessor::saveItem(int id, const std::vector<T>& values) {
    CConfAutoSaveData<T>* stored = writeItem(id, values);
    if (stored == nullptr) return 0;
    stored->SetValues(values);
    mpFileConfig->close();
    return 1;
}

template <typename T>
CConfAutoSaveData<T>* CConfigAutoSaveProcessor::writeItem(int id, const std::vector<T>& values) {
    auto* stored = hasRecord(id) ? getRecordAs<CConfAutoSaveData<T>>(id) : nullptr;
    if (stored == nullptr || !openForWriting()) return nullptr;
    // A record from outside may have been made without the item's key.
    if (!mpFileConfig->write(sAutoSaveGroup<T>::SECTION, stored->GetKey(), joinList(values))) {
        std::puts("FAILED TO WRITE ON PRIO KEY ");
        return nullptr;
    }
    return stored;
}

bool CConfigAutoSaveProcessor::openForWriting() {
    if (mpFileConfig && mpFileConfig->isOpen()) return true;
    if (openFile("r+b")) return true;
    std::puts("failed to open dev type file config ");
    return false;
}

}  // namespace hxl_config_handler
