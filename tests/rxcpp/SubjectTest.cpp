#include <rxcpp/rx.hpp>

#include <support/Allocations.h>

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using rxcpp::composite_subscription;
using rxcpp::subscriber;
using rxcpp::subjects::subject;

/// A subject, its subscriber and any observers with one-letter names, that act as a script says and log what
/// happens: `a1` says that a got 1. The words of a script:
///
/// - `+a`: a subscribes; `+a!` with handlers that log "error", "done"
/// - `+a{1:x}{2:y}`: so that it runs the script x when it gets 1, y when it gets 2, and that of 0 when its
///   captures are freed; there, commas stand for blanks
/// - `-a`, `-s`: ends the lifetime of a, the subject
/// - `=a`: overwrites the lifetime of a by a new one
/// - `~s`, `~o`: destroys the subject, the subscriber
/// - `?a`, `?s`: logs T or F for whether that lives
/// - `n`: logs T or F for whether there are observers
/// - `7`, `done`: the subscriber publishes a value, completion
/// - `throw`: throws
/// - `freed`: logs itself
class Scene {
public:
    const std::string& run(const std::string& script, char separator = ' ') {
        std::istringstream words(script);
        for (std::string word; std::getline(words, word, separator);) {
            act(word);
        }
        return log_;
    }

private:
    void act(const std::string& word) {
        switch (word[0]) {
        case '+':
            return subscribe(word);
        case '-':
            return lifetime(word[1]).unsubscribe();
        case '=':
            lifetimes_[word[1]] = composite_subscription();
            return;
        case '~':
            return word[1] == 's' ? source_.reset() : out_.reset();
        case '?':
            return say(lifetime(word[1]).is_subscribed() ? "T" : "F");
        case 'n':
            return say(source_->has_observers() ? "T" : "F");
        case 'f':
            return say(word);
        case 'd':
            return out_->on_completed();
        case 't':
            throw word;
        default:
            out_->on_next(std::stoi(word));
        }
    }

    void subscribe(const std::string& word) {
        const std::shared_ptr<void> capture(this, [word](Scene* scene) { scene->react(word, 0); });
        const auto onNext = [this, word, capture](int value) {
            say(word[1] + std::to_string(value));
            react(word, value);
        };
        const auto observable = source_->get_observable();
        if (word[2] == '!') {
            observable.subscribe(
                lifetime(word[1]), onNext, [this](std::exception_ptr) { say("error"); },
                [this] { say("done"); });
        } else {
            observable.subscribe(lifetime(word[1]), onNext);
        }
    }

    void react(const std::string& word, int value) {
        const auto start = word.find('{' + std::to_string(value) + ':');
        if (start != word.npos) {
            run(word.substr(start + 3, word.find('}', start) - start - 3), ',');
        }
    }

    composite_subscription lifetime(char name) {
        return name == 's' ? source_->get_subscription() : lifetimes_[name];
    }

    void say(const std::string& word) { log_ += (log_.empty() ? "" : " ") + word; }

    std::string log_;
    std::optional<subject<int>> source_{std::in_place};
    std::optional<subscriber<int>> out_{source_->get_subscriber()};
    std::map<char, composite_subscription> lifetimes_;
};

const char* const kNamedScriptsAndLogs[][3] = {
    {"Lifetime", "?a -a ?a -a ?a =a ?a", "T F F T"},
    {"Order", "n +a +b n 1 2 -a 3 -a -b 4 ?s n", "F T a1 b1 a2 b2 b3 T F"},
    {"NoObserver", "1", ""},
    {"NoReplay", "+a 1 +b 2", "a1 a2 b2"},
    {"SelfEnd", "+a{1:-a} +b 1 2", "a1 b1 b2"},
    {"EndsLater", "+a{1:-b} +b +c 1 2", "a1 c1 a2 c2"},
    {"EndsEarlier", "+a +c{1:-a} 1 2", "a1 c1 c2"},
    {"SubscribeInside", "+a{1:+x,?x} 1 2", "a1 T a2 x2"},
    {"Nested", "+a{1:2} +b 1", "a1 a2 b2 b1"},
    {"StaleSnapshot", "+a{1:+x,2} +b 1 3", "a1 a2 b2 b1 a3 b3 x3"},
    {"SwapInside", "+a{1:-a,+b,2} 0 1 3", "a0 a1 b3"},
    {"NestedEnds", "+a{1:2}{2:-b} +b 1", "a1 a2"},
    {"CaptureFreed", "+a{0:freed} -a ?a +b{0:freed} 1 -b ?b", "freed F b1 freed F"},
    {"CaptureFreedSelf", "+a{0:freed}{1:-a} +b 1 ?a", "a1 b1 freed F"},
    {"HubOutlives", "+a{0:freed} ~s 5 ~o ?a", "a5 freed T"},
    {"DestroyedInside", "+a{1:~o,~s} +b 1", "a1 b1"},
    {"SubjectEnds", "+a{0:freed} 1 -s 2 ?s ?a +b ?b n -a -s", "a1 freed F T F F"},
    {"SubjectEndsInside", "+a{1:-s,9} +b 1 2", "a1 b1"},
    {"DeadLifetime", "-a +a{0:freed} n 1 done +a!", "freed F"},
    {"LifetimeDropped", "+a =a 1 +b =b 2 -b 3", "a1 a2 b2 a3 b3"},
    {"Completed", "+a! +b done ?s ?a ?b 1 =a +a! ?a", "done F F F done F"},
    {"CompletedInside", "+a!{1:done,2} +b! 1 ?a ?b", "a1 done done F F"},
    {"HandledThrow", "+a!{1:throw} +b 1 ?a ?s 2", "a1 error b1 F T b2"},
#ifndef RXCPP_RX_HPP // RxCpp itself holds its lock meanwhile.
    {"FreedCaptureReturns", "+b +a{0:freed,-b,+x} -a 7", "freed x7"},
#endif
};

TEST(SubjectTest, Logs) {
    for (const auto& [name, script, log] : kNamedScriptsAndLogs) {
        EXPECT_EQ(log, Scene().run(script)) << name << ": " << script;
    }
}

TEST(SubjectDeathTest, ErrorsThatNobodyHandlesEndTheProgram) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(Scene().run("+a{1:throw} 1"), testing::KilledBySignal(SIGABRT), "terminat");
}

TEST(LifetimeTest, CopiesAreOneAndRunTheirTeardownsOnceWhenAllIsSilent) {
    const composite_subscription lifetime;
    const composite_subscription copy = lifetime;
    EXPECT_TRUE(copy == lifetime);
    EXPECT_FALSE(copy == composite_subscription() || composite_subscription::empty().is_subscribed());
    int teardowns = 0;
    std::optional<subscriber<int>> out;
    lifetime.add([&] { out->on_next(++teardowns); });
    const subject<int> ended(lifetime);
    out = ended.get_subscriber();
    ended.get_observable().subscribe([&teardowns](int) { ++teardowns; });
    copy.unsubscribe();
    lifetime.unsubscribe();
    EXPECT_EQ(1, teardowns);
}

TEST(SubjectFormsTest, ObserversAndSubscribersOfEveryForm) {
    const composite_subscription bound, given;
    const subject<std::string> source(bound);
    const subject<std::string> copy = source;
    const subject<int> other;
    const auto typed = copy.get_subscriber();
    const subscriber<std::string> plain = typed;

    std::string log;
    const auto observable = source.get_observable();
    EXPECT_TRUE(given == observable.subscribe(given, [&log](std::string text) { log += "a" + text; }));
    observable.subscribe(given, [&log](const std::string& text) { log += "b" + text; });
    const auto own = observable.subscribe([&log](auto text) { log += "c" + text; });
    const std::function<void(int)> observer = [&log](int value) { log += "o" + std::to_string(value); };
    other.get_observable().subscribe(given, observer);

    typed.on_next("1 ");
    other.get_subscriber().on_next(2);
    given.unsubscribe();
    plain.on_next(std::string(" 3"));
    other.get_subscriber().on_next(4);
    own.unsubscribe();
    plain.on_next("5");
    EXPECT_EQ("a1 b1 c1 o2c 3", log);
    subscriber<std::string>(plain).unsubscribe();
    EXPECT_FALSE(typed.is_subscribed() || plain.is_subscribed() || bound.is_subscribed());
}

#ifndef RXCPP_RX_HPP // RxCpp itself makes no such promise.
TEST(SubjectMemoryTest, CompletionThatFindsNoMemoryHasDoneNothing) {
    const subject<int> source;
    std::string log;
    const auto subscribe = [&](const std::string& name) {
        source.get_observable().subscribe([&log, name](int) { log += name; }, [](std::exception_ptr) {},
                                          [&log] { log += "."; });
    };
    subscribe("a");
    Zelm::Testing::failAllocationAfter(0);
    EXPECT_THROW(source.get_subscriber().on_completed(), std::bad_alloc);
    subscribe("b");
    source.get_subscriber().on_next(1);
    source.get_subscriber().on_completed();
    EXPECT_EQ("ab..", log);
}
#endif

TEST(SubjectThreadTest, OnePublisherAndManyWhoComeAndGo) {
    const subject<int> source;
    int stayed = 0;
    source.get_observable().subscribe([&stayed](int) { ++stayed; });

    std::vector<std::thread> threads(4);
    std::atomic<std::size_t> running{threads.size()};
    for (std::thread& thread : threads) {
        thread = std::thread([&source, &running] {
            for (int round = 0; round < 200; ++round) {
                // Shared: an emission may be under way when the subscription ends.
                const auto told = std::make_shared<std::atomic<bool>>(false);
                const auto lifetime = source.get_observable().subscribe([told](int) { *told = true; });
                while (!*told) {
                    std::this_thread::yield();
                }
                lifetime.unsubscribe();
            }
            --running;
        });
    }
    int published = 0;
    int missed = 0;
    while (running > 0) {
        bool told = false;
        const auto lifetime = source.get_observable().subscribe([&told](int) { told = true; });
        source.get_subscriber().on_next(++published);
        lifetime.unsubscribe();
        missed += told ? 0 : 1;
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(published, stayed);
    EXPECT_EQ(0, missed);
}

} // namespace
