#include <rxcpp/rx.hpp>

#include <gtest/gtest.h>

#include <cstdlib>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

using rxcpp::composite_subscription;
using rxcpp::subscriber;
using rxcpp::subjects::subject;

/// A subject, its subscriber and any observers with one-letter names, that act as a script says and log what
/// happens: `a1` says that a got 1. The words of a script:
///
///     +a           a subscribes; +a* with a capture that logs "freed", +a! with handlers that log "error",
///     "done" +a:1:x:2:y   a runs the script x when it gets 1, and y when it gets 2; there, commas stand for
///     blanks -a =a        a's lifetime ends; a's lifetime is overwritten by a new one -s -o        the
///     subject's lifetime ends; a copy of the subscriber unsubscribes ~s ~o        the subject, the
///     subscriber is destroyed ?a ?s ?o ?n  whether that lives, or whether there are observers: logs T or F
///     7 fail done  the subscriber publishes a value, an error, completion
///     throw        throws
///     .            logs itself
class Scene {
public:
    void run(const std::string& script, char separator = ' ') {
        std::istringstream words(script);
        for (std::string word; std::getline(words, word, separator);) {
            act(word);
        }
    }

    const std::string& log() const { return log_; }

private:
    void act(const std::string& word) {
        if (word == "throw") {
            throw std::runtime_error(word);
        } else if (word == "fail") {
            out_->on_error(std::make_exception_ptr(std::runtime_error(word)));
        } else if (word == "done") {
            out_->on_completed();
        } else if (word == ".") {
            say(word);
        } else if (word[0] == '+') {
            subscribe(word);
        } else if (word[0] == '=') {
            lifetimes_[word[1]] = composite_subscription();
        } else if (word[0] == '?') {
            say(isLive(word[1]) ? "T" : "F");
        } else if (word[0] == '-') {
            end(word[1]);
        } else if (word[0] == '~') {
            word[1] == 's' ? source_.reset() : out_.reset();
        } else {
            out_->on_next(std::stoi(word));
        }
    }

    void subscribe(const std::string& word) {
        std::istringstream parts(word);
        std::string flags;
        std::getline(parts, flags, ':');
        std::map<int, std::string> reactions;
        for (std::string value, script;
             std::getline(parts, value, ':') && std::getline(parts, script, ':');) {
            reactions[std::stoi(value)] = script;
        }
        std::shared_ptr<void> capture;
        if (flags.find('*') != flags.npos) {
            capture.reset(this, [](Scene* scene) { scene->say("freed"); });
        }
        const auto onNext = [this, name = word[1], reactions, capture](int value) {
            say(name + std::to_string(value));
            const auto reaction = reactions.find(value);
            if (reaction != reactions.end()) {
                run(reaction->second, ',');
            }
        };
        capture.reset();
        const composite_subscription& lifetime = lifetimes_[word[1]];
        if (flags.find('!') != flags.npos) {
            source_->get_observable().subscribe(
                lifetime, onNext, [this](std::exception_ptr) { say("error"); }, [this] { say("done"); });
        } else {
            source_->get_observable().subscribe(lifetime, onNext);
        }
    }

    bool isLive(char name) {
        return name == 'n'   ? source_->has_observers()
               : name == 's' ? source_->get_subscription().is_subscribed()
               : name == 'o' ? out_->is_subscribed()
                             : lifetimes_[name].is_subscribed();
    }

    void end(char name) {
        if (name == 'o') {
            subscriber<int>(*out_).unsubscribe();
        } else {
            (name == 's' ? source_->get_subscription() : lifetimes_[name]).unsubscribe();
        }
    }

    void say(const std::string& word) { log_ += (log_.empty() ? "" : " ") + word; }

    std::string log_;
    std::optional<subject<int>> source_{std::in_place};
    std::optional<subscriber<int>> out_{source_->get_subscriber()};
    std::map<char, composite_subscription> lifetimes_;
};

struct Case {
    const char* name;
    const char* script;
    const char* log;

    friend std::ostream& operator<<(std::ostream& out, const Case& shown) { return out << shown.script; }
};

const Case kCases[] = {
    {"Order", "?n +a +b ?n 1 2 -a 3 -a -b 4 ?o ?n", "F T a1 b1 a2 b2 b3 T F"},
    {"NoObserver", "1", ""},
    {"NoReplay", "+a 1 +b 2", "a1 a2 b2"},
    {"SelfEnd", "+a:1:-a +b 1 2", "a1 b1 b2"},
    {"EndsLater", "+a:1:-b +b +c 1 2", "a1 c1 a2 c2"},
    {"EndsEarlier", "+a +c:1:-a 1 2", "a1 c1 c2"},
    {"SubscribeInside", "+a:1:+x,?x 1 2", "a1 T a2 x2"},
    {"Nested", "+a:1:2 +b 1", "a1 a2 b2 b1"},
    {"StaleSnapshot", "+a:1:+x,2 +b 1 3", "a1 a2 b2 b1 a3 b3 x3"},
    {"SwapInside", "+a:1:-a,+b,2 0 1 3", "a0 a1 b3"},
    {"NestedEnds", "+a:1:2:2:-b +b 1", "a1 a2"},
    {"CaptureFreed", "+a* -a . +b* 1 -b .", "freed . b1 freed ."},
    {"CaptureFreedSelf", "+a*:1:-a +b 1 .", "a1 b1 freed ."},
    {"HubOutlives", "+a* ~s 5 ~o ?a", "a5 freed T"},
    {"DestroyedInside", "+a:1:~o,~s +b 1", "a1 b1"},
    {"SubjectEnds", "+a* 1 -s 2 ?o ?a +b ?b ?n -a -s", "a1 freed F T F F"},
    {"SubjectEndsInside", "+a:1:-s,9 +b 1 2", "a1 b1"},
    {"SubscriberEnds", "+a -o ?o ?s ?a", "F F T"},
    {"DeadLifetime", "-a +a* ?n 1", "freed F"},
    {"DeadLifetimeLate", "-a done +a!", ""},
    {"LifetimeDropped", "+a =a 1 +b =b 2 -b 3", "a1 a2 b2 a3 b3"},
    {"Completed", "+a! +b done ?o ?a ?b 1 =a +a! ?a", "done F F F done F"},
    {"CompletedInside", "+a!:1:done,2 +b! 1 ?a ?b", "a1 done done F F"},
    {"Failed", "+a! fail ?o ?a done =a +a! ?a", "error F F error F"},
    {"HandledThrow", "+a!:1:throw +b 1 ?a ?o 2", "a1 error b1 F T b2"},
};

class SubjectTest : public testing::TestWithParam<Case> {};

TEST_P(SubjectTest, Logs) {
    Scene scene;
    scene.run(GetParam().script);
    EXPECT_EQ(GetParam().log, scene.log());
}

INSTANTIATE_TEST_SUITE_P(Scripts, SubjectTest, testing::ValuesIn(kCases),
                         [](const testing::TestParamInfo<Case>& each) { return each.param.name; });

TEST(SubjectDeathTest, ErrorsThatNobodyHandlesEndTheProgram) {
    // std::terminate gets a code that nothing else exits with.
    const auto terminates = [](const char* script) {
        std::set_terminate([] { std::_Exit(42); });
        Scene().run(script);
        std::_Exit(0);
    };
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(terminates("+a:1:throw 1"), testing::ExitedWithCode(42), "");
    EXPECT_EXIT(terminates("+a fail"), testing::ExitedWithCode(42), "");
}

TEST(LifetimeTest, CopiesAreOneAndEndOnce) {
    const composite_subscription lifetime;
    composite_subscription copy = lifetime;
    int teardowns = 0;
    lifetime.add([&teardowns] { ++teardowns; });
    EXPECT_TRUE(lifetime.is_subscribed());
    EXPECT_TRUE(copy == lifetime);
    copy.unsubscribe();
    EXPECT_FALSE(lifetime.is_subscribed());
    lifetime.unsubscribe();
    EXPECT_FALSE(lifetime.is_subscribed());
    EXPECT_EQ(1, teardowns);
    lifetime.add([&teardowns] { ++teardowns; });
    EXPECT_EQ(2, teardowns);
    EXPECT_FALSE(lifetime == composite_subscription());
    EXPECT_FALSE(composite_subscription::empty().is_subscribed());
    copy = composite_subscription();
    EXPECT_TRUE(copy.is_subscribed());
}

TEST(SubjectFormsTest, ObserversAndSubscribersOfEveryForm) {
    const composite_subscription bound;
    const subject<std::string> source(bound);
    const subject<std::string> copy = source;
    const auto typed = copy.get_subscriber();
    const subscriber<std::string> plain = typed;
    EXPECT_TRUE(plain.get_subscription() == bound && source.get_subscription() == bound);

    std::string log;
    const auto observable = source.get_observable();
    const composite_subscription given;
    EXPECT_TRUE(given == observable.subscribe(given, [&log](std::string text) { log += "a" + text; }));
    observable.subscribe(given, [&log](const std::string& text) { log += "b" + text; });
    const auto own = observable.subscribe([&log](auto text) { log += "c" + text; });
    observable.subscribe(
        std::function<void(std::string)>([&log](const std::string& text) { log += "d" + text; }),
        [](std::exception_ptr) {});
    const subject<int> other;
    other.get_observable().subscribe(given, [&log](int value) { log += "o" + std::to_string(value); });

    typed.on_next("1 ");
    other.get_subscriber().on_next(2);
    given.unsubscribe();
    plain.on_next(std::string(" 3 "));
    other.get_subscriber().on_next(4);
    own.unsubscribe();
    plain.on_next("5");
    EXPECT_EQ("a1 b1 c1 d1 o2c 3 d 3 d5", log);

    bound.unsubscribe();
    EXPECT_FALSE(typed.is_subscribed());
    EXPECT_FALSE(source.has_observers());
    const composite_subscription late;
    subject<std::string>(bound).get_observable().subscribe(late, [](const std::string&) {});
    EXPECT_FALSE(late.is_subscribed());
}

} // namespace
