// The writer of exchange files (ISO 10303-21): one instance a line, in the model's order.

#include "ExchangeWriter.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>

#include "Aggregate.h"
#include "Exchange.h"
#include "ExchangeText.h"

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

// ---- Files

// A file that is being written. What goes wrong first is kept.
class Output {
  public:
    // A descriptor, or -1 and the reason in errno.
    explicit Output(int descriptor) : descriptor_(descriptor) {
        if (descriptor_ < 0) error_ = errno;
    }
    ~Output() { Close(); }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    void Append(std::string_view rest) {
        while (error_ == 0 && !rest.empty()) {
            const ssize_t count = write(descriptor_, rest.data(), rest.size());
            if (count >= 0) {
                rest.remove_prefix(static_cast<std::size_t>(count));
            } else if (errno != EINTR) {
                error_ = errno;
            }
        }
    }

    void Sync() {
        if (error_ == 0 && fsync(descriptor_) != 0) error_ = errno;
    }
    void SetMode(mode_t mode) {
        if (error_ == 0 && fchmod(descriptor_, mode) != 0) error_ = errno;
    }
    void Close() {
        if (descriptor_ >= 0 && close(descriptor_) != 0 && error_ == 0) error_ = errno;
        descriptor_ = -1;
    }
    int Error() const { return error_; }

  private:
    int descriptor_;
    int error_ = 0;
};

// A file that takes the target's place once it is whole. Where the system allows it the file has no
// name until then, so that nothing is left behind however the program ends.
class Replacement {
  public:
    explicit Replacement(std::string target) : target_(std::move(target)) {
        const std::string folder = std::filesystem::path(target_).parent_path().string();
        // The name is given through /proc.
        if (access(kDescriptors, X_OK) == 0) {
            descriptor_ = open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
        }
        if (descriptor_ >= 0) return;
        name_ = target_ + ".XXXXXX";
        descriptor_ = mkostemp(name_.data(), O_CLOEXEC);
        if (descriptor_ < 0) name_.clear();
    }
    ~Replacement() {
        if (!name_.empty()) unlink(name_.c_str());
    }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    // -1 when the file cannot be made; the reason is in errno.
    int Descriptor() const { return descriptor_; }

    // To be called while the descriptor is open. Gives 0 or the error.
    int Replace() {
        if (name_.empty() && !GiveName()) return errno;
        if (rename(name_.c_str(), target_.c_str()) != 0) return errno;
        name_.clear();
        return 0;
    }

  private:
    static constexpr const char* kDescriptors = "/proc/self/fd/";

    // A link cannot take the place of a file, only a rename can.
    bool GiveName() {
        const std::string file = kDescriptors + std::to_string(descriptor_);
        for (int number = getpid();; ++number) {
            std::string name = target_ + '.' + std::to_string(number);
            if (linkat(AT_FDCWD, file.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0) {
                name_ = std::move(name);
                return true;
            }
            if (errno != EEXIST) return false;
        }
    }

    std::string target_;
    int descriptor_ = -1;
    std::string name_;  // of the file now; empty while it has none
};

// Why writing failed; empty when it did not.
std::string Reason(int error) { return error != 0 ? std::strerror(error) : ""; }

// Lets write(output) write to a device or pipe as it is, to a file through a temporary one. Gives
// the reason of a failure, which may be one that `write` gives.
template <class Write>
std::string WriteFile(const std::string& path, Write write) {
    struct stat status {};
    const bool exists = stat(path.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) return Reason(EISDIR);
    if (exists && !S_ISREG(status.st_mode)) {
        Output output(open(path.c_str(), O_WRONLY | O_CLOEXEC));
        const std::string problem = write(output);
        output.Close();
        return output.Error() != 0 ? Reason(output.Error()) : problem;
    }
    // A link stays; the file that it leads to is replaced.
    std::error_code ignored;
    const std::filesystem::path canonical = std::filesystem::weakly_canonical(path, ignored);
    const std::string target = canonical.empty() ? path : canonical.string();
    if (exists && access(target.c_str(), W_OK) != 0) return Reason(errno);
    Replacement replacement(target);
    Output output(replacement.Descriptor());
    if (output.Error() != 0) return Reason(output.Error());
    const mode_t mask = umask(0);
    umask(mask);
    output.SetMode(exists ? status.st_mode & 0777 : 0666 & ~mask);
    const std::string problem = write(output);
    output.Sync();
    if (output.Error() != 0) return Reason(output.Error());
    return problem.empty() ? Reason(replacement.Replace()) : problem;
}

// Whether writing went well; tells the reason when it did not.
bool Told(Messages& messages, const std::string& path, const std::string& reason) {
    if (!reason.empty()) messages.AddError({path, 0, 0, "cannot be written: " + reason});
    return reason.empty();
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

bool WriteDataSet(const DataSet& dataSet, const std::string& path, Messages& messages) {
    return WriteDataSet(dataSet.header, *dataSet.model, path, messages);
}

bool WriteDataSet(const Header& header, const kor::Model& model, const std::string& path,
                  Messages& messages) {
    return Told(messages, path, WriteFile(path, [&](Output& output) {
                    return Write(header, model,
                                 [&](std::string_view text) { output.Append(text); });
                }));
}

bool WriteText(std::string_view text, const std::string& path, Messages& messages) {
    return Told(messages, path, WriteFile(path, [text](Output& output) {
                    output.Append(text);
                    return std::string();
                }));
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
