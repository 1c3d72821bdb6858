// Operations on paths.
#ifndef STORAGE_FILE_SYSTEM_H
#define STORAGE_FILE_SYSTEM_H

#include <string>

namespace core_utils {

// Thin, silent and without state: true for success. The reason of a failure is in errno, except
// where copyFile() refuses on its own account. Any thread may call.
class CFileSystem {
  public:
    static bool renameFile(const std::string& oldPath, const std::string& newPath);
    static bool deleteFile(const std::string& path);

    // True also if the path exists already, whatever it is.
    static bool makeDirectory(const std::string& path);
    static bool removeDirectory(const std::string& path);

    // Copies by way of memory, whole, and has the system put all its writes to storage.
    // A source that is no regular file, has 2 GiB or more, or does not fit into memory is
    // refused before the destination is touched; so is a readable destination on `failIfExists`.
    static bool copyFile(const std::string& source, const std::string& destination,
                         bool failIfExists);

    // Makes each directory on the path, whose components "/" and "\" separate, as far as it
    // gets. False only for an empty path or one longer than 255 characters: whether the last
    // directory came to be is for its user to find out.
    static bool makeDirectoryPath(const std::string& path);
};

}  // namespace core_utils

#endif
