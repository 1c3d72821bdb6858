#include "config/manager/config_manager.h"

#include <time.h>

#include <cstdio>
#include <exception>
#include <memory>
#include <tuple>
#include <typeinfo>
#include <utility>

#include "config/manager/current_correction.h"
#include "config/manager/device_identity.h"
#include "config/processors/auto_save_processor.h"
#include "config/processors/dev_type_processor.h"
#include "config/processors/dev_var_system_processor.h"
#include "config/processors/preset_processor.h"
#include "config/processors/system_processor.h"
#include "config/records/chn_fw_version_data.h"
#include "config/records/dev_type_info_data.h"
#include "config/schema/config_paths.h"

namespace hxl_config_handler {

namespace {

enum eProcessor { DEV_VAR_SYSTEM, AUTO_SAVE, SYSTEM, PRESET, DEV_TYPE };

constexpr int LOOK_INTERVAL_MS = 10;

}  // namespace

CConfigManager::CConfigManager() {
    // Never freed: they live as long as the process. The order decides whose shared-memory
    // manager all of them end up with.
    mMapProcessors[DEV_VAR_SYSTEM] = new CConfigDevVarSystemProcessor;
    mMapProcessors[AUTO_SAVE] = new CConfigAutoSaveProcessor;
    mMapProcessors[PRESET] = new CConfigPresetProcessor;
    mMapProcessors[SYSTEM] = new CConfigSystemProcessor;
    mMapProcessors[DEV_TYPE] = new CConfigDevTypeProcessor;
    for (const auto& [key, processor] : mMapProcessors) {
        processor->Initialise();
        processor->setDevTypeInfo(&mKnownIdentity);
    }
}

bool CConfigManager::load(int processor, const char* operation) {
    try {
        const bool needsIdentity = processor != SYSTEM && processor != DEV_TYPE;
        if (needsIdentity) lookUpIdentity();
        return mMapProcessors[processor]->LoadConfigFile() != 0;
    } catch (const std::exception& error) {
        std::printf("CConfigManager :: %s exception : %s \n", operation, error.what());
        return false;
    }
}

bool CConfigManager::loadAutoSaveConfig() {
    return load(AUTO_SAVE, "loadAutoSaveConfig");
}

bool CConfigManager::loadPresetConfig() {
    return load(PRESET, "loadPresetConfig");
}

bool CConfigManager::loadSystemConfig() {
    return load(SYSTEM, "loadSystemConfig");
}

bool CConfigManager::loadDevTypeConfig() {
    return load(DEV_TYPE, "loadDevTypeConfig");
}

bool CConfigManager::loadDevVarSystemConfig() {
    std::puts("CConfigManager :: parseDevVarSystemConfigFile ");
    return load(DEV_VAR_SYSTEM, "loadDevVarSystemConfig");
}

template <typename T>
const std::vector<T>& CConfigManager::getConfValues(int id) {
    static const std::vector<T> NONE;
    const CConfData* record = mMapProcessors[AUTO_SAVE]->GetConfData(id);
    if (record == nullptr || typeid(*record) != typeid(CConfAutoSaveData<T>)) return NONE;
    return static_cast<const CConfAutoSaveData<T>*>(record)->GetValues();
}

template <typename T>
std::vector<T> CConfigManager::getShmValues(int id) {
    const std::unique_ptr<CConfData> record(mMapProcessors[AUTO_SAVE]->GetSharedMemData(id));
    auto* data = dynamic_cast<CConfAutoSaveData<T>*>(record.get());
    return data == nullptr ? std::vector<T>() : std::move(*data).GetValues();
}

template <typename T>
bool CConfigManager::saveValues(int id, std::vector<T> values) {
    CConfAutoSaveData<T> record(id, std::move(values));
    return mMapProcessors[AUTO_SAVE]->SaveConfData(id, &record) != 0;
}

template const std::vector<double>& CConfigManager::getConfValues(int);
template const std::vector<unsigned char>& CConfigManager::getConfValues(int);
template const std::vector<std::string>& CConfigManager::getConfValues(int);
template std::vector<double> CConfigManager::getShmValues(int);
template std::vector<unsigned char> CConfigManager::getShmValues(int);
template std::vector<std::string> CConfigManager::getShmValues(int);
template bool CConfigManager::saveValues(int, std::vector<double>);
template bool CConfigManager::saveValues(int, std::vector<unsigned char>);
template bool CConfigManager::saveValues(int, std::vector<std::string>);

bool CConfigManager::getPresetBlock(int presetNo, sPresetBlock& block, bool bStored) {
    const int id = CConfigPresetProcessor::recordIdOf(presetNo);
    if (id == 0) return false;
    if (!bStored) return CConfigPresetProcessor::readSharedBlock(id, block);
    const CConfData* record = mMapProcessors[PRESET]->GetConfData(id);
    const auto* preset = dynamic_cast<const CConfPresetData*>(record);
    if (preset == nullptr) return false;
    block = preset->GetPresetBlock();
    return true;
}

bool CConfigManager::savePresetBlock(int presetNo, const sPresetBlock& block, bool bSave) {
    const int id = CConfigPresetProcessor::recordIdOf(presetNo);
    if (id == 0) return false;
    CAbsConfigProcesor& processor = *mMapProcessors[PRESET];
    CConfPresetData record(id, block);
    if (bSave) lookUpIdentity();
    const int result =
        bSave ? processor.SaveConfData(id, &record) : processor.SetSharedMemData(id, &record);
    return result != 0;
}

void CConfigManager::getCurrentSharing(CConfCurrentSharingData& record) {
    const std::unique_ptr<CConfData> shared(
        mMapProcessors[SYSTEM]->GetSharedMemData(CURRENT_SHARING_ID));
    const auto* sharing = dynamic_cast<const CConfCurrentSharingData*>(shared.get());
    if (sharing != nullptr) record.SetValues(sharing->GetDblData().GetValues());
}

bool CConfigManager::getChnFwVersion(std::string& version) {
    const std::unique_ptr<CConfData> shared(
        mMapProcessors[SYSTEM]->GetSharedMemData(CHN_FW_VERSION_ID));
    const auto* record = dynamic_cast<const CConfChnFwVersionData*>(shared.get());
    if (record == nullptr || record->GetText().empty()) return false;
    version = record->GetText();
    return true;
}

int CConfigManager::getDevTypeInfo(std::pair<int, int>& out) {
    lookUpIdentity();
    out = {mDevType, mChnCount};
    return mDevType;
}

void CConfigManager::lookUpIdentity() {
    if (mDevType == 0) std::tie(mDevType, mChnCount) = identityOf(waitForWholeDevString());
}

// Adds up the intervals slept instead of reading a clock: the writer runs while we sleep, however
// late the scheduler wakes us.
std::string CConfigManager::waitForWholeDevString() {
    std::string devString = readDevString();
    int unchangedMs = 0;
    mbIdentityAwaited = settlingTimeMs(devString) > 0;
    while (unchangedMs < settlingTimeMs(devString)) {
        constexpr timespec LOOK_INTERVAL{0, LOOK_INTERVAL_MS * 1'000'000L};
        nanosleep(&LOOK_INTERVAL, nullptr);
        std::string current = readDevString();
        unchangedMs = current == devString ? unchangedMs + LOOK_INTERVAL_MS : 0;
        devString = std::move(current);
    }
    return devString;
}

std::string CConfigManager::readDevString() {
    const std::unique_ptr<CConfData> shared(
        mMapProcessors[DEV_TYPE]->GetSharedMemData(DEV_TYPE_ID));
    const auto* record = dynamic_cast<const CConfDevTypeInfoData*>(shared.get());
    return record == nullptr ? std::string() : record->GetText();
}

bool CConfigManager::isSettledIdentityUnrecorded() {
    if (!mbIdentityAwaited) return false;
    const CConfData* stored = mMapProcessors[DEV_TYPE]->GetConfData(DEV_TYPE_ID);
    const auto* record = dynamic_cast<const CConfDevTypeInfoData*>(stored);
    return record == nullptr || identityOf(record->GetText()) != std::pair(mDevType, mChnCount);
}

bool CConfigManager::setDevTypeInfo(int devType, int chnCount, bool bSave) {
    mDevType = devType;
    mChnCount = chnCount;
    return writeDevTypeString(devStringOf(devType, chnCount), bSave);
}

bool CConfigManager::writeDevTypeString(const std::string& devString, bool bSave) {
    CAbsConfigProcesor& processor = *mMapProcessors[DEV_TYPE];
    CConfDevTypeInfoData record(DEV_TYPE_ID, devString);
    if (bSave) {
        processor.SaveConfData(DEV_TYPE_ID, &record);
    } else {
        processor.SetSharedMemData(DEV_TYPE_ID, &record);
    }
    return true;
}

bool CConfigManager::readCurrentCorrection(double values[4]) {
    return hxl_config_handler::readCurrentCorrection(values);
}

bool CConfigManager::writeCurrentCorrection(const double values[4]) {
    return hxl_config_handler::writeCurrentCorrection(values);
}

bool CConfigManager::readSettingSync(int& value) {
    core_utils::CFileConfig file;
    return file.open(configFilePath(SYSTEM_FILE_NAME), "rb") &&
           file.read(SYNC_SECTION, SYNC_KEY, value);
}

bool CConfigManager::writeSettingSync(int value) {
    core_utils::CFileConfig file;
    return file.open(configFilePath(SYSTEM_FILE_NAME), "r+b") &&
           file.write(SYNC_SECTION, SYNC_KEY, value);
}

}  // namespace hxl_config_handler
