// The kinds of values in the in-memory model.

#ifndef KOR_TAG_H
#define KOR_TAG_H

#include <cstdint>
#include <initializer_list>

namespace kor {

enum class Tag : std::uint8_t {
    Unset,
    Derived,  // "*" in an exchange file: no value, derived by the schema
    Integer,
    Real,
    Logical,
    Boolean,
    Text,
    Enumeration,
    Binary,
    Instance,
    Aggregate,
    Typed,    // a select value with its defined type
    Pending,  // while a data set is read: a reference to an instance not yet read
};

// A set of kinds.
class TagSet {
  public:
    constexpr TagSet(std::initializer_list<Tag> tags) {
        for (const Tag tag : tags) Add(tag);
    }
    constexpr void Add(Tag tag) { bits_ |= 1U << static_cast<unsigned>(tag); }
    constexpr bool Has(Tag tag) const { return (bits_ >> static_cast<unsigned>(tag) & 1U) != 0; }
    constexpr bool IsWithin(TagSet set) const { return (bits_ & ~set.bits_) == 0; }

  private:
    unsigned bits_ = 0;
};

inline constexpr TagSet kAnyKind{Tag::Unset,   Tag::Derived,  Tag::Integer,   Tag::Real,
                                 Tag::Logical, Tag::Boolean,  Tag::Text,      Tag::Enumeration,
                                 Tag::Binary,  Tag::Instance, Tag::Aggregate, Tag::Typed,
                                 Tag::Pending};

}  // namespace kor

#endif
