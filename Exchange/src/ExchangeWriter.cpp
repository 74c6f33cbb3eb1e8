// The writer of exchange files (ISO 10303-21): one instance a line, in the model's order.

#include "ExchangeWriter.h"

#include <cmath>
#include <cstdlib>
#include <ctime>

#include "Aggregate.h"
#include "Exchange.h"
#include "ExchangeText.h"
#include "TargetFile.h"

namespace exchange {

using kor::Cell;
using kor::Tag;

namespace {

class Writer {
  public:
    // What has been written and not been taken yet.
    std::string text;
    // The first value that an exchange file cannot hold; empty when there was none.
    std::string problem;

    void Instance(const kor::Instance& instance) {
        model_ = instance.Type().model;
        const kor::EntityType& entity = *instance.Type().entity;
        InstanceName(instance);
        text += '=';
        if (entity.IsComplex()) text += '(';
        for (const kor::EntityType::Part& part : entity.Parts()) {
            text += part.name;
            Values(instance.Values().subspan(part.firstSlot, part.slotCount));
        }
        if (entity.IsComplex()) text += ')';
        text += ";\n";
        if (unwritable_ != nullptr && problem.empty()) {
            problem = "#" + std::to_string(instance.Id()) + " has " + unwritable_ +
                      ", which no exchange file can hold";
        }
    }

    void Values(std::span<const Cell> cells) {
        List(cells.size(), [&](std::size_t i) { Value(cells[i]); });
    }

  private:
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

    void Value(const Cell& cell) {
        switch (cell.GetTag()) {
            case Tag::Unset:
            case Tag::Pending: text += '$'; break;
            case Tag::Derived: text += '*'; break;
            case Tag::Integer: AppendInteger(text, cell.Get<long>()); break;
            case Tag::Real:
                if (!std::isfinite(cell.Get<double>())) unwritable_ = "a real that is not finite";
                AppendReal(text, cell.Get<double>());
                break;
            case Tag::Logical:
            case Tag::Boolean: AppendLogical(text, cell.Get<SdaiLogical>()); break;
            case Tag::Text: AppendString(text, cell.Text()); break;
            case Tag::Enumeration: AppendEnumeration(text, cell.Text()); break;
            case Tag::Binary: AppendBinary(text, cell.Text()); break;
            case Tag::Instance: Reference(*cell.Get<SdaiEntityInstance*>()); break;
            case Tag::Aggregate: {
                const SdaiAggrInstance& members = *cell.Get<SdaiAggrInstance*>();
                List(KORAggregateAccess::Count(members),
                     [&](std::size_t i) { Value(KORAggregateAccess::MemberCell(members, i)); });
                break;
            }
            case Tag::Typed: Typed(*cell.Get<KORTypedValue*>()); break;
        }
    }

    // A value with the name of its defined type.
    void Typed(const KORTypedValue& typed) {
        text += typed.definedType.View();
        text += '(';
        const kor::CellHolder value(kor::ToCell(typed.value, nullptr));
        Value(value.Get());
        text += ')';
    }

    const SdaiModel* model_ = nullptr;
    const char* unwritable_ = nullptr;
};

// Writes the exchange file, handing the text over piece by piece: flush(text) empties it. Gives
// what cannot be written, empty when there is nothing of it.
template <class Flush>
std::string Write(const Header& header, const kor::Model& model, Flush flush) {
    constexpr std::size_t kPiece = std::size_t{1} << 16;
    Writer writer;
    writer.text = "ISO-10303-21;\nHEADER;\n";
    for (const HeaderRecord& record : header) {
        writer.text += record.keyword + record.parameters + ";\n";
    }
    writer.text += "ENDSEC;\nDATA;\n";
    model.ForEachInstance([&](const kor::Instance& instance) {
        writer.Instance(instance);
        if (writer.text.size() < kPiece) return;
        flush(writer.text);
        writer.text.clear();
    });
    writer.text += "ENDSEC;\nEND-ISO-10303-21;\n";
    flush(writer.text);
    return writer.problem;
}

// The time now, as an exchange file writes it; that of SOURCE_DATE_EPOCH where it is set, so that
// files can be made again the same.
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

std::string ParametersText(std::span<const Cell> cells) {
    Writer writer;
    writer.Values(cells);
    return writer.text;
}

std::string ToExchangeText(const DataSet& dataSet) {
    std::string whole;
    Write(dataSet.header, *dataSet.model, [&whole](std::string_view text) { whole += text; });
    return whole;
}

bool WriteDataSet(const DataSet& dataSet, const std::string& path, Messages& messages,
                  const WriteOptions& options) {
    return WriteDataSet(dataSet.header, *dataSet.model, path, messages, options);
}

bool WriteDataSet(const Header& header, const kor::Model& model, const std::string& path,
                  Messages& messages, const WriteOptions& options) {
    const auto fill = [&](OutputFile& file) {
        return Write(header, model, [&](std::string_view text) { file.Append(text); });
    };
    return WriteFile(path, options, fill, messages);
}

bool WriteText(std::string_view text, const std::string& path, Messages& messages,
               const WriteOptions& options) {
    const auto fill = [text](OutputFile& file) {
        file.Append(text);
        return std::string();
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
    return {std::move(header), std::make_unique<kor::Model>(std::move(schema))};
}

}  // namespace exchange
