#include "config/processors/dev_var_system_processor.h"

#include <cstddef>
#include <cstdio>
#include <iterator>

#include "config/records/drift_correction_data.h"
#include "config/records/service_setting_data.h"
#include "shared_memory/shared_memory.h"

namespace hxl_config_handler {

namespace {

constexpr std::size_t DRIFT_COUNT = 1 + std::size(DRIFT_KEYS);

}  // namespace

// A unit that does not know its variant reads the bare section.
std::string sectionOfVariant(const std::string& section, int devType) {
    switch (devType) {
        case 1:
        case 3:
            return section + "_35V_DEV";
        case 2:
            return section + "_100V_DEV";
        default:
            return section;
    }
}

CConfigDevVarSystemProcessor::CConfigDevVarSystemProcessor()
    : CAbsConfigProcesor("CConfigDevVarSystemProcessor") {}

int CConfigDevVarSystemProcessor::LoadConfigFile() {
    const auto [devType, chnCount] = getDevTypeInfo();
    std::printf("%s dev type : %d chn cnt : %d \n", mstrName.c_str(), devType, chnCount);
    if (!openFile(DEV_VAR_FILE_NAME, "rb")) {
        std::printf("failed to oepn");
        std::fflush(stdout);
        return 0;
    }
    loadServiceSettings();
    loadDriftCorrection();
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

void CConfigDevVarSystemProcessor::loadServiceSettings() {
    const std::string section = sectionOfVariant(SERVICE_SECTION, getDevTypeInfo().first);
    std::vector<double> values;
    for (const char* key : SERVICE_KEYS) {
        float value = SERVICE_DEFAULT;
        mpFileConfig->read(section, key, value);
        values.push_back(value);
    }
    auto* record = getRecordAs<CConfServiceSetingData>(SERVICE_SETTING_ID);
    if (record == nullptr) return;
    record->SetValues(values);
    publish(SERVICE_SETTING_ID, values);
}

void CConfigDevVarSystemProcessor::loadDriftCorrection() {
    const std::string section = sectionOfVariant(DRIFT_SECTION, getDevTypeInfo().first);
    std::vector<double> values(DRIFT_COUNT);
    int toApply = TO_APPLY_DEFAULT;
    mpFileConfig->read(section, TO_APPLY_KEY, toApply);
    values[0] = toApply;
    for (const sDriftKey& drift : DRIFT_KEYS) {
        double value = drift.defaultValue;
        mpFileConfig->read(section, drift.key, value);
        values[drift.recordIndex] = value;
    }
    auto* record = getRecordAs<CConfDriftCorrectionData>(DRIFT_CORRECTION_ID);
    if (record == nullptr) return;
    record->SetValues(values);
    publish(DRIFT_CORRECTION_ID, values);
}

}  // namespace hxl_config_handler
