#include <zelm/entities/ZEntityImpl.h>
#include <zelm/entities/ZObserverEntity.h>
#include <zelm/entities/ZVariableEntity.h>

#include <new>
#include <stdexcept>

namespace Zelm {

namespace Private {

ZString readableLinkedPath(const ZObserver& link) {
    try {
        return link.linkedPath();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        return ZString();
    }
}

void throwTooManyWays() {
    throw std::length_error("Links hand on a change too often.");
}

std::weak_ptr<ZEntityInterface> findEntity(ZEntityInterface& start, const ZString& path) {
    const bool isAbsolute = path.starts_with("/");
    // Only the way up is const.
    auto* entity = isAbsolute ? const_cast<ZEntityInterface*>(start.getRoot()) : &start;
    std::weak_ptr<ZEntityInterface> found;
    for (const ZStringView part : pathParts(isAbsolute ? path.substr(1) : path)) {
        if (!entity) {
            break;
        }
        if (part == "..") {
            entity = entity->parent();
            continue;
        }
        try {
            found = entity->getChild(ZString(part));
        } catch (const std::logic_error&) {
            return {};
        }
        entity = found.lock().get();
    }
    return found;
}

} // namespace Private

template class ZEntity<ZObserverEntity<ZVariableEntity>, ZObserver>;
template class ZObserverEntity<ZVariableEntity>;

} // namespace Zelm
