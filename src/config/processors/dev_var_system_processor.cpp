#include "config/processors/dev_var_system_processor.h"

#include <cstdio>

#include "config/records/drift_correction_data.h"
#include "config/records/service_setting_data.h"
#include "shared_memory/shared_memory.h"

namespace hxl_config_handler {

CConfigDevVarSystemProcessor::CConfigDevVarSystemProcessor()
    : CAbsConfigProcesor("CConfigDevVarSystemProcessor", DEV_VAR_FILE_NAME) {}

int CConfigDevVarSystemProcessor::LoadConfigFile() {
    const auto [devType, chnCount] = getDevTypeInfo();
    std::printf("%s dev type : %d chn cnt : %d \n", mstrName.c_str(), devType, chnCount);
    if (!openFile("rb")) {
        std::printf("failed to oepn");
        std::fflush(stdout);
        return 0;
    }
    loadItem<CConfServiceSetingData>(SERVICE_SETTING_ID, sectionOfVariant(SERVICE_SECTION, devType),
                                     SERVICE_ROWS);
    loadItem<CConfDriftCorrectionData>(DRIFT_CORRECTION_ID,
                                       sectionOfVariant(DRIFT_SECTION, devType), DRIFT_ROWS);
    return 1;
}

int CConfigDevVarSystemProcessor::Initialise() {
    addRecord(std::make_unique<CConfDriftCorrectionData>(DRIFT_CORRECTION_ID));
    addRecord(std::make_unique<CConfServiceSetingData>(SERVICE_SETTING_ID));
    return 1;
}

CConfData* CConfigDevVarSystemProcessor::GetSharedMemData(int id) {
    std::puts("get Shared mem data drift DevVarSysProc");
    if (mpSharedMemoryMngr == nullptr) return nullptr;
    if (id == SERVICE_SETTING_ID) {
        return new CConfServiceSetingData(id, {id, mpSharedMemoryMngr->getDoubleVector(id)});
    }
    if (id != DRIFT_CORRECTION_ID) return nullptr;

    std::puts("get Shared mem data drift DevVarSysProc 1");
    auto record = std::make_unique<CConfDriftCorrectionData>(id);
    const std::vector<double> values = mpSharedMemoryMngr->getDoubleVector(id);
    std::printf("get Shared mem data drift DevVarSysProc vctr size : %d \n",
                static_cast<int>(values.size()));
    record->SetValues(values);
    std::puts("get Shared mem data drift DevVarSysProc 2");
    return record.release();
}

template <typename Record, std::size_t COUNT>
void CConfigDevVarSystemProcessor::loadItem(int id, const std::string& section,
                                            const sNumberRow (&rows)[COUNT]) {
    const std::vector<double> values = readNumbers(section, rows);
    auto* record = getRecordAs<Record>(id);
    if (record == nullptr) return;
    record->SetValues(values);
    publish(id, values);
}

}  // namespace hxl_config_handler
