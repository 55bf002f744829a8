#include <zelm/entities/ZEntityFactory.h>

#include <zelm/entities/ZVariableEntity.h>
#include <zelm/tree/ZObjectMetadata.h>
#include <zelm/tree/ZObserver.h>
#include <zelm/units/ZUnit.h>

#include <stdexcept>
#include <utility>

namespace Zelm {

namespace {

bool isMadeBy(const ZEntityFactory::Maker& maker, ZEntityFactory::MakerFunction function) {
    const auto* target = maker.target<ZEntityFactory::MakerFunction>();
    return target ? *target == function : !maker && !function;
}

void storeMaker(std::map<ZString, ZEntityFactory::Maker>& makers, const ZString& objectType,
                ZEntityFactory::MakerFunction function) {
    const auto entry = makers.find(objectType);
    if (entry == makers.end()) {
        makers.emplace(objectType, function);
    } else if (!isMadeBy(entry->second, function)) {
        entry->second = function;
    }
}

/// A copy of the maker of a type: what it constructs registers anew and may so write over the one in the
/// table.
ZEntityFactory::Maker makerOf(const std::map<ZString, ZEntityFactory::Maker>& makers,
                              const ZString& objectType, const char* failure) {
    const auto entry = makers.find(objectType);
    if (entry == makers.end() || !entry->second) {
        throw std::runtime_error((failure + objectType).to_string());
    }
    return entry->second;
}

} // namespace

template <>
ZEntityFactory& ZSingleton<ZEntityFactory>::Instance() {
    static ZEntityFactory factory;
    return factory;
}

ZEntityFactory::ZEntityFactory() {
    ZVariableEntity::registerEntityType(*this);
    registerMakers(ZObjectMetadata::objectType(), nullptr, nullptr);
    registerMakers(ZUnit::objectType(), nullptr, nullptr);
}

void ZEntityFactory::registerMakers(const ZString& objectType, MakerFunction entityMaker,
                                    MakerFunction linkMaker) {
    storeMaker(entityMakers, objectType, entityMaker);
    storeMaker(linkMakers, objectType, linkMaker);
}

bool ZEntityFactory::canMakeEntity(ZGenericObject object) const {
    return canMakeEntityOfType(object.getObjectType());
}

bool ZEntityFactory::canMakeEntityOfType(const ZString& objectType) const {
    if (objectType.empty()) {
        return false;
    }
    if (objectType == ZObserver::objectType()) {
        return true;
    }
    const auto entry = entityMakers.find(objectType);
    if (entry == entityMakers.end()) {
        throw std::invalid_argument((objectType + " not registered in ZEntityFactory.").to_string());
    }
    return static_cast<bool>(entry->second);
}

std::shared_ptr<ZEntityInterface> ZEntityFactory::createEntity(ZString name, ZGenericObject object) const {
    ZString type = object.getObjectType();
    const char* failure = "Don't know how to construct a ";
    const auto* makers = &entityMakers;
    if (type == ZObserver::objectType()) {
        type = ZObserver(object).linkType();
        if (type == "_UNKNOWN_") {
            throw std::runtime_error("Unable to determine type of observable.");
        }
        failure = "Don't know how to construct a link to ";
        makers = &linkMakers;
    }
    auto entity = makerOf(*makers, type, failure)(std::move(name), std::move(object));
    if (!entity) {
        throw std::runtime_error((failure + type).to_string());
    }
    return entity;
}

namespace {

/// Makes the factory when the library is loaded, before an application adds to it.
[[maybe_unused]] const ZEntityFactory& s_factory = ZEntityFactory::Instance();

} // namespace

} // namespace Zelm
