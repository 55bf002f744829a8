#pragma once

#include <zelm/Export.h>
#include <zelm/arrays/ArrayDimensions.h>
#include <zelm/text/ZString.h>
#include <zelm/tree/ZObject.h>
#include <zelm/units/ZUnit.h>
#include <zelm/variables/ZVariableIterator.h>
#include <zelm/variant/MutableVariant.h>
#include <zelm/variant/Variant.h>

#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

namespace Zelm {

class IVariableStrategy;

/// A measured or swept quantity: values, the unit in which they are stored, and the variables that they
/// depend on.
///
/// The values are an explicit array or a range of start, step and count, whose elements are computed when
/// they are asked for. Everything lies in the property tree: "Data", or "Start", "Count" and "Step" (absent
/// for 1), then "Unit" and "Indeps" with one variable under each decimal position. A variable that was
/// explicit before it became a range keeps its "Data" and comes back from its tree as the explicit one.
///
/// Nothing ties the sizes of data and independents together; what an independent means is the application's
/// rule.
class ZELM_EXPORT ZVariable : public ZObject {
public:
    static constexpr ZStringLiteral Unit{"Unit", 4};
    static constexpr ZStringLiteral Indeps{"Indeps", 6};

    /// "Variable".
    static std::string objectType();

    /// An explicit variable that holds a null value, dimensionless.
    ZVariable();
    ZVariable(Variant data, ZUnit unit);
    ZVariable(MutableVariant&& data, ZUnit unit);
    /// Mind the order: `ZVariable(start, step, count, unit)` compiles too.
    ZVariable(Variant start, std::size_t count, Variant step, ZUnit unit);
    /// A variable from its saved form. Throws `std::logic_error` "Variable expected but not found" for an
    /// object of another type and `std::invalid_argument` "Object does not represent a valid ZVariable" if it
    /// holds no values.
    ZVariable(ZGenericObject object);

    ZVariable(const ZVariable&) = default;
    ZVariable(ZVariable&&) noexcept = default;
    ZVariable& operator=(const ZVariable&) = default;
    ZVariable& operator=(ZVariable&&) noexcept = default;
    ~ZVariable() override;

    /// Explicit values in `unit`.
    void setData(Variant data, ZUnit unit);
    void setData(MutableVariant&& data, ZUnit unit);
    /// `count` values in `unit`: element i is `start + i * step` by the arithmetic of Variant, i counting as
    /// `unsignedInt64`, so rounding does not build up and the types of start and step decide that of the
    /// elements. Start and step may be arrays; the rows then have the shape that start + step gives.
    void setDataAsRange(Variant start, std::size_t count, Variant step, ZUnit unit);

    /// All values. A range is materialised: its array has the element type of `start + int32 zero * step`, to
    /// which every element is converted with a check, and the shape of one element with the first extent
    /// replaced by the count. A range of no rows throws `std::length_error` "Cannot assign to diffent
    /// dimensions", and so does one whose elements are vectors of more than one entry.
    Variant dataInStoredUnit() const;
    MutableVariant mutableDataInStoredUnit() const;

    /// Row `index`: an element of a vector, a row of an array. A range computes any row, also at or past its
    /// count; an explicit variable throws `std::invalid_argument` "Array slice invalid" past the last.
    Variant operator[](std::size_t index) const;
    /// The same; a range throws `std::runtime_error` "offset is out of bounds" at or past its count.
    Variant valueAtInStoredUnit(std::size_t index) const;
    /// Of a range, all rows from `first` to `last`; throws `std::invalid_argument` "start Index is out of
    /// bounds", "end Index is out of bounds", "end index can not be less than start". Of an explicit variable
    /// the two rows `first` and `last` alone; throws `std::invalid_argument` "Array slice invalid".
    Variant valuesAtIndexInStoredUnit(std::size_t first, std::size_t last) const;

    /// The number of values: of an explicit array all its elements, also where rows are fewer; of a range its
    /// count.
    std::size_t size() const;
    /// The shape of an explicit array; one extent for a range, also if its elements are arrays.
    ArrayDimensions dimensions() const;
    /// "ExplVar" or "RangeVar".
    ZString strategyVariableType() const;

    /// The stored unit. Throws `std::logic_error` "Unit expected but not found" if something else is filed
    /// there, `std::runtime_error` `Property "Unit" not found` if nothing is, and as ZUnit(ZGenericObject)
    /// does.
    ZUnit unitOfData() const;
    /// The same values in another unit, without independents and metadata. A range stays one: start and step
    /// go through the same conversion, so with an offset or a logarithmic unit the result is no longer the
    /// same sweep. Throws `std::runtime_error` as ZUnit::ConvertTo does.
    ZVariable convertToUnit(ZUnit unit) const;

    /// Stores a copy of `indep` as the independent number `index`, in place of the former one. Gaps are
    /// allowed.
    void setIndep(const ZVariable& indep, std::size_t index);
    /// Stores independents from number 0 on; those beyond the list stay.
    void setIndeps(std::vector<ZVariable> indeps);
    void setIndeps(std::initializer_list<ZVariable> indeps);
    /// How many independents there are, whatever their numbers. Never throws.
    std::size_t indepCount() const noexcept;
    /// All independents in text order of their numbers: with more than ten of them, number 10 comes before
    /// number 2.
    std::vector<ZVariable> indeps() const;
    /// The one at a position of that list. Throws `std::out_of_range` past its end. Builds only this
    /// one, but looks at the names and types of all.
    ZVariable indep(std::size_t index) const;

    /// The same values once `other` is converted to this unit, equivalent independents in the same order, and
    /// equal metadata. Exact, without tolerance. What cannot be converted is different; only the failures of
    /// this variable's own dataInStoredUnit() leave this function.
    bool isEquivalentTo(const ZVariable& other) const;

    ZVariableIterator begin();
    /// Stands at size(), which is past the rows of an explicit array of two or more dimensions.
    ZVariableIterator end();

private:
    enum Strategy : int { ExplicitData = 0, Range = 1 };

    void setStrategy(Strategy strategy) noexcept;
    void setIndeps(const ZVariable* indeps, std::size_t count);
    template <class Visit>
    void visitIndeps(Visit visit) const;
    bool hasEquivalentData(const ZVariable& other) const;

    IVariableStrategy* strategy_ = nullptr;
};

} // namespace Zelm
