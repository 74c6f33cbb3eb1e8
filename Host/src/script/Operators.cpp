// Comparisons and logic of values.

#include "script/Operators.h"

#include <compare>

#include "model/Cell.h"

namespace host {

namespace {

bool IsNumber(SdaiKind kind) { return kind == SdaiKind::Integer || kind == SdaiKind::Real; }
bool IsTruth(SdaiKind kind) { return kind == SdaiKind::Logical || kind == SdaiKind::Boolean; }

// FALSE, UNKNOWN, TRUE.
int RankOf(const SdaiLogical& truth) {
    if (truth == sdaiLTRUE) return 2;
    return truth == sdaiLFALSE ? 0 : 1;
}

// Compares exactly: not every integer is representable as a real.
std::partial_ordering Order(long integer, double real) {
    constexpr double kBeyond = 9223372036854775808.0;  // 2 to the power 63
    if (real >= kBeyond) return std::partial_ordering::less;
    if (real < -kBeyond) return std::partial_ordering::greater;
    if (real != real) return std::partial_ordering::unordered;
    const long whole = static_cast<long>(real);
    if (integer != whole) return integer <=> whole;
    return 0.0 <=> real - static_cast<double>(whole);
}

std::partial_ordering Reversed(std::partial_ordering order) {
    if (std::is_lt(order)) return std::partial_ordering::greater;
    return std::is_gt(order) ? std::partial_ordering::less : order;
}

// The order of two numbers, texts or truth values; no value for others.
std::optional<std::partial_ordering> OrderOf(const SdaiPrimitiveH& left,
                                             const SdaiPrimitiveH& right) {
    const SdaiKind a = left.Kind();
    const SdaiKind b = right.Kind();
    if (IsNumber(a) && IsNumber(b)) {
        if (a == b && a == SdaiKind::Integer)
            return static_cast<long>(left) <=> static_cast<long>(right);
        if (a == b) return static_cast<double>(left) <=> static_cast<double>(right);
        if (a == SdaiKind::Integer) return Order(left, static_cast<double>(right));
        return Reversed(Order(right, static_cast<double>(left)));
    }
    if (IsTruth(a) && IsTruth(b)) return RankOf(left) <=> RankOf(right);
    if (a == SdaiKind::String && b == SdaiKind::String) {
        return TextOf(left).ToUtf8() <=> TextOf(right).ToUtf8();
    }
    return std::nullopt;
}

SdaiLogical AreEqual(const SdaiPrimitiveH& left, const SdaiPrimitiveH& right) {
    if (!left.exists() || !right.exists()) {
        return SdaiBoolean(static_cast<bool>(left.exists()) == static_cast<bool>(right.exists()));
    }
    return left == right;
}

}  // namespace

std::optional<SdaiLogical> Compare(Operator comparison, const SdaiPrimitiveH& left,
                                   const SdaiPrimitiveH& right) {
    if (comparison == Operator::Equal) return AreEqual(left, right);
    if (comparison == Operator::NotEqual) return !AreEqual(left, right);
    // An unset value has no order.
    if (!left.exists() || !right.exists()) return SdaiLogical();
    const auto order = OrderOf(left, right);
    if (!order.has_value()) return std::nullopt;
    switch (comparison) {
        case Operator::Less: return SdaiBoolean(std::is_lt(*order));
        case Operator::LessEqual: return SdaiBoolean(std::is_lteq(*order));
        case Operator::Greater: return SdaiBoolean(std::is_gt(*order));
        default: return SdaiBoolean(std::is_gteq(*order));
    }
}

std::optional<SdaiLogical> TruthOf(const SdaiPrimitiveH& value) {
    if (!value.exists()) return SdaiLogical();
    if (!IsTruth(value.Kind())) return std::nullopt;
    return static_cast<const SdaiLogical&>(value);
}

}  // namespace host
