#include "host/app_config_manager.h"

#include "config/processors/processor_test.h"

namespace {

struct CHandler : CAbsConfigHandler {
    CHandler(bool inits, bool starts) : mInits(inits), mStarts(starts) {}
    void run() override {}
    void requestStop() override {}
    bool init() override { return mInits; }
    bool start() override { return mStarts; }
    bool mInits, mStarts;
};

struct CRegistry : CAppConfigManager {
    using CAppConfigManager::initHandlers;
    using CAppConfigManager::mMapHandlers;
};

TEST(AppConfigManager, StopsAtTheFirstHandlerThatFailsAndSkipsTheSystemHandler) {
    CHandler good(true, true), initFails(false, true), startFails(true, false);
    const std::string process = "Process COnfigHandler : ",
                      system = "ProcessEx COnfigHandler : ConfigSystemHandler \n",
                      fails = "FAILED to START :";
    const struct {
        std::map<std::string, CAbsConfigHandler*> handlers;
        std::string init, start;
    } rows[] = {
        {{}, "0", "0"},
        {{{"none", nullptr}}, "0", "0"},
        {{{"ConfigSystemHandler", &good}}, "1", system + "0"},
        {{{"A", &good}, {"ConfigSystemHandler", &good}, {"b", nullptr}},
         "1",
         process + "A \n" + system + "1"},
        {{{"A", &startFails}, {"Z", &good}}, "1", process + "A \n" + fails + "A\n0"},
        {{{"A", &good}, {"B", &initFails}, {"C", &initFails}},
         fails + "B\n0",
         process + "A \n" + process + "B \n" + process + "C \n1"},
    };
    for (const auto& row : rows) {
        CRegistry registry;
        registry.mMapHandlers = row.handlers;
        EXPECT_EQ(row.init, support::outcomeOf([&] { return registry.initHandlers(); }));
        EXPECT_EQ(row.start, support::outcomeOf([&] { return registry.start(); }));
    }
    CRegistry registry;
    registry.mMapHandlers = {{"A", &initFails}};
    EXPECT_EQ("", support::printedBy([&] { EXPECT_TRUE(registry.init()); }));
    ASSERT_EQ(1U, registry.mMapHandlers.size());
    EXPECT_EQ("CConfigDevTypeHandler", registry.mMapHandlers.begin()->first);
}

}  // namespace
