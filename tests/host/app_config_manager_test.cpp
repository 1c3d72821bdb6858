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
    using Handlers = std::map<std::string, CAbsConfigHandler*>;
    const std::string system = "ConfigSystemHandler", process = "Process COnfigHandler : ";
    const std::tuple<Handlers, std::string, std::string> rows[] = {
        {{}, "0", "0"},
        {{{"none", nullptr}}, "0", "0"},
        {{{system, &good}}, "1", "ProcessEx COnfigHandler : " + system + " \n0"},
        {{{"A", &startFails}, {"Z", &good}}, "1", process + "A \nFAILED to START :A\n0"},
        {{{"A", &initFails}, {"Z", &good}},
         "FAILED to START :A\n0",
         process + "A \n" + process + "Z \n1"}};
    for (const auto& [handlers, inits, starts] : rows) {
        CRegistry registry;
        registry.mMapHandlers = handlers;
        EXPECT_EQ(inits, support::outcomeOf([&] { return registry.initHandlers(); }));
        EXPECT_EQ(starts, support::outcomeOf([&] { return registry.start(); }));
    }
    CRegistry registry;
    registry.mMapHandlers = {{"A", &initFails}};
    EXPECT_EQ("", support::printedBy([&] { EXPECT_TRUE(registry.init()); }));
    ASSERT_EQ(1U, registry.mMapHandlers.size());
    EXPECT_EQ("CConfigDevTypeHandler", registry.mMapHandlers.begin()->first);
}

}  // namespace
