// correction_current.cfg: the four current-correction factors, which no processor keeps.
#ifndef CONFIG_MANAGER_CURRENT_CORRECTION_H
#define CONFIG_MANAGER_CURRENT_CORRECTION_H

namespace hxl_config_handler {

inline constexpr char CORRECTION_FILE_NAME[] = "correction_current.cfg";
inline constexpr char CORRECTION_SECTION[] = "CURRENT_CORRECTION";
inline constexpr const char* CORRECTION_KEYS[] = {"SINK_High_CurrRange", "SINK_Low_CurrRange",
                                                  "SRC_High_CurrRange", "SRC_Low_CurrRange"};

// The factors in this order: sink high and low current range, source high and low. Each key that
// fails is printed; on reading it leaves its slot alone. True if at least one was read or written;
// false for a missing file, which is not created.
bool readCurrentCorrection(double values[4]);
bool writeCurrentCorrection(const double values[4]);

}  // namespace hxl_config_handler

#endif
