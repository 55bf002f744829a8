#pragma once

#include <zelm/text/ZStringView.h>
#include <zelm/units/ZUnitDimensions.h>

#include <optional>

namespace Zelm::details {

/// How the numbers of a unit relate to its base unit.
enum class UnitForm {
    Linear,  ///< proportional
    Decibel, ///< "dB(...)"
    Log10,   ///< "log(...)"
};

/// What a unit text says.
struct ParsedUnit {
    ZUnitDimensions dimensions;
    double scale = 1.0;
    UnitForm form = UnitForm::Linear;
};

/// Reads a whole unit text, nothing if it is not valid. Changes nothing, in the registry of quantities
/// either. Time is linear in the text, and its nesting costs no stack.
///
/// The grammar, without blanks anywhere:
///
///     text        empty | expression | "dB(" expression ")" | "log" expression ")"
///     expression  (product | "1") ["/" term]
///     product     term ["*" product]
///     term        "(" expression [")"] | unit
///     unit        [prefix] symbol ["^" ["+" | "-"] nonzero-digit {digit}]
///
/// A closing parenthesis may be missing, a denominator is one term, and a power belongs to a symbol. Of
/// several readings of a unit the first in the order of the tables counts, with a prefix before none: "dam"
/// is ten metres, and "mol", "sr", "Wb" and "Sv", which begin with shorter symbols, are never read.
/// "log(W))" is the valid form: the parenthesis behind "log" belongs to the expression.
std::optional<ParsedUnit> parseUnitText(ZStringView text);

} // namespace Zelm::details
