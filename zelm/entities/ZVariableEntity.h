#pragma once

#include <zelm/Export.h>
#include <zelm/entities/ZEntity.h>
#include <zelm/text/ZString.h>
#include <zelm/variables/ZVariable.h>

namespace Zelm {

class ZVariableEntity;
extern template class ZELM_EXPORT ZEntity<ZVariableEntity, ZVariable>;

/// The entity of a variable. Its independents are its children, named by their positions: "0", "1", ...
class ZELM_EXPORT ZVariableEntity : public ZEntity<ZVariableEntity, ZVariable> {
public:
    /// A state whose tree holds both an explicit array and a range is kept as what `state` is; any later
    /// state of the entity is read from its tree, and then such a one is the explicit array.
    ZVariableEntity(ZString name, ZVariable state);
};

} // namespace Zelm
