// The writer of exchange files (ISO 10303-21): one instance per line, in the model's order.

#include "ExchangeWriter.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "Exchange.h"
#include "ExchangeText.h"
#include "Files.h"
#include "InstanceTexts.h"
#include "model/Aggregate.h"

namespace exchange {

using kor::Cell;
using kor::Tag;

namespace {

// ---- What the grammar allows where nothing encloses it

bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsWord(std::string_view text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return IsLetter(c) || IsDigit(c); });
}

// In upper case; user-defined types begin with "!".
bool IsKeyword(std::string_view text) {
    if (text.starts_with('!')) text.remove_prefix(1);
    return IsWord(text) && !IsDigit(text.front());
}

// #5, @5, #NAME, @NAME
bool IsExternalName(std::string_view name) {
    return (name.starts_with('#') || name.starts_with('@')) && IsWord(name.substr(1));
}

bool IsBinary(std::string_view digits) {
    return !digits.empty() && digits.front() >= '0' && digits.front() <= '3' &&
           std::all_of(digits.begin(), digits.end(), [](char c) {
               return IsDigit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
           });
}

class Writer {
  public:
    // The text written but not yet taken.
    std::string text;
    // The first value that an exchange file cannot express; empty if there is none.
    std::string problem;

    // `infinite`: whether reals that are not finite may be written, as nan, inf and -inf.
    explicit Writer(const Structure& structure, bool infinite = false) : infinite_(infinite) {
        for (const std::string& reference : structure.references) {
            externals_.insert(ExternalName(reference.substr(0, reference.find('='))));
        }
    }

    // `closed`: the open scope that the instance closes; null if there is none.
    void Instance(const kor::Instance& instance, const Structure::Scope* closed) {
        if (closed != nullptr) {
            text += "ENDSCOPE";
            text += closed->exported;
            text += ' ';
        } else {
            InstanceName(instance);
            text += '=';
        }
        Record(instance);
        text += ";\n";
    }

    // The instance without its name: TYPE(...), or (TYPE(...)TYPE(...)).
    void Record(const kor::Instance& instance) {
        model_ = instance.Type().model;
        const kor::EntityType& entity = *instance.Type().entity;
        if (entity.IsComplex()) text += '(';
        for (const kor::EntityType::Part& part : entity.Parts()) {
            text += part.name;
            Values(instance.Values().subspan(part.firstSlot, part.slotCount));
        }
        if (entity.IsComplex()) text += ')';
        NoteProblem(instance);
    }

    // One value of an instance.
    void ValueOf(const kor::Instance& instance, const Cell& value) {
        model_ = instance.Type().model;
        Value(value, 0);
        NoteProblem(instance);
    }

    void Values(std::span<const Cell> cells) {
        List(cells.size(), [&](std::size_t i) { Value(cells[i], 0); });
    }

  private:
    void NoteProblem(const kor::Instance& instance) {
        if (unwritable_ == nullptr || !problem.empty()) return;
        problem = '#' + std::to_string(instance.Id()) + " has " + unwritable_ +
                  ", which no exchange file can hold";
    }

    template <class Append>
    void List(std::size_t count, Append append) {
        text += '(';
        for (std::size_t i = 0; i < count; ++i) {
            if (i != 0) text += ',';
            append(i);
        }
        text += ')';
    }

    void InstanceName(const SdaiEntityInstance& instance) {
        text += '#';
        AppendInteger(text, static_cast<long>(instance.GetInstanceNameId()));
    }

    void Reference(const SdaiEntityInstance& instance) {
        if (instance.FindEntityInstanceModel() != model_) {
            unwritable_ = "a reference to an instance of another model";
        }
        InstanceName(instance);
    }

    // `depth`: the number of lists and typed values around the value.
    void Value(const Cell& cell, int depth) {
        switch (cell.GetTag()) {
            case Tag::Unset:
            case Tag::Pending: text += '$'; break;
            case Tag::Derived: text += '*'; break;
            case Tag::Integer: AppendInteger(text, cell.Get<long>()); break;
            case Tag::Real:
                if (!infinite_ && !std::isfinite(cell.Get<double>())) {
                    unwritable_ = "a real that is not finite";
                }
                AppendReal(text, cell.Get<double>());
                break;
            case Tag::Logical:
            case Tag::Boolean: AppendLogical(text, cell.Get<SdaiLogical>()); break;
            case Tag::Text:
                cell.Characters([this](auto characters) { AppendString(text, characters); });
                break;
            case Tag::Enumeration:
                if (!IsWord(cell.Text())) unwritable_ = "an enumeration item that is no word";
                AppendEnumeration(text, cell.Text());
                break;
            case Tag::Binary:
                if (!IsBinary(cell.Text())) unwritable_ = "a binary that is none";
                AppendBinary(text, cell.Text());
                break;
            case Tag::Instance: Reference(*cell.Get<SdaiEntityInstance*>()); break;
            case Tag::Aggregate: Members(*cell.Get<SdaiAggrInstance*>(), depth); break;
            case Tag::Typed: Typed(*cell.Get<kor::TypedValue*>(), depth); break;
        }
    }

    // Whether a value may be nested at that depth; if not, "$" is written.
    bool IsTooDeep(int depth) {
        if (depth <= kDeepestNesting) return false;
        unwritable_ = "values nested more than 100 deep";
        text += '$';
        return true;
    }

    void Members(const SdaiAggrInstance& members, int depth) {
        if (IsTooDeep(depth)) return;
        List(kor::AggregateAccess::Count(members), [&](std::size_t i) {
            Value(kor::AggregateAccess::MemberCell(members, i), depth + 1);
        });
    }

    // A value with the name of its defined type.
    void Typed(const kor::TypedValue& typed, int depth) {
        const std::string name = kor::Folded(typed.definedType.View());
        if (!typed.value.exists() && StandsForItself(name)) {
            text += name;
            return;
        }
        if (IsTooDeep(depth)) return;
        if (!IsKeyword(name)) unwritable_ = "a typed value whose type is no name";
        text += name;
        text += '(';
        Value(typed.cell, depth + 1);
        text += ')';
    }

    // An external reference, or the "*" of T(*).
    bool StandsForItself(const std::string& name) {
        if (IsExternalName(name) && IsDigit(name[1]) && !externals_.contains(name)) {
            unwritable_ = "an external reference without an address";
        }
        return name == "*" || IsExternalName(name);
    }

    const bool infinite_;
    std::set<std::string> externals_;  // those with an address
    const SdaiModel* model_ = nullptr;
    const char* unwritable_ = nullptr;
};

// Which scopes open and close at an instance, and where a section begins.
class Layout {
  public:
    Layout(const Structure& structure, const kor::Model& model) : structure_(structure) {
        if (structure.scopes.empty()) return;
        for (const Structure::Scope& scope : structure.scopes) scopes_.push_back(&scope);
        // Of the scopes that open at one place, the outermost comes first; it closes last.
        std::sort(scopes_.begin(), scopes_.end(), [](const auto* a, const auto* b) {
            return a->first != b->first ? a->first < b->first : a->owner > b->owner;
        });
        model.ForEachInstance(
            [this](const kor::Instance& instance) { names_.push_back(instance.Id()); });
    }

    // Writes the text before the instance; returns the scope that the instance closes, or null.
    const Structure::Scope* Before(std::uint64_t instance, std::string& text) {
        for (; section_ < structure_.sections.size() &&
               structure_.sections[section_].first <= instance;
             ++section_) {
            Begin(text);
        }
        if (structure_.sections.empty() && section_++ == 0) text += "DATA;\n";
        for (; next_ < scopes_.size() && scopes_[next_]->first == instance; ++next_) {
            text += '#' + std::to_string(names_[scopes_[next_]->owner]) + "=&SCOPE\n";
            open_.push_back(scopes_[next_]);
        }
        if (open_.empty() || open_.back()->owner != instance) return nullptr;
        const Structure::Scope* closed = open_.back();
        open_.pop_back();
        return closed;
    }

    // Writes the text after the last instance.
    void End(std::string& text) {
        for (; section_ < structure_.sections.size(); ++section_) Begin(text);
        if (section_ != 0) text += "ENDSEC;\n";
    }

  private:
    void Begin(std::string& text) {
        if (section_ != 0) text += "ENDSEC;\n";
        text += "DATA" + structure_.sections[section_].parameters + ";\n";
    }

    const Structure& structure_;
    std::size_t section_ = 0;  // the next one to begin
    std::vector<const Structure::Scope*> scopes_;
    std::size_t next_ = 0;  // the next one to open
    std::vector<const Structure::Scope*> open_;
    std::vector<std::uint64_t> names_;  // of the instances
};

// A section of statements that are kept as written.
void AppendSection(std::string& to, const char* name, const std::vector<std::string>& statements) {
    if (statements.empty()) return;
    to.append(name).append(";\n");
    for (const std::string& statement : statements) to.append(statement).append(";\n");
    to += "ENDSEC;\n";
}

// Writes the exchange file piece by piece: flush(text) empties the text. Returns a description of a
// value that cannot be written; empty if there is none.
template <class Flush>
std::string Write(const Header& header, const Structure& structure, const kor::Model& model,
                  Flush flush) {
    constexpr std::size_t kPiece = std::size_t{1} << 16;
    Writer writer(structure);
    writer.text = "ISO-10303-21;\nHEADER;\n";
    for (const HeaderRecord& record : header) {
        writer.text += record.keyword + record.parameters + ";\n";
    }
    writer.text += "ENDSEC;\n";
    AppendSection(writer.text, "ANCHOR", structure.anchors);
    AppendSection(writer.text, "REFERENCE", structure.references);
    Layout layout(structure, model);
    std::uint64_t index = 0;
    model.ForEachInstance([&](const kor::Instance& instance) {
        writer.Instance(instance, layout.Before(index++, writer.text));
        if (writer.text.size() < kPiece) return;
        flush(writer.text);
        writer.text.clear();
    });
    layout.End(writer.text);
    writer.text += "END-ISO-10303-21;\n";
    flush(writer.text);
    return writer.problem;
}

// The current time in the notation of exchange files, or that of SOURCE_DATE_EPOCH if it is set,
// for reproducible files.
std::string TimeStamp() {
    const char* epoch = std::getenv("SOURCE_DATE_EPOCH");
    const std::time_t time =
        epoch != nullptr ? std::strtoll(epoch, nullptr, 10) : std::time(nullptr);
    std::tm utc{};
    gmtime_r(&time, &utc);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &utc);
    return text;
}

}  // namespace

std::string ExternalName(std::string_view written) {
    const std::size_t first = std::min(written.find_first_not_of('0', 1), written.size() - 1);
    return std::string(written.substr(0, 1)) + std::string(written.substr(first));
}

std::string_view ExternalReference(const SdaiPrimitiveH& value) {
    const kor::TypedValue* typed = kor::HandleAccess::TypedOf(value);
    if (typed == nullptr || typed->value.exists() || !IsExternalName(typed->definedType.View())) {
        return {};
    }
    return typed->definedType.View();
}

std::string ParametersText(std::span<const Cell> cells) {
    Writer writer{Structure()};
    writer.Values(cells);
    return writer.text;
}

class InstanceWriter::Texts : public Writer {
  public:
    using Writer::Writer;
};

InstanceWriter::InstanceWriter(const Structure& structure)
    : texts_(std::make_unique<Texts>(structure, true)) {}
InstanceWriter::~InstanceWriter() = default;

std::string_view InstanceWriter::Record(const kor::Instance& instance) {
    texts_->text.clear();
    texts_->Record(instance);
    return texts_->text;
}

std::string_view InstanceWriter::Value(const kor::Instance& instance, const Cell& value) {
    texts_->text.clear();
    texts_->ValueOf(instance, value);
    return texts_->text;
}

const std::string& InstanceWriter::Problem() const { return texts_->problem; }

std::string ToExchangeText(const DataSet& dataSet, std::string* problem) {
    std::string whole;
    std::string found = Write(dataSet.header, dataSet.structure, *dataSet.model,
                              [&whole](std::string_view text) { whole += text; });
    if (problem != nullptr) *problem = std::move(found);
    return whole;
}

bool WriteDataSet(const DataSet& dataSet, const std::string& path, Messages& messages,
                  const WriteOptions& options) {
    return WriteDataSet(dataSet.header, dataSet.structure, *dataSet.model, path, messages, options);
}

bool WriteDataSet(const Header& header, const Structure& structure, const kor::Model& model,
                  const std::string& path, Messages& messages, const WriteOptions& options) {
    const auto fill = [&](File& file) {
        return Write(header, structure, model, [&](std::string_view text) { file.Append(text); });
    };
    return WriteFile(path, options, fill, messages);
}

Header NewHeader(const kor::Schema& schema, const std::string& name) {
    std::string fileName = "(";
    AppendString(fileName, name);
    fileName += ',';
    AppendString(fileName, TimeStamp());
    fileName += ",(''),(''),'orx','ORXExUtilities','')";
    std::string fileSchema = "((";
    AppendString(fileSchema, kor::Folded(schema.Name().View()));
    fileSchema += "))";
    return {{"FILE_DESCRIPTION", "((''),'2;1')"},
            {"FILE_NAME", std::move(fileName)},
            {"FILE_SCHEMA", std::move(fileSchema)}};
}

DataSet NewDataSet(SchemaPtr schema, const std::string& name) {
    Header header = NewHeader(*schema, name);
    return {std::move(header), std::make_unique<kor::Model>(std::move(schema)), {}};
}

}  // namespace exchange
