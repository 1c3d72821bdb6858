// What the auto-save handler costs: one poll cycle beside a bare loop over the same objects, and
// the time from a change in shared memory to the file.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "config/handlers/auto_save_handler.h"
#include "config/manager/hxl_config_handler.h"
#include "config/schema/auto_save_schema.h"
#include "config/schema/config_paths.h"
#include "shared_memory/object_directory.h"
#include "shared_memory/shared_memory.h"

namespace {

using hxl_config_handler::configFilePath;
using hxl_config_handler::CSingletonHxlConfigHandler;
using Clock = std::chrono::steady_clock;

class CHandler : public CConfigAutoSaveHandler {
  public:
    using CConfigAutoSaveHandler::mvecDblIndex;
    using CConfigAutoSaveHandler::mvecSelIndex;
    using CConfigAutoSaveHandler::mvecStrIndex;
    using CConfigAutoSaveHandler::saveChanges;
};

class CSegment : public core_utils::CSharedMemory {
  public:
    CSegment() : CSharedMemory(false) {}

    template <typename T>
    static core_utils::SegmentVector<T>* find(const char* name) {
        return mpSharedMemory->find<core_utils::SegmentVector<T>>(name).first;
    }
};

// Seeds a fresh file and the segment with the defaults of a 100 V instrument.
void seed() {
    std::ofstream(configFilePath(hxl_config_handler::AUTO_SAVE_FILE_NAME))
        << "[CONF_STATUS]\nSTATE=0\n";
    auto& facade = *CSingletonHxlConfigHandler::getInstance();
    facade.setDevTypeInfo(2, 2, false);
    facade.loadAutoSaveConfig();
}

void pollCycle(benchmark::State& state) {
    seed();
    CHandler handler;
    for (auto _ : state)
        handler.saveChanges();
}
BENCHMARK(pollCycle);

template <typename T>
bool isEqual(T stored, T shared) {
    return stored == shared;
}
bool isEqual(const std::string& stored, const core_utils::SegmentString& shared) {
    return std::string_view(stored) == std::string_view(shared.data(), shared.size());
}

// One kind of item: the names to look up and the values to compare with.
template <typename T, typename Stored>
struct sItems {
    std::vector<const char*> names;
    std::vector<std::vector<Stored>> stored;

    explicit sItems(const std::vector<unsigned int>& ids) {
        auto& facade = *CSingletonHxlConfigHandler::getInstance();
        for (const unsigned int id : ids) {
            names.push_back(core_utils::objectOf(static_cast<int>(id))->name);
            stored.push_back(facade.getConfValues<Stored>(static_cast<int>(id)));
        }
    }

    bool allEqual() const {
        for (std::size_t i = 0; i < names.size(); ++i) {
            const auto& object = *CSegment::find<T>(names[i]);
            if (object.size() != stored[i].size()) return false;
            for (std::size_t j = 0; j < stored[i].size(); ++j) {
                if (!isEqual(stored[i][j], object[j])) return false;
            }
        }
        return true;
    }
};

void bareLoop(benchmark::State& state) {
    seed();
    const CSegment segment;
    const CHandler handler;
    const sItems<double, double> numbers(handler.mvecDblIndex);
    const sItems<unsigned char, unsigned char> bytes(handler.mvecSelIndex);
    const sItems<core_utils::SegmentString, std::string> texts(handler.mvecStrIndex);
    for (auto _ : state) {
        const bool equal = numbers.allEqual() && bytes.allEqual() && texts.allEqual();
        if (!equal) state.SkipWithError("the segment differs from what was seeded");
    }
}
BENCHMARK(bareLoop);

// Opens the file each time: a change of its length is a new file.
bool fileHolds(const std::string& text) {
    char content[4096];
    const int descriptor =
        open(configFilePath(hxl_config_handler::AUTO_SAVE_FILE_NAME).c_str(), O_RDONLY);
    const ssize_t size = read(descriptor, content, sizeof content);
    close(descriptor);
    return size > 0 && std::string_view(content, static_cast<std::size_t>(size)).find(text) !=
                           std::string_view::npos;
}

void changeToFile(benchmark::State& state) {
    seed();
    CHandler handler;
    handler.start();
    CSegment segment;
    std::vector<double> latencies;
    // The handler publishes the file's values when it starts: only after that a change stays.
    double value = 1.0;
    do {
        segment.setDoubleVector(0, {value});
    } while (!fileHolds("VOL_LVL=" + std::to_string(value)));
    for (auto _ : state) {
        value = value < 9.0 ? value + 0.5 : 1.0;
        const std::string line = "VOL_LVL=" + std::to_string(value);
        const auto start = Clock::now();
        segment.setDoubleVector(0, {value});
        while (!fileHolds(line)) {
        }
        const std::chrono::duration<double> latency = Clock::now() - start;
        state.SetIterationTime(latency.count());
        latencies.push_back(latency.count());
    }
    handler.CAbsWorkerThread::stop();
    std::sort(latencies.begin(), latencies.end());
    const auto percentile = [&](std::size_t percent) {
        return latencies[std::min(latencies.size() * percent / 100, latencies.size() - 1)] * 1e6;
    };
    state.counters["median_us"] = percentile(50);
    state.counters["p99_us"] = percentile(99);
}
BENCHMARK(changeToFile)->UseManualTime()->Iterations(2000)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
