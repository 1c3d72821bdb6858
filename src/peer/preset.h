// A preset memory for a process beside the daemon: its settings by name, so that nobody counts
// elements. The two objects of a preset memory are those of the preset schema.
#ifndef PEER_PRESET_H
#define PEER_PRESET_H

#include <string>
#include <vector>

#include "config/schema/preset_schema.h"
#include "shared_memory/peer_segment.h"

namespace core_utils {

// Where a setting lies: in the object's elements `index` for channel 1 and `index` + 1 for channel
// 2.
struct sPresetField {
    const char* key;   // as in the preset file: "VoltageSet"
    const char* unit;  // "V"; empty for a state, and where the unit is not laid down
    const sSharedObject* object;
    std::size_t index;
};

// The 17 settings of the preset memories 1 to 5, in their order; none for another number.
std::vector<sPresetField> presetFields(int number);

// The two below block and fail as CPeerSegment's operations do; another number than 1 to 5 is
// UNKNOWN_OBJECT. Numbers and states are two objects, accessed one after the other.

// On failure `block` stays. What an object lacks is zero.
CPeerSegment::sResult readPreset(const CPeerSegment& segment, int number,
                                 hxl_config_handler::sPresetBlock& block);

// Replaces all settings, creating the objects if there are none.
CPeerSegment::sResult writePreset(CPeerSegment& segment, int number,
                                  const hxl_config_handler::sPresetBlock& block);

// Changes one setting of one channel, counted from 1; no change that others make at the same time
// is lost. UNKNOWN_OBJECT for a key that does not exist, NO_ELEMENT for a channel that the preset
// does not have, TYPE_MISMATCH for a state that is no whole number from 0 to 255.
CPeerSegment::sResult setPreset(CPeerSegment& segment, int number, const std::string& key,
                                int channel, double value);

}  // namespace core_utils

#endif
