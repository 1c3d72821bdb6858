// Finds files by a shell pattern.
#ifndef STORAGE_FILE_FIND_H
#define STORAGE_FILE_FIND_H

#include <glob.h>

#include <string>

namespace core_utils {

struct sFoundFile {
    char szPath[257];  // a directory's ends in "/"
    bool bDirectory;
    bool bReadOnly;  // nobody may write it, by its mode
};

// Owns the result of one search, sorted by name. One thread at a time.
class CFileFind {
  public:
    CFileFind() = default;
    CFileFind(const CFileFind&) = delete;
    CFileFind& operator=(const CFileFind&) = delete;
    virtual ~CFileFind() { close(); }

    // Searches, and describes the first file found. False, with a message, if there is none, its
    // path has more than 256 characters, or it vanished meanwhile.
    bool findFirstFile(const std::string& pattern, sFoundFile& record);

    // Describes the next one. False, silently, after the last, or if it cannot be described.
    bool findNextFile(sFoundFile& record);

    // Drops the result; always true.
    bool close();

    // For glob: an unreadable directory is no reason of ours to stop the search. Always 0.
    static int errfunc(const char* path, int error);

  private:
    glob_t mResult = {};
    int miFlags = GLOB_ERR | GLOB_MARK;
    unsigned int muiIndex = 0;
};

}  // namespace core_utils

#endif
