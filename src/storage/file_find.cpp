#include "storage/file_find.h"

#include <sys/stat.h>

#include <cstdio>
#include <cstring>

namespace core_utils {

namespace {

bool isDirectory(const char* path, bool& directory) {
    struct stat status {};
    if (stat(path, &status) != 0) return false;
    directory = S_ISDIR(status.st_mode);
    return true;
}

bool isReadOnly(const char* path, bool& readOnly) {
    struct stat status {};
    if (stat(path, &status) != 0) return false;
    readOnly = (status.st_mode & 0222) == 0;
    return true;
}

// Null, or the message for the step that failed.
const char* fill(sFoundFile& record, const glob_t& result, unsigned int index) {
    if (index >= result.gl_pathc || std::strlen(result.gl_pathv[index]) >= sizeof record.szPath)
        return "CFileFind::findFirstFile error 2";
    std::strcpy(record.szPath, result.gl_pathv[index]);
    if (!isDirectory(record.szPath, record.bDirectory)) return "CFileFind::findFirstFile error 3";
    if (!isReadOnly(record.szPath, record.bReadOnly)) return "CFileFind::findFirstFile error 4";
    return nullptr;
}

}  // namespace

bool CFileFind::findFirstFile(const std::string& pattern, sFoundFile& record) {
    close();
    if (glob(pattern.c_str(), miFlags, errfunc, &mResult) != 0) {
        std::puts("CFileFind::findFirstFile error 1");
        return false;
    }
    muiIndex = 0;
    const char* failure = fill(record, mResult, muiIndex);
    if (failure != nullptr) std::puts(failure);
    return failure == nullptr;
}

bool CFileFind::findNextFile(sFoundFile& record) {
    if (muiIndex >= mResult.gl_pathc) return false;
    ++muiIndex;
    return fill(record, mResult, muiIndex) == nullptr;
}

bool CFileFind::close() {
    globfree(&mResult);
    mResult = {};
    return true;
}

int CFileFind::errfunc(const char* /*path*/, int /*error*/) {
    return 0;
}

}  // namespace core_utils
