#include <zelm/json/JSONFormatter.h>

#include <entities/Document.h>
#include <support/ExpectThrow.h>

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

std::function<void(ZVariable*)> to(int value) {
    return [value](ZVariable* state) { *state = variable(value); };
}

std::string stateOf(const DocumentEntity& entity) {
    return drawn(ZGenericObject(static_cast<Document>(entity)));
}

std::string childrenOf(const DocumentEntity& entity) {
    std::string names;
    for (const auto& child : entity.body().children) {
        names += (child->name() + ":" + child->getObjectType() + " ").to_string();
    }
    return names;
}

TEST(Entity, a_change_is_published_once_at_each_level_and_first_to_the_parent) {
    EventLog log;
    DocumentEntity root("root", document({{"a", document({{"b", variable(1)}})}})), marked("m");
    const auto a = below<DocumentEntity>(root, "a");
    const auto b = below<ZVariableEntity>(root, "a/b");
    marked.makeDirty();
    log.watch("root", root);
    a->stream().subscribe([&](ZGenericObject) { log.note(a->isDirty() ? "a, dirty" : "a"); });
    b->stream().subscribe([&](ZGenericObject) { log.note("b in " + stateOf(root)); });
    log.expect({
        {"root {a:{b:2}} | a | b in {a:{b:2}}", [&] { b->updateState(to(2)); }},
        {"",
         [&] {
             root.setState(document({{"a", document({{"b", variable(3)}})}}));
         }},
        {"root {a:{b:3}}", [&] { root.updateState([](Document*) {}); }},
        {"", [&] { root.state(), root.genericState(), root.onPostLoad(), root.deleteAllObservers(); }},
        {"b in {a:{b:3}}", [&] { b->setParent(nullptr), b->updateState(to(4)); }},
        {"b in {a:{b:3}} | root {a:{b:5}} | a",
         [&] { b->setParent(a.get()), b->setParent(a.get()), b->updateState(to(5)); }},
        {"root {a:{}!} | a, dirty", [&] { a->setState(marked.state()); }},
        {"root {a:{}} | a, dirty", [&] { a->updateState([](Document* state) { *state = Document(); }); }},
        {"root {}", [&] { EXPECT_EQ(root.removeChild("a"), a); }},
        {"a, dirty", [&] { a->updateState([](Document*) {}); }},
    });
    EXPECT_TRUE(!root.hasChild(a) && !root.hasChild({}) && a->getRoot() == a.get());
}

TEST(Entity, failures_have_their_texts_and_leave_the_children) {
    EventLog log;
    DocumentEntity root("root", document({{"a", document({{"x", variable(1)}})}}));
    log.watch("root", root);
    const auto set = [&](const ZGenericObject& state) { root.setState(Document(state)); };
    EXPECT_THROW_MSG(DocumentEntity(""), std::invalid_argument, "Unnamed ZEntity");
    ZMutablePropertyTree file("file");
    file.handle().setObjectType(Document::objectType());
    file.handle().addChildValue("", 1).setObjectType(Document::objectType());
    EXPECT_THROW_MSG(set(file.immutableHandle()), std::invalid_argument, "Unnamed ZEntity");
    EXPECT_THROW_MSG(root.getChild("x"), std::logic_error, "Child \"x\"  not found");
    EXPECT_THROW_MSG(root.removeChild("x"), std::logic_error, "Child \"x\"  not found");
    EXPECT_THROW_MSG(root.setState(variable(1)), std::logic_error, "Document expected but not found");
    EXPECT_THROW_MSG(root.updateState([](Document*) { throw std::domain_error("no"); }), std::domain_error,
                     "no");
    EXPECT_THROW_MSG(set(document({{"b", folder({{"c", objectOf("Alien", {})}})}})), std::invalid_argument,
                     "Alien not registered in ZEntityFactory.");
    EXPECT_EQ(log.take() + stateOf(root) + childrenOf(root), "{b:(c:)}a:Document ");
}

TEST(Entity, folders_and_plain_data_stand_for_what_lies_in_them) {
    ZVariable dependent = variable(1);
    dependent.setIndep(variable(0), 0);
    const ZGenericObject linked = link("../../v", variable(5));
    DocumentEntity root(
        "root",
        document({{"f", folder({{"x", variable(1)}, {"l", linked}, {"g", folder({{"y", variable(1)}})}})},
                  {"l2", linked},
                  {"v", dependent},
                  {"z", folder({{"w", variable(1)}})}}));
    EXPECT_EQ(childrenOf(root), "y:Variable l:Variable x:Variable l2:_Observer v:Variable w:Variable ");
    const auto x = below<ZVariableEntity>(root, "x"), w = below<ZVariableEntity>(root, "w");
    EXPECT_EQ(below(root, "v/0")->getPath(), ZString("/v/0"));
    EXPECT_TRUE(below(root, "v/0")->isDescendentOf(&root) && !root.isDescendentOf(x.get()));
    x->updateState(to(2));
    w->updateState(to(2));
    root.updateState([](Document*) {});
    EXPECT_EQ(drawn(x->genericState()) + drawn(w->genericState()), "21");
    EXPECT_EQ(root.removeChild("x"), x);
    EXPECT_EQ(childrenOf(root), "y:Variable l:Variable l2:_Observer v:Variable w:Variable x:Variable "
                                "w:Variable ");
}

TEST(Entity, dropped_children_are_detached) {
    using Root = std::unique_ptr<DocumentEntity>;
    const ZGenericObject kept = document({});
    const std::pair<const char*, std::function<void(Root&)>> ways[] = {
        {"root {x:2 y:{n:1}}",
         [&](Root& r) {
             r->setState(document({{"x", variable(2)}, {"y", kept}}));
         }},
        {"root {y:{n:1}}",
         [&](Root& r) {
             r->setState(document({{"y", kept}}));
         }},
        {"root {y:{n:1}}", [](Root& r) { r->deleteAllObservers(); }},
        {"", [](Root& r) { r.reset(); }}};
    for (const auto& [events, drop] : ways) {
        EventLog log;
        auto root = std::make_unique<DocumentEntity>("root", document({{"x", link("", kept)}, {"y", kept}}));
        const auto x = below(*root, "x"), y = below(*root, "y");
        log.watch("root", *root);
        drop(root);
        EXPECT_TRUE(!x->parent() && x->getPath() == ZString("/")) << events;
        for (const auto& child : {x, y}) {
            child->onNext(variable(1), "n");
        }
        EXPECT_EQ(log.take(), events);
    }
}

TEST(Entity, dirty_marks_reach_the_document_once_and_survive_the_file) {
    EventLog log;
    const ZGenericObject state = document({{"a", document({{"b", document({})}})}, {"v", variable(1)}});
    DocumentEntity root("root", state);
    log.watch("root", root);
    for (const ZString path : {"a/b", "v"}) {
        Inside::markDirty(*below(root, path));
    }
    log.expect({{"root {a:{b:{}!} v:1} | root {a:{b:{}!} v:1!}", [&] { root.onPreSave(); }},
                {"", [&] { root.onPreSave(); }},
                {"{a:{b:{}!} v:1!}", [&] { root.makeDirty(), log.note(stateOf(root)); }},
                {"root {a:{b:{}!} v:1!}!", [&] { root.state(); }},
                {"{a:{b:{}!} v:1!}!", [&] { root.makeClean(), log.note(drawn(root.genericState())); }}});
    std::stringstream file;
    JSONFormatter().serialize(file, "file", root.genericState());
    DocumentEntity loaded("loaded", Document(JSONFormatter().deserialize(file)));
    const auto dirty = [&](const ZString& path) { return below(loaded, path)->isDirty(); };
    EXPECT_TRUE(!dirty("v") && !root.isDirty());
    loaded.onPostLoad();
    EXPECT_TRUE(dirty("v") && dirty("a/b") && !dirty("a") && loaded.isDirty());
    EXPECT_EQ(drawn(loaded.genericState()), "{a:{b:{}!} v:1!}!");
}

TEST(Entity, recalculation_goes_from_the_leaves_to_the_root) {
    EventLog log;
    const ZGenericObject leaf = document({});
    DocumentEntity root("/", document({{"a", document({{"x", leaf}, {"y", leaf}})}, {"b", leaf}}));
    const auto at = [&](const ZString& path) { return below<DocumentEntity>(root, path).get(); };
    const std::vector<DocumentEntity*> all{&root, at("a"), at("a/x"), at("a/y"), at("b")};
    for (DocumentEntity* entity : all) {
        entity->work = [&, entity] {
            entity->makeDirty(), entity->makeClean(), root.makeClean();
            log.note(entity->name().to_string());
        };
    }
    const auto clean = [&](const std::vector<DocumentEntity*>& dirty) {
        return [&root, dirty] {
            for (DocumentEntity* entity : dirty) {
                entity->makeDirty();
            }
            root.makeClean();
        };
    };
    log.expect({{"x | y | a | b | /", clean(all)},
                {"", clean({})},
                {"", clean({at("a/x")})},
                {"x | a", clean({at("a")})},
                {"b", clean({at("b")})}});
    log.watch("root", root);
    at("b")->work = [&] { at("b")->updateState([](Document* b) { b->setProperty("Data", 1); }); };
    log.expect({{"root {a:{x:{} y:{}} b:{1}} | /", clean({at("b"), &root})}});
    at("b")->work = [] { throw std::domain_error("no"); };
    EXPECT_THROW_MSG(clean({at("b"), &root})(), std::domain_error, "no");
    EXPECT_TRUE(at("b")->isDirty() && root.isDirty() && !at("a")->isDirty());
    at("b")->work = nullptr;
    log.expect({{"/", clean({})}});
}

struct Refusing : DocumentEntity {
    using DocumentEntity::DocumentEntity;
    void onNext(ZGenericObject state, const ZString& child) override {
        DocumentEntity::onNext(state, child);
        throw std::domain_error("refused");
    }
};

TEST(Entity, an_exception_of_a_subscriber_reaches_who_made_the_change_and_all_others_are_served) {
    EventLog log;
    Refusing root("root", document({{"a", document({{"b", variable(1)}})}}));
    const auto a = below<DocumentEntity>(root, "a");
    const auto b = below<ZVariableEntity>(root, "a/b");
    const auto fail = [](ZGenericObject) { throw std::range_error("handler"); };
    auto failing = root.stream().subscribe(fail);
    a->stream().subscribe(fail);
    log.watch("root", root);
    log.watch("a", *a);
    log.watch("b", *b);
    EXPECT_THROW_MSG(b->updateState(to(2)), std::range_error, "handler");
    failing.unsubscribe();
    EXPECT_THROW_MSG(b->updateState(to(3)), std::domain_error, "refused");
    EXPECT_EQ(log.take(), "root {a:{b:2}} | a {b:2} | b 2 | root {a:{b:3}} | a {b:3} | b 3");
    log.expect({{"root {}", [&] { root.removeChild("a"); }}});
    EXPECT_THROW_MSG(b->updateState(to(4)), std::range_error, "handler");
    EXPECT_EQ(log.take(), "a {b:4} | b 4");
}

TEST(Entity, changes_and_reads_within_a_notification_leave_the_newest_state) {
    EventLog log;
    DocumentEntity root("root", document({{"a", document({})}, {"b", document({})}, {"x", variable(1)}}));
    const auto x = below<ZVariableEntity>(root, "x");
    x->setParent(nullptr);
    auto first = x->stream().subscribe([&](ZGenericObject state) {
        if (drawn(state) == "2") {
            x->updateState(to(3));
        }
    });
    x->setParent(&root);
    const auto watching = log.watch("root", root);
    log.expect({{"root {a:{} b:{} x:3} | root {a:{} b:{} x:3}", [&] { x->updateState(to(2)); }}});
    watching.unsubscribe();
    root.stream().subscribe([&](ZGenericObject) { log.note(drawn(root.genericState())); });
    Inside::markDirty(*below(root, "a")), Inside::markDirty(*below(root, "b"));
    log.expect({{"{a:{}! b:{} x:3} | {a:{}! b:{}! x:3}", [&] { root.onPreSave(); }}});
}

TEST(Entity, a_subscriber_may_empty_or_destroy_the_document_that_notifies) {
    const ZGenericObject leaf = document({});
    const ZGenericObject state = document({{"a", leaf}, {"b", leaf}, {"l", link("../a", leaf)}});
    const std::function<void(DocumentEntity&)> acts[] = {
        [](DocumentEntity& root) { root.updateState([](Document*) {}); },
        [&](DocumentEntity& root) { root.setState(Document(state)); },
        [](DocumentEntity& root) { root.removeChild("a"); },
        [](DocumentEntity& root) { below(root, "a")->onNext(variable(1), "n"); },
        [](DocumentEntity& root) { root.onPreSave(); },
        [](DocumentEntity& root) { root.onPostLoad(); },
        [](DocumentEntity& root) { root.makeClean(); }};
    for (std::size_t i = 0; i < 4 * std::size(acts); ++i) {
        const bool isDestroyed = i % 2 == 0, isHeld = i % 4 < 2;
        auto root = std::make_unique<DocumentEntity>("root", state);
        auto a = below<DocumentEntity>(*root, "a");
        a->work = [entity = a.get()] { entity->updateState([](Document*) {}); };
        a->makeDirty();
        if (!isHeld) {
            a.reset();
        }
        int calls = 0;
        root->stream().subscribe([&](ZGenericObject) {
            ++calls;
            isDestroyed ? root.reset() : root->setState(document({}));
        });
        acts[i / 4](*root);
        EXPECT_TRUE(calls > 0 && (isDestroyed ? !root : stateOf(*root) == "{}")) << i;
    }
}

} // namespace
