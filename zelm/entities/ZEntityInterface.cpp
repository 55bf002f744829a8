#include <zelm/entities/CompositeSubscriberStream.h>
#include <zelm/entities/ZEntityInterface.h>

namespace Zelm {

ZEntityInterface::~ZEntityInterface() = default;

void Private::requireSameRxCpp(const rxcpp::composite_subscription&) {}

template struct CompositeSubscriberStream<ZGenericObject>;

} // namespace Zelm
