// Saves of each kind. scripts/bench counts how often they force data to storage: what happens
// before the first save is lost in the rounding.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "config/manager/hxl_config_handler.h"
#include "config/schema/config_paths.h"

namespace {

using hxl_config_handler::configFilePath;
using hxl_config_handler::CSingletonHxlConfigHandler;

constexpr int SAVES = 100;

CSingletonHxlConfigHandler& facade() {
    auto& instance = *CSingletonHxlConfigHandler::getInstance();
    instance.setDevTypeInfo(2, 2, false);
    return instance;
}

void makeFresh() {
    std::ofstream(configFilePath("conf_auto_save.cfg")) << "[CONF_STATUS]\nSTATE=0\n";
}

// `save` gets another number each time, 1.5 or `other`.
template <typename Save>
void alternate(benchmark::State& state, double other, Save save) {
    bool second = false;
    for (auto _ : state) {
        if (!save(second ? other : 1.5)) state.SkipWithError("the save failed");
        second = !second;
    }
}

void saveItem(benchmark::State& state, double other) {
    makeFresh();
    facade().loadAutoSaveConfig();
    alternate(state, other, [](double value) { return facade().saveDblValues(0, {value}); });
}
void oneLength(benchmark::State& state) {
    saveItem(state, 2.5);
}
BENCHMARK(oneLength)->Iterations(SAVES);

void anotherLength(benchmark::State& state) {
    saveItem(state, 12.5);
}
BENCHMARK(anotherLength)->Iterations(SAVES);

void preset(benchmark::State& state) {
    facade().loadPresetConfig();
    alternate(state, 12.5, [](double value) {
        hxl_config_handler::sPresetBlock block{};
        block.fVoltageSet[0] = static_cast<float>(value);
        return facade().savePresetBlock(1, block, true);
    });
}
BENCHMARK(preset)->Iterations(SAVES);

void seeding(benchmark::State& state) {
    for (auto _ : state) {
        makeFresh();
        if (!facade().loadAutoSaveConfig()) state.SkipWithError("the seeding failed");
    }
}
BENCHMARK(seeding)->Iterations(SAVES);

// What keeps neither the old file nor the new one through a power cut.
void plainRewrite(benchmark::State& state) {
    std::ifstream file(configFilePath("conf_preset.cfg"));
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    for (auto _ : state) {
        std::FILE* stream = std::fopen(configFilePath("conf_preset.cfg").c_str(), "wb");
        std::fwrite(text.data(), 1, text.size(), stream);
        std::fflush(stream);
        fsync(fileno(stream));
        std::fclose(stream);
    }
}
BENCHMARK(plainRewrite)->Iterations(SAVES);

}  // namespace

BENCHMARK_MAIN();
