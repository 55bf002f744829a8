#pragma once

#include <zelm/entities/ZEntityImpl.h>
#include <zelm/entities/ZVariableEntity.h>
#include <zelm/units/ZUnit.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace Zelm::Testing {

/// The state class of an application.
struct Document : ZObject {
    Document() : ZObject(objectType()) {}
    Document(ZGenericObject object) : ZObject(std::move(object), objectType()) {}
    static ZString objectType() { return "Document"; }
};

struct DocumentEntity : ZEntity<DocumentEntity, Document> {
    explicit DocumentEntity(ZString name, Document state = {}) : ZEntity(std::move(name), std::move(state)) {}
    using ZEntity::body, ZEntity::setState;

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

inline ZVariable variable(int value) {
    return ZVariable(Variant(value), ZUnit());
}

/// A link as it lies in a saved document.
inline ZGenericObject link(const ZString& path, const ZGenericObject& target) {
    ZObserver observer(ZObserver().propertyHandle().insertChild("Link", target));
    observer.setLinkedPath(path);
    observer.setLinkType(target.getObjectType());
    return observer;
}

/// Reads the short notation of objects: a number for a variable, `{name:member ...}` for a document, `(...)`
/// for a folder, `>target@path` for a link, and `[Type]` for an object of another type.
inline ZGenericObject read(const char*& at) {
    const auto word = [&at] {
        const char* const begin = at;
        at += std::strcspn(at, ":@ })]");
        return std::string(begin, at);
    };
    const char first = *at;
    if (!std::strchr(">{([", first)) {
        return variable(std::stoi(word()));
    }
    ++at;
    if (first == '>') {
        const ZGenericObject target = read(at);
        const bool hasPath = *at == '@';
        at += hasPath;
        return link(hasPath ? word() : "", target);
    }
    ZMutablePropertyTree tree;
    tree.handle().setObjectType(first == '{' ? "Document" : first == '[' ? word() : "");
    for (; !std::strchr("})]", *at); at += *at == ' ') {
        const std::string name = word();
        tree.handle().attachChild(name, read(++at).sharedNode());
    }
    ++at;
    return tree.immutableHandle();
}
inline ZGenericObject read(const std::string& text) {
    const char* at = text.c_str();
    return read(at);
}

/// Writes what read() reads. "!" stands behind an object that carries a dirty mark.
inline std::string drawn(const ZPropertyTreeNode& node) {
    std::string text, marks;
    for (const auto& [key, child] : node.children()) {
        const std::string name(key.data(), key.size());
        if (name == "__Metadata") {
            marks = child->children().find("_dirt") ? "!" : "";
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
    const ZString& type = node.objectType();
    if (type.empty()) {
        text = "(" + text + ")";
    } else if (type == Document::objectType()) {
        text = "{" + text + "}";
    }
    return text + marks;
}
inline std::string drawn(const ZGenericObject& object) {
    return drawn(object.node());
}

} // namespace Zelm::Testing
