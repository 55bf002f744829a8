#pragma once

#include <zelm/Export.h>

#include <string>

namespace Zelm {

/// Teaches rethrow_with_more_info() and get_message_from_caught_exception() about exception types that the
/// library does not know. A handler is registered from construction to destruction, owned by the application,
/// and asked before all older ones.
///
/// Handlers of all threads run one at a time, under one lock that is not recursive: a handler must neither
/// make nor destroy a handler, nor call the two functions above. Where it does, debug builds assert and
/// others throw `std::system_error` (`std::errc::resource_deadlock_would_occur`), out of a destructor into
/// `std::terminate`. Nor must it report or set reporters: a reporter asks the handlers under its own lock,
/// and the two would wait for each other.
///
/// Registration is the work of this base class, when the derived object does not exist yet or no longer. So
/// make and destroy handlers only while no other thread handles exceptions with this library.
class ZELM_EXPORT ExceptionHandlerBase {
public:
    ExceptionHandlerBase();
    /// The copy is not registered, and assignment changes nothing.
    ExceptionHandlerBase(const ExceptionHandlerBase&) noexcept {}
    ExceptionHandlerBase& operator=(const ExceptionHandlerBase&) noexcept { return *this; }
    virtual ~ExceptionHandlerBase();

    /// Called inside a catch block: looks at the exception in flight by a `throw;` of its own. If it is one
    /// that this handler knows, throws what shall go on in its place, with `info` added; else returns.
    virtual void rethrow_with_more_info(const std::string& info) = 0;
    /// Called inside a catch block: the message of the exception in flight, empty if this handler does not
    /// know it.
    virtual std::string get_message_from_caught_exception() = 0;
};

} // namespace Zelm
