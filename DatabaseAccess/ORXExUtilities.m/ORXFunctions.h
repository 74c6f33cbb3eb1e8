// The mapping functions with the types of C++, for a program that is linked with the module: header
// only, over the declarations of ORXExUtilities.h.
//
//     const std::array<double, 12> placement = orx::GetAbsPlacement(link);
//     if (orx::IsEncodedKey(key) == sdaiLTRUE) ...
//
// A text is a std::string_view or std::string of ISO 8859-1, as the contract has it; an instance is
// a pointer, null for none; a logical is an SdaiLogical, which may be UNKNOWN. What may be unset is
// a std::optional, a result of several kinds a std::variant. Aggregates, selects and values of any
// kind stay handles. ComputeABSPlacement returns the list that it fills.

#ifndef ORXFUNCTIONS_H
#define ORXFUNCTIONS_H

#include <array>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "ORXExUtilities.h"
#include "ORXExportTable.h"
#include "SdaiAggrInstance.h"
#include "SdaiModel.h"

namespace orx {

// ---- Aggregates and extents as ranges

// The members of an aggregate: those that it had when the range was made. The aggregate, or the
// handle that owns it, must outlive the range.
template <class Member>
class MemberRange {
  public:
    class Iterator {
      public:
        using iterator_category = std::input_iterator_tag;
        using value_type = Member;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = Member;

        Iterator() = default;
        Iterator(const SdaiAggrInstance* members, long position)
            : members_(members), position_(position) {}
        Member operator*() const {
            if constexpr (std::is_same_v<Member, SdaiPrimitiveH>) {
                return members_->GetMember(position_);
            } else if constexpr (std::is_same_v<Member, double>) {
                return members_->GetRealMember(position_);
            } else {
                return members_->GetInstanceMember(position_);
            }
        }
        Iterator& operator++() {
            ++position_;
            return *this;
        }
        Iterator operator++(int) { return {members_, position_++}; }
        bool operator==(const Iterator& other) const { return position_ == other.position_; }

      private:
        const SdaiAggrInstance* members_ = nullptr;
        long position_ = 0;
    };

    explicit MemberRange(const SdaiAggrInstance* members)
        : members_(members), count_(members != nullptr ? members->GetMemberCount() : 0) {}
    Iterator begin() const { return {members_, 0}; }
    Iterator end() const { return {members_, count_}; }
    std::size_t size() const { return static_cast<std::size_t>(count_); }
    bool empty() const { return count_ == 0; }

  private:
    const SdaiAggrInstance* members_;
    long count_;
};

// The members of an aggregate as handles, as instances (null for any other member) and as numbers
// (0.0 for any other); none of what is no aggregate.
inline MemberRange<SdaiPrimitiveH> Members(const SdaiPrimitiveH& aggregate) {
    return MemberRange<SdaiPrimitiveH>(aggregate);
}
inline MemberRange<SdaiEntityInstance*> Instances(const SdaiPrimitiveH& aggregate) {
    return MemberRange<SdaiEntityInstance*>(aggregate);
}
inline MemberRange<double> Reals(const SdaiPrimitiveH& aggregate) {
    return MemberRange<double>(aggregate);
}
// The instances of an entity type and of its subtypes.
inline MemberRange<SdaiEntityInstance*> Extent(const SdaiModel& model, const SdaiName& entityType) {
    return MemberRange<SdaiEntityInstance*>(model.GetEntityExtent(entityType));
}

// ---- Arguments and results

namespace typed {

inline SdaiPrimitiveH In(std::string_view text) { return SdaiString(text); }
inline SdaiPrimitiveH In(long number) { return number; }
inline SdaiPrimitiveH In(double number) { return number; }
inline SdaiPrimitiveH In(SdaiEntityInstance* instance) { return instance; }
inline const SdaiPrimitiveH& In(const SdaiPrimitiveH& value) { return value; }

// The result of a function that returns one of these kinds. Kinds that no function returns have
// none.
template <unsigned kinds>
struct Result;

template <>
struct Result<Any> {
    static SdaiPrimitiveH Of(SdaiPrimitiveH value) { return value; }
};
template <>
struct Result<String> {
    static std::string Of(const SdaiPrimitiveH& value) { return std::string(TextOf(value).View()); }
};
template <>
struct Result<Integer> {
    static long Of(const SdaiPrimitiveH& value) { return value; }
};
template <>
struct Result<Real> {
    static double Of(const SdaiPrimitiveH& value) { return value; }
};
template <>
struct Result<Logical> {
    static SdaiLogical Of(const SdaiPrimitiveH& value) { return value; }
};
template <>
struct Result<Aggregate> {
    static std::array<double, 12> Of(const SdaiPrimitiveH& value) {
        std::array<double, 12> placement{};
        std::size_t i = 0;
        for (const double number : Reals(value)) {
            if (i < placement.size()) placement[i++] = number;
        }
        return placement;
    }
};
template <>
struct Result<Instance | Unset> {
    static std::optional<SdaiEntityInstance*> Of(const SdaiPrimitiveH& value) {
        SdaiEntityInstance* instance = value;
        return instance != nullptr ? std::optional(instance) : std::nullopt;
    }
};

// A value as one of the types, where it is of its kind.
template <class Type>
std::optional<Type> As(const SdaiPrimitiveH& value) {
    const SdaiKind kind = value.Kind();
    if constexpr (std::is_same_v<Type, std::string>) {
        if (kind == SdaiKind::String) return Result<String>::Of(value);
    } else if constexpr (std::is_same_v<Type, long>) {
        if (kind == SdaiKind::Integer) return Result<Integer>::Of(value);
    } else if constexpr (std::is_same_v<Type, double>) {
        if (kind == SdaiKind::Real) return Result<Real>::Of(value);
    } else if constexpr (std::is_same_v<Type, SdaiLogical>) {
        if (kind == SdaiKind::Logical || kind == SdaiKind::Boolean) {
            return Result<Logical>::Of(value);
        }
    } else {
        return Result<Instance | Unset>::Of(value);
    }
    return std::nullopt;
}

// One of several kinds, by what the value finally is.
template <class... Types>
std::optional<std::variant<Types...>> OneOf(const SdaiPrimitiveH& value) {
    std::optional<std::variant<Types...>> result;
    const auto take = [&result](auto taken) {
        if (taken.has_value()) result.emplace(std::move(*taken));
    };
    (take(As<Types>(value)), ...);
    return result;
}

template <>
struct Result<String | Integer | Real | Unset> {
    static auto Of(const SdaiPrimitiveH& value) { return OneOf<std::string, long, double>(value); }
};
template <>
struct Result<Instance | Integer | Unset> {
    static auto Of(const SdaiPrimitiveH& value) { return OneOf<SdaiEntityInstance*, long>(value); }
};
template <>
struct Result<Logical | Instance | Unset> {
    static auto Of(const SdaiPrimitiveH& value) {
        return OneOf<SdaiLogical, SdaiEntityInstance*>(value);
    }
};

// Calls a function that fills a list of reals.
template <class Function>
std::vector<double> Filled(Function fill) {
    SdaiListClassOfSdaiReal list(0, 0);
    SdaiListClassOfSdaiReal* filled = &list;
    fill(filled);
    const MemberRange<double> reals(filled);
    return {reals.begin(), reals.end()};
}

}  // namespace typed

}  // namespace orx

// ---- The functions, made from the export table

#include "ORXFunctionList.h"

#endif
