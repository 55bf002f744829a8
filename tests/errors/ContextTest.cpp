#include <zelm/errors/ExceptionHandlerBase.h>
#include <zelm/errors/MoreInfoForException.h>

#include <support/ExpectThrow.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <future>
#include <regex>

using namespace Zelm;

namespace {

using Texts = std::vector<std::string>;

template <class Exception>
void throwWithContext(const Exception& exception, const std::string& info) try {
    throw exception;
} catch (...) {
    rethrow_with_more_info(info);
}

template <class Exception>
std::string messageOf(const Exception& exception) try {
    throw exception;
} catch (...) {
    return get_message_from_caught_exception("", "");
}

/// Adds context on two levels; a `T` with the whole chain and with the code of `thrown` shall arrive.
template <class T, class Thrown>
void expectChain(const Thrown& thrown, const std::string& text) try {
    EXPECT_EQ(messageOf(thrown), text);
    try {
        throwWithContext(thrown, "i");
    } catch (...) {
        rethrow_with_more_info("j");
    }
} catch (const std::exception& caught) {
    ASSERT_TRUE(typeid(caught) == typeid(ExceptionWithMoreInfo<T>)) << typeid(caught).name();
    const auto& whole = dynamic_cast<const ExceptionWithMoreInfo<T>&>(caught);
    EXPECT_EQ(caught.what(), "j: i: " + text);
    EXPECT_EQ(whole.get_all_messages(), (Texts{text, "i", "j"}));
    if constexpr (std::is_base_of_v<std::system_error, T>) {
        EXPECT_EQ(whole.code(), thrown.code());
    }
}

template <class T>
struct OfApplication : T {
    using T::T;
};

template <class... T, class... Arguments>
void expectChains(const Arguments&... arguments) {
    (expectChain<T>(T(arguments...), T(arguments...).what()), ...);
    (expectChain<T>(OfApplication<T>(arguments...), T(arguments...).what()), ...);
}

TEST(Context, keeps_each_standard_type_and_its_code) {
    expectChains<std::logic_error, std::invalid_argument, std::domain_error, std::length_error,
                 std::out_of_range, std::runtime_error, std::range_error, std::overflow_error,
                 std::underflow_error>("x");
    expectChains<std::bad_typeid, std::bad_cast, std::bad_weak_ptr, std::bad_function_call, std::bad_alloc,
                 std::bad_array_new_length, std::bad_exception>();
    expectChain<std::exception>(std::exception(), "Unknown exception");
    expectChains<std::future_error>(std::future_errc::no_state);
    expectChains<std::regex_error>(std::regex_constants::error_brack);
    expectChains<std::system_error>(std::make_error_code(std::errc::file_exists), "x");
    expectChains<std::ios_base::failure>("x", std::make_error_code(std::errc::file_exists));
}

struct WithText : std::exception {
    explicit WithText(const char* text) : text_(text) {}
    const char* what() const noexcept override { return text_; }
    const char* text_;
};

struct Informed : std::runtime_error, MoreInfoForException {
    Informed() : runtime_error("own"), MoreInfoForException("info", "text") {}
};

TEST(Context, texts) {
    const Texts added[] = {{"a", "a: b", "a: b"},       {"a", "abc", "abc"}, {"x", "abc", "x: abc"},
                           {"", "abc", "abc"},          {"x", "", "x: "},    {"", "", ": "},
                           {"abcd", "abc", "abcd: abc"}};
    for (const Texts& row : added) {
        EXPECT_EQ(add_info_to_message(row[0], row[1]), row[2]);
        EXPECT_EQ(MoreInfoForException(row[0], row[1]).full_message(), row[2]);
        EXPECT_EQ(MoreInfoForException(row[0], row[1]).get_all_messages(), (Texts{row[1], row[0]}));
    }
    for (const Texts& row : {Texts{"m", "", "", "m"}, {"m", "f", "l", "f\nm\nl"}, {"", "f", "", "f\n"}}) {
        EXPECT_EQ(combine_error_messages(row[0], row[1], row[2]), row[3]);
    }
    expectChain<std::exception>(WithText(nullptr), "");
    expectChain<std::exception>(WithText("std::exceptional"), "std::exceptional");
}

TEST(Context, what_was_informed_before_stays_the_same_object) {
    const void* object = nullptr;
    try {
        try {
            throwWithContext(Informed(), "same");
        } catch (Informed& caught) {
            object = &caught;
            rethrow_with_more_info("same");
        }
    } catch (const Informed& caught) {
        EXPECT_EQ(&caught, object);
        EXPECT_EQ(get_message_from_caught_exception("f", "l"), "f\nsame: info: text\nl");
        EXPECT_EQ(caught.get_all_messages(), (Texts{"text", "info", "same", "same"}));
    }
}

TEST(Context, nothing_in_flight_terminates) {
    const auto exitWhenTerminated = [] { std::set_terminate([] { std::_Exit(7); }); };
    const testing::ExitedWithCode terminated(7);
    EXPECT_EXIT((exitWhenTerminated(), rethrow_with_more_info("x")), terminated, "");
    EXPECT_EXIT((exitWhenTerminated(), get_message_from_caught_exception("", "")), terminated, "");
}

/// Knows one type of exceptions; logs its name when it may throw, and "?" when it is asked for the message.
template <class Known>
struct Handler : ExceptionHandlerBase {
    Handler(const char* name, std::string& log) : name_(name), log_(log) {}

    bool knows() try {
        log_ += name_;
        throw;
    } catch (const Known&) {
        return true;
    } catch (...) {
        return false;
    }
    void rethrow_with_more_info(const std::string& info) override {
        if (knows()) {
            throw std::domain_error(name_ + info);
        }
    }
    std::string get_message_from_caught_exception() override { return log_ += '?', knows() ? name_ : ""; }

    const std::string name_;
    std::string& log_;
};

TEST(Context, handlers_are_asked_newest_first_until_one_knows) {
    std::string log;
    Handler<std::out_of_range> range("R", log);
    {
        Handler<std::logic_error> logic("L", log);
        Handler<int> number("N", log), copy(number);
        static_cast<ExceptionHandlerBase&>(copy) = logic;
        EXPECT_THROW_MSG(throwWithContext(std::out_of_range("x"), "i"), std::domain_error, "Li");
        EXPECT_THROW_MSG(throwWithContext(42, "i"), std::domain_error, "Ni");
        EXPECT_THROW(throwWithContext('c', "i"), char);
        EXPECT_THROW(throwWithContext(Informed(), "i"), Informed);
        EXPECT_EQ(log, "NLNNLR");
        EXPECT_EQ(messageOf(42), "N");
        EXPECT_EQ(messageOf(std::logic_error("x")), "L");
        EXPECT_EQ(messageOf(std::runtime_error("x")), "x");
        EXPECT_EQ(messageOf(Informed()), "info: text");
    }
    EXPECT_EQ(messageOf(std::out_of_range("x")), "R");
    EXPECT_EQ(messageOf(42), "Unknown exception encountered.");
    EXPECT_THROW(throwWithContext(42, "lost"), int);
    EXPECT_EQ(log, "NLNNLR?N?N?L?N?L?R?R?RR");
}

} // namespace
