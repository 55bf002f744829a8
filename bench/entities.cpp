// Entities: what a change costs beside the tree versions that it makes, and how the cost grows.

#include "Compare.h"

#include <zelm/entities/ZEntityImpl.h>
#include <zelm/entities/ZVariableEntity.h>
#include <zelm/text/TextConversions.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace Zelm::Bench {
namespace {

class Folder : public ZObject {
public:
    static ZString objectType() { return "BenchFolder"; }
    Folder() : ZObject(objectType()) {}
    Folder(ZGenericObject object) : ZObject(std::move(object), objectType()) {}
    using ZObject::addChild;
};

class FolderEntity : public ZEntity<FolderEntity, Folder> {
public:
    FolderEntity(ZString name, Folder state) : ZEntity(std::move(name), std::move(state)) {}
};

ZString childName(std::size_t number) {
    return "child" + fromUnsignedInt(static_cast<unsigned>(number));
}

Folder folderOf(std::size_t count, const ZGenericObject& child) {
    Folder folder;
    for (std::size_t i = 0; i < count; ++i) {
        folder.addChild(childName(i), child);
    }
    return folder;
}

constexpr std::size_t kDepth = 5;
constexpr std::size_t kWidth = 10;

/// Folders in folders down to one of variables, each with the same number of children.
Folder nestedFolders() {
    ZGenericObject child = ZVariable(Variant(1.0), ZUnit::FromSiString("V"));
    for (std::size_t level = 0; level < kDepth; ++level) {
        child = folderOf(kWidth, child);
    }
    return Folder(child);
}

const Comparison change(
    "change 5 levels down, 10 children a level / tree path", 3.0,
    [] {
        const auto root = std::make_shared<FolderEntity>("root", nestedFolders());
        std::shared_ptr<ZEntityInterface> entity = root->getChild(childName(0)).lock();
        for (std::size_t level = 1; level < kDepth; ++level) {
            entity = entity->getChild(childName(0)).lock();
        }
        const auto leaf = std::dynamic_pointer_cast<ZVariableEntity>(entity);
        const std::vector<ZVariable> next = {*leaf, ZVariable(Variant(2.0), ZUnit::FromSiString("V"))};
        return [root, leaf, next, turn = std::size_t{0}]() mutable {
            leaf->updateState([&](ZVariable* variable) { *variable = next[++turn % 2]; });
            return 0;
        };
    },
    [] {
        const ZPropertyHandle first = nestedFolders().propertyHandle();
        const std::vector<ZString> path(kDepth - 1, childName(0));
        const ZPropertyHandle leaf = ZVariable(Variant(2.0), ZUnit::FromSiString("V")).propertyHandle();
        return [=, root = first]() mutable {
            root = ZPropertyHandle::withMutation(root.basis(), [&](ZMutablePropertyTree& version) {
                version.handle(path).attachChild(childName(0), leaf);
                return version.handle();
            });
            return 0;
        };
    },
    Anything());

/// Sets states of `count` children, as often as makes 10,000 children.
template <std::size_t count>
auto setStates() {
    const ZVariable child(Variant(1.0), ZUnit::FromSiString("V"));
    const ZVariable other(Variant(2.0), ZUnit::FromSiString("V"));
    const std::vector<Folder> states = {folderOf(count, child), folderOf(count, other)};
    const auto root = std::make_shared<FolderEntity>("root", states[0]);
    return [=, turn = std::size_t{0}]() mutable {
        for (std::size_t done = 0; done < 10000; done += count) {
            root->setState(states[++turn % 2]);
        }
        return 0;
    };
}

// A cost that grows in proportion to the children makes 1; what it costs more is memory that fits no cache.
const Comparison thousand("setState of 1000 children / of 100, per child", 1.5, setStates<1000>,
                          setStates<100>, Anything());
const Comparison tenThousand("setState of 10,000 children / of 100, per child", 3.0, setStates<10000>,
                             setStates<100>, Anything());

} // namespace
} // namespace Zelm::Bench
