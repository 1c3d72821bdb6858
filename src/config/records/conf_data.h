// The base of every configuration record.
#ifndef CONFIG_RECORDS_CONF_DATA_H
#define CONFIG_RECORDS_CONF_DATA_H

#include <string>
#include <utility>

namespace hxl_config_handler {

// One configuration item in memory, on its way between its file, its shared object and a handler.
// A processor creates it on the heap and keeps it in its table, or hands it to the caller to
// delete. Records are plain values without locks: one thread at a time.
class CConfData {
  public:
    // `id` names the item and its shared object; `key` is its key in the file, or the name of the
    // record's class.
    CConfData(int id, std::string key) : mIndex(id), mstrKey(std::move(key)) {}
    virtual ~CConfData() = default;

    // Dumps the record to standard output; records without a dump print nothing.
    virtual void PrintConfData() const {}

    int GetIndex() const { return mIndex; }
    std::string GetKey() const { return mstrKey; }

  private:
    int mIndex;
    std::string mstrKey;
};

}  // namespace hxl_config_handler

#endif
