#include "config/processors/preset_processor.h"

#include <cstddef>
#include <cstdio>
#include <iterator>

#include "config/schema/value_text.h"
#include "shared_memory/shared_memory.h"

namespace hxl_config_handler {

namespace {

// What an unknown record identifier stands for.
constexpr sPresetMemory NO_PRESET_MEMORY{0, "", 0, 0, 0};

const sPresetMemory& memoryOf(int recordId) {
    for (const sPresetMemory& memory : PRESET_MEMORIES) {
        if (memory.recordId == recordId) return memory;
    }
    return NO_PRESET_MEMORY;
}

template <typename T, std::size_t COUNT>
void setDefaults(sPresetBlock& block, const sPresetSetting<T> (&settings)[COUNT], int devType) {
    for (const auto& setting : settings) {
        for (T& channel : block.*setting.values)
            channel = setting.defaults[devType - 1];
    }
}

// Reads "channel 1,channel 2"; what follows a second comma does not count.
template <typename T>
void readSetting(core_utils::CFileConfig& file, const std::string& section,
                 const sPresetSetting<T>& setting, sPresetBlock& block) {
    std::string text;
    file.read(section, setting.key, text);
    const std::vector<std::string> pieces = splitList(text);
    auto piece = pieces.begin();
    for (T& channel : block.*setting.values) {
        if (piece == pieces.end()) return;
        convert(*piece++, channel);
    }
}

template <typename T, std::size_t COUNT>
bool writeSettings(core_utils::CFileConfig& file, const std::string& section,
                   const sPresetSetting<T> (&settings)[COUNT], const sPresetBlock& block) {
    bool written = true;
    for (const auto& setting : settings) {
        written = file.write(section, setting.key, joinList(block.*setting.values)) && written;
    }
    return written;
}

}  // namespace

CConfigPresetProcessor::CConfigPresetProcessor()
    : CAbsConfigProcesor("ConfPreset", PRESET_FILE_NAME) {}

int CConfigPresetProcessor::LoadConfigFile() {
    if (!openFile("r+b")) {
        std::puts("!!!!!!!!!!! Failed to open Configuration Preset File ");
        return 0;
    }
    const int devType = getDevTypeInfo().first;
    for (const sPresetMemory& memory : PRESET_MEMORIES) {
        const sPresetBlock block = readSection(presetSection(memory.number, devType));
        publishPreset(memory.recordId, CConfPresetData(memory.recordId, block));
        auto* record = getRecordAs<CConfPresetData>(memory.recordId);
        if (record == nullptr) {
            std::puts("ITS NULL ");
            continue;
        }
        record->SetPresetBlock(block);
    }
    return 1;
}

int CConfigPresetProcessor::LoadDefaults() {
    const int devType = getDevTypeInfo().first;
    for (const auto& [id, entry] : mMapConfData) {
        auto* record = dynamic_cast<CConfPresetData*>(entry.get());
        if (record == nullptr) continue;
        sPresetBlock block = record->GetPresetBlock();
        if (isKnownDevType(devType)) {
            setDefaults(block, PRESET_NUMBERS, devType);
            setDefaults(block, PRESET_STATES, devType);
        }
        record->SetPresetBlock(block);
        publishPreset(id, *record);
    }
    return 1;
}

int CConfigPresetProcessor::Initialise() {
    for (const sPresetMemory& memory : PRESET_MEMORIES) {
        addRecord(std::make_unique<CConfPresetData>(memory.recordId, std::string(memory.name)));
    }
    return 0;
}

CConfData* CConfigPresetProcessor::GetSharedMemData(int id) {
    if (mpSharedMemoryMngr == nullptr) return nullptr;
    const sPresetMemory& memory = memoryOf(id);
    const CConfAutoSaveDataDbl numbers(id,
                                       mpSharedMemoryMngr->getDoubleVector(memory.numericObject));
    const CConfAutoSaveDataSel states(id, mpSharedMemoryMngr->getByteVector(memory.stateObject));
    if (numbers.GetValues().empty() || states.GetValues().empty()) return nullptr;
    return new CConfPresetData(id, numbers, states);
}

int CConfigPresetProcessor::SaveConfData(int id, CConfData* record) {
    const auto* preset = dynamic_cast<CConfPresetData*>(record);
    if (preset == nullptr || !hasRecord(id)) return 0;
    const std::string section = presetSection(memoryOf(id).number, getDevTypeInfo().first);
    if (!writeSection(section, preset->GetPresetBlock())) return 0;
    auto* stored = getRecordAs<CConfPresetData>(id);
    if (stored != nullptr) stored->SetPresetBlock(preset->GetPresetBlock());
    return 1;
}

int CConfigPresetProcessor::SetSharedMemData(int id, CConfData* record) {
    const auto* preset = dynamic_cast<CConfPresetData*>(record);
    if (sharedMemoryForWrite() == nullptr || preset == nullptr || !hasRecord(id)) return 0;
    publishPreset(id, *preset);
    return 1;
}

int CConfigPresetProcessor::recordIdOf(int presetNo) {
    for (const sPresetMemory& memory : PRESET_MEMORIES) {
        if (memory.number == presetNo) return memory.recordId;
    }
    return 0;
}

bool CConfigPresetProcessor::readSharedBlock(int id, sPresetBlock& block) {
    if (mpSharedMemoryMngr == nullptr) return false;
    const sPresetMemory& memory = memoryOf(id);
    sPresetBlock shared{};
    bool numbers = false;
    bool states = false;
    const auto takeNumber = [&](std::size_t index, double value) {
        setElement(shared, PRESET_NUMBERS, index, value);
        numbers = true;
    };
    const auto takeState = [&](std::size_t index, unsigned char value) {
        setElement(shared, PRESET_STATES, index, value);
        states = true;
    };
    // Both are read whatever comes of the first: a failure of either is printed.
    const bool numbersRead =
        mpSharedMemoryMngr->visitVector<double>(memory.numericObject, takeNumber);
    const bool statesRead =
        mpSharedMemoryMngr->visitVector<unsigned char>(memory.stateObject, takeState);
    if (!numbersRead || !statesRead || !numbers || !states) return false;
    block = shared;
    return true;
}

sPresetBlock CConfigPresetProcessor::readSection(const std::string& section) {
    sPresetBlock block{};
    for (const auto& setting : PRESET_NUMBERS)
        readSetting(*mpFileConfig, section, setting, block);
    for (const auto& setting : PRESET_STATES)
        readSetting(*mpFileConfig, section, setting, block);
    // The last key is read twice: a miss is reported twice, and what is printed is an interface.
    readSetting(*mpFileConfig, section, *std::rbegin(PRESET_STATES), block);
    return block;
}

// States before numbers: the order of the keys in a new section is an interface.
bool CConfigPresetProcessor::writeSection(const std::string& section, const sPresetBlock& block) {
    if (!mpFileConfig) return false;
    core_utils::CFileConfig::CBatch batch(*mpFileConfig);
    const bool states = writeSettings(*mpFileConfig, section, PRESET_STATES, block);
    const bool numbers = writeSettings(*mpFileConfig, section, PRESET_NUMBERS, block);
    const bool saved = states && numbers && batch.commit();
    mpFileConfig->close();
    if (!openFile("r+b")) {
        std::puts("FileConfig[1],Failed to open conf preset configuration ");
    }
    return saved;
}

void CConfigPresetProcessor::publishPreset(int id, const CConfPresetData& preset) {
    if (mpSharedMemoryMngr == nullptr) return;
    const sPresetMemory& memory = memoryOf(id);
    mpSharedMemoryMngr->setDoubleVector(memory.numericObject, preset.GetDblData().GetValues());
    mpSharedMemoryMngr->setByteVector(memory.stateObject, preset.GetSelData().GetValues());
}

}  // namespace hxl_config_handler
