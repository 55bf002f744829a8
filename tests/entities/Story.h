#pragma once

#include <zelm/json/JSONFormatter.h>

#include <entities/Document.h>

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <stdexcept>
#include <typeinfo>

namespace Zelm::Testing {

/// A document, and what is done to it in steps of the form "path verb rest"; "load" is
/// "/ load".
struct Story {
    using Verb = std::function<void(ZEntityInterface&, const std::string&)>;

    explicit Story(const std::string& start) { begin(read(start)); }

    void begin(const ZGenericObject& state) {
        root = std::make_unique<DocumentEntity>("root", Document(state));
        picture = drawn(state);
        root->stream().subscribe([this](ZGenericObject told) {
            ++count;
            published = drawn(told);
        });
    }

    /// How often the root publishes during a step, its state if that is another one then, what is amiss, and
    /// what was noted: at last the exception, as "type: text".
    std::string outcomeOf(const std::string& step) {
        count = 0;
        notes.clear();
        try {
            take(step);
        } catch (const std::exception& error) {
            const std::string type = typeid(error).name();
            note(type.substr(type.find_last_of("0123456789") + 1) + ": " + error.what());
        }
        const std::string before = std::exchange(picture, root ? drawn(Document(*root)) : "gone");
        std::string outcome = std::to_string(count);
        if (picture != before) {
            outcome += " " + (picture.size() < 80 ? picture : "...");
        }
        if (count > 0 && root && published != picture) {
            outcome += " but told " + published;
        }
        return outcome + notes;
    }

    /// Leaves a step out whose entity does not exist.
    void take(const std::string& step) {
        std::istringstream words(step);
        std::string path, verb, rest;
        words >> path;
        if (verbs.count(path) != 0) {
            verb = std::exchange(path, "/");
        } else {
            words >> verb;
        }
        std::getline(words >> std::ws, rest);
        if (ZEntityInterface* const entity = entityAt(path)) {
            verbs.at(verb)(*entity, rest);
        }
    }

    std::shared_ptr<ZEntityInterface> at(const std::string& path) {
        if (path == "other" || path == "held") {
            return path == "other" ? other : held;
        }
        return root ? Private::findEntity(*root, path).lock() : nullptr;
    }
    ZEntityInterface* entityAt(const std::string& path) { return path == "/" ? root.get() : at(path).get(); }

    void note(const std::string& what) { notes += " " + what; }
    void note(const ZString& what) { note(std::string(what.data(), what.size())); }

    void update(ZEntityInterface& entity, const std::string& object) {
        if (auto* const ofVariable = dynamic_cast<ZVariableEntity*>(&entity)) {
            ofVariable->updateState([&](ZVariable* state) { *state = ZVariable(read(object)); });
        } else {
            documentOf(entity).updateState([&](Document* state) { *state = Document(read(object)); });
        }
    }

    void listen(ZEntityInterface& entity, const std::string& rest) {
        const auto left = std::make_shared<int>(rest[0] - '0');
        entity.stream().subscribe([this, step = rest.substr(2), left](ZGenericObject) {
            if ((*left)-- > 0) {
                take(std::string(step));
            }
        });
    }

    void watch(ZEntityInterface& entity) {
        entity.stream().subscribe(
            [this, &entity](ZGenericObject state) { note(entity.name() + "=" + drawn(state)); });
    }

    void work(DocumentEntity& entity, const std::string& step) {
        entity.work = [this, name = entity.name(), step] {
            take(std::string(step));
            note(name);
        };
    }

    void passThroughFile(ZEntityInterface& entity) {
        std::stringstream file;
        JSONFormatter().serialize(file, "root", entity.genericState());
        begin(JSONFormatter().deserialize(file));
    }

    void noteChildren() {
        for (const auto& child : root->body().children) {
            note(child->name() + ":" + child->getObjectType().substr(0, 3));
        }
    }

    static DocumentEntity& documentOf(ZEntityInterface& entity) {
        return dynamic_cast<DocumentEntity&>(entity);
    }

    // clang-format off
    const std::map<std::string, Verb> verbs = {
        {"=", [this](auto& x, auto& object) { update(x, object); }},
        {"touch", [](auto& x, auto&) { documentOf(x).updateState([](Document*) {}); }},
        {"sets", [](auto& x, auto& object) { documentOf(x).setState(Document(read(object))); }},
        {"becomes", [](auto& x, auto& object) { x.setState(read(object)); }},
        {"gets9", [](auto& x, auto& child) { x.onNext(variable(9), child); }},
        {"without", [](auto& x, auto& child) { documentOf(x).removeChild(child); }},
        {"clear", [](auto& x, auto&) { documentOf(x).deleteAllObservers(); }},
        {"keep", [this](auto&, auto&) { kept = *root; }},
        {"back", [this](auto&, auto&) { root->setState(kept); }},
        {"end", [this](auto&, auto&) { root.reset(); }},
        {"drop", [this](auto&, auto&) { other.reset(); }},
        {"hold", [this](auto&, auto& path) { held = at(path); }},
        {"under", [this](auto& x, auto& path) { x.setParent(entityAt(path)); }},
        {"follows", [this](auto& l, auto& path) { dynamic_cast<Link&>(l).setObserved(at(path)); }},
        {"cut", [](auto& x, auto&) { x.removeExternalLinks(&x); }},
        {"load", [](auto& x, auto&) { x.onPostLoad(); }},
        {"save", [](auto& x, auto&) { x.onPreSave(); }},
        {"file", [this](auto& x, auto&) { passThroughFile(x); }},
        {"mark", [](auto& x, auto&) { Inside::markDirty(x); }},
        {"clean", [](auto& x, auto&) { Inside::makeClean(x); }},
        {"works", [this](auto& x, auto& step) { work(documentOf(x), step); }}, // its recalculation
        {"does", [this](auto& x, auto& rest) { listen(x, rest); }}, // "x does 3 step": at its next three notifications
        {"watch", [this](auto& x, auto&) { watch(x); }},
        {"fails", [](auto&, auto& text) { throw std::range_error(text); }},
        {"child", [](auto& x, auto& name) { x.getChild(name); }},
        {"children", [this](auto&, auto&) { noteChildren(); }},
        {"path", [this](auto& x, auto&) { note(x.getPath()); }},
        {"isDirty", [this](auto& x, auto&) { note(std::string(x.isDirty() ? "yes" : "no")); }},
        {"show", [this](auto& x, auto&) { note(drawn(x.genericState())); }}};
    // clang-format on

    using Link = ZObserverEntity<ZVariableEntity>;

    std::shared_ptr<ZVariableEntity> other = std::make_shared<ZVariableEntity>("other", variable(4));
    std::shared_ptr<ZEntityInterface> held;
    std::unique_ptr<DocumentEntity> root;
    Document kept;
    std::string picture, published, notes;
    int count = 0;
};

using Rows = std::initializer_list<std::pair<std::string, std::string>>;

inline void play(const std::string& document, Rows steps) {
    Story story(document);
    for (const auto& [step, outcome] : steps) {
        EXPECT_EQ(story.outcomeOf(step), outcome) << step << " in " << document;
    }
}

} // namespace Zelm::Testing
