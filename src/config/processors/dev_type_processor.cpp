#include "config/processors/dev_type_processor.h"

#include <cstdio>

#include "config/records/dev_type_info_data.h"
#include "shared_memory/shared_memory.h"

namespace hxl_config_handler {

CConfigDevTypeProcessor::CConfigDevTypeProcessor()
    : CAbsConfigProcesor("CConfigDevTypeProcessor", DEV_TYPE_FILE_NAME) {}

int CConfigDevTypeProcessor::LoadConfigFile() {
    if (!openFile("rb")) {
        std::puts("failed to open dev type");
        return 0;
    }
    std::string value;
    const bool bResult = mpFileConfig->read(DEV_TYPE_SECTION, DEV_TYPE_KEY, value);
    auto* record = getRecordAs<CConfDevTypeInfoData>(DEV_TYPE_ID);
    if (!bResult || record == nullptr) {
        std::printf("bReul : %d \n", bResult);
        return bResult;
    }
    record->SetText(value);
    publish(DEV_TYPE_ID, value);
    return bResult;
}

int CConfigDevTypeProcessor::Initialise() {
    addRecord(std::make_unique<CConfDevTypeInfoData>(DEV_TYPE_ID));
    return 1;
}

CConfData* CConfigDevTypeProcessor::GetSharedMemData(int id) {
    if (mpSharedMemoryMngr == nullptr) return nullptr;
    return new CConfDevTypeInfoData(id, getSharedText(id));
}

int CConfigDevTypeProcessor::SaveConfData(int id, CConfData* record) {
    const auto* devInfo = dynamic_cast<CConfDevTypeInfoData*>(record);
    if (devInfo == nullptr || !hasRecord(id)) return 0;
    return writeDevInfo(devInfo->GetText());
}

int CConfigDevTypeProcessor::SetSharedMemData(int id, CConfData* record) {
    auto* sharedMemory = sharedMemoryForWrite();
    const auto* devInfo = dynamic_cast<CConfDevTypeInfoData*>(record);
    if (sharedMemory == nullptr || devInfo == nullptr || !hasRecord(id)) return 0;
    return sharedMemory->setStringVector(DEV_TYPE_ID, {devInfo->GetText()});
}

bool CConfigDevTypeProcessor::writeDevInfo(const std::string& value) {
    std::printf("WRITING TO CONFIG FILE DEV TYPE :%s \n", value.c_str());
    if (!mpFileConfig) {
        std::puts("File COnfig EMpty ");
        return false;
    }
    std::puts("!!!!!!!!!!!!! OPEN CHECK !!!!!!!!!!!!!! ");
    mpFileConfig->close();
    if (!openFile("r+b")) std::puts("failed to open dev type file config ");
    std::puts("!!!!!!!!!!!!! OPEN CHECK DONE!!!!!!!!!!!!!! ");

    std::puts("!!!!!!!!!!!!! WRTING !!!!!!!!!!!!!! ");
    const bool bResult = mpFileConfig->write(DEV_TYPE_SECTION, DEV_TYPE_KEY, value);
    std::printf("!!!!!!!!!!!!! WRTING bResult : %d !!!!!!!!!!!!!! \n", bResult);
    if (!bResult) {
        std::puts("FAILED TO WRITE DEV TYPE INFO ");
        return false;
    }
    if (auto* stored = getRecordAs<CConfDevTypeInfoData>(DEV_TYPE_ID)) stored->SetText(value);
    mpFileConfig->close();
    std::printf("WRITING TO CONFIG FILE DEV TYPE :%s SAVED\n", value.c_str());
    return true;
}

}  // namespace hxl_config_handler
