#pragma once

#include <zelm/Export.h>

#include <string>
#include <vector>

namespace Zelm {

namespace details {
class ThreadReporterStorage;
}

/// The application's sink for errors and warnings. A reporter is owned by the application and gets reports
/// while it is set, for the whole process or for single threads; it may be destroyed while it is set, and so
/// may the threads.
///
/// A report runs under the lock of the global reporters or under the one of all thread reporters, whichever
/// kind it is. These locks are not recursive: within a report a reporter must not report, set or unset
/// reporters, destroy one, a copy included, or call `std::exit`. Where that would wait for itself for ever,
/// debug builds assert and others throw `std::system_error` (`std::errc::resource_deadlock_would_occur`), out
/// of a destructor into `std::terminate`.
///
/// The destructor of this base class unsets the reporter when the derived object does not exist any more. So
/// unset a reporter that other threads report to before its destructor begins.
class ZELM_EXPORT ExceptionReporterBase {
public:
    ExceptionReporterBase();
    /// A copy is set nowhere, and assignment leaves set what was set.
    ExceptionReporterBase(const ExceptionReporterBase&) noexcept {}
    ExceptionReporterBase& operator=(const ExceptionReporterBase&) noexcept { return *this; }
    virtual ~ExceptionReporterBase();

    /// Called inside a catch block; `Zelm::get_message_from_caught_exception(first, last)` has the text.
    virtual void report_caught_exception(const std::string& first, const std::string& last) = 0;
    /// As above, for what is only a warning.
    virtual void report_caught_exception_as_warning(const std::string& first, const std::string& last) = 0;

    /// Sets or unsets the reporter for the process. The one that was set last gets the reports; setting a
    /// reporter again makes it the last.
    void set_as_global_reporter(bool on);

    /// Sets or unsets the reporter for the calling thread, where it precedes all global ones. The one that
    /// was set last gets the reports; setting a reporter again does not move it. Changes nothing once the
    /// thread, on its way out, has destroyed its list.
    void set_as_thread_reporter(bool on);

private:
    friend class details::ThreadReporterStorage;

    /// The caller holds the thread-reporter lock.
    void thread_storage_was_deleted(details::ThreadReporterStorage* storage) noexcept;

    /// The threads for which this reporter is set.
    std::vector<details::ThreadReporterStorage*> storages_;
};

/// Hands the exception in flight to the thread reporter that was set last or, on a thread without one, to the
/// global reporter that was set last. Throws the exception on if there is no reporter at all, and whatever
/// the reporter throws. Call it inside a catch block.
ZELM_EXPORT void report_caught_exception(const std::string& first, const std::string& last);
/// As above, as a warning.
ZELM_EXPORT void report_caught_exception_as_warning(const std::string& first, const std::string& last);

/// Reports a `std::runtime_error` with this message, and throws it if there is no reporter, so that the
/// message is not lost.
ZELM_EXPORT void report_error(const std::string& message);
/// As above, as a warning.
ZELM_EXPORT void report_warning(const std::string& message);

} // namespace Zelm
