#include <zelm/errors/MoreInfoForException.h>

#include <zelm/errors/ExceptionHandlers.h>
#include <zelm/errors/StandardExceptions.h>

#include <exception>
#include <string_view>

namespace Zelm {

MoreInfoForException::MoreInfoForException(const std::string& what)
    : all_messages_(1, what), full_message_(what) {}

MoreInfoForException::MoreInfoForException(const std::string& more_info, const std::string& what)
    : full_message_(add_info_to_message(more_info, what)) {
    all_messages_.reserve(2);
    all_messages_.push_back(what);
    all_messages_.push_back(more_info);
}

MoreInfoForException::~MoreInfoForException() = default;

void MoreInfoForException::add_message_to_more_info(const std::string& msg) {
    std::string extended = add_info_to_message(msg, full_message_);
    all_messages_.push_back(msg);
    full_message_.swap(extended);
}

std::string details::textOfWhat(const char* what) {
    if (what == nullptr) {
        return {};
    }
    return std::string_view(what) == "std::exception" ? "Unknown exception" : what;
}

std::string add_info_to_message(const std::string& info, const std::string& message) {
    if (!message.empty() && message.compare(0, info.size(), info) == 0) {
        return message;
    }
    std::string extended;
    extended.reserve(info.size() + 2 + message.size());
    return extended.append(info).append(": ").append(message);
}

std::string combine_error_messages(const std::string& message, const std::string& first,
                                   const std::string& last) {
    std::string combined;
    combined.reserve(first.size() + message.size() + last.size() + 2);
    if (!first.empty()) {
        combined.append(first).append(1, '\n');
    }
    combined.append(message);
    if (!last.empty()) {
        combined.append(1, '\n').append(last);
    }
    return combined;
}

namespace {

std::string messageOfCaughtException() {
    try {
        throw;
    } catch (const MoreInfoForException& caught) {
        return caught.full_message();
    } catch (const std::exception& caught) {
        return details::messageFromHandlersOr(details::textOfWhat(caught.what()));
    } catch (...) {
        return details::messageFromHandlersOr("Unknown exception encountered.");
    }
}

} // namespace

std::string get_message_from_caught_exception(const std::string& first, const std::string& last) {
    return combine_error_messages(messageOfCaughtException(), first, last);
}

void rethrow_with_more_info(const std::string& info) {
    MoreInfoForException* withInfo = nullptr;
    const std::exception* standard = nullptr;
    // The caller's catch block keeps the object alive beyond these clauses. A throw from inside one would
    // have to unwind that clause too, which costs about half a throw more.
    try {
        throw;
    } catch (MoreInfoForException& caught) {
        withInfo = &caught;
    } catch (const std::exception& caught) {
        standard = &caught;
    } catch (...) {
        // Stays inside: the unwinding of a cancelled thread comes here too, and must never be ended.
        details::offerToHandlers(info);
        throw;
    }
    if (withInfo != nullptr) {
        withInfo->add_message_to_more_info(info);
        throw;
    }
    details::offerToHandlers(info);
    details::throwStandardWithMoreInfo(*standard, info);
}

} // namespace Zelm
