#pragma once

#include <zelm/tree/ZPropertyTree.h>

#include <utility>

namespace Zelm {

/// The type-free form of an object, which crosses every interface where the concrete class does not matter: a
/// tree position and nothing else. It converts from and to `ZPropertyHandle` and shares its nodes.
class ZGenericObject : public ZPropertyHandle {
public:
    ZGenericObject() = default;
    ZGenericObject(const ZPropertyHandle& handle) : ZPropertyHandle(handle) {}
    ZGenericObject(ZPropertyHandle&& handle) noexcept : ZPropertyHandle(std::move(handle)) {}
};

} // namespace Zelm
