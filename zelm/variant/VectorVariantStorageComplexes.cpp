#include <zelm/variant/VectorVariantStorageImpl.h>

namespace Zelm::details {

#define ZELM_INSTANTIATE(type, Name, value, keyword) template class VectorVariantStorage<type>;
ZELM_FOR_EACH_COMPLEX_TYPE(ZELM_INSTANTIATE)
#undef ZELM_INSTANTIATE

} // namespace Zelm::details
