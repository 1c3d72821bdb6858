// How the tool reports that it could not do what it was asked.
#ifndef SHMCONF_TOOL_ERROR_H
#define SHMCONF_TOOL_ERROR_H

#include <stdexcept>
#include <string>

namespace shmconf {

// Scripts rely on the numbers.
enum eExitStatus {
    STATUS_DONE = 0,
    STATUS_FAILED = 1,      // an object is absent, is no vector of its type, or was not written
    STATUS_USAGE = 2,       // the command line names no such option, object or value
    STATUS_NO_SEGMENT = 3,  // no segment, or none that can be used
};

// What is printed on standard error, and the status that the program ends with.
class CToolError : public std::runtime_error {
  public:
    CToolError(eExitStatus status, const std::string& message)
        : std::runtime_error(message), mStatus(status) {}

    eExitStatus status() const { return mStatus; }

  private:
    eExitStatus mStatus;
};

}  // namespace shmconf

#endif
