// Loading and saving of data sets and the module.

#include "commands/Loading.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "DataSets.h"
#include "Signature.h"
#include "console/Console.h"
#include "console/Display.h"
#include "script/Interrupt.h"
#include "services/Suggestions.h"

namespace host {

namespace {

// NAME=VALUE, in two parts.
struct Named {
    std::string name;
    std::string value;
};

// The name may be omitted if it follows from the value.
Named Split(const std::string& option) {
    if (relational::IsDatabase(option)) return {"", option};
    const std::size_t sign = option.find('=');
    if (sign == std::string::npos || option.find('/') < sign) return {"", option};
    return {option.substr(0, sign), option.substr(sign + 1)};
}

// Shows the progress of reading or saving a data set on the standard error stream, if that is a
// terminal and the work takes longer than a second: bytes of a file, instances of a database.
class Progress {
  public:
    Progress(const char* action, const std::string& file)
        : action_(action),
          file_(file),
          isDatabase_(relational::IsDatabase(file)),
          isTerminal_(isatty(STDERR_FILENO)) {}
    ~Progress() {
        if (shown_) std::cerr << "\r\033[K" << std::flush;
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // `all` is 0 where it is unknown.
    void Show(std::uint64_t done, std::uint64_t all) {
        if (!isTerminal_ || std::chrono::steady_clock::now() < next_) return;
        next_ = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
        shown_ = true;
        std::cerr << '\r' << action_ << ' ' << ReadableName(file_) << ": ";
        if (isDatabase_) {
            std::cerr << done << " instances";
        } else {
            std::cerr << done / 1'000'000 << " MB";
        }
        if (all != 0) std::cerr << " (" << std::min<std::uint64_t>(100, 100 * done / all) << "%)";
        std::cerr << std::flush;
    }

  private:
    const char* const action_;
    const std::string& file_;
    const bool isDatabase_;
    const bool isTerminal_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point next_ =
        std::chrono::steady_clock::now() + std::chrono::seconds(1);
};

exchange::SchemaPtr SchemaNamed(const Session& session, const std::string& name) {
    exchange::SchemaPtr schema = session.schemas.Find(name);
    if (schema == nullptr) {
        Refuse("unknown schema '" + name + "'" + kor::DidYouMean(name, session.schemas.Names()) +
               " (give its EXPRESS file with --schema)");
    }
    return schema;
}

NamedModel NewModel(const Session& session, const std::string& argument) {
    const Named named = Split(argument);
    if (named.name.empty()) Refuse("--new takes NAME=SCHEMA, found '" + argument + "'");
    return {named.name, "", exchange::NewDataSet(SchemaNamed(session, named.value), named.name)};
}

// Whether two names lead to the same file, which need not exist yet. Two may lead to the same
// device.
bool IsSameFile(const std::string& first, const std::string& second) {
    const std::filesystem::path a = relational::FileOf(first);
    const std::filesystem::path b = relational::FileOf(second);
    if (a.empty() || b.empty()) return first == second;
    std::error_code error;
    if (std::filesystem::is_character_file(a, error)) return false;
    if (std::filesystem::equivalent(a, b, error)) return true;
    const auto place = [](const std::filesystem::path& path) {
        std::error_code unknown;
        std::filesystem::path whole = std::filesystem::absolute(path, unknown);
        // A link may be dangling.
        for (int links = 0; links < 40 && std::filesystem::is_symlink(whole, unknown); ++links) {
            whole = whole.parent_path() / std::filesystem::read_symlink(whole, unknown);
        }
        const std::filesystem::path resolved = std::filesystem::weakly_canonical(whole, unknown);
        return unknown ? whole.lexically_normal() : resolved;
    };
    return place(a) == place(b);
}

bool IsStandardInput(const std::string& file) { return file == "-"; }

// What a model is called that is read from there.
std::string ModelNameOf(const Named& source) {
    if (!source.name.empty()) return source.name;
    return IsStandardInput(source.value) ? "stdin" : relational::StemOf(source.value);
}

}  // namespace

std::string TextName(const std::string& file) {
    return IsStandardInput(file) ? "<standard input>" : file;
}

std::string ReadText(const std::string& file) {
    std::string text;
    std::string reason;
    if (!exchange::ReadText(file, text, reason)) {
        Refuse((IsStandardInput(file) ? "the standard input" : file) +
               ": cannot be read: " + reason);
    }
    return text;
}

namespace {

NamedModel ReadModel(const Session& session, const std::string& argument, const Options& chosen) {
    NamedModel model;
    const Named named = Split(argument);
    model.file = relational::ReadableName(named.value);
    model.name = ModelNameOf(named);
    Progress progress("reading", model.file);
    std::error_code error;
    std::uint64_t size = std::filesystem::file_size(model.file, error);
    if (error) size = 0;
    exchange::ReadOptions options;
    options.lenient = chosen.lenient;
    options.threads = chosen.threads;
    if (!chosen.as.empty()) options.schema = SchemaNamed(session, chosen.as);
    options.progress = [&](std::uint64_t read) {
        ThrowIfInterrupted();
        progress.Show(read, size);
    };
    exchange::Messages messages;
    model.dataSet = IsStandardInput(model.file)
                        ? exchange::ParseDataSet(ReadText(model.file), TextName(model.file),
                                                 session.schemas, options, messages)
                        : relational::Open(named.value, session.schemas, options, messages);
    Tell(messages);
    return model;
}

}  // namespace

void CheckTargets(const Options& options) {
    struct Source {
        std::string file;
        std::string model;  // empty for a schema or a script
    };
    std::vector<Source> sources;
    for (const std::string& schema : options.schemas) sources.push_back({schema, ""});
    for (const Options::Model& model : options.models) {
        if (model.isNew) continue;
        const Named named = Split(model.argument);
        sources.push_back({named.value, ModelNameOf(named)});
    }
    if (!options.script.empty()) sources.push_back({options.script, ""});
    const auto isInput = [](const Source& source) { return IsStandardInput(source.file); };
    if (std::count_if(sources.begin(), sources.end(), isInput) > 1) {
        Refuse("the standard input (-) can be read once");
    }
    std::erase_if(sources, isInput);
    std::vector<std::string> targets;
    // A model may be saved to the file it was read from, even if another was read from it, too.
    const auto isInputOfAnother = [&](const std::string& target, const std::string& model) {
        bool isRead = false;
        for (const Source& source : sources) {
            if (!IsSameFile(source.file, target)) continue;
            if (!model.empty() && source.model == model) return false;
            isRead = true;
        }
        return isRead;
    };
    const auto add = [&](const std::string& target, const std::string& model) {
        if (isInputOfAnother(target, model)) {
            Refuse(target + ": is read, and not to be overwritten");
        }
        for (const std::string& other : targets) {
            if (IsSameFile(other, target)) Refuse(target + ": two results cannot go into one file");
        }
        targets.push_back(target);
    };
    for (const std::string& save : options.saves) {
        const Named named = Split(save);
        add(named.value, named.name);
    }
    for (const std::string& target : {options.trace, options.output}) {
        if (!target.empty() && target != "-") add(target, "");
    }
}

void AddModel(Session& session, const Options::Model& model, const Options& options) {
    NamedModel loaded = model.isNew ? NewModel(session, model.argument)
                                    : ReadModel(session, model.argument, options);
    if (session.Find(loaded.name) != nullptr) {
        Refuse("two models are named '" + loaded.name + "' (name one with NAME=...)");
    }
    session.Add(std::move(loaded));
}

void Load(Session& session, const Options& options) {
    for (const std::string& file : options.schemas) {
        exchange::Messages messages;
        std::vector<exchange::SchemaPtr> schemas =
            IsStandardInput(file) ? exchange::ParseSchemas(ReadText(file), TextName(file), messages)
                                  : exchange::ReadSchemas(file, messages);
        for (exchange::SchemaPtr& schema : schemas) {
            session.schemas.Add(std::move(schema));
        }
        Tell(messages);
    }
    for (const Options::Model& model : options.models) {
        AddModel(session, model, options);
    }
}

void CheckFunctions(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        if (orx::FindExport(name) != nullptr) continue;
        Refuse("unknown function '" + name + "'" + kor::DidYouMean(name, calls::FunctionNames()));
    }
}

void StartTrace(TraceView& trace, const Options& options) {
    CheckFunctions(options.traceOnly);
    trace.ShowOnly(options.traceOnly);
    trace.ShowDepth(options.traceDepth);
    const bool filtered = !options.traceOnly.empty() || options.traceDepth != 0;
    if (options.trace.empty() && !filtered) return;
    if (!trace.Start(options.trace.empty() ? "-" : options.trace)) {
        Refuse(options.trace + ": the trace cannot be written");
    }
}

std::unique_ptr<calls::Module> LoadModule(const Options& options) {
    try {
        return std::make_unique<calls::Module>(options.module);
    } catch (const std::runtime_error& error) {
        Refuse(std::string("the module cannot be loaded: ") + error.what());
    }
}

void CheckSave(const Session& session, const std::string& save) {
    const Named named = Split(save);
    if (named.name.empty()) Refuse("--save takes NAME=FILE, found '" + save + "'");
    if (session.Find(named.name) == nullptr) {
        Refuse("unknown model '" + named.name + "'" + session.KnownModels());
    }
}

void SaveDataSet(const exchange::DataSet& dataSet, const std::string& target, bool inPlace) {
    const std::string readable = relational::ReadableName(target);
    Progress progress("saving", readable);
    exchange::Messages messages;
    relational::Save(dataSet, target, messages,
                     {inPlace, [&progress](std::uint64_t written, std::uint64_t all) {
                          ThrowIfInterrupted();
                          progress.Show(written, all);
                      }});
    Tell(messages);
}

void SaveModel(Session& session, const std::string& save, bool inPlace) {
    CheckSave(session, save);
    const Named named = Split(save);
    SaveDataSet(session.Find(named.name)->dataSet, named.value, inPlace);
    session.NoteSaved(named.name);
}

void CheckSaves(const Session& session, const Options& options) {
    for (const std::string& save : options.saves) CheckSave(session, save);
}

void Save(Session& session, const Options& options) {
    for (const std::string& save : options.saves) SaveModel(session, save, options.inPlace);
}

}  // namespace host
