#include "config/handlers/auto_save_handler.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <string>

#include "config/handlers/poll_period.h"
#include "config/manager/hxl_config_handler.h"
#include "config/processors/auto_save_items.h"

using namespace hxl_config_handler;

namespace {

// These follow one another twice in every cycle.
constexpr std::array<unsigned int, 2> COMPARED_TWICE = {15, 16};

template <typename Default, std::size_t COUNT>
std::vector<unsigned int> idsOf(const sAutoSaveItem<Default> (&items)[COUNT]) {
    std::vector<unsigned int> ids;
    for (const auto& item : items)
        ids.push_back(static_cast<unsigned int>(item.id));
    return ids;
}

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
    : mvecDblIndex(idsOf(NUMBER_ITEMS)),
      mvecSelIndex(idsOf(BYTE_ITEMS)),
      mvecStrIndex(idsOf(TEXT_ITEMS)) {
    mstrName = "ConfigAutoSaveHandler";
    const auto last = std::find(mvecSelIndex.begin(), mvecSelIndex.end(), COMPARED_TWICE.back());
    mvecSelIndex.insert(last + 1, COMPARED_TWICE.begin(), COMPARED_TWICE.end());
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
