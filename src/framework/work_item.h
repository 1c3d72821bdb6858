// A piece of work that a queue holds and a worker executes.
#ifndef FRAMEWORK_WORK_ITEM_H
#define FRAMEWORK_WORK_ITEM_H

namespace core_utils {

// A successful push gives the item to the queue; a pop gives it to the worker. The worker executes
// it once, on its own thread, and deletes it.
class IWorkItem {
  public:
    virtual ~IWorkItem() = default;

    // Must not throw: the worker's thread catches nothing, so the process would end.
    virtual void execute() = 0;
};

}  // namespace core_utils

#endif
