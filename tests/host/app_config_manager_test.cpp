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
    const std::string skipped = "ProcessEx COnfigHandler : ConfigSystemHandler \n";
    const struct {
        std::map<std::string, CAbsConfigHandler*> handlers;
        bool inits, starts;
        std::string initPrints, startPrints;
    } rows[] = {
        {{{"none", nullptr}}, false, false, "", ""},
        {{{"ConfigSystemHandler", &good}}, true, false, "", skipped},
        {{{"A", &startFails}, {"Z", &good}}, true, false, "", process + "A \n" + failed},
        {{{"A", &initFails}, {"Z", &good}},
         false,
         true,
         failed,
         process + "A \n" + process + "Z \n"},
    };
    CRegistry registry;
    for (const auto& row : rows) {
        registry.mMapHandlers = row.handlers;
        EXPECT_EQ(row.initPrints,
                  printedBy([&] { EXPECT_EQ(row.inits, registry.initHandlers()); }));
        EXPECT_EQ(row.startPrints, printedBy([&] { EXPECT_EQ(row.starts, registry.start()); }));
    }
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(registry.init()); }));
    EXPECT_EQ(1U, registry.mMapHandlers.size()) << "none of the former ones";
}

}  // namespace
