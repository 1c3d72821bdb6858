// What CFileConfig makes of each line of a file, whatever its values are.
#ifndef CONFCHECK_LINES_H
#define CONFCHECK_LINES_H

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "confcheck/config_files.h"

namespace confcheck {

struct sFinding {
    int line;  // from 1, which also stands for the file as a whole
    std::string reason;
};

// Takes a file chunk by chunk.
class CLines {
  public:
    // `file` must outlive it.
    explicit CLines(const sConfigFile& file);

    // The next chunk; `cutOff` if its line goes on in the one after it.
    void take(std::string_view chunk, bool cutOff);

    // Once all are taken.
    std::vector<sFinding> findings() const;
    bool hasSection(const std::string& section) const { return mSections.count(section) > 0; }

    // The line that the item's value is read from; 0 if there is none.
    int lineOf(const sItem& item) const;

  private:
    enum class ePlace { OUTSIDE, UNKNOWN_SECTION, SECTION };

    void report(const std::string& reason) { mFindings.push_back({mLine, reason}); }
    bool enterSection(std::string_view chunk);
    const sItem* findItem(const std::string& key) const;
    void checkCharacters(std::string_view chunk);
    void takeRest(std::string_view chunk);
    void takeHeader(std::string_view chunk);
    void takeKeyLine(std::string_view chunk, const std::string& key);
    void takeText(std::string_view chunk);
    std::string whyUnknown(const std::string& key) const;

    std::map<std::string, std::vector<const sItem*>> mItems;  // by section
    std::vector<sFinding> mFindings;
    std::set<std::string> mSections;  // that have a header
    std::map<std::pair<std::string, std::string>, int> mKeyLines;
    ePlace mPlace = ePlace::OUTSIDE;
    std::string mSection;
    int mLine = 1;
    int mFirstCrLine = 0;
    int mCrLines = 0;
    // Of the line whose next chunk is to come:
    int mChunks = 0;
    bool mbComment = false;
    bool mbValueCut = false;  // the value goes to the end of the first chunk
    bool mbRestReported = false;
    bool mbNulReported = false;
};

}  // namespace confcheck

#endif
