#pragma once

#include <zelm/entities/ZEntityImpl.h>
#include <zelm/entities/ZVariableEntity.h>
#include <zelm/units/ZUnit.h>

#include <gtest/gtest.h>

#include <functional>
#include <typeinfo>

namespace Zelm::Testing {

/// The state class of an application.
struct Document : ZObject {
    Document() : ZObject(objectType()) {}
    Document(ZGenericObject object) : ZObject(std::move(object), objectType()) {}
    static ZString objectType() { return "Document"; }

    using ZObject::deleteChild, ZObject::getObserver, ZObject::insertOrReplaceChild,
        ZObject::insertOrReplaceObserver, ZObject::setProperty;
};

struct DocumentEntity : ZEntity<DocumentEntity, Document> {
    explicit DocumentEntity(ZString name, Document state = {}) : ZEntity(std::move(name), std::move(state)) {}
    using ZEntity::body, ZEntity::isChildEntity, ZEntity::makeClean, ZEntity::makeDirty,
        ZEntity::processChildObjects, ZEntity::setState;

    void setState(ZGenericObject object) override {
        ZEntity::setState(std::move(object));
        if (publishesEachState) {
            publishState();
        }
    }

    std::function<void()> work;
    bool publishesEachState = false;

protected:
    void recalculate() override {
        if (const auto running = work) {
            running();
        }
    }
};

/// Calls of any entity that are for deriving classes only.
struct Inside : ZEntityInterface {
    static void markDirty(ZEntityInterface& entity) { (entity.*&Inside::makeDirty)(); }
    static void makeClean(ZEntityInterface& entity) { clean(entity); }
};

using Members = std::initializer_list<std::pair<ZString, ZGenericObject>>;

/// An object of any type; one of the type "" is a folder.
inline ZGenericObject objectOf(const ZString& type, Members members) {
    ZPropertyHandle object = ZObject(type).propertyHandle();
    for (const auto& [name, member] : members) {
        object = object.insertChild(name, member);
    }
    return object;
}
inline ZGenericObject document(Members members) {
    return objectOf(Document::objectType(), members);
}
inline ZGenericObject folder(Members members) {
    return objectOf("", members);
}
inline ZVariable variable(int value) {
    return ZVariable(Variant(value), ZUnit());
}
/// A link as it lies in a saved document.
inline ZGenericObject link(const ZString& path, ZGenericObject target) {
    ZObserver observer(objectOf(ZObserver::objectType(), {{"Link", target}}));
    observer.setLinkedPath(path);
    observer.setLinkType(target.getObjectType());
    return observer;
}

/// One line for an object: a variable as its value, a document as `{name:member ...}`, a folder as `(...)`, a
/// link as `>target@path`, and "!" behind what carries a dirty mark.
inline std::string drawn(const ZPropertyTreeNode& node) {
    std::string text, marks;
    for (const auto& [key, child] : node.children()) {
        const std::string name(key.data(), key.size());
        if (name == "__Metadata") {
            marks = (child->children().find("_dirt") ? "!" : "");
            const auto* path = child->children().find("_path");
            marks += path ? "@" + (*path)->value().value<ZString>().to_string() : "";
        } else if (name == "Data") {
            text = std::to_string(child->value().value<int>());
        } else if (name == "Link") {
            text = ">" + drawn(*child);
        } else if (name != "Unit") {
            text += (text.empty() ? "" : " ") + name + ":" + drawn(*child);
        }
    }
    const bool isDocument = node.objectType() == Document::objectType();
    return (isDocument ? "{" + text + "}" : node.objectType().empty() ? "(" + text + ")" : text) + marks;
}
inline std::string drawn(const ZGenericObject& object) {
    return drawn(object.node());
}

/// What happened, in order.
class EventLog {
public:
    void note(const std::string& event) { text_ += (text_.empty() ? "" : " | ") + event; }
    /// Notes every state that `entity` publishes.
    rxcpp::composite_subscription watch(const std::string& label, ZEntityInterface& entity) {
        return entity.stream().subscribe(
            [this, label](ZGenericObject state) { note(label + " " + drawn(state)); });
    }
    std::string take() { return std::exchange(text_, std::string()); }
    /// Compares what is noted during each step; what it throws is noted last, as "type: text".
    void expect(std::initializer_list<std::pair<std::string, std::function<void()>>> steps) {
        for (const auto& [events, step] : steps) {
            try {
                step();
            } catch (const std::exception& error) {
                const std::string type = typeid(error).name();
                note(type.substr(type.find_last_of("0123456789") + 1) + ": " + error.what());
            }
            EXPECT_EQ(take(), events);
        }
    }

private:
    std::string text_;
};

/// The entity at a path of names below `start`, as what it is.
template <class Entity = ZEntityInterface>
std::shared_ptr<Entity> below(ZEntityInterface& start, const ZString& path) {
    std::shared_ptr<ZEntityInterface> found;
    for (const ZStringView part : Private::pathParts(path)) {
        found = (found ? *found : start).getChild(ZString(part)).lock();
    }
    return std::dynamic_pointer_cast<Entity>(found);
}

} // namespace Zelm::Testing
