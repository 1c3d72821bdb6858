// What the tests of the configuration share.
#ifndef SUPPORT_PROCESSOR_TEST_H
#define SUPPORT_PROCESSOR_TEST_H

#include <stdexcept>

#include "config/processors/config_processor.h"
#include "config/schema/value_text.h"
#include "support/files.h"
#include "support/peer.h"

namespace support {

using namespace hxl_config_handler;

// What `operation` prints, then 1 for its success, 0, or that it threw.
template <typename Operation>
std::string outcomeOf(Operation operation) {
    std::string outcome = "thrown";
    const std::string printed = printedBy([&] {
        try {
            outcome = operation() ? "1" : "0";
        } catch (const std::invalid_argument&) {
        }
    });
    return printed + outcome;
}
inline std::string load(CAbsConfigProcesor& processor) {
    return outcomeOf([&] { return processor.LoadConfigFile(); });
}
inline std::string save(CAbsConfigProcesor& processor, int id, CConfData* record) {
    return outcomeOf([&] { return processor.SaveConfData(id, record); });
}
// What a read prints that does not find "[section]:[key]".
inline std::string missed(const std::string& type, const std::string& place) {
    return "[CFileConfig::read " + type + "] FAILED to read " + place + '\n';
}

inline core_utils::CSharedMemory& shared() {
    return *CAbsConfigProcesor::mpSharedMemoryMngr;
}
inline std::string numbersIn(int id) {
    return joinList(shared().getDoubleVector(id));
}
inline std::string bytesIn(int id) {
    return joinList(shared().getByteVector(id));
}
inline std::string textsIn(int id) {
    return joinList(shared().getStringVector(id));
}
inline std::string presetIn(int number) {
    return numbersIn(30 + 2 * number) + ' ' + bytesIn(31 + 2 * number);
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
    int getDevTypeInfo(std::pair<int, int>& out) override { return (out = {mDevType, 2}).first; }
    int mDevType;
};

inline bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}
inline std::string replaced(std::string text, const std::string& part, const std::string& by) {
    return text.replace(text.find(part), part.size(), by);
}

}  // namespace support

#endif
