// Who tells a processor which instrument it runs on.
#ifndef CONFIG_PROCESSORS_DEV_TYPE_INFO_H
#define CONFIG_PROCESSORS_DEV_TYPE_INFO_H

#include <utility>

class IDevTypeInfo {
  public:
    // Fills `out` with (device type, channel count) and returns the device type: 0 not known yet,
    // 1 a 35 V, 2 a 100 V, 3 a 35 V two-channel model of the other family. Count 1 or 2, or 0.
    // May block for a second in CConfigManager, which looks the identity up. What the processors
    // are given never blocks: it holds what is known.
    virtual int getDevTypeInfo(std::pair<int, int>& out) = 0;

  protected:
    ~IDevTypeInfo() = default;
};

#endif
