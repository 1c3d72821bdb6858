// Owns the processors, routes requests to them and keeps the instrument's identity.
#ifndef CONFIG_MANAGER_CONFIG_MANAGER_H
#define CONFIG_MANAGER_CONFIG_MANAGER_H

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "config/processors/config_processor.h"
#include "config/records/current_sharing_data.h"
#include "config/records/preset_data.h"
#include "shared_memory/shared_memory.h"

namespace hxl_config_handler {

// The serial line's defaults, as other programs ask for them.
struct sSerialSettings {
    std::string strDevice = "/dev/ttyS5";
    std::uint32_t uiBaudRate = 460800;
    char cParity = 'E';
    char cDataBits = '8';
    char cStopBits = '1';
    char cTerminator = '\0';
    std::uint32_t uiCount = 10;
};

// Created once, by the facade, and never freed, nor are its processors. Takes no locks: handler
// threads may call at the same time, but only one at a time for any one processor.
//
// Where non-numeric text aborts a load, the exception ends here: one line is printed and the load
// has failed. Results of processors are handed on unchanged, 0 or false for failure.
//
// Loads and saves that depend on the identity look it up first, as getDevTypeInfo() does; the
// processors are told what is known then.
class CConfigManager : public IDevTypeInfo {
  public:
    CConfigManager();

    // The auto-save items; T is double, unsigned char or std::string. What is stored stays the
    // processor's and changes with the next save of the item. The values of an identifier without
    // a record of that type are empty.
    bool loadAutoSaveConfig();
    template <typename T>
    const std::vector<T>& getConfValues(int id);
    template <typename T>
    std::vector<T> getShmValues(int id);
    template <typename T>
    bool saveValues(int id, std::vector<T> values);

    // Shows the shared values of an item in place; see CSharedMemory::visitVector().
    template <typename T, typename Visit>
    bool visitShmValues(int id, Visit visit) {
        auto* sharedMemory = CAbsConfigProcesor::mpSharedMemoryMngr;
        return sharedMemory != nullptr && sharedMemory->visitVector<T>(id, visit);
    }

    // The names by which other programs call these.
    std::vector<double> getConfDblValues(int id) { return getConfValues<double>(id); }
    std::vector<unsigned char> getConfSelValues(int id) { return getConfValues<unsigned char>(id); }
    std::vector<std::string> getConfStrValues(int id) { return getConfValues<std::string>(id); }
    std::vector<double> getShmDblValues(int id) { return getShmValues<double>(id); }
    std::vector<unsigned char> getShmSelValues(int id) { return getShmValues<unsigned char>(id); }
    std::vector<std::string> getShmStrValues(int id) { return getShmValues<std::string>(id); }
    bool saveDblValues(int id, const std::vector<double>& values) { return saveValues(id, values); }
    bool saveSelValues(int id, const std::vector<unsigned char>& values) {
        return saveValues(id, values);
    }
    bool saveStrValues(int id, const std::vector<std::string>& values) {
        return saveValues(id, values);
    }

    // Preset memories 1 to 5. The block comes from the stored preset or from shared memory, and
    // goes to the file (`bSave`) or to shared memory. False for another number, for a preset that
    // cannot be read (`block` stays), and for a save that fails, of which the file may hold a part.
    bool loadPresetConfig();
    bool getPresetBlock(int presetNo, sPresetBlock& block, bool bStored);
    bool savePresetBlock(int presetNo, const sPresetBlock& block, bool bSave);

    bool loadSystemConfig();
    bool loadDevVarSystemConfig();

    // As published in shared memory. If nothing is published, the numbers of `record` become zeros.
    void getCurrentSharing(CConfCurrentSharingData& record);
    // False, and `version` unchanged, if nothing or an empty text is published.
    bool getChnFwVersion(std::string& version);

    // The identity, from the device string in shared memory until it is known; (0, 0) until then.
    // An unusual string blocks the caller until it has not changed for 100 ms, or for 1 s if it is
    // a prefix of a usual one: a peer may not have finished writing it.
    int getDevTypeInfo(std::pair<int, int>& out) override;
    bool loadDevTypeConfig();

    // True if getDevTypeInfo() had to wait for the string to stop changing, and the file that was
    // loaded has no identity or another one: nobody else will record it.
    bool isSettledIdentityUnrecorded();

    // Sets the identity and writes its device string, to the file (`bSave`) or to shared memory.
    // Always true: a save that fails prints why.
    bool setDevTypeInfo(int devType, int chnCount, bool bSave);
    bool writeDevTypeString(const std::string& devString, bool bSave);

    // The current-correction file, its factors in the order of current_correction.h.
    bool readCurrentCorrection(double values[4]);
    bool writeCurrentCorrection(const double values[4]);

    // The synchronisation mark in the system file.
    bool readSettingSync(int& value);
    bool writeSettingSync(int value);

    sSerialSettings getSerialSettings() const { return {}; }

  protected:
    std::map<int, CAbsConfigProcesor*> mMapProcessors;

    // Plain on purpose: whichever thread learns the identity first writes the same values.
    int mDevType = 0;
    int mChnCount = 0;

  private:
    // Tells the processors what is known of the identity.
    class CKnownIdentity : public IDevTypeInfo {
      public:
        explicit CKnownIdentity(const CConfigManager& manager) : mManager(manager) {}
        int getDevTypeInfo(std::pair<int, int>& out) override {
            out = {mManager.mDevType, mManager.mChnCount};
            return mManager.mDevType;
        }

      private:
        const CConfigManager& mManager;
    };

    CKnownIdentity mKnownIdentity{*this};
    bool mbIdentityAwaited = false;  // the string that told the identity had to settle first

    void lookUpIdentity();
    bool load(int processor, const char* operation);
    std::string waitForWholeDevString();
    std::string readDevString();
};

}  // namespace hxl_config_handler

#endif
