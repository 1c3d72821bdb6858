// Finds files by a shell pattern.
#ifndef STORAGE_FILE_FIND_H
#define STORAGE_FILE_FIND_H

#include <glob.h>

#include <string>

namespace core_utils {

struct sFoundFile {
    char szPath[257];  // ends in "/" for a directory
    bool bDirectory;
    bool bReadOnly;  // no write permission for anybody in its mode
};

// Owns the results of one search, sorted by name. One thread at a time.
class CFileFind {
  public:
    CFileFind() = default;
    CFileFind(const CFileFind&) = delete;
    CFileFind& operator=(const CFileFind&) = delete;
    virtual ~CFileFind() { close(); }

    // Starts a search and describes the first match. Returns false and prints a message if there is
    // none, or if stat() of it fails or its path has more than 256 characters.
    bool findFirstFile(const std::string& pattern, sFoundFile& record);

    // Describes the next match. Returns false, without a message, after the last match and where
    // findFirstFile() would fail.
    bool findNextFile(sFoundFile& record);

    // Frees the results. Always returns true.
    bool close();

    // The error callback of glob(). Always returns 0: skip an unreadable directory.
    static int errfunc(const char* path, int error);

  private:
    glob_t mResult = {};
    int miFlags = GLOB_ERR | GLOB_MARK;
    unsigned int muiIndex = 0;
};

}  // namespace core_utils

#endif
