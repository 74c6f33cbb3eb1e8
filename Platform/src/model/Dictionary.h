// The dictionary of the in-memory model: schemas, entity types, attributes and the domains of their
// values. It is created from declarations (plain data, as read from an EXPRESS schema, ISO
// 10303-11) in one step that resolves every name, and is immutable afterwards.

#ifndef KOR_DICTIONARY_H
#define KOR_DICTIONARY_H

#include <cstdint>
#include <deque>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "KORExport.h"
#include "SdaiModel.h"
#include "model/NameTable.h"
#include "model/Place.h"
#include "model/Tag.h"

namespace kor {

// ---- Declarations

// What a type finally is. The simple types come first.
enum class Base : std::uint8_t {
    Integer,
    Real,
    Number,
    String,
    Boolean,
    Logical,
    Binary,
    Generic,
    Enumeration,
    Entity,
    Select,
    Aggregate
};

// The properties of an aggregate type apart from the type of its members.
struct AggregateForm {
    enum class Kind : std::uint8_t { Array, Bag, List, Set };
    static constexpr std::uint64_t kUnbounded = std::numeric_limits<std::uint64_t>::max();

    Kind kind = Kind::List;
    // The allowed number of members. A bound that is not a number does not limit it.
    std::uint64_t least = 0;
    std::uint64_t most = kUnbounded;
    bool unique = false;           // no two members are equal; always true for a set
    bool optionalMembers = false;  // an array's members may be unset

    bool IsOrdered() const { return kind == Kind::Array || kind == Kind::List; }
};

// A type as written: a simple type, the name of a type, or an aggregate of a type.
struct TypeExpression {
    enum class Kind : std::uint8_t { Simple, Named, Aggregate } kind = Kind::Simple;
    Base simple = Base::Generic;  // of a simple type
    std::string name;
    AggregateForm form;
    std::shared_ptr<const TypeExpression> element;
    Place place;
};

struct AttributeDeclaration {
    std::string name;
    TypeExpression type;
    bool optional = false;
    // SELF\entity.attribute: narrows the domain of an inherited attribute and may rename it.
    std::string redeclaredEntity;
    std::string redeclaredAttribute;
    bool derived = false;  // declared in DERIVE
    Place place;

    bool Redeclares() const { return !redeclaredAttribute.empty(); }
};

struct EntityDeclaration {
    std::string name;
    std::vector<std::string> supertypes;
    std::vector<AttributeDeclaration> attributes;  // explicit ones and redeclared derived ones
    Place place;
    bool abstract = false;  // has no instances but those of its subtypes
};

// A defined type: another name for a type, an enumeration, or a choice of named types.
struct TypeDeclaration {
    enum class Kind : std::uint8_t { Alias, Enumeration, Select } kind = Kind::Alias;
    std::string name;
    TypeExpression alias;
    std::vector<std::string> members;  // of a select or an enumeration
    std::string basedOn;               // the select or enumeration that it extends
    Place place;
};

struct SchemaDeclaration {
    std::string name;
    std::vector<EntityDeclaration> entities;
    std::vector<TypeDeclaration> types;
};

struct Diagnostic {
    Place place;
    std::string message;
};

// ---- Resolved declarations

class EntityType;

// The set of values allowed somewhere. Domains belong to their schema and are compared by address.
struct KOR_API Domain {
    Base base = Base::Generic;
    TagSet admitted = kAnyKind;                                  // the kinds of values allowed
    const Domain* element = nullptr;                             // of an aggregate
    AggregateForm form;                                          // of an aggregate
    const EntityType* entity = nullptr;                          // of an entity
    std::vector<std::pair<std::string, const Domain*>> choices;  // of a select: its defined types,
                                                                 // in upper case, selects resolved
    std::vector<const EntityType*> entities;                     // of a select: its entity types
    std::vector<std::string>
        items;  // of an enumeration, in upper case and sorted; empty if not declared

    bool IsSelect() const { return base == Base::Select; }

    // The kinds of values that the base (and, of a select, the choices) allows.
    TagSet Admitted() const;

    // Whether the word is allowed as an enumeration item, ignoring case. If no enumeration with
    // items is declared, every word is.
    bool AdmitsItem(std::string_view word) const;

    // The domain of the defined type under which a select value was selected; null if the name is
    // not one of the choices.
    const Domain* Choice(std::string_view definedType) const;
};

class Attribute final : public SdaiAttribute {
  public:
    Attribute(SdaiString name, const Domain* ofDomain, bool isOptional)
        : SdaiAttribute(std::move(name)),
          folded(Folded(Name().View())),
          domain(ofDomain),
          optional(isOptional) {}

    const std::string folded;
    const Domain* const domain;
    const bool optional;
};

// One value of an instance: the attribute, and how the entity type redeclares it.
struct Slot {
    const Attribute* attribute = nullptr;  // null in an undeclared type
    const Domain* domain = nullptr;        // narrowed if redeclared; null: any value
    bool derived = false;                  // redeclared as derived: written as "*", has no value
    bool optional = true;                  // may be unset

    bool IsSelect() const { return domain != nullptr && domain->IsSelect(); }
};

// An entity type, several at once (a complex type), or a type that the schema does not declare. The
// values of its instances are stored in slots: those of the supertypes first, depth first, in the
// order of SUBTYPE OF, each supertype once; for a complex type, those of each part in turn, in the
// order of an exchange file (ISO 10303-21).
class KOR_API EntityType final : public SdaiEntity {
  public:
    // A part of a complex type; any other type has itself as its only part.
    struct Part {
        std::string name;
        std::size_t firstSlot;
        std::size_t slotCount;
    };

    const std::vector<Slot>& Slots() const { return slots_; }
    // Slots that the type does not inherit.
    std::span<const Slot> OwnSlots() const {
        return std::span<const Slot>(slots_).subspan(firstOwnSlot_);
    }
    const std::vector<Part>& Parts() const { return parts_; }
    bool IsComplex() const { return complex_; }
    bool IsDeclared() const { return declared_; }
    // Whether the schema allows no instances but those of subtypes.
    bool IsAbstract() const { return abstract_; }
    const std::string& FoldedName() const { return folded_; }
    // The type's index among the entity types of its schema or, if undeclared, of its model.
    std::size_t Number() const { return number_; }

    // The slot of an attribute. The last attribute declared under a name wins over inherited ones.
    template <class Name>
    Index SlotOf(const Name& attribute) const {
        return attributes_.Find(attribute);
    }

    // Whether the type is the named type or a subtype of it.
    template <class Name>
    bool IsKindOf(const Name& name) const {
        return kinds_.Find(name).has_value();
    }

    // The type itself and its supertypes.
    const std::vector<const EntityType*>& Lineage() const { return lineage_; }

    std::vector<std::string> AttributeNames() const;

    // Creates a complex type from its parts, declared or undeclared types in alphabetical order.
    static std::unique_ptr<EntityType> MakeComplex(const std::vector<const EntityType*>& parts,
                                                   std::size_t number);

    // Creates an undeclared type with that many values.
    static std::unique_ptr<EntityType> MakeUndeclared(std::string_view foldedName,
                                                      std::size_t slotCount, std::size_t number);

  private:
    friend class Schema;
    EntityType(SdaiString name, bool declared)
        : SdaiEntity(std::move(name)), folded_(Folded(Name().View())), declared_(declared) {}

    // Another name of an attribute, from a redeclaration.
    struct Renamed {
        std::string name;  // in upper case
        const Attribute* attribute;
    };

    // The slots of the attributes while a type is being created.
    using Places = std::unordered_map<const Attribute*, std::size_t>;

    void AddKind(const EntityType& kind);
    void AddSlot(const Slot& slot, Places& places);
    void InheritFrom(const EntityType& supertype, Places& places);
    void AddNames(const Places& places);

    std::string folded_;
    bool declared_;
    bool abstract_ = false;
    bool complex_ = false;
    std::size_t number_ = 0;
    std::vector<Slot> slots_;
    std::size_t firstOwnSlot_ = 0;  // slots before it are inherited
    std::vector<Part> parts_;
    std::vector<const EntityType*> lineage_;
    NameTable attributes_;
    NameTable kinds_;
    std::deque<Renamed> renamed_;
};

class KOR_API Schema final : public SdaiSchema {
  public:
    // Resolves the declarations. On errors, returns null and appends them to `errors`.
    static std::shared_ptr<const Schema> Make(const SchemaDeclaration& declaration,
                                              std::vector<Diagnostic>& errors);

    template <class Name>
    const EntityType* FindEntity(const Name& name) const {
        const Index index = entityTable_.Find(name);
        return index ? entities_[*index] : nullptr;
    }

    // The entity types in the order of declaration.
    const std::vector<const EntityType*>& Entities() const { return entities_; }

    // The attribute names of the schema in upper case, and the index of one of them.
    std::size_t AttributeNameCount() const { return attributeNames_.size(); }
    std::string_view AttributeName(std::size_t number) const { return attributeNames_[number]; }
    template <class Name>
    Index AttributeNumber(const Name& name) const {
        return attributeTable_.Find(name);
    }

    std::vector<std::string> EntityNames() const;

  private:
    class Resolver;
    explicit Schema(SdaiString name) : SdaiSchema(std::move(name)) {}

    std::vector<std::unique_ptr<EntityType>> ownedEntities_;
    std::vector<const EntityType*> entities_;
    std::deque<Attribute> attributes_;
    std::deque<Domain> domains_;
    std::deque<std::string> typeNames_;
    NameTable entityTable_;
    NameTable typeTable_;
    NameTable attributeTable_;
    std::vector<std::string_view> attributeNames_;
};

}  // namespace kor

#endif
