#include <zelm/errors/ExceptionReporterBase.h>

#include <zelm/errors/LockedState.h>

#include <algorithm>
#include <stdexcept>

namespace Zelm {

namespace {

struct GlobalReporters {
    std::vector<ExceptionReporterBase*> newestLast;
};

/// The links between reporters and threads, in both directions; they stand in the objects themselves.
struct ThreadReporterLinks {};

using LockedGlobalReporters = details::LockedState<GlobalReporters>;
using LockedThreadReporters = details::LockedState<ThreadReporterLinks>;

void ensureReporterStates() noexcept {
    LockedGlobalReporters::ensure();
    LockedThreadReporters::ensure();
}

// From the loading of the library on, so that they outlive the static objects of the application.
[[maybe_unused]] const bool reporterStatesAreThere = (ensureReporterStates(), true);

template <class T>
void eraseFirst(std::vector<T*>& all, const T* entry) noexcept {
    if (const auto found = std::find(all.begin(), all.end(), entry); found != all.end()) {
        all.erase(found);
    }
}

/// Outlives the thread's storage, as it needs no destruction.
thread_local bool threadStorageIsDead = false;

} // namespace

namespace details {

/// The reporters of one thread, the newest last. To be read and changed under the thread-reporter lock.
class ThreadReporterStorage {
public:
    ThreadReporterStorage() = default;
    ThreadReporterStorage(const ThreadReporterStorage&) = delete;
    ThreadReporterStorage& operator=(const ThreadReporterStorage&) = delete;

    ~ThreadReporterStorage() {
        threadStorageIsDead = true;
        const LockedThreadReporters lock;
        for (ExceptionReporterBase* reporter : newestLast) {
            reporter->thread_storage_was_deleted(this);
        }
    }

    /// Null once the thread has destroyed it: destructors of thread-local objects, and on the main thread
    /// those of static ones, may still report.
    static ThreadReporterStorage* ofThisThread() {
        if (threadStorageIsDead) {
            return nullptr;
        }
        static thread_local ThreadReporterStorage storage;
        return &storage;
    }

    std::vector<ExceptionReporterBase*> newestLast;
};

} // namespace details

using details::ThreadReporterStorage;

ExceptionReporterBase::ExceptionReporterBase() {
    ensureReporterStates();
}

ExceptionReporterBase::~ExceptionReporterBase() {
    set_as_global_reporter(false);
    const LockedThreadReporters lock;
    for (ThreadReporterStorage* storage : storages_) {
        eraseFirst(storage->newestLast, this);
    }
}

void ExceptionReporterBase::set_as_global_reporter(bool on) {
    const LockedGlobalReporters reporters;
    eraseFirst(reporters->newestLast, this);
    if (on) {
        reporters->newestLast.push_back(this);
    }
}

void ExceptionReporterBase::set_as_thread_reporter(bool on) {
    const LockedThreadReporters lock;
    ThreadReporterStorage* storage = ThreadReporterStorage::ofThisThread();
    if (storage == nullptr) {
        return;
    }
    auto& reporters = storage->newestLast;
    const bool isSet = std::find(reporters.begin(), reporters.end(), this) != reporters.end();
    if (on && !isSet) {
        // Both ends of the link or none, whatever memory there is.
        storages_.reserve(storages_.size() + 1);
        reporters.push_back(this);
        storages_.push_back(storage);
    } else if (!on && isSet) {
        eraseFirst(storages_, storage);
        eraseFirst(reporters, this);
    }
}

void ExceptionReporterBase::thread_storage_was_deleted(ThreadReporterStorage* storage) noexcept {
    eraseFirst(storages_, storage);
}

namespace {

using Report = void (ExceptionReporterBase::*)(const std::string& first, const std::string& last);

/// Whether the thread had a reporter to call.
bool reportToThread(Report report, const std::string& first, const std::string& last) {
    const LockedThreadReporters lock;
    const ThreadReporterStorage* storage = ThreadReporterStorage::ofThisThread();
    if (storage == nullptr || storage->newestLast.empty()) {
        return false;
    }
    (storage->newestLast.back()->*report)(first, last);
    return true;
}

/// Whether the process had a reporter to call.
bool reportToProcess(Report report, const std::string& first, const std::string& last) {
    const LockedGlobalReporters reporters;
    if (reporters->newestLast.empty()) {
        return false;
    }
    (reporters->newestLast.back()->*report)(first, last);
    return true;
}

void reportOrRethrow(Report report, const std::string& first, const std::string& last) {
    if (!reportToThread(report, first, last) && !reportToProcess(report, first, last)) {
        throw;
    }
}

template <class ReportCaught>
void reportMessage(const std::string& message, ReportCaught reportCaught) {
    try {
        throw std::runtime_error(message);
    } catch (...) {
        reportCaught("", "");
    }
}

} // namespace

void report_caught_exception(const std::string& first, const std::string& last) {
    reportOrRethrow(&ExceptionReporterBase::report_caught_exception, first, last);
}

void report_caught_exception_as_warning(const std::string& first, const std::string& last) {
    reportOrRethrow(&ExceptionReporterBase::report_caught_exception_as_warning, first, last);
}

void report_error(const std::string& message) {
    reportMessage(message, report_caught_exception);
}

void report_warning(const std::string& message) {
    reportMessage(message, report_caught_exception_as_warning);
}

} // namespace Zelm
