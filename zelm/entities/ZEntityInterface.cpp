#include <zelm/entities/CompositeSubscriberStream.h>
#include <zelm/entities/ZEntityInterface.h>

namespace Zelm {

ZEntityInterface::~ZEntityInterface() = default;

template struct CompositeSubscriberStream<ZGenericObject>;

} // namespace Zelm
