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
// and what shared memory holds beyond that length is not seen. A shorter one is a difference, but
// nothing at all is none: there would be nothing to save.
template <typename T>
bool isChanged(const std::vector<T>& conf, const std::vector<T>& shm) {
    if (shm.empty()) return false;
    return shm.size() < conf.size() || !std::equal(conf.begin(), conf.end(), shm.begin());
}

template <typename T>
void saveChanged(const std::vector<unsigned int>& indexes) {
    auto& facade = *CSingletonHxlConfigHandler::getInstance();
    for (const unsigned int index : indexes) {
        const int id = static_cast<int>(index);
        const std::vector<T> shm = facade.getShmValues<T>(id);
        if (isChanged(facade.getConfValues<T>(id), shm)) facade.saveValues(id, shm);
    }
}

template <typename T>
void printItems(const std::vector<unsigned int>& indexes, const char* confLabel,
                const char* shmLabel) {
    auto& facade = *CSingletonHxlConfigHandler::getInstance();
    for (const unsigned int index : indexes) {
        const int id = static_cast<int>(index);
        std::printf("%s %d ", confLabel, id);
        PrintValues(facade.getConfValues<T>(id));
        std::printf("%s %d ", shmLabel, id);
        PrintValues(facade.getShmValues<T>(id));
    }
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
    saveChanged<double>(mvecDblIndex);
    saveChanged<unsigned char>(mvecSelIndex);
    saveChanged<std::string>(mvecStrIndex);
}

void CConfigAutoSaveHandler::printConfData() {
    printItems<double>(mvecDblIndex, "ConfHdl :: DBL CONF INDEX", "ConfHDL :: DBL SHAREDMEM INDEX");
    printItems<unsigned char>(mvecSelIndex, "ConfHdl :: SEL CONF INDEX",
                              "ConfHdl :: SEL SHAREDMEM INDEX");
    printItems<std::string>(mvecStrIndex, "ConfHdl :: STR CONF INDEX",
                            "ConfHdl :: STR SHAREDMEM INDEX");
}
