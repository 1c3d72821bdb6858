// Counts the allocations of a poll that finds no change.
#include <atomic>
#include <cstdlib>
#include <new>

#include "config/handlers/auto_save_handler.h"
#include "config/handlers/preset_handler.h"
#include "config/manager/hxl_config_handler.h"
#include "support/processor_test.h"

namespace {

std::atomic<int> allocations{0};

}  // namespace

void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

using namespace support;

struct CAutoSaveHandler : CConfigAutoSaveHandler {
    using CConfigAutoSaveHandler::saveChanges;
};
struct CPresetHandler : CConfigPresetHandler {
    using CConfigPresetHandler::saveIfChanged;
};

TEST(PollingHandlers, AllocateNothingWhileNothingChanges) {
    const std::string path = configPath("conf_auto_save.cfg");
    writeFile(path, "[CONF_STATUS]\nSTATE=0\n");
    writeFile(configPath("conf_preset.cfg"), "");
    auto& facade = *CSingletonHxlConfigHandler::getInstance();
    facade.setDevTypeInfo(1, 2, false);
    printedBy([&] { facade.loadAutoSaveConfig() && facade.loadPresetConfig(); });
    const std::string longText(60, 's');
    EXPECT_TRUE(facade.saveStrValues(24, {longText}));
    shared().setStringVector(24, {longText});

    CAutoSaveHandler autoSave;
    CPresetHandler preset;
    const std::string before = readFile(path);
    const int allocated = allocations;
    for (int cycle = 0; cycle < 3; ++cycle) {
        autoSave.saveChanges();
        for (int number = 1; number <= 5; ++number)
            preset.saveIfChanged(number);
    }
    EXPECT_EQ(allocated, allocations);
    EXPECT_EQ(before, readFile(path));

    shared().setStringVector(24, {longText + 's'});
    autoSave.saveChanges();
    EXPECT_EQ(replaced(before, longText, longText + 's'), readFile(path)) << "it was compared";
}

}  // namespace
