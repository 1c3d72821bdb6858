#include "config/processors/system_processor.h"

#include "config/records/chn_fw_version_data.h"
#include "config/records/current_sharing_data.h"
#include "config/schema/system_schema.h"
#include "shared_memory/shared_memory.h"

namespace hxl_config_handler {

CConfigSystemProcessor::CConfigSystemProcessor()
    : CAbsConfigProcesor("CConfigSystemProcessor", SYSTEM_FILE_NAME) {}

int CConfigSystemProcessor::LoadConfigFile() {
    if (!openFile("rb")) return 0;
    loadCurrentSharing();
    loadChnFwVersion();
    return 1;
}

int CConfigSystemProcessor::Initialise() {
    addRecord(std::make_unique<CConfCurrentSharingData>(CURRENT_SHARING_ID));
    addRecord(std::make_unique<CConfChnFwVersionData>(CHN_FW_VERSION_ID));
    return 0;
}

CConfData* CConfigSystemProcessor::GetSharedMemData(int id) {
    if (mpSharedMemoryMngr == nullptr) return nullptr;
    if (id == CURRENT_SHARING_ID) {
        return new CConfCurrentSharingData(id, {id, mpSharedMemoryMngr->getDoubleVector(id)});
    }
    if (id == CHN_FW_VERSION_ID) return new CConfChnFwVersionData(id, getSharedText(id));
    return nullptr;
}

void CConfigSystemProcessor::loadCurrentSharing() {
    const std::vector<double> values = readNumbers(SHARING_SECTION, SHARING_ROWS);
    auto* record = getRecordAs<CConfCurrentSharingData>(CURRENT_SHARING_ID);
    if (record != nullptr) record->SetValues(values);
    publish(CURRENT_SHARING_ID, values);
}

void CConfigSystemProcessor::loadChnFwVersion() {
    std::string version = VERSION_FALLBACK;
    mpFileConfig->read(VERSION_SECTION, VERSION_KEY, version);
    auto* record = getRecordAs<CConfChnFwVersionData>(CHN_FW_VERSION_ID);
    if (record != nullptr) record->SetText(version);
    publish(CHN_FW_VERSION_ID, version);
}

}  // namespace hxl_config_handler
