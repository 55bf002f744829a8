#pragma once

#include <zelm/Export.h>

#include <string>
#include <vector>

namespace Zelm {

/// What callers on the way up have said about an exception. Stands beside the exception's own type as a
/// second base, and is itself no `std::exception`, so that a handler for that type meets exactly one.
class ZELM_EXPORT MoreInfoForException {
public:
    explicit MoreInfoForException(const std::string& what);
    /// As with `what` alone, followed by `add_message_to_more_info(more_info)`.
    MoreInfoForException(const std::string& more_info, const std::string& what);
    MoreInfoForException(const MoreInfoForException&) = default;
    MoreInfoForException& operator=(const MoreInfoForException&) = default;
    virtual ~MoreInfoForException();

    /// Puts `msg` in front of the full message as add_info_to_message() does, and at the end of all messages
    /// also where the full message stays as it is. Changes nothing when it fails for lack of memory.
    virtual void add_message_to_more_info(const std::string& msg);

    /// The whole chain as one text, the newest message in front.
    const std::string& full_message() const noexcept { return full_message_; }
    /// Every message in the order in which it was added, the exception's own text first.
    const std::vector<std::string>& get_all_messages() const noexcept { return all_messages_; }

private:
    std::vector<std::string> all_messages_;
    std::string full_message_;
};

namespace details {

/// The text of a standard exception. Null counts as empty, and an exception that has nothing to say but the
/// name of its class, "std::exception", as "Unknown exception".
ZELM_EXPORT std::string textOfWhat(const char* what);

} // namespace details

/// An exception of type `T` that also carries what callers have said about it; it can still be caught as `T`
/// and as each base of `T`. rethrow_with_more_info() throws it for 21 standard types.
template <class T>
class ZELM_EXPORT ExceptionWithMoreInfo : public T, public MoreInfoForException {
public:
    /// Copies the `T` part of `caught` with all that it holds, such as an error code.
    ExceptionWithMoreInfo(const T& caught, const std::string& more_info)
        : T(caught), MoreInfoForException(more_info, details::textOfWhat(caught.what())) {}

    /// The full message, so that a handler that knows only `T` sees the whole chain.
    const char* what() const noexcept override { return full_message().c_str(); }
};

/// `info`, ": " and `message`; or `message` as it is if it is not empty and starts with `info`. Only the
/// start is looked at: "a" adds nothing to "abc".
ZELM_EXPORT std::string add_info_to_message(const std::string& info, const std::string& message);

/// `first`, `message` and `last` on lines of their own; an empty `first` or `last` leaves no line.
ZELM_EXPORT std::string combine_error_messages(const std::string& message, const std::string& first,
                                               const std::string& last);

/// The message of the exception in flight between `first` and `last`, see combine_error_messages(). The full
/// message of a MoreInfoForException; else the answer of the newest ExceptionHandlerBase that has one; else
/// `what()`, or "Unknown exception encountered." for what is no `std::exception`.
///
/// Call it inside a catch block: where no exception is in flight it ends in `std::terminate`.
ZELM_EXPORT std::string get_message_from_caught_exception(const std::string& first, const std::string& last);

/// Adds `info` to the exception in flight and throws it on:
///
///     try { ... } catch (...) { rethrow_with_more_info("while reading the sweep"); }
///
/// A MoreInfoForException is that same object, one message longer. Any other `std::exception` is offered to
/// all handlers, newest first, and if none throws its own comes out as the ExceptionWithMoreInfo of the first
/// standard type that fits, derived ones before their bases. A class that is not standard is thereby sliced:
/// one derived from `std::runtime_error` comes out as `ExceptionWithMoreInfo<std::runtime_error>`, and what
/// `std::throw_with_nested` threw loses its inner exception. What is no `std::exception` and no handler knows
/// is thrown on unchanged; `info` is lost.
///
/// Call it inside a catch block: where no exception is in flight it ends in `std::terminate`. A
/// `std::bad_alloc` on the way replaces the exception in flight.
[[noreturn]] ZELM_EXPORT void rethrow_with_more_info(const std::string& info);

} // namespace Zelm
