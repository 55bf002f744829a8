#include <zelm/errors/ExceptionHandlerBase.h>

#include <zelm/errors/ExceptionHandlers.h>
#include <zelm/errors/LockedState.h>

#include <algorithm>
#include <deque>

namespace Zelm {

namespace {

struct Handlers {
    std::deque<ExceptionHandlerBase*> newestFirst;
};

using LockedHandlers = details::LockedState<Handlers>;

// From the loading of the library on, so that it outlives the static objects of the application.
[[maybe_unused]] const bool handlersAreThere = (LockedHandlers::ensure(), true);

} // namespace

ExceptionHandlerBase::ExceptionHandlerBase() {
    LockedHandlers()->newestFirst.push_front(this);
}

ExceptionHandlerBase::~ExceptionHandlerBase() {
    const LockedHandlers handlers;
    auto& all = handlers->newestFirst;
    if (const auto found = std::find(all.begin(), all.end(), this); found != all.end()) {
        all.erase(found);
    }
}

void details::offerToHandlers(const std::string& info) {
    const LockedHandlers handlers;
    for (ExceptionHandlerBase* handler : handlers->newestFirst) {
        handler->rethrow_with_more_info(info);
    }
}

std::string details::messageFromHandlersOr(std::string fallback) {
    const LockedHandlers handlers;
    for (ExceptionHandlerBase* handler : handlers->newestFirst) {
        if (std::string message = handler->get_message_from_caught_exception(); !message.empty()) {
            return message;
        }
    }
    return fallback;
}

} // namespace Zelm
