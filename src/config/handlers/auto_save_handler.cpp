#include "config/handlers/auto_save_handler.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "config/handlers/poll_period.h"
#include "config/manager/hxl_config_handler.h"

using hxl_config_handler::CSingletonHxlConfigHandler;
using hxl_config_handler::PrintValues;

namespace {

// The stored vector's length drives the comparison: an item that was never stored is not saved,
// and what shared memory holds beyond that length is not seen. A shorter one is a difference.
template <typename T>
bool isChanged(const std::vector<T>& conf, const std::vector<T>& shm) {
    return shm.size() < conf.size() || !std::equal(conf.begin(), conf.end(), shm.begin());
}

// Bytes and texts that are not in shared memory are no change.
template <typename T>
bool isChangedAndPresent(const std::vector<T>& conf, const std::vector<T>& shm) {
    return !shm.empty() && isChanged(conf, shm);
}

}  // namespace

CConfigAutoSaveHandler::CConfigAutoSaveHandler()
    : mvecDblIndex{0, 1, 2, 3, 4, 5},
      // 15 and 16 are compared twice in every cycle.
      mvecSelIndex{7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 15, 16, 17, 18, 19, 20, 21, 22},
      mvecStrIndex{24, 25} {
    mstrName = "ConfigAutoSaveHandler";
}

void CConfigAutoSaveHandler::run() {
    CSingletonHxlConfigHandler::getInstance()->loadAutoSaveConfig();
    while (!mbStop) {
        saveChanges();
        sleepPollPeriod();
    }
}

void CConfigAutoSaveHandler::saveChanges() {
    auto& facade = *CSingletonHxlConfigHandler::getInstance();
    for (const unsigned int index : mvecDblIndex) {
        const int id = static_cast<int>(index);
        const auto shm = facade.getShmDblValues(id);
        if (isChanged(facade.getConfDblValues(id), shm)) facade.saveDblValues(id, shm);
    }
    for (const unsigned int index : mvecSelIndex) {
        const int id = static_cast<int>(index);
        const auto shm = facade.getShmSelValues(id);
        if (isChangedAndPresent(facade.getConfSelValues(id), shm)) facade.saveSelValues(id, shm);
    }
    for (const unsigned int index : mvecStrIndex) {
        const int id = static_cast<int>(index);
        const auto shm = facade.getShmStrValues(id);
        if (isChangedAndPresent(facade.getConfStrValues(id), shm)) facade.saveStrValues(id, shm);
    }
}

void CConfigAutoSaveHandler::printConfData() {
    auto& facade = *CSingletonHxlConfigHandler::getInstance();
    for (const unsigned int index : mvecDblIndex) {
        const int id = static_cast<int>(index);
        std::printf("ConfHdl :: DBL CONF INDEX %d ", id);
        PrintValues(facade.getConfDblValues(id));
        std::printf("ConfHDL :: DBL SHAREDMEM INDEX %d ", id);
        PrintValues(facade.getShmDblValues(id));
    }
    for (const unsigned int index : mvecSelIndex) {
        const int id = static_cast<int>(index);
        std::printf("ConfHdl :: SEL CONF INDEX %d ", id);
        PrintValues(facade.getConfSelValues(id));
        std::printf("ConfHdl :: SEL SHAREDMEM INDEX %d ", id);
        PrintValues(facade.getShmSelValues(id));
    }
    for (const unsigned int index : mvecStrIndex) {
        const int id = static_cast<int>(index);
        std::printf("ConfHdl :: STR CONF INDEX %d ", id);
        PrintValues(facade.getConfStrValues(id));
        std::printf("ConfHdl :: STR SHAREDMEM INDEX %d ", id);
        PrintValues(facade.getShmStrValues(id));
    }
}
