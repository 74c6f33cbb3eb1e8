// A cell is a value in the in-memory model: 16 bytes, the last of which is a tag for the kind of
// value. Texts of up to 14 characters are stored in the cell, longer ones in a buffer that the cell
// shares with the handles read from it.
//
// A cell is plain memory: it is copied as bytes and has no destructor. The owner of cells, an
// instance or an aggregate, releases what they own (ReleaseCell).

#ifndef KOR_CELL_H
#define KOR_CELL_H

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "KORExport.h"
#include "KORUnicodeString.h"
#include "SdaiPrimitiveH.h"
#include "model/Tag.h"

class SdaiAggrInstance;
class SdaiEntityInstance;

namespace kor {

// Fetches what stands in memory some objects after this one: whoever goes through a model asks for
// instances and aggregates about in the order of their creation, in which they stand in memory.
inline void FetchAhead(const void* object) {
    constexpr std::size_t kAhead = 1024;
    __builtin_prefetch(static_cast<const std::byte*>(object) + kAhead);
}

// Access to the internals of texts for the in-memory model.
class TextAccess {
  public:
    using Buffer = KORUnicodeString::Buffer;
    using WideBuffer = KORUnicodeString::WideBuffer;

    // Null for a text stored in place.
    static Buffer* BufferOf(const KORUnicodeString& text) {
        return text.storage_ != Storage::InPlace ? text.buffer_ : nullptr;
    }
    static void Share(Buffer* buffer) { buffer->owners.fetch_add(1, std::memory_order_relaxed); }
    static void Release(Buffer* buffer, bool wide) {
        KORUnicodeString::ReleaseBuffer(buffer, wide ? Storage::Wide : Storage::Shared);
    }
    static Buffer* NewBuffer(std::string_view text) {
        Buffer* buffer = KORUnicodeString::NewBuffer(text.size());
        std::memcpy(buffer->Characters(), text.data(), text.size());
        buffer->Characters()[text.size()] = '\0';
        return buffer;
    }
    static std::string_view NarrowIn(Buffer* buffer, std::uint32_t size) {
        return {buffer->Characters(), size};
    }
    static std::u32string_view WideIn(Buffer* buffer, std::uint32_t size) {
        return {static_cast<WideBuffer*>(buffer)->Characters(), size};
    }
    // A text that shares the buffer.
    static KORUnicodeString TextIn(Buffer* buffer, std::uint32_t size, bool wide) {
        KORUnicodeString text;
        Share(buffer);
        text.size_ = size;
        text.storage_ = wide ? Storage::Wide : Storage::Shared;
        text.buffer_ = buffer;
        return text;
    }
    // Calls visit with the characters as a std::string_view or a std::u32string_view.
    template <class Visit>
    static decltype(auto) Characters(const KORUnicodeString& text, Visit visit) {
        return text.Characters(visit);
    }

  private:
    using Storage = KORUnicodeString::Storage;
};

class Cell {
  public:
    static constexpr std::size_t kInline = 14;

    constexpr Cell() = default;

    // A number, truth value or pointer.
    template <class T>
    static Cell Of(Tag tag, T value) {
        static_assert(sizeof value <= sizeof low_);
        Cell cell;
        std::memcpy(&cell.low_, &value, sizeof value);
        cell.high_ = Head(tag, 0);
        return cell;
    }

    // A text, enumeration item or binary; may allocate.
    static Cell OfText(Tag tag, std::string_view text) {
        if (text.size() > kInline) {
            return InBuffer(tag, TextAccess::NewBuffer(text), text.size());
        }
        Cell cell;
        cell.high_ = Head(tag, text.size());
        // Assembled in registers, since cells are copied whole right after they are created.
        for (std::size_t i = 0; i < text.size(); ++i) {
            const std::uint64_t byte = static_cast<unsigned char>(text[i]);
            (i < 8 ? cell.low_ : cell.high_) |= byte << (8 * (i % 8));
        }
        return cell;
    }
    // The same for an existing text; a long one is shared. Items and binaries are never wide: a
    // wide one is stored in its exchange form.
    static Cell OfText(Tag tag, const KORUnicodeString& text) {
        TextAccess::Buffer* buffer = TextAccess::BufferOf(text);
        const auto size = static_cast<std::size_t>(text.GetLengthInChar());
        const bool copied = text.IsWide() ? tag != Tag::Text : buffer == nullptr || size <= kInline;
        if (copied) return OfText(tag, text.View());
        TextAccess::Share(buffer);
        return InBuffer(tag, buffer, size, text.IsWide());
    }

    Tag GetTag() const { return static_cast<Tag>(high_ >> kTagShift); }

    // The number, truth value or pointer.
    template <class T>
    T Get() const {
        T value;
        std::memcpy(static_cast<void*>(&value), &low_, sizeof value);
        return value;
    }

    // Of a text, enumeration item or binary.
    TextAccess::Buffer* Buffer() const {
        return Length() >= kInWideBuffer ? Get<TextAccess::Buffer*>() : nullptr;
    }
    bool IsWide() const { return Length() == kInWideBuffer; }
    // Of a text that is not wide.
    std::string_view Text() const {
        if (Length() == kInBuffer) return TextAccess::NarrowIn(Buffer(), BufferSize());
        return {reinterpret_cast<const char*>(this), Length()};
    }
    // Calls visit with the characters as a std::string_view or a std::u32string_view.
    template <class Visit>
    decltype(auto) Characters(Visit visit) const {
        return IsWide() ? visit(TextAccess::WideIn(Buffer(), BufferSize())) : visit(Text());
    }
    KORUnicodeString SharedText() const {
        if (Length() < kInWideBuffer) return KORUnicodeString(Text());
        return TextAccess::TextIn(Buffer(), BufferSize(), IsWide());
    }

  private:
    static constexpr int kTagShift = 56;
    static constexpr int kLengthShift = 48;
    static constexpr std::uint64_t kInBuffer = 0xFF;
    static constexpr std::uint64_t kInWideBuffer = 0xFE;

    static constexpr std::uint64_t Head(Tag tag, std::uint64_t length) {
        return static_cast<std::uint64_t>(tag) << kTagShift | length << kLengthShift;
    }
    static Cell InBuffer(Tag tag, TextAccess::Buffer* buffer, std::size_t size, bool wide = false) {
        Cell cell = Of(tag, buffer);
        cell.high_ = Head(tag, wide ? kInWideBuffer : kInBuffer) | size;
        return cell;
    }
    std::uint64_t Length() const { return high_ >> kLengthShift & 0xFF; }
    std::uint32_t BufferSize() const { return static_cast<std::uint32_t>(high_); }

    // A number or pointer, or the first characters of a text.
    std::uint64_t low_ = 0;
    // From the last byte down: the tag; for a text, its length, kInBuffer or kInWideBuffer; then
    // its remaining characters, or its length in the buffer.
    std::uint64_t high_ = 0;
};

static_assert(std::endian::native == std::endian::little,
              "the characters of a cell stand in order");
static_assert(sizeof(Cell) == 16);

struct Domain;
class Model;

// The cell for a value that is stored in a domain (null: any). A number becomes a real if the
// domain is a real, a text becomes an item if it is an enumeration, and a plain value in a select
// gets its defined type if there is only one possibility. Aggregates are copied with their members.
// The cell owns its contents, except for copies of aggregates if a model is given: these belong to
// the model.
KOR_API Cell ToCell(const SdaiPrimitiveH& value, const Domain* domain, Model* model = nullptr);

// A text in a value that would be put where the domain is declared as an item of an enumeration and
// is none; nothing where there is none.
std::optional<std::string> WrongItem(const SdaiPrimitiveH& value, const Domain* domain);

KOR_API void ReleaseCell(const Cell& cell);

// Holds the ownership of a cell's contents until it is taken.
class CellHolder {
  public:
    explicit CellHolder(const Cell& cell) : cell_(cell) {}
    CellHolder(const CellHolder&) = delete;
    CellHolder& operator=(const CellHolder&) = delete;
    ~CellHolder() { ReleaseCell(cell_); }

    const Cell& Get() const { return cell_; }
    Cell Take() {
        const Cell taken = cell_;
        cell_ = Cell();
        return taken;
    }

  private:
    Cell cell_;
};

// A value and the defined type under which it was selected. Shared by the handles and the model
// that hold it.
struct KOR_API TypedValue {
    TypedValue(SdaiString type, SdaiPrimitiveH held);
    ~TypedValue();
    TypedValue(const TypedValue&) = delete;
    TypedValue& operator=(const TypedValue&) = delete;

    void Set(SdaiPrimitiveH held);

    std::atomic<std::uint32_t> owners{1};
    const SdaiString definedType;
    // The value as a handle, into which the conversions of other handles refer, and as a cell,
    // which shares what the handle owns.
    SdaiPrimitiveH value;
    Cell cell;
};

// Access to the internals of handles for the in-memory model.
class HandleAccess {
  public:
    using Kind = SdaiSelectH::Kind;

    static Kind KindOf(const SdaiPrimitiveH& handle) { return handle.value_.kind_; }
    static bool IsSelect(const SdaiPrimitiveH& handle) { return handle.value_.select_; }
    static void MarkSelect(SdaiPrimitiveH& handle, bool select) {
        handle.value_.select_ = select && handle.value_.kind_ != Kind::Unset;
    }
    // The value inside any defined types.
    static const SdaiSelectH& Held(const SdaiPrimitiveH& handle) { return handle.value_.Held(); }
    static Kind KindOf(const SdaiSelectH& select) { return select.kind_; }
    // The text of a string, enumeration item or binary.
    static const SdaiString& TextOf(const SdaiSelectH& select) { return select.text_; }
    static const SdaiString& TextOf(const SdaiPrimitiveH& handle) { return TextOf(Held(handle)); }
    // Null unless the value has a defined type.
    static TypedValue* TypedOf(const SdaiPrimitiveH& handle) {
        return handle.value_.kind_ == Kind::Typed ? handle.value_.typed_ : nullptr;
    }
    static SdaiPrimitiveH OfTyped(TypedValue* typed);
    static SdaiPrimitiveH OfInstance(SdaiEntityInstance* instance) {
        SdaiPrimitiveH handle;
        handle.value_.instance_ = instance;
        handle.value_.kind_ = Kind::Instance;
        return handle;
    }
    static SdaiPrimitiveH OfAggregateOfModel(SdaiAggrInstance* aggregate) {
        SdaiPrimitiveH handle;
        handle.value_.aggregate_ = aggregate;
        handle.value_.kind_ = Kind::ModelAggregate;
        return handle;
    }
    static SdaiPrimitiveH OfText(Kind kind, KORUnicodeString text);
};

// The handle for a cell that is no reference, not marked as a select.
KOR_API SdaiPrimitiveH OtherHandle(const Cell& cell);

// The handle for a cell; `select` is true if its attribute or aggregate has a SELECT type.
inline SdaiPrimitiveH ToHandle(const Cell& cell, bool select) {
    const auto handle = [&cell] {
        if (cell.GetTag() != Tag::Instance) return OtherHandle(cell);
        auto* const instance = cell.Get<SdaiEntityInstance*>();
        // Most often an attribute of it is read next.
        __builtin_prefetch(instance);
        return HandleAccess::OfInstance(instance);
    };
    SdaiPrimitiveH made = handle();
    HandleAccess::MarkSelect(made, select);
    return made;
}
// The same for an attribute of an instance, whose aggregates belong to the model: they are not read
// for their owners, but fetched from memory for what is read next.
inline SdaiPrimitiveH AttributeHandle(const Cell& cell, bool select) {
    if (cell.GetTag() != Tag::Aggregate) return ToHandle(cell, select);
    auto* const aggregate = cell.Get<SdaiAggrInstance*>();
    __builtin_prefetch(aggregate);
    FetchAhead(aggregate);
    SdaiPrimitiveH handle = HandleAccess::OfAggregateOfModel(aggregate);
    HandleAccess::MarkSelect(handle, select);
    return handle;
}

KOR_API std::optional<std::string> FindWrongItem(const SdaiPrimitiveH& value, const Domain* domain);

inline std::optional<std::string> WrongItem(const SdaiPrimitiveH& value, const Domain* domain) {
    using Kind = HandleAccess::Kind;
    switch (HandleAccess::KindOf(value)) {
        case Kind::String:
        case Kind::Enumeration:
        case Kind::Typed:
        case Kind::ModelAggregate:
        case Kind::SharedAggregate: return FindWrongItem(value, domain);
        default: return std::nullopt;
    }
}

}  // namespace kor

#endif
