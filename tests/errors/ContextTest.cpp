#include <zelm/errors/ExceptionHandlerBase.h>
#include <zelm/errors/MoreInfoForException.h>

#include <support/ExpectThrow.h>

#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <regex>

using namespace Zelm;

namespace {

const auto addInfo = [] { rethrow_with_more_info("i"); };
const auto message = [] { return get_message_from_caught_exception("", ""); };

template <class Exception, class Action>
auto whileInFlight(const Exception& exception, Action action) try {
    throw exception;
} catch (...) {
    return action();
}

/// Adds context on two levels and the newest once more; one and the same `Arrived` shall arrive with all of
/// it and with the code of `thrown`.
template <class Arrived, class Thrown>
void expectChain(const Thrown& thrown, const std::string& text) try {
    EXPECT_EQ(whileInFlight(thrown, message), text);
    whileInFlight(thrown, addInfo);
} catch (const MoreInfoForException& caught) {
    EXPECT_THROW_MSG(rethrow_with_more_info("j"), Arrived, "j: i: " + text);
    EXPECT_THROW_MSG(rethrow_with_more_info("j"), Arrived, "j: i: " + text);
    EXPECT_EQ(caught.get_all_messages(), (std::vector<std::string>{text, "i", "j", "j"}));
    if constexpr (std::is_base_of_v<std::system_error, Arrived>) {
        EXPECT_EQ(dynamic_cast<const Arrived&>(caught).code(), thrown.code());
    }
}

template <class... T, class... Arguments>
void expectChains(const Arguments&... arguments) {
    (expectChain<ExceptionWithMoreInfo<T>>(T(arguments...), T(arguments...).what()), ...);
}

struct Silent : std::exception {
    const char* what() const noexcept override { return nullptr; }
};

struct Informed : std::runtime_error, MoreInfoForException {
    Informed() : runtime_error("own"), MoreInfoForException("text") {}
    const char* what() const noexcept override { return full_message().c_str(); }
};

TEST(Context, keeps_each_standard_type_and_its_code_but_needs_an_exception) {
    expectChains<std::logic_error, std::invalid_argument, std::domain_error, std::length_error,
                 std::out_of_range, std::runtime_error, std::range_error, std::overflow_error,
                 std::underflow_error>("x");
    expectChains<std::bad_typeid, std::bad_cast, std::bad_weak_ptr, std::bad_function_call, std::bad_alloc,
                 std::bad_array_new_length, std::bad_exception>();
    expectChains<std::future_error>(std::future_errc::no_state);
    expectChains<std::regex_error>(std::regex_constants::error_brack);
    expectChains<std::system_error>(make_error_code(std::errc::file_exists), "x");
    expectChains<std::ios_base::failure>("x", make_error_code(std::io_errc::stream));
    expectChain<ExceptionWithMoreInfo<std::exception>>(std::exception(), "Unknown exception");
    expectChain<ExceptionWithMoreInfo<std::exception>>(Silent(), "");
    EXPECT_DEATH(rethrow_with_more_info("x"), "terminate called");
}

TEST(Context, composes_texts) {
    const std::string added[][3] = {{"a", "a: b", "a: b"}, {"a", "abc", "abc"}, {"abcd", "abc", "abcd: abc"},
                                    {"", "abc", "abc"},    {"x", "", "x: "},    {"", "", ": "}};
    for (const auto& [info, text, result] : added) {
        EXPECT_EQ(add_info_to_message(info, text), result);
    }
    EXPECT_EQ(combine_error_messages("m", "", "") + '|' + combine_error_messages("m", "f", "l"), "m|f\nm\nl");
}

/// Knows one type of exceptions, and logs its name when it is asked.
template <class Known>
struct Handler : ExceptionHandlerBase {
    Handler(char name, std::string& log) : name_(name), log_(log) {}
    std::string get_message_from_caught_exception() override try {
        log_ += name_;
        throw;
    } catch (const Known&) {
        return {name_};
    } catch (...) {
        return {};
    }
    void rethrow_with_more_info(const std::string& info) override {
        if (const std::string own = get_message_from_caught_exception(); !own.empty()) {
            throw std::domain_error(own + info);
        }
    }

    const char name_;
    std::string& log_;
};

TEST(Context, handlers_are_asked_newest_first_until_one_knows) {
    std::string log;
    Handler<int> number('N', log);
    Handler<std::logic_error> logic('L', log), copy(logic);
    static_cast<ExceptionHandlerBase&>(copy) = Handler<char>('C', log);
    EXPECT_THROW_MSG(whileInFlight(std::out_of_range("x"), addInfo), std::domain_error, "Li");
    EXPECT_THROW_MSG(whileInFlight(42, addInfo), std::domain_error, "Ni");
    EXPECT_THROW(whileInFlight('c', addInfo), char);
    EXPECT_EQ(whileInFlight(std::out_of_range("x"), message), "L");
    EXPECT_EQ(whileInFlight(42, message), "N");
    EXPECT_EQ(whileInFlight('c', message), "Unknown exception encountered.");
    expectChain<Informed>(Informed(), "text");
    EXPECT_EQ(log, "LLNLNLLNLN");
}

} // namespace
