// The delivery of one event to one handler.
#ifndef FRAMEWORK_EVT_WORK_ITEM_H
#define FRAMEWORK_EVT_WORK_ITEM_H

#include <memory>
#include <utility>

#include "framework/evt_handler.h"
#include "framework/work_item.h"

namespace core {

// Created by the event manager. Keeps the handler and the event alive until the delivery is done.
class CEvtWorkItem : public core_utils::IWorkItem {
  public:
    CEvtWorkItem(std::shared_ptr<IEvtHandler> handler, std::shared_ptr<CEvent> event)
        : mpHandler(std::move(handler)), mpEvent(std::move(event)) {}

    void execute() override { mpHandler->handleEvent(mpEvent); }

  private:
    std::shared_ptr<IEvtHandler> mpHandler;
    std::shared_ptr<CEvent> mpEvent;
};

}  // namespace core

#endif
