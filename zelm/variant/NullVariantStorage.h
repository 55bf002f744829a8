#pragma once

#include <zelm/variant/AbstractVariantStorage.h>

namespace Zelm::details {

/// The storage of a Variant that holds nothing: empty shape, row-major, the unknown type.
class ZELM_EXPORT NullVariantStorage final : public AbstractVariantStorage {
public:
    ArrayDimensions dimensions() const override { return {}; }
    DataOrdering dataOrdering() const override { return RowMajor; }
    WellKnownType wellKnownType() const override { return {}; }
    const std::type_info& typeInfo() const override { return typeid(void); }

    void setDimensions(ArrayDimensions dimensions) override;
    void setDataOrdering(DataOrdering) override {}
    void convertDataOrdering(DataOrdering) override {}

    const void* data() const override { return nullptr; }
    const void* element(std::vector<std::uint64_t>) const override { return nullptr; }
    const void* element(std::uint64_t) const override { return nullptr; }
    void* data() override { return nullptr; }
    void* element(std::vector<std::uint64_t>) override { return nullptr; }
    void* element(std::uint64_t) override { return nullptr; }

    void append(std::shared_ptr<AbstractVariantStorage>) override {}
    AbstractVariantStorage* clone() const override { return new NullVariantStorage; }

    /// An empty storage of the type, shape `{0}`. The policy is not looked at. Throws `std::invalid_argument`
    /// "Cannot convert data into new storage, destination type unknown".
    std::unique_ptr<AbstractVariantStorage> convertTo(WellKnownType type,
                                                      ConversionPolicy policy) const override;
    std::unique_ptr<AbstractVariantStorage> slice(const std::vector<IndexSet>&,
                                                  std::shared_ptr<AbstractVariantStorage>) const override {
        return nullptr;
    }
    void assignSlice(const std::vector<IndexSet>&, std::shared_ptr<AbstractVariantStorage>, Variant) override;
};

} // namespace Zelm::details
