// The device string that peers publish, and what it tells about the instrument.
#ifndef CONFIG_MANAGER_DEVICE_IDENTITY_H
#define CONFIG_MANAGER_DEVICE_IDENTITY_H

#include <string>
#include <utility>

namespace hxl_config_handler {

// The device string of a type and a channel count; empty for a pair that no model has. The other
// family has two channels, whatever is reported.
std::string devStringOf(int devType, int chnCount);

// (device type, channel count) of a device string, (0, 0) if it tells no identity. Any text that
// names neither family is a 35 V model, any without "1CH" has two channels.
std::pair<int, int> identityOf(const std::string& devString);

// How long a text must have stood unchanged to be a whole device string, in ms: 0 for what peers
// usually write and for what tells no identity. The rest may be a write in progress, the longer
// for looking like one: its writer can be stopped half-way, by a page of code to be loaded from
// flash, and what is half written often names another model.
int settlingTimeOf(const std::string& devString);

}  // namespace hxl_config_handler

#endif
