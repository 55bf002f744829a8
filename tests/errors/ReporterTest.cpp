#include <zelm/errors/ExceptionReporterBase.h>
#include <zelm/errors/PrintfExceptionReporterForTesting.h>

#include <support/ExpectThrow.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <sstream>
#include <thread>

using namespace Zelm;

namespace {

/// Logs its name for an error and "?" for a warning.
struct Reporter : ExceptionReporterBase {
    Reporter(char name, std::string& log) : name_(name), log_(log) {}
    void report_caught_exception(const std::string&, const std::string&) override { log_ += name_; }
    void report_caught_exception_as_warning(const std::string&, const std::string&) override { log_ += '?'; }

    char name_;
    std::string& log_;
};

/// A script for reporters A to Z. After a name G and g set and unset it for the process, T and t for the
/// thread, ~ destroys it, = assigns another one to it and another name makes it a copy of that. "!" reports;
/// the result tells who was called each time. The steps behind "|" happen on one thread of their own.
struct Script {
    std::string log;
    std::map<char, Reporter> reporters;

    Reporter& at(char name) { return reporters.try_emplace(name, name, log).first->second; }

    void perform(const std::string& step) {
        const char name = step[0], action = step.back();
        if (name == '|') {
            std::thread([&] {
                for (std::size_t i = 1; i < step.size(); i += 3) {
                    perform(step.substr(i, 2));
                }
            }).join();
        } else if (name == '!') {
            const std::size_t before = log.size();
            EXPECT_TRUE((report_error(""), log.size() == before + 1)) << log;
        } else if (std::toupper(action) == 'G') {
            at(name).set_as_global_reporter(action == 'G');
        } else if (std::toupper(action) == 'T') {
            at(name).set_as_thread_reporter(action == 'T');
        } else if (action == '=') {
            static_cast<ExceptionReporterBase&>(at(name)) = Reporter(name, log);
        } else if (action == '~') {
            reporters.erase(name);
        } else {
            reporters.emplace(name, at(action)).first->second.name_ = name;
        }
    }
};

TEST(Reporters, of_Thread_and_process_come_and_go) {
    for (const auto& [script, called] :
         std::map<std::string, std::string>{{"AG BG AG ! BG ! Bg ! BG ! B~ !", "ABABA"},
                                            {"ZG AT BT AT ! |! |Bt ! Bt ! At !", "BZBAZ"},
                                            {"ZG AT BT B~ ! A= ! BA ! At ! |BT ! B~ !", "AAAZZZ"},
                                            {"ZG AT BT |AT |BA |A~ ! B~ !", "BZ"},
                                            {"ZG AT A= A~ !", "Z"},
                                            {"ZG |AT,BA,! B~ !", "AZ"}}) {
        Script run;
        std::istringstream steps(script);
        for (std::string step; steps >> step;) {
            run.perform(step);
        }
        EXPECT_EQ(run.log, called) << script;
    }
}

TEST(Reporters, of_several_Threads_work_side_by_side) {
    constexpr std::size_t kRounds = 200;
    std::string log;
    Reporter shared('S', log);
    std::thread threads[4];
    for (std::thread& thread : threads) {
        thread = std::thread([&] {
            for (std::size_t round = 1; round <= kRounds; ++round) {
                std::string ownLog;
                Reporter own('O', ownLog);
                shared.set_as_thread_reporter(true);
                report_error("");
                own.set_as_thread_reporter(true);
                report_error("");
                EXPECT_EQ(ownLog, "O");
                shared.set_as_thread_reporter(round == kRounds);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(log, std::string(std::size(threads) * kRounds, 'S'));
}

TEST(Reporters, a_report_within_a_report_is_told_and_a_failed_report_frees_the_lock) {
    struct Nesting : Reporter {
        using Reporter::Reporter;
        void report_caught_exception(const std::string&, const std::string&) override {
            report_error("again");
        }
    };
    std::string log;
    Nesting nesting('N', log);
    for (const auto set : {&Nesting::set_as_global_reporter, &Nesting::set_as_thread_reporter}) {
        (nesting.*set)(true);
#ifdef NDEBUG
        EXPECT_THROW(report_error("e"), std::system_error);
#else
        EXPECT_DEATH(report_error("e"), "must not come back");
#endif
        report_warning("w");
    }
    EXPECT_EQ(log, "??");
}

TEST(Reporters, a_static_object_reports_to_the_process_when_the_main_thread_has_lost_its_list) {
    struct Late {
        std::string log;
        Reporter thread{'T', log}, process{'P', log};
        ~Late() {
            thread.set_as_thread_reporter(true);
            report_error("late");
            std::_Exit(log == "P" ? 7 : 1);
        }
    };
    const auto exitWithStatics = [] {
        static Late late;
        late.thread.set_as_thread_reporter(true);
        late.process.set_as_global_reporter(true);
        std::exit(0);
    };
    EXPECT_EXIT(exitWithStatics(), testing::ExitedWithCode(7), "");
}

TEST(PrintfReporter, prints_errors_and_warnings_and_without_it_they_pass) {
    testing::internal::CaptureStdout();
    PrintfExceptionReporterForTesting printing, copy(printing);
    try {
        throw std::out_of_range("r");
    } catch (...) {
        report_caught_exception("f", "l");
        report_caught_exception_as_warning("", "m");
    }
    report_error("e");
    report_warning("%s %n");
    printing.set_as_global_reporter(false);
    EXPECT_THROW_MSG(report_error("e"), std::runtime_error, "e");
    EXPECT_THROW_MSG(report_warning("w"), std::runtime_error, "w");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Error: f\nr\nl\n\nWarning: r\nm\n\nError: e\n\nWarning: %s %n\n\n");
}

} // namespace
