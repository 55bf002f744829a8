#include <entities/Story.h>
#include <support/Allocations.h>
#include <support/ExpectThrow.h>

#include <limits>
#include <new>
#include <random>
#include <type_traits>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

// clang-format off
TEST(Entity, publishes_a_change_once_at_each_level_with_the_document_told_first) {
    play("{a:{b:1} l:>{}}", {{"watch", "0"}, {"a watch", "0"}, {"a/b watch", "0"},
        {"a/b = 2", "1 {a:{b:2} l:>{}} root={a:{b:2} l:>{}} a={b:2} b=2"},
        {"becomes {a:{b:3}}", "0 {a:{b:3}}"}, {"a becomes {b:3}", "0"},
        {"touch", "1 root={a:{b:3}}"}, {"save", "0"}, {"load", "0"}, {"clear", "0"},
        {"sets {a:{b:3} c:1}", "1 {a:{b:3} c:1} root={a:{b:3} c:1}"}, {"without c", "1 {a:{b:3}} root={a:{b:3}}"},
        {"a/b under none", "0"}, {"a/b = 4", "0 b=4"},
        {"a/b under a", "0"}, {"a/b under a", "0"}, {"a/b = 5", "1 {a:{b:5}} b=5 root={a:{b:5}} a={b:5}"}});
    // Marks that come with a state are there when it is told.
    play("{a:{}}", {{"a mark", "0"}, {"save", "1 {a:{}!}"}, {"keep", "0"}, {"a clean", "0"}, {"/ does 1 a isDirty", "0"}, {"back", "1 yes"}});
}

TEST(Entity, that_is_dropped_has_no_part_in_the_document_any_more) {
    for (const std::string drop : {"without a", "becomes {}", "becomes {a:7}", "clear"}) {
        Story story("{a:>{}}");
        story.take(drop == "clear" ? "touch" : "becomes {a:{}}");
        story.take("hold a");
        story.take(drop);
        story.outcomeOf("touch");
        EXPECT_EQ(story.outcomeOf("held gets9 n"), "0") << drop;
        EXPECT_EQ(story.outcomeOf("held path"), "0 /") << drop;
        story.outcomeOf("end");
        EXPECT_EQ(story.outcomeOf("held gets9 n"), "0") << drop;
    }
    play("{a:{b:1}}", {{"hold a/b", "0"}, {"a becomes {}", "0"}, {"held = 2", "0"}, {"a touch", "1 {a:{}}"}});
    play("{a:{b:1}}", {{"hold a/b", "0"}, {"end", "0 gone"}, {"held = 2", "0"}, {"held path", "0 /"}});
    // Unless it has another parent by then.
    play("{a:{b:1}}", {{"hold a/b", "0"}, {"held under /", "0"}, {"without a", "1 {}"}, {"held = 2", "1 {b:2}"}, {"held path", "0 /b"}});
}

TEST(Entity, failures_leave_the_children) {
    play("{a:{b:1} l:>{}}", {{"child x", "0 logic_error: Child \"x\"  not found"}, {"without x", "0 logic_error: Child \"x\"  not found"},
        {"becomes 1", "0 logic_error: Document expected but not found"},
        {"a = 1", "0 logic_error: Document expected but not found"}, {"children", "0 a:Doc l:_Ob"},
        {"sets {:{}}", "0 {:{}} invalid_argument: Unnamed ZEntity"}, {"children", "0 a:Doc l:_Ob"},
        {"sets {f:(c:[Alien])}", "0 {f:(c:)} invalid_argument: Alien not registered in ZEntityFactory."},
        {"children", "0 a:Doc l:_Ob"}, {"a/b = 2", "1 {a:{b:2} f:(c:)}"}});
    EXPECT_THROW_MSG(DocumentEntity(""), std::invalid_argument, "Unnamed ZEntity");
    ZGenericObject deep = read("{}");
    for (int level = 0; level < 1000; ++level) {
        deep = read("{}").insertChild("d", deep);
    }
    const DocumentEntity deepest("e", deep);
    EXPECT_THROW_MSG(DocumentEntity("e", Document(read("{}").insertChild("d", deep))), std::length_error, "Entities are nested too deeply.");
}

TEST(Entity, stands_for_what_lies_in_folders) {
    play("{f:(g:(y:1) l:>1@../v x:1) v:1 z:(g:(y:1) x:1)}", {{"children", "0 y:Var l:Var x:Var v:Var y:Var x:Var"},
        {"x = 2", "1 {f:(g:(y:1) l:>1@../v x:1) v:1 x:2 z:(g:(y:1) x:1)}"},
        {"l = 2", "1 {f:(g:(y:1) l:>1@../v x:1) l:2 v:1 x:2 z:(g:(y:1) x:1)}"},
        // A copy in a folder that comes later wins over the one that was stored.
        {"touch", "1"}, {"x show", "0 1"}, {"l show", "0 2"}, {"children", "0 y:Var l:Var x:Var l:Var v:Var x:Var y:Var x:Var"},
        {"without x", "1 {f:(g:(y:1) l:>1@../v x:1) l:2 v:1 z:(g:(y:1) x:1)}"},
        {"children", "0 y:Var l:Var l:Var v:Var x:Var y:Var x:Var"}});
    ZVariable v = variable(1);
    v.setIndep(variable(0), 0);
    ZGenericObject many = read("()");
    for (int i = 0; i < 20; ++i) {
        many = many.insertChild(std::to_string(i), v);
    }
    DocumentEntity root("root", Document(read("{}").insertChild("f", many).insertChild("z", many)));
    auto& children = root.body().children;
    EXPECT_TRUE(children.size() == 40 && children[19] == children[39] && root.hasChild(children[39]) && !root.hasChild({}));
    const auto independent = Private::findEntity(root, "19/0").lock();
    EXPECT_EQ(independent->getPath(), "/19/0");
    EXPECT_TRUE(independent->isDescendentOf(&root) && !root.isDescendentOf(independent.get()));
    root.setState(Document(read("{}").insertChild("other", root.genericState()).child("other")));
    EXPECT_EQ(root.state().propertyHandle().getName(), "other");
    // By name, which nobody changes, the first one is found, whoever changes the list.
    static_assert(std::is_const_v<decltype(root.body().name)>);
    std::mt19937 numbers(1);
    for (int round = 0; round < 200; ++round) {
        const auto place = [&] { return children.begin() + static_cast<long>(numbers() % children.size()); };
        switch (numbers() % 4) {
        case 0: std::iter_swap(place(), place()); break;
        case 1: *place() = std::make_shared<ZVariableEntity>(std::to_string(numbers() % 30), v); break;
        case 2: children.erase(place()), children.push_back(*place()); break;
        case 3: root.setState(root.genericState()); break;
        }
        for (const auto& child : children) {
            const auto isNamesake = [&](const auto& other) { return other->name() == child->name(); };
            EXPECT_EQ(root.getChild(child->name()).lock(), *std::find_if(children.begin(), children.end(), isNamesake));
        }
    }
}

TEST(Entity, dirty_marks_reach_the_document_once_and_survive_the_file) {
    play("{a:{b:{}} v:1}", {{"v mark", "0"}, {"a/b mark", "0"}, {"save", "2 {a:{b:{}!} v:1!}"}, {"save", "0"},
        {"mark", "0"}, {"save", "1 {a:{b:{}!} v:1!}!"}, {"clean", "0"}, {"isDirty", "0 no"}, {"save", "0"}, {"file", "0"},
        {"v isDirty", "0 no"}, {"load", "0"}, {"v isDirty", "0 yes"}, {"a isDirty", "0 no"}, {"a/b isDirty", "0 yes"}, {"isDirty", "0 yes"}});
}

TEST(Entity, recalculates_once_behind_what_it_depends_on) {
    play("{a:{x:{} y:{}} b:{}}", {{"/ works clean", "0"}, {"a works / clean", "0"}, {"a/x works a/x mark", "0"},
        {"a/y works clean", "0"}, {"b works b mark", "0"},
        {"mark", "0"}, {"a mark", "0"}, {"a/x mark", "0"}, {"a/y mark", "0"}, {"b mark", "0"}, {"clean", "0 x y a b root"},
        {"clean", "0"}, {"a/x mark", "0"}, {"clean", "0"}, {"a mark", "0"}, {"clean", "0 x a"}, {"b mark", "0"}, {"clean", "0 b"},
        {"b works b = {c:1}", "0"}, {"b mark", "0"}, {"mark", "0"}, {"clean", "1 {a:{x:{} y:{}} b:{c:1}} b root"},
        {"b works fails no", "0"}, {"b mark", "0"}, {"mark", "0"}, {"clean", "0 range_error: no"},
        {"b works b touch", "0"}, {"clean", "1 b root"}});
}

TEST(Entity, tells_the_first_exception_to_whoever_makes_the_change_and_the_newest_state_to_all_others) {
    play("{a:{b:1}}", {{"/ does 1 fails first", "0"}, {"a does 1 fails second", "0"}, {"a watch", "0"}, {"a/b watch", "0"},
        {"a/b = 2", "1 {a:{b:2}} a={b:2} b=2 range_error: first"}, {"a/b = 3", "1 {a:{b:3}} a={b:3} b=3"},
        {"a does 1 fails second", "0"}, {"without a", "1 {}"}});
    play("{x:1}", {{"x under none", "0"}, {"x does 1 x = 3", "0"}, {"x under /", "0"}, {"x = 2", "2 {x:3}"},
        {"x under none", "0"}, {"x does 1 sets {x:5}", "0"}, {"x under /", "0"}, {"x = 4", "2 {x:5}"}});
    play("{a:{} c:{}}", {{"a mark", "0"}, {"c mark", "0"}, {"/ does 9 show", "0"}, {"save", "2 {a:{}! c:{}!} {a:{}! c:{}} {a:{}! c:{}!}"}});
}

TEST(Entity, may_be_emptied_or_destroyed_by_its_subscribers) {
    for (const std::string act : {"touch", "sets {a:{} z:{}}", "without a", "a gets9 n", "save", "load", "clean", "a clean"}) {
        for (const std::string end : {"end", "sets {}"}) {
            for (const std::string hold : {"hold a", "hold none"}) {
                Story story("{a:{} l:>{}@../a z:{}}");
                for (const std::string& step : {std::string("a works a touch"), std::string("a mark"), hold, "/ does 1 " + end, act}) {
                    story.outcomeOf(step);
                }
                EXPECT_EQ(story.picture, end == "end" ? "gone" : "{}") << act << ", " << end << ", " << hold;
            }
        }
    }
    play("{}", {{"/ works touch", "0"}, {"/ does 1 end", "0"}, {"mark", "0"}, {"clean", "1 gone root"}});
    play("{}", {{"other does 1 other drop", "0"}, {"other under /", "0"}, {"other = 5", "0"}});
}
// clang-format on

#ifdef RXCPP_RX_HPP
// RxCpp itself ends the program where it cannot subscribe.
constexpr bool kMayFailToSubscribe = false;
#else
constexpr bool kMayFailToSubscribe = true;
#endif

TEST(Entity, dropped_children_are_detached_wherever_memory_is_short) {
    const Document state = read("{a:{} l:>{}}");
    bool hasFailed = true;
    for (int count = 0; hasFailed; ++count) {
        hasFailed = false;
        for (const bool isNewState : {kMayFailToSubscribe, false}) {
            auto owner = std::make_unique<DocumentEntity>("owner", state);
            const auto held = owner->body().children;
            const ZGenericObject other = read("{c:1}");
            try {
                failAllocationAfter(count);
                isNewState ? owner->setState(other) : owner->deleteAllObservers();
            } catch (const std::bad_alloc&) {
                hasFailed = true;
            }
            failAllocationAfter(std::numeric_limits<int>::max());
            owner.reset();
            EXPECT_TRUE(!held[0]->parent() && !held[1]->parent());
        }
    }
}

TEST(Entity, may_publish_when_it_takes_a_state) {
    Story story("{a:{}}");
    dynamic_cast<DocumentEntity&>(*story.at("a")).publishesEachState = true;
    EXPECT_EQ(story.outcomeOf("becomes {a:{} f:(b:1) z:1}"), "1 {a:{} f:(b:1) z:1}");
    EXPECT_EQ(story.outcomeOf("children"), "0 a:Doc b:Var z:Var");
}

std::string randomText(std::mt19937& numbers, bool isDocument, int depth) {
    if (!isDocument) {
        return std::to_string(numbers() % 9);
    }
    std::string members;
    for (const std::string name : {"a", "b", "c"}) {
        if (numbers() % 3 != 0) {
            members += " " + name + ":" + randomText(numbers, depth > 0 && numbers() % 2, depth - 1);
        }
    }
    return "{" + members.substr(members.empty() ? 0 : 1) + "}";
}

using Entities = std::map<std::string, std::shared_ptr<ZEntityInterface>>;

/// All entities of a document with their states, as text and by path.
std::string listed(const DocumentEntity& owner, Entities& found) {
    std::string text = drawn(Document(owner));
    for (const auto& child : owner.body().children) {
        const std::string path = child->getPath().to_string();
        const auto* const document = dynamic_cast<const DocumentEntity*>(child.get());
        found[path] = child;
        text += " " + path + " " + (document ? listed(*document, found) : drawn(child->genericState()));
    }
    return text;
}

TEST(Entity, after_random_changes_is_what_its_state_makes_and_keeps_entities_by_name_and_type) {
    std::mt19937 numbers(5);
    DocumentEntity root("root");
    Entities before;
    int published = 0, kept = 0, dropped = 0;
    root.stream().subscribe([&](ZGenericObject) { ++published; });
    for (int round = 0; round < 300; ++round) {
        const bool isWhole = before.empty() || numbers() % 5 == 0;
        const auto nth = static_cast<long>(isWhole ? 0 : numbers() % before.size());
        const auto changed = isWhole ? nullptr : std::next(before.begin(), nth)->second;
        ZEntityInterface& entity = isWhole ? root : *changed;
        const std::string state = randomText(numbers, entity.getObjectType() == "Document", 3);
        entity.setState(read(state));
        EXPECT_EQ(published, 0);
        entity.stream().publish(read(state));
        EXPECT_EQ(std::exchange(published, 0), 1);
        Entities now, ofNewOne;
        EXPECT_EQ(drawn(entity.genericState()), state);
        ASSERT_EQ(listed(root, now), listed(DocumentEntity("new", Document(root)), ofNewOne)) << round;
        for (const auto& [path, former] : before) {
            const std::string above = path.substr(0, path.rfind('/'));
            const auto present = now.count(path) ? now.at(path) : nullptr;
            const bool isBelowSame = above.empty() || (now.count(above) && now.at(above) == before.at(above));
            const bool isSameType = present && present->getObjectType() == former->getObjectType();
            EXPECT_EQ(present == former, isBelowSame && isSameType);
            ++(present == former ? kept : dropped);
            if (present != former) {
                former->onNext(variable(9), "poke");
            }
        }
        EXPECT_EQ(published, 0);
        before = std::move(now);
    }
    EXPECT_TRUE(kept > 500 && dropped > 500) << kept << ' ' << dropped;
}

} // namespace
