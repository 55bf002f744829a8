#pragma once

#include <zelm/Export.h>
#include <zelm/entities/ZEntityInterface.h>
#include <zelm/entities/ZSingleton.h>
#include <zelm/text/ZString.h>
#include <zelm/tree/ZGenericObject.h>

#include <functional>
#include <map>
#include <memory>

namespace Zelm {

class ZEntityFactory;

template <>
ZELM_EXPORT ZEntityFactory& ZSingleton<ZEntityFactory>::Instance();

/// Turns saved objects into entities: knows for each object type how to make the entity, and how to make a
/// link to one. `ZEntityFactory::Instance()` is the one factory of the process.
///
/// It starts with the types of the library: variables, which are entities, and units and metadata, which are
/// not. A program adds its own with `ZEntity::registerEntityType` or by writing to the two tables. The tables
/// have no lock; they are changed on one thread at a time.
class ZELM_EXPORT ZEntityFactory : public ZSingleton<ZEntityFactory> {
public:
    /// Takes the name of the new entity and the object that is to be its state.
    using Maker = std::function<std::shared_ptr<ZEntityInterface>(ZString, ZGenericObject)>;
    using MakerFunction = std::shared_ptr<ZEntityInterface> (*)(ZString, ZGenericObject);

    /// By object type. An empty maker says that objects of this type are no entities.
    std::map<ZString, Maker> entityMakers;
    /// By the object type of the entity that the link leads to.
    std::map<ZString, Maker> linkMakers;

    ZEntityFactory(const ZEntityFactory&) = default;
    ZEntityFactory(ZEntityFactory&&) = default;
    ZEntityFactory& operator=(const ZEntityFactory&) = default;
    ZEntityFactory& operator=(ZEntityFactory&&) = default;

    /// Stores both makers of a type in place of former ones; null stands for an empty maker. Nothing is
    /// written, and nothing allocated, if they are there already.
    void registerMakers(const ZString& objectType, MakerFunction entityMaker, MakerFunction linkMaker);

    /// Whether `object` is an entity, links included; an object without a type is a folder and is not. Throws
    /// `std::invalid_argument` type + " not registered in ZEntityFactory." for a type that nobody has
    /// registered.
    bool canMakeEntity(ZGenericObject object) const;
    /// The same by object type.
    bool canMakeEntityOfType(const ZString& objectType) const;

    /// Makes the entity `name` of `object`. Throws `std::runtime_error`: "Don't know how to construct a " +
    /// type, "Unable to determine type of observable." for a link whose metadata do not say where it leads
    /// to, "Don't know how to construct a link to " + type; and whatever the maker throws.
    std::shared_ptr<ZEntityInterface> createEntity(ZString name, ZGenericObject object) const;

private:
    friend class ZSingleton<ZEntityFactory>;

    ZEntityFactory();
};

} // namespace Zelm
