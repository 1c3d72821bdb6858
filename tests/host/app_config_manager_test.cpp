#include "host/app_config_manager.h"

#include "support/files.h"

namespace {

using support::printedBy;

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
    const std::string process = "Process COnfigHandler : ", failed = "FAILED to START :A\n";
    const struct {
        std::map<std::string, CAbsConfigHandler*> handlers;
        bool inits;
        std::string initPrints;
        bool starts;
        std::string startPrints;
    } rows[] = {
        {{}, false, "", false, ""},
        {{{"none", nullptr}}, false, "", false, ""},
        {{{"ConfigSystemHandler", &good}},
         true,
         "",
         false,
         "ProcessEx COnfigHandler : ConfigSystemHandler \n"},
        {{{"A", &startFails}, {"Z", &good}}, true, "", false, process + "A \n" + failed},
        {{{"A", &initFails}, {"Z", &good}},
         false,
         failed,
         true,
         process + "A \n" + process + "Z \n"},
    };
    for (const auto& row : rows) {
        CRegistry registry;
        registry.mMapHandlers = row.handlers;
        EXPECT_EQ(row.initPrints,
                  printedBy([&] { EXPECT_EQ(row.inits, registry.initHandlers()); }));
        EXPECT_EQ(row.startPrints, printedBy([&] { EXPECT_EQ(row.starts, registry.start()); }));
    }
}

TEST(AppConfigManager, RegistersTheDeviceTypeHandlerAlone) {
    CHandler former(false, false);
    CRegistry registry;
    registry.mMapHandlers = {{"A", &former}};
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(registry.init()); }));
    ASSERT_EQ(1U, registry.mMapHandlers.size());
    EXPECT_EQ("CConfigDevTypeHandler", registry.mMapHandlers.begin()->first);
}

}  // namespace
