// The unit of work that a queue carries and a worker executes.
#ifndef FRAMEWORK_WORK_ITEM_H
#define FRAMEWORK_WORK_ITEM_H

namespace core_utils {

// Owned by the queue from a successful push to the pop, then by the worker, which executes it
// once, on its own thread, and deletes it.
class IWorkItem {
  public:
    virtual ~IWorkItem() = default;

    // Must not throw: nothing on the worker's thread would catch it.
    virtual void execute() = 0;
};

}  // namespace core_utils

#endif
