#include <zelm/variant/AbstractVariantStorage.h>

namespace Zelm::details {

AbstractVariantStorage::~AbstractVariantStorage() = default;

} // namespace Zelm::details
