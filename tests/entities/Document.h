#pragma once

#include <zelm/entities/ZEntityImpl.h>
#include <zelm/entities/ZVariableEntity.h>
#include <zelm/units/ZUnit.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>

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
    using ZEntity::isChildEntity, ZEntity::makeClean, ZEntity::makeDirty, ZEntity::processChildObjects;

    std::function<void()> work;

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

/// One line for an object: a variable as its value, a document as `{name:member ...}`, a folder as `(...)`,
/// independents as one, a link as `>target@path`, an object of another type as `type<...>`, and "!"
/// behind what carries a dirty mark.
inline std::string drawn(const ZPropertyTreeNode& node) {
    const auto at = [](const ZPropertyTreeNode* parent, const ZString& name) {
        const auto* child = parent ? parent->children().find(name) : nullptr;
        return child ? child->get() : nullptr;
    };
    const auto* metadata = at(&node, "__Metadata");
    const std::string end = at(metadata, "_dirt") ? "!" : "";
    if (node.objectType() == ZVariable::objectType()) {
        const auto* indeps = at(&node, ZVariable::Indeps);
        return std::to_string(at(&node, "Data")->value().value<int>()) + (indeps ? drawn(*indeps) : "") + end;
    }
    if (node.objectType() == ZObserver::objectType()) {
        const auto* path = at(metadata, "_path");
        return ">" + drawn(*at(&node, "Link")) +
               (path ? "@" + path->value().value<ZString>().to_string() : "");
    }
    std::string members;
    for (const auto& [name, child] : node.children()) {
        if (child.get() != metadata) {
            members +=
                (members.empty() ? "" : " ") + std::string(name.data(), name.size()) + ":" + drawn(*child);
        }
    }
    if (node.objectType() == Document::objectType()) {
        return "{" + members + "}" + end;
    }
    const std::string type(node.objectType().data(), node.objectType().size());
    return type.empty() ? "(" + members + ")" : type + "<" + members + ">";
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
