// What the tests of the configuration share.
#ifndef CONFIG_PROCESSORS_PROCESSOR_TEST_H
#define CONFIG_PROCESSORS_PROCESSOR_TEST_H

#include "config/processors/config_processor.h"
#include "config/processors/value_list.h"
#include "config/records/auto_save_data.h"
#include "shared_memory/peer.h"
#include "support/files.h"

namespace support {

using Texts = std::vector<std::string>;

// What `operation` prints, then 1 for its success or 0.
template <typename Operation>
std::string outcomeOf(Operation operation) {
    bool success = false;
    const std::string printed = printedBy([&] { success = operation() ? true : false; });
    return printed + (success ? '1' : '0');
}

inline core_utils::CSharedMemory& shared() {
    return *CAbsConfigProcesor::mpSharedMemoryMngr;
}
// A shared object's values with commas between them.
inline std::string numbersIn(int id) {
    return hxl_config_handler::joinList(shared().getDoubleVector(id));
}
inline std::string bytesIn(int id) {
    return hxl_config_handler::joinList(shared().getByteVector(id));
}
inline std::string textsIn(int id) {
    return hxl_config_handler::joinList(shared().getStringVector(id));
}

// A processor as the manager sets it up, on a unit of that device type.
template <typename Processor>
class CProcessorOn : public Processor, private IDevTypeInfo {
  public:
    explicit CProcessorOn(int devType) : mDevType(devType) {
        this->Initialise();
        this->setDevTypeInfo(this);
    }

  private:
    int getDevTypeInfo(std::pair<int, int>& out) override {
        out = {mDevType, 2};
        return mDevType;
    }
    int mDevType;
};

inline std::string replaced(std::string text, const std::string& part, const std::string& by) {
    return text.replace(text.find(part), part.size(), by);
}

// Puts `text` into a configuration folder that has no room for one more byte.
inline void writeFullFolder(const std::string& name, const std::string& text) {
    ASSERT_TRUE(mountSmall(configPath(""), "4k"));
    writeFile(configPath(name), text + std::string(4095 - text.size(), '#') + '\n');
}

}  // namespace support

#endif
