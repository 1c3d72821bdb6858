// The load of any auto-save and preset file, of any device type, into a real segment.
#include <cstdio>
#include <stdexcept>
#include <string>

#include "config/processors/auto_save_processor.h"
#include "config/processors/preset_processor.h"
#include "support/files.h"

namespace {

class CDevTypeInfo : public IDevTypeInfo {
  public:
    int getDevTypeInfo(std::pair<int, int>& out) override {
        out = {devType, 2};
        return devType;
    }

    int devType = 0;
};

// A processor that can be loaded again and again.
template <typename Processor>
class CLoadable : public Processor {
  public:
    explicit CLoadable(IDevTypeInfo* provider) {
        this->Initialise();
        this->setDevTypeInfo(provider);
    }

    void load() {
        try {
            this->LoadConfigFile();
        } catch (const std::logic_error&) {
            // Text that is no number: what the manager catches.
        }
        if (this->mpFileConfig) this->mpFileConfig->close();
    }
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    return std::freopen("/dev/null", "w", stdout) == nullptr ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static CDevTypeInfo provider;
    static CLoadable<hxl_config_handler::CConfigAutoSaveProcessor> autoSave(&provider);
    static CLoadable<hxl_config_handler::CConfigPresetProcessor> preset(&provider);

    if (size == 0) return 0;
    provider.devType = bytes[0] % 4;
    const std::string content(reinterpret_cast<const char*>(bytes) + 1, size - 1);
    support::writeFile(support::configPath("conf_auto_save.cfg"), content);
    autoSave.load();
    support::writeFile(support::configPath("conf_preset.cfg"), content);
    preset.load();
    return 0;
}
