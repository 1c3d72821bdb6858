// Operations on paths.
#ifndef STORAGE_FILE_SYSTEM_H
#define STORAGE_FILE_SYSTEM_H

#include <string>

namespace core_utils {

// Stateless wrappers of system calls. They print nothing and return true on success. After a
// failure errno holds the reason, except where copyFile() refuses a file itself. Any thread may
// call them.
class CFileSystem {
  public:
    static bool renameFile(const std::string& oldPath, const std::string& newPath);
    static bool deleteFile(const std::string& path);

    // Returns true also if `path` exists already, even if it is not a directory.
    static bool makeDirectory(const std::string& path);
    static bool removeDirectory(const std::string& path);

    // Reads the whole source into memory, writes it to the destination and calls sync(). Returns
    // false and leaves the destination unchanged if the source is not a regular file, has 2 GiB or
    // more or does not fit into memory, or if `failIfExists` is set and the destination can be
    // opened for reading. Never blocks on a FIFO.
    static bool copyFile(const std::string& source, const std::string& destination,
                         bool failIfExists);

    // Creates each missing directory of the path, up to the first failure. "/" and "\" separate
    // components. Returns false only for an empty path or one longer than 255 characters, so the
    // caller must find out whether the last directory exists.
    static bool makeDirectoryPath(const std::string& path);
};

}  // namespace core_utils

#endif
