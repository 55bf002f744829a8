#include <zelm/entities/ZEntityImpl.h>
#include <zelm/entities/ZVariableEntity.h>

namespace Zelm {

template class ZEntity<ZVariableEntity, ZVariable>;

ZVariableEntity::ZVariableEntity(ZString name, ZVariable state) : ZEntity(std::move(name), state) {
    body().state = std::move(state);
    body().stateIsMadeFromTree = false;
}

} // namespace Zelm
