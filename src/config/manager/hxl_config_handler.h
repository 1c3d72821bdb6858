// The process-wide facade through which everyone reaches the configuration.
#ifndef CONFIG_MANAGER_HXL_CONFIG_HANDLER_H
#define CONFIG_MANAGER_HXL_CONFIG_HANDLER_H

#include <atomic>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "config/manager/config_manager.h"

namespace hxl_config_handler {

// Forwards to the manager: see there for what each operation does, its threads and its failures.
// Lives from the first getInstance() until the process ends.
class CSingletonHxlConfigHandler {
  public:
    // Any thread. Throws std::system_error if the creation's mutex cannot be locked.
    static CSingletonHxlConfigHandler* getInstance();

    bool loadAutoSaveConfig() { return mpManager->loadAutoSaveConfig(); }
    template <typename T>
    const std::vector<T>& getConfValues(int id) {
        return mpManager->getConfValues<T>(id);
    }
    template <typename T>
    std::vector<T> getShmValues(int id) {
        return mpManager->getShmValues<T>(id);
    }
    template <typename T>
    bool saveValues(int id, std::vector<T> values) {
        return mpManager->saveValues(id, std::move(values));
    }
    template <typename T, typename Visit>
    bool visitShmValues(int id, Visit visit) {
        return mpManager->visitShmValues<T>(id, visit);
    }
    std::vector<double> getConfDblValues(int id) { return mpManager->getConfDblValues(id); }
    std::vector<unsigned char> getConfSelValues(int id) { return mpManager->getConfSelValues(id); }
    std::vector<std::string> getConfStrValues(int id) { return mpManager->getConfStrValues(id); }
    std::vector<double> getShmDblValues(int id) { return mpManager->getShmDblValues(id); }
    std::vector<unsigned char> getShmSelValues(int id) { return mpManager->getShmSelValues(id); }
    std::vector<std::string> getShmStrValues(int id) { return mpManager->getShmStrValues(id); }
    bool saveDblValues(int id, const std::vector<double>& values) {
        return mpManager->saveDblValues(id, values);
    }
    bool saveSelValues(int id, const std::vector<unsigned char>& values) {
        return mpManager->saveSelValues(id, values);
    }
    bool saveStrValues(int id, const std::vector<std::string>& values) {
        return mpManager->saveStrValues(id, values);
    }

    bool loadPresetConfig() { return mpManager->loadPresetConfig(); }
    bool getPresetBlock(int presetNo, sPresetBlock& block, bool bStored) {
        return mpManager->getPresetBlock(presetNo, block, bStored);
    }
    bool savePresetBlock(int presetNo, const sPresetBlock& block, bool bSave) {
        return mpManager->savePresetBlock(presetNo, block, bSave);
    }

    bool loadSystemConfig() { return mpManager->loadSystemConfig(); }
    bool loadDevTypeConfig() { return mpManager->loadDevTypeConfig(); }
    bool loadDevVarSystemConfig() { return mpManager->loadDevVarSystemConfig(); }
    void getCurrentSharing(CConfCurrentSharingData& record) {
        mpManager->getCurrentSharing(record);
    }
    bool getChnFwVersion(std::string& version) { return mpManager->getChnFwVersion(version); }

    // (device type, channel count)
    std::pair<int, int> getDevTypeInfo();
    bool isSettledIdentityUnrecorded() { return mpManager->isSettledIdentityUnrecorded(); }
    bool isDualChannel() { return getDevTypeInfo().second == 2; }
    bool setDevTypeInfo(int devType, int chnCount, bool bSave) {
        return mpManager->setDevTypeInfo(devType, chnCount, bSave);
    }
    bool writeDevTypeString(const std::string& devString, bool bSave) {
        return mpManager->writeDevTypeString(devString, bSave);
    }

    bool readCurrentCorrection(double values[4]) {
        return mpManager->readCurrentCorrection(values);
    }
    bool writeCurrentCorrection(const double values[4]);
    bool readSettingSync(int& value) { return mpManager->readSettingSync(value); }
    bool writeSettingSync(int value) { return mpManager->writeSettingSync(value); }
    sSerialSettings getSerialSettings() { return mpManager->getSerialSettings(); }

    // True when the board's card slot has a card.
    bool isSdioCardPresent();

  protected:
    CSingletonHxlConfigHandler();

    static std::atomic<CSingletonHxlConfigHandler*> mpInstance;
    static std::mutex mInstanceMutex;

  private:
    CConfigManager* const mpManager;
};

}  // namespace hxl_config_handler

#endif
