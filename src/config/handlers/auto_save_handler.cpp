#include "config/handlers/auto_save_handler.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>

#include "config/handlers/poll_interval.h"
#include "config/manager/hxl_config_handler.h"
#include "config/schema/auto_save_schema.h"

using namespace hxl_config_handler;

namespace {

// These follow one another twice in every cycle.
constexpr std::array<unsigned int, 2> COMPARED_TWICE = {15, 16};

template <typename T>
std::vector<unsigned int> itemIds() {
    std::vector<unsigned int> ids;
    for (const auto& item : sAutoSaveGroup<T>::ITEMS)
        ids.push_back(static_cast<unsigned int>(item.id));
    return ids;
}

// The stored vector's length drives the comparison: an item that was never stored is not saved,
// and shared values beyond that length are not compared. A shorter shared vector is a change; an
// empty or absent one is not, as there would be nothing to save.
template <typename T>
bool isChanged(CSingletonHxlConfigHandler& facade, int id) {
    const std::vector<T>& conf = facade.getConfValues<T>(id);
    if (conf.empty()) return false;
    std::size_t size = 0;
    bool equal = true;
    const bool read = facade.visitShmValues<T>(id, [&](std::size_t index, const auto& value) {
        ++size;
        equal = equal && (index >= conf.size() || value == conf[index]);
    });
    return read && size > 0 && (size < conf.size() || !equal);
}

template <typename T>
void saveChanged(const std::vector<unsigned int>& indexes,
                 core_utils::CSettling<std::vector<T>>& settling) {
    auto& facade = *CSingletonHxlConfigHandler::getInstance();
    for (const unsigned int index : indexes) {
        const int id = static_cast<int>(index);
        if (!isChanged<T>(facade, id)) continue;
        std::vector<T> shm = facade.getShmValues<T>(id);
        // A peer may have emptied it since.
        if (shm.empty() || !settling.hasSettled(id, shm)) continue;
        facade.saveValues(id, std::move(shm));
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
    : mvecDblIndex(itemIds<double>()),
      mvecSelIndex(itemIds<unsigned char>()),
      mvecStrIndex(itemIds<std::string>()) {
    mstrName = "ConfigAutoSaveHandler";
    const auto last = std::find(mvecSelIndex.begin(), mvecSelIndex.end(), COMPARED_TWICE.back());
    mvecSelIndex.insert(last + 1, COMPARED_TWICE.begin(), COMPARED_TWICE.end());
}

void CConfigAutoSaveHandler::run() {
    CSingletonHxlConfigHandler::getInstance()->loadAutoSaveConfig();
    while (!mbStop) {
        saveChanges();
        sleepPollInterval();
    }
}

void CConfigAutoSaveHandler::saveChanges() {
    saveChanged(mvecDblIndex, mDblSettling);
    saveChanged(mvecSelIndex, mSelSettling);
    saveChanged(mvecStrIndex, mStrSettling);
}

void CConfigAutoSaveHandler::printConfData() {
    printItems<double>(mvecDblIndex, "ConfHdl :: DBL CONF INDEX", "ConfHDL :: DBL SHAREDMEM INDEX");
    printItems<unsigned char>(mvecSelIndex, "ConfHdl :: SEL CONF INDEX",
                              "ConfHdl :: SEL SHAREDMEM INDEX");
    printItems<std::string>(mvecStrIndex, "ConfHdl :: STR CONF INDEX",
                            "ConfHdl :: STR SHAREDMEM INDEX");
}
