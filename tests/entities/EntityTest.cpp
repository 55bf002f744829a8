#include <zelm/json/JSONFormatter.h>

#include <entities/Document.h>
#include <support/Allocations.h>

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <new>
#include <random>
#include <sstream>
#include <stdexcept>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

std::function<void(ZVariable*)> to(int value) {
    return [value](ZVariable* state) { *state = variable(value); };
}

ZGenericObject holding(const ZString& name, ZGenericObject member) {
    return document({{name, member}});
}

std::string childrenOf(const DocumentEntity& entity) {
    std::string names;
    for (const auto& child : entity.body().children) {
        names += (child->name() + ":" + child->getObjectType().substr(0, 3) + " ").to_string();
    }
    return names;
}

struct Entity : ::testing::Test, EventLog {
    std::string stateOfRoot() const { return drawn(root.body().state.propertyHandle()); }
    std::shared_ptr<DocumentEntity> documentAt(const ZString& path) {
        return below<DocumentEntity>(root, path);
    }

    const ZGenericObject leaf = variable(1);
    DocumentEntity root{"root", document({{"a", holding("b", variable(1))}, {"l", link("", document({}))}})};
    std::shared_ptr<DocumentEntity> a = documentAt("a");
    std::shared_ptr<ZVariableEntity> b = below<ZVariableEntity>(root, "a/b");
    std::shared_ptr<ZEntityInterface> l = below(root, "l");
};

TEST_F(Entity, changes_are_published_once_at_each_level_and_dropped_children_are_detached) {
    DocumentEntity marked("m");
    marked.makeDirty();
    watch("root", root);
    a->stream().subscribe([&](ZGenericObject) { note(a->isDirty() ? "a, dirty" : "a"); });
    b->stream().subscribe([&](ZGenericObject) { note("b in " + stateOfRoot()); });
    auto owner =
        std::make_unique<DocumentEntity>("owner", document({{"c", variable(1)}, {"d", variable(1)}}));
    const auto c = below(*owner, "c"), d = below(*owner, "d");
    d->setParent(&root);
    expect({
        {"root {a:{b:2} l:>{}} | a | b in {a:{b:2} l:>{}}", [&] { b->updateState(to(2)); }},
        {"", [&] { root.deleteAllObservers(), l->onNext(variable(1), "Link"); }},
        {"", [&] { root.setState(holding("a", holding("b", variable(3)))); }},
        {"root {a:{b:3}}", [&] { root.updateState([](Document*) {}); }},
        {"", [&] { root.state(), root.genericState(), root.onPostLoad(), root.deleteAllObservers(); }},
        {"b in {a:{b:3}}", [&] { b->setParent(nullptr), b->updateState(to(4)); }},
        {"b in {a:{b:3}} | root {a:{b:5}} | a",
         [&] { b->setParent(a.get()), b->setParent(a.get()), b->updateState(to(5)); }},
        {"root {a:{}!} | a, dirty", [&] { a->setState(marked.state()); }},
        {"b in {a:{}!}", [&] { b->updateState(to(6)); }},
        {"root {}", [&] { EXPECT_TRUE(root.removeChild("a") == a); }},
        {"a, dirty", [&] { a->updateState([](Document*) {}); }},
        {"root {a:7}", [&] { root.setState(Document(holding("a", variable(7)))); }},
        {"", [&] { l = below(root, "a"), root.setState(holding("a", document({}))); }},
        {"", [&] { l->onNext(variable(1), "n"), owner.reset(), c->onNext(variable(1), "n"); }},
        {"a, dirty", [&] { a->updateState([](Document*) {}); }},
    });
    EXPECT_TRUE(!c->parent() && d->parent() == &root && !l->parent() && !b->parent());
    EXPECT_TRUE(a->getRoot() == a.get() && a->getPath() == "/");
}

TEST_F(Entity, failures_leave_the_children_and_folders_stand_for_what_lies_in_them) {
    ZMutablePropertyTree nameless("file");
    nameless.handle().setObjectType(Document::objectType());
    nameless.handle().addChildValue("", 1).setObjectType(Document::objectType());
    const ZGenericObject alien = holding("f", folder({{"c", objectOf("Alien", {})}}));
    ZGenericObject deep = document({});
    for (int level = 0; level < 1000; ++level) {
        deep = holding("d", deep);
    }
    watch("root", root);
    expect({
        {"invalid_argument: Unnamed ZEntity", [] { DocumentEntity(""); }},
        {"invalid_argument: Unnamed ZEntity", [&] { root.setState(Document(nameless.immutableHandle())); }},
        {"logic_error: Child \"x\"  not found", [&] { root.getChild("x"); }},
        {"logic_error: Child \"x\"  not found", [&] { root.removeChild("x"); }},
        {"logic_error: Document expected but not found", [&] { root.setState(variable(1)); }},
        {"domain_error: no",
         [&] { a->updateState([](Document* d) { *d = Document(), throw std::domain_error("no"); }); }},
        {"length_error: Entities are nested too deeply.", [&] { DocumentEntity("e", holding("d", deep)); }},
        {"", [&] { DocumentEntity("e", deep); }},
        {"invalid_argument: Alien not registered in ZEntityFactory.",
         [&] { root.setState(Document(alien)); }},
    });
    EXPECT_EQ(stateOfRoot() + childrenOf(root) + drawn(Document(*a)), "{f:(c:)}a:Doc l:_Ob {b:1}");
    ZVariable v = variable(1);
    v.setIndep(variable(0), 0);
    const ZGenericObject plain = variable(1), inner = folder({{"x", plain}, {"g", folder({{"y", plain}})}});
    root.setState(
        document({{"f", folder({{"l", link("../v", plain)}, {"in", inner}})}, {"v", v}, {"z", inner}}));
    root.setState(holding("other", root.genericState()).child("other"));
    EXPECT_TRUE(root.state().propertyHandle().getName() == "other");
    EXPECT_EQ(childrenOf(root), "y:Var x:Var l:Var v:Var y:Var x:Var ");
    EXPECT_EQ(root.body().children[1], root.body().children[5]);
    EXPECT_TRUE(below(root, "v/0")->getPath() == "/v/0" && below(root, "v/0")->isDescendentOf(&root));
    EXPECT_TRUE(!root.isDescendentOf(b.get()) && !root.hasChild({}) && root.hasChild(below(root, "v")));
    below<ZVariableEntity>(root, "x")->updateState(to(2));
    below<ZVariableEntity>(root, "l")->updateState(to(2));
    root.updateState([](Document*) {});
    EXPECT_EQ(drawn(below(root, "x")->genericState()) + drawn(below(root, "l")->genericState()), "12");
    root.removeChild("l");
    EXPECT_EQ(childrenOf(root), "y:Var x:Var l:Var v:Var x:Var y:Var x:Var ");
    ZGenericObject many = folder({});
    for (int i = 0; i < 20; ++i) {
        many = many.insertChild(std::to_string(i), plain);
    }
    root.setState(document({{"f", many}, {"z", many}}));
    EXPECT_EQ(root.body().children[19], root.body().children[39]);
}

TEST_F(Entity, dirty_marks_reach_the_document_once_and_survive_the_file) {
    root.setState(document({{"a", document({{"b", document({})}})}, {"v", variable(1)}}));
    watch("root", root);
    Inside::markDirty(*below(root, "v")), documentAt("a/b")->makeDirty();
    expect({{"root {a:{b:{}!} v:1} | root {a:{b:{}!} v:1!}", [&] { root.onPreSave(); }},
            {"", [&] { root.onPreSave(); }},
            {"{a:{b:{}!} v:1!}", [&] { root.makeDirty(), note(drawn(Document(root))); }},
            {"root {a:{b:{}!} v:1!}! | {a:{b:{}!} v:1!}!", [&] { note(drawn(root.genericState())); }},
            {"{a:{b:{}!} v:1!}!", [&] { root.makeClean(), note(drawn(root.genericState())); }}});
    std::stringstream file;
    JSONFormatter().serialize(file, "file", root.genericState());
    DocumentEntity loaded("loaded", Document(JSONFormatter().deserialize(file)));
    const auto dirty = [&](const ZString& path) { return below(loaded, path)->isDirty(); };
    EXPECT_TRUE(!dirty("v") && !loaded.isDirty());
    loaded.onPostLoad();
    EXPECT_TRUE(dirty("v") && dirty("a/b") && !dirty("a") && loaded.isDirty());
}

TEST_F(Entity, recalculation_goes_from_the_leaves_to_the_root) {
    const ZGenericObject empty = document({});
    root.setState(document({{"a", document({{"x", empty}, {"y", empty}})}, {"b", empty}}));
    const auto x = documentAt("a/x").get(), y = documentAt("a/y").get(), d = documentAt("b").get();
    for (DocumentEntity* entity : {&root, a.get(), x, y, d}) {
        entity->work = [this, entity] {
            entity->makeDirty(), entity->makeClean(), root.makeClean();
            note(entity->name().to_string() + (entity->isDirty() ? ", dirty" : ""));
        };
    }
    const auto clean = [this](auto... dirty) { (dirty->makeDirty(), ...), root.makeClean(); };
    expect({{"x | y | a | b | root", [&] { clean(&root, a, x, y, d); }},
            {"", [&] { clean(x); }},
            {"x | a", [&] { clean(a); }},
            {"b", [&] { clean(d); }}});
    watch("root", root);
    d->work = [d] { d->updateState([](Document* state) { state->setProperty("Data", 1); }); };
    expect({{"root {a:{x:{} y:{}} b:{1}} | root", [&] { clean(d, &root); }}});
    d->work = [] { throw std::domain_error("no"); };
    expect({{"domain_error: no", [&] { clean(d, &root); }},
            {"b | root", [&] { d->work = [this] { note("b"); }, clean(); }}});
}

struct Refusing : DocumentEntity {
    using DocumentEntity::DocumentEntity;
    void onNext(ZGenericObject state, const ZString& child) override {
        DocumentEntity::onNext(state, child);
        throw std::domain_error("refused");
    }
};

TEST_F(Entity, whoever_makes_a_change_gets_the_exception_of_a_subscriber_and_all_others_the_newest_state) {
    Refusing refusing("refusing", Document(root));
    const auto fail = [](ZGenericObject) { throw std::range_error("handler"); };
    auto failing = refusing.stream().subscribe(fail);
    const auto e = below<DocumentEntity>(refusing, "a");
    const auto f = below<ZVariableEntity>(refusing, "a/b");
    e->stream().subscribe([](ZGenericObject) { throw std::length_error("second"); });
    watch("refusing", refusing), watch("e", *e), watch("f", *f);
    refusing.deleteAllObservers();
    expect({{"refusing {a:{b:2}} | e {b:2} | f 2 | range_error: handler", [&] { f->updateState(to(2)); }},
            {"refusing {a:{b:3}} | e {b:3} | f 3 | domain_error: refused",
             [&] { failing.unsubscribe(), f->updateState(to(3)); }},
            {"refusing {}", [&] { refusing.removeChild("a"); }},
            {"e {b:4} | f 4 | length_error: second", [&] { f->updateState(to(4)); }}});
    root.setState(document({{"a", document({})}, {"c", document({})}, {"x", variable(1)}}));
    const auto x = below<ZVariableEntity>(root, "x");
    x->setParent(nullptr);
    x->stream().subscribe([&](ZGenericObject state) {
        if (drawn(state) == "2") {
            x->updateState(to(3));
        }
    });
    x->setParent(&root);
    a->makeDirty(), documentAt("c")->makeDirty();
    root.stream().subscribe([&](ZGenericObject) { note(drawn(root.genericState())); });
    expect({{"{a:{}! c:{} x:1} | {a:{}! c:{}! x:1}", [&] { root.onPreSave(); }},
            {"{a:{}! c:{}! x:3} | {a:{}! c:{}! x:3}", [&] { x->updateState(to(2)); }}});
}

TEST(EntityTree, a_subscriber_may_empty_or_destroy_the_document_that_notifies) {
    const ZGenericObject leaf = document({});
    const ZGenericObject state = document({{"a", leaf}, {"l", link("../a", leaf)}, {"z", leaf}});
    const std::function<void(DocumentEntity&)> acts[] = {
        [](DocumentEntity& root) { root.updateState([](Document*) {}); },
        [&](DocumentEntity& root) { root.setState(Document(state)); },
        [](DocumentEntity& root) { root.removeChild("a"); },
        [](DocumentEntity& root) { below(root, "a")->onNext(variable(1), "n"); },
        [](DocumentEntity& root) { root.onPreSave(); },
        [](DocumentEntity& root) { root.onPostLoad(); },
        [](DocumentEntity& root) { root.makeClean(); },
        [](DocumentEntity& root) {
            below<DocumentEntity>(root, "a")->work = nullptr;
            root.work = [&root] { root.updateState([](Document*) {}); };
            root.makeDirty(), root.makeClean();
        }};
    for (std::size_t i = 0; i < 4 * std::size(acts); ++i) {
        const bool isDestroyed = i % 2 == 0, isHeld = i % 4 < 2;
        auto root = std::make_unique<DocumentEntity>("root", state);
        auto a = below<DocumentEntity>(*root, "a");
        a->work = [entity = a.get()] { entity->updateState([](Document*) {}); };
        a->makeDirty();
        a = isHeld ? a : nullptr;
        int calls = 0;
        root->stream().subscribe([&](ZGenericObject) {
            ++calls;
            isDestroyed ? root.reset() : root->setState(document({}));
        });
        acts[i / 4](*root);
        EXPECT_TRUE(calls > 0 && (isDestroyed ? !root : drawn(Document(*root)) == "{}")) << i;
    }
    DocumentEntity parent("parent");
    auto child = std::make_unique<DocumentEntity>("child");
    child->stream().subscribe([&](ZGenericObject) { child.reset(); });
    child->setParent(&parent);
    child->updateState([](Document*) {});
    EXPECT_EQ(drawn(Document(parent)), "{}");
}

TEST_F(Entity, dropped_children_are_detached_wherever_memory_is_short) {
    bool hasFailed = true;
    for (int count = 0; hasFailed; ++count) {
        hasFailed = false;
        for (const bool isNewState : {true, false}) {
            auto owner = std::make_unique<DocumentEntity>("owner", Document(root));
            const auto held = owner->body().children;
            try {
                failAllocationAfter(count);
                isNewState ? owner->setState(holding("c", leaf)) : owner->deleteAllObservers();
            } catch (const std::bad_alloc&) {
                hasFailed = true;
            }
            failAllocationAfter(std::numeric_limits<int>::max());
            owner.reset();
            EXPECT_TRUE(!held[0]->parent() && !held[1]->parent());
        }
    }
}

TEST_F(Entity, a_child_may_publish_when_it_takes_a_state) {
    a->publishesEachState = true;
    root.setState(document({{"a", document({})}, {"f", folder({{"b", leaf}})}, {"z", leaf}}));
    EXPECT_EQ(stateOfRoot() + childrenOf(root), "{a:{} f:(b:1) z:1}a:Doc b:Var z:Var ");
}

/// The names in a folder begin with that of the folder, so that no name is in a document twice.
ZGenericObject randomState(std::mt19937& numbers, const ZString& type, int depth,
                           const ZString& prefix = "") {
    if (type == "Variable") {
        return variable(static_cast<int>(numbers() % 9));
    }
    ZGenericObject state = objectOf(type, {});
    for (const char* letter : {"a", "b", "c"}) {
        const char* kind = std::array{"Variable", "Document", ""}[depth > 0 ? numbers() % 3 : 0];
        if (numbers() % 3 != 0) {
            const ZString name = prefix + letter;
            state = state.insertChild(name, randomState(numbers, kind, depth - 1, *kind ? "" : name));
        }
    }
    return state;
}

/// The object of an entity: its own copy in the document or else that in a folder.
ZGenericObject memberOf(const ZGenericObject& state, const ZString& name) {
    return state.hasChild(name) ? state.child(name)
                                : memberOf(state, name.substr(0, name.size() - 1)).child(name);
}

/// `state` with another object for the entity at `path`, or without it. Copies in folders stay as they are.
ZGenericObject replaced(const ZGenericObject& state, const std::string& path, const ZGenericObject* member) {
    const std::size_t end = std::min(path.find('/', 1), path.size());
    const ZString name = path.substr(1, end - 1);
    if (end != path.size()) {
        return state.insertChild(name, replaced(memberOf(state, name), path.substr(end), member));
    }
    return member ? state.insertChild(name, *member) : state.removeChild(name);
}

void addOnce(std::string& names, const ZString& name) {
    const std::string word = (" " + name + ",").to_string();
    names += names.find(word) == std::string::npos ? word : "";
}

void addEntities(std::string& names, const ZGenericObject& state) {
    for (const ZGenericObject& member : state) {
        member.getObjectType().empty() ? addEntities(names, member) : addOnce(names, member.getName());
    }
}

using Found = std::map<std::string, std::shared_ptr<ZEntityInterface>>;

void compare(ZEntityInterface& entity, const ZGenericObject& model, Found& found) {
    std::string names, expected;
    ASSERT_EQ(drawn(entity.genericState()), drawn(model));
    if (const auto* owner = dynamic_cast<DocumentEntity*>(&entity)) {
        for (const auto& child : owner->body().children) {
            addOnce(names, child->name());
            found[child->getPath().to_string()] = child;
            compare(*child, memberOf(model, child->name()), found);
        }
        addEntities(expected, model);
        ASSERT_EQ(names, expected);
    }
}

TEST_F(Entity, random_changes_agree_with_a_model) {
    std::mt19937 numbers(5);
    ZGenericObject model = document({});
    Found before, now;
    int published = 0, kept = 0, dropped = 0;
    const auto present = [&now](const std::string& path) {
        const auto found = now.find(path);
        return found == now.end() ? nullptr : found->second;
    };
    root.setState(model);
    root.stream().subscribe([&](ZGenericObject) { ++published; });
    for (int round = 0; round < 200; ++round, before = std::exchange(now, Found())) {
        const auto act = before.empty() ? 0 : numbers() % 6;
        if (act < 2) {
            model = act == 0 ? randomState(numbers, "Document", 3) : root.genericState();
            root.setState(model);
        } else {
            const auto& [path, entity] =
                *std::next(before.begin(), static_cast<int>(numbers() % before.size()));
            const ZGenericObject member = randomState(numbers, entity->getObjectType(), 2);
            const bool isRemoved = act == 2 && entity->name().size() == 1;
            model = replaced(model, path, isRemoved ? nullptr : &member);
            if (isRemoved) {
                dynamic_cast<DocumentEntity&>(*entity->parent()).removeChild(entity->name());
            } else {
                entity->setState(member);
                entity->stream().publish(member);
            }
        }
        EXPECT_EQ(std::exchange(published, 0), act < 2 ? 0 : 1);
        ASSERT_NO_FATAL_FAILURE(compare(root, model, now)) << round;
        for (const auto& [path, entity] : before) {
            const std::string above = path.substr(0, path.rfind('/'));
            const bool isSame = present(path) == entity;
            // Where a copy in a folder is applied first, it decides about what is below it.
            if (std::count(above.begin(), above.end(), '/') * 2 == static_cast<long>(above.size())) {
                const bool isBelowSame = above.empty() || present(above) == before.at(above);
                EXPECT_EQ(isSame, isBelowSame && present(path) &&
                                      present(path)->getObjectType() == entity->getObjectType());
            }
            ++(isSame ? kept : dropped);
            if (!isSame) {
                entity->onNext(variable(9), "poke");
            }
        }
        EXPECT_EQ(drawn(root.genericState()), drawn(model));
    }
    EXPECT_TRUE(kept > 500 && dropped > 500) << kept << ' ' << dropped;
}

} // namespace
