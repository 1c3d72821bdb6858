#include "config/processors/config_processor.h"

#include <cstdio>

#include "config/schema/config_paths.h"
#include "shared_memory/shared_memory.h"

using hxl_config_handler::CConfData;
using hxl_config_handler::eNumber;
using hxl_config_handler::sNumberRow;

core_utils::CSharedMemory* CAbsConfigProcesor::mpSharedMemoryMngr = nullptr;

CAbsConfigProcesor::CAbsConfigProcesor(const std::string& name, const std::string& fileName)
    : mstrName(name), mstrFileName(fileName) {
    mpSharedMemoryMngr = new core_utils::CSharedMemory(false);
}

core_utils::CSharedMemory* CAbsConfigProcesor::sharedMemoryForWrite() {
    if (mpSharedMemoryMngr == nullptr) std::puts("mpSharedMemoryMngr No Valid Pointer ");
    return mpSharedMemoryMngr;
}

void CAbsConfigProcesor::publish(int id, const std::vector<double>& values) {
    if (mpSharedMemoryMngr != nullptr) mpSharedMemoryMngr->setDoubleVector(id, values);
}

void CAbsConfigProcesor::publish(int id, const std::string& text) {
    if (mpSharedMemoryMngr != nullptr) mpSharedMemoryMngr->setStringVector(id, {text});
}

std::string CAbsConfigProcesor::getSharedText(int id) {
    if (mpSharedMemoryMngr == nullptr) return {};
    const std::vector<std::string> values = mpSharedMemoryMngr->getStringVector(id);
    return values.empty() ? std::string() : values.front();
}

bool CAbsConfigProcesor::openFile(const char* mode) {
    if (!mpFileConfig) mpFileConfig = std::make_unique<core_utils::CFileConfig>();
    return mpFileConfig->open(hxl_config_handler::configFilePath(mstrFileName), mode);
}

double CAbsConfigProcesor::readNumber(const std::string& section, const sNumberRow& row) {
    const auto readAs = [&](auto value) {
        mpFileConfig->read(section, row.key, value);
        return static_cast<double>(value);
    };
    switch (row.type) {
        case eNumber::INTEGER:
            return readAs(static_cast<int>(row.fallback));
        case eNumber::FLOAT:
            return readAs(static_cast<float>(row.fallback));
        case eNumber::DOUBLE:
            break;
    }
    return readAs(row.fallback);
}

std::pair<int, int> CAbsConfigProcesor::getDevTypeInfo() {
    std::pair<int, int> info;
    if (mpDevTypeInfo != nullptr) mpDevTypeInfo->getDevTypeInfo(info);
    return info;
}

bool CAbsConfigProcesor::hasRecord(int id) const {
    const auto entry = mMapConfData.find(id);
    return entry != mMapConfData.end() && entry->second != nullptr;
}

void CAbsConfigProcesor::addRecord(std::unique_ptr<CConfData> record) {
    std::unique_ptr<CConfData>& entry = mMapConfData[record->GetIndex()];
    if (!entry) entry = std::move(record);
}
