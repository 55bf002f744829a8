#include <zelm/errors/ExceptionReporterBase.h>
#include <zelm/errors/PrintfExceptionReporterForTesting.h>

#include <support/ExpectThrow.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <future>
#include <optional>
#include <thread>

using namespace Zelm;

namespace {

/// Logs its name for an error, and lets a warning pass.
struct Reporter : ExceptionReporterBase {
    Reporter(char name, std::string& log) : name_(name), log_(log) {}
    void report_caught_exception(const std::string&, const std::string&) override { log_ += name_; }
    void report_caught_exception_as_warning(const std::string&, const std::string&) override { throw; }

    const char name_;
    std::string& log_;
};

TEST(Reporters, set_last_is_called_and_the_thread_precedes_the_process) {
    std::string log;
    std::optional<Reporter> p(std::in_place, 'P', log);
    Reporter q('Q', log), t('T', log), u('U', log);
    p->set_as_global_reporter(true);
    q.set_as_global_reporter(true);
    p->set_as_global_reporter(true);
    t.set_as_thread_reporter(true);
    u.set_as_thread_reporter(true);
    t.set_as_thread_reporter(true);
    report_error("");
    std::thread(report_error, "").join();
    p.reset();
    u.set_as_thread_reporter(false);
    report_error("");
    t.set_as_thread_reporter(false);
    EXPECT_THROW_MSG(report_warning("w"), std::runtime_error, "w");
    report_error("");
    EXPECT_EQ(log, "UPTQ");
}

TEST(Reporters, come_and_go_side_by_side_with_their_threads) {
    std::string log;
    Reporter shared('S', log);
    std::future<Reporter> copies[4];
    for (auto& copy : copies) {
        copy = std::async(std::launch::async, [&shared] {
            for (int round = 0; round < 200; ++round) {
                Reporter own('O', shared.log_);
                shared.set_as_thread_reporter(true);
                own.set_as_thread_reporter(true);
                static_cast<ExceptionReporterBase&>(own) = Reporter('O', shared.log_);
                report_error("");
            }
            return Reporter(shared);
        });
    }
    for (auto& copy : copies) {
        copy.wait();
    }
    EXPECT_EQ(log.size(), 800u);
}

TEST(Reporters, must_not_report_within_a_report) {
    struct Nesting : PrintfExceptionReporterForTesting {
        void report_caught_exception(const std::string&, const std::string&) override { report_error(""); }
    } nesting;
    EXPECT_DEATH(std::thread(report_error, "").join(), "must not come back|system_error");
}

TEST(Reporters, of_the_process_get_what_is_reported_at_exit) {
    static std::string log;
    static Reporter thread('T', log), process('P', log);
    const auto exit = [] {
        thread.set_as_thread_reporter(true);
        process.set_as_global_reporter(true);
        std::atexit([] {
            thread.set_as_thread_reporter(true);
            report_error("");
            std::_Exit(log == "P" ? 7 : 1);
        });
        std::exit(0);
    };
    EXPECT_EXIT(exit(), testing::ExitedWithCode(7), "");
}

TEST(PrintfReporter, prints_errors_and_warnings_and_its_copy_does_not) {
    testing::internal::CaptureStdout();
    PrintfExceptionReporterForTesting printing, copy(printing);
    try {
        throw std::out_of_range("r");
    } catch (...) {
        report_caught_exception("f", "l");
    }
    report_warning("%s %n");
    printing.set_as_global_reporter(false);
    EXPECT_THROW_MSG(report_warning("w"), std::runtime_error, "w");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Error: f\nr\nl\n\nWarning: %s %n\n\n");
}

} // namespace
