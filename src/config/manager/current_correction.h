// correction_current.cfg: reads and writes the four current-correction factors, which no processor
// keeps.
#ifndef CONFIG_MANAGER_CURRENT_CORRECTION_H
#define CONFIG_MANAGER_CURRENT_CORRECTION_H

namespace hxl_config_handler {

// The factors in this order: sink high and low current range, source high and low; no unit. Each
// key that fails is printed; a key that cannot be read leaves its element unchanged. True if at
// least one was read or written; false for a missing file, which is not created.
bool readCurrentCorrection(double values[4]);
bool writeCurrentCorrection(const double values[4]);

}  // namespace hxl_config_handler

#endif
