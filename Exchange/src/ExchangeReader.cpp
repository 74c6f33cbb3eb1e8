// The reader of exchange files (ISO 10303-21): the header and the sections.
//
// The file is read in one pass. If instances are missing at the end, a second pass finds the
// references to them.

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "Exchange.h"
#include "ExchangeLexer.h"
#include "ExchangeWriter.h"
#include "InstanceReader.h"
#include "Problems.h"
#include "Quoted.h"
#include "SecondHalf.h"
#include "services/Suggestions.h"

namespace exchange {

namespace {

class Reader {
  public:
    Reader(Source& source, const std::string& name, const SchemaCatalog& schemas,
           const ReadOptions& options, Messages& messages)
        : source_(source),
          name_(name),
          schemas_(schemas),
          options_(options),
          messages_(messages),
          problems_(name, options.lenient, messages),
          lexer_(source, problems_, options.longestText),
          instances_(lexer_, problems_) {
        if (!options.progress) return;
        lexer_.TellProgress([this](std::uint64_t read) { TellProgress(read); });
    }

    DataSet Read() {
        try {
            ReadFile();
        } catch (const SyntaxError& error) {
            problems_.Report(error.place, error.text);
        } catch (const EndsEarly&) {
        }
        if (!source_.error.empty()) messages_.AddError({name_, 0, 0, source_.error});
        instances_.ReleaseValues();
        if (problems_.InData() && (complete_ || options_.lenient)) SettleReferences();
        if (messages_.ErrorCount() != 0) dataSet_.model.reset();
        return std::move(dataSet_);
    }

  private:
    // The end of the input follows an error that was already reported.
    struct EndsEarly {};

    // ---- Sections

    void ReadFile() {
        if (lexer_.AtEnd()) lexer_.Fail({1, 1}, "the file is empty");
        lexer_.SkipByteOrderMark();
        if (!lexer_.TakeWord("ISO-10303-21")) {
            lexer_.Fail(lexer_.Here(),
                        "this is no exchange file: it does not begin with ISO-10303-21;");
        }
        lexer_.Expect(';');
        lexer_.ExpectWord("HEADER");
        lexer_.Expect(';');
        Header();
        dataSet_.structure.sections.clear();
        if (lexer_.TakeWord("ANCHOR")) Anchors();
        if (lexer_.TakeWord("REFERENCE")) References();
        while (lexer_.TakeWord("DATA")) DataSection();
        lexer_.ExpectWord("END-ISO-10303-21");
        lexer_.Expect(';');
        complete_ = true;
        for (lexer_.Skip(); lexer_.TakeWord("SIGNATURE"); lexer_.Skip()) {
            problems_.Warn(lexer_.Here(),
                           "a signature is not kept: it does not hold for what is written");
            SkipSection();
        }
        lexer_.Skip();
        if (!lexer_.AtEnd()) {
            problems_.Warn(lexer_.Here(), "what follows the end of the exchange file is skipped");
        }
    }

    // Skips past ENDSEC, the end of a section whose content is not needed.
    void SkipSection() {
        const Place start = lexer_.Here();
        for (;;) {
            lexer_.Skip();
            if (lexer_.AtEnd()) lexer_.Fail(start, "a section without ENDSEC;");
            const char c = lexer_.Peek();
            if (c == '\'') {
                lexer_.SkipPast('\'');
            } else if (c == '<') {
                lexer_.SkipPast('>');  // an address
            } else if (lexer_.TakeWord("ENDSEC")) {
                if (lexer_.TakeIf(';')) return;
            } else if (Is(c, kLetter | kDigit)) {
                lexer_.SkipWord();
            } else {
                lexer_.Advance();
            }
        }
    }

    // <name>=value{tag:value}, each kept as written. The instances that they refer to must exist in
    // the end.
    void Anchors() {
        lexer_.Expect(';');
        while (!lexer_.TakeWord("ENDSEC")) {
            lexer_.Skip();
            const Place place = lexer_.Here();
            std::string anchor = lexer_.TakeStatement();
            const std::size_t name = anchor.find('>');
            if (!anchor.starts_with('<') || anchor.substr(name + 1, 1) != "=") {
                lexer_.Fail(place, "an anchor is <NAME>=VALUE;");
            }
            dataSet_.structure.anchors.push_back(std::move(anchor));
        }
        lexer_.Expect(';');
    }

    // #5=<address>, @5=<address>
    void References() {
        lexer_.Expect(';');
        while (!lexer_.TakeWord("ENDSEC")) {
            lexer_.Skip();
            const Place place = lexer_.Here();
            std::string reference = lexer_.TakeStatement();
            const std::size_t sign = reference.find('=');
            const std::string name = reference.substr(0, sign);
            if ((!name.starts_with('#') && !name.starts_with('@')) || name.size() == 1 ||
                name.find_first_not_of("0123456789", 1) != std::string::npos ||
                reference.substr(sign + 1, 1) != "<" || !reference.ends_with('>')) {
                lexer_.Fail(place, "a reference is #NUMBER=<ADDRESS>; or @NUMBER=<ADDRESS>;");
            }
            instances_.AddExternal(ExternalName(name));
            dataSet_.structure.references.push_back(std::move(reference));
        }
        lexer_.Expect(';');
    }

    // Calls visit(name, id) for each name of an instance of this file in an anchor or in the names
    // that a scope exports; `name` is the part of the text.
    template <class Visit>
    void ForEachName(std::string_view text, Visit visit) {
        char end = '\0';  // the end of the current string or address
        for (std::size_t i = 0; i < text.size(); ++i) {
            const char c = text[i];
            if (end != '\0') {
                if (c == end) end = '\0';
            } else if (c == '\'' || c == '<') {
                end = c == '<' ? '>' : c;
            } else if (c == '#') {
                const std::size_t after = text.find_first_not_of("0123456789", i + 1);
                const std::string_view name = text.substr(i, after - i);
                if (name.size() == 1 || instances_.IsExternal(ExternalName(name))) {
                    continue;
                }
                visit(name, lexer_.IdOf(name.substr(1)));
            }
        }
    }

    // Gives the instances with names that are too large others, also where anchors and scopes name
    // them.
    void Renumber() {
        std::map<std::uint64_t, std::string> names;
        for (const auto& [instance, place] : instances_.GreatlyNamedOnes()) {
            const std::uint64_t before = kor::Instance::Of(*instance).Id();
            const std::string name = '#' + std::to_string(Model().MoveToFreeId(*instance));
            problems_.Warn(place, "an instance name beyond " +
                                      std::to_string(kor::Model::kLargestId) + ": it is " + name +
                                      " now");
            names.emplace(before, name);
        }
        if (names.empty()) return;
        const auto rename = [&](std::string& text) {
            std::string renamed;
            const char* from = text.data();
            ForEachName(text, [&](std::string_view name, std::uint64_t id) {
                const auto found = names.find(id);
                if (found == names.end()) return;
                renamed.append(from, name.data()).append(found->second);
                from = name.data() + name.size();
            });
            text = renamed.append(from, std::as_const(text).data() + text.size());
        };
        for (std::string& anchor : dataSet_.structure.anchors) rename(anchor);
        for (Structure::Scope& scope : dataSet_.structure.scopes) rename(scope.exported);
    }

    void Header() {
        // The header's values are not part of the model; this model holds them while they are read.
        static const SchemaPtr kNoSchema = [] {
            std::vector<kor::Diagnostic> errors;
            return kor::Schema::Make({}, errors);
        }();
        dataSet_.model = std::make_unique<kor::Model>(kNoSchema);
        instances_.Into(Model());
        SchemaPtr schema;
        while (!lexer_.TakeWord("ENDSEC")) {
            lexer_.Skip();
            const Place place = lexer_.Here();
            std::string keyword(lexer_.Keyword());
            lexer_.Expect('(');
            const std::span<const kor::Cell> values = instances_.Parameters();
            lexer_.Expect(';');
            if (keyword == "FILE_SCHEMA") schema = SchemaOf(place, values);
            dataSet_.header.push_back({std::move(keyword), ParametersText(values)});
            instances_.ReleaseValues();
        }
        lexer_.Expect(';');
        if (schema == nullptr) schema = options_.schema;
        if (schema == nullptr) lexer_.Fail(lexer_.Here(), "the header has no FILE_SCHEMA");
        dataSet_.model = std::make_unique<kor::Model>(std::move(schema));
        instances_.Into(Model());
        problems_.EnterData();
    }

    // The schema in the parameters of FILE_SCHEMA: the first in the list, up to its first blank.
    SchemaPtr SchemaOf(Place place, std::span<const kor::Cell> values) {
        if (options_.schema != nullptr) return options_.schema;
        const SdaiPrimitiveH list = values.empty() ? SdaiPrimitiveH() : ToHandle(values[0], false);
        const SdaiAggrInstance* names = list;
        const SdaiPrimitiveH first = names != nullptr ? names->GetMember(0) : SdaiPrimitiveH();
        const std::string_view whole = TextOf(first).View();
        const std::string name(whole.substr(0, whole.find(' ')));
        if (name.empty()) lexer_.Fail(place, "FILE_SCHEMA names no schema");
        SchemaCatalog::ForFile found = schemas_.FindForFile(name);
        if (found.schema == nullptr) {
            lexer_.Fail(place, "unknown schema " + Quoted(name) +
                                   kor::DidYouMean(name, schemas_.Names()) +
                                   " (give its EXPRESS file with --schema)");
        }
        if (!found.warning.empty()) problems_.Warn(place, std::move(found.warning));
        return std::move(found.schema);
    }

    void DataSection() {
        Structure::Section section{"", Model().InstanceCount()};
        if (lexer_.TakeIf('(')) {
            section.parameters = ParametersText(instances_.Parameters());
            instances_.ReleaseValues();
        }
        if (dataStart_ == 0) dataStart_ = lexer_.Now().offset;
        dataSet_.structure.sections.push_back(std::move(section));
        lexer_.Expect(';');
        BeginSecondHalf();
        for (;;) {
            try {
                if (second_ != nullptr) MeetSecondHalf();
                if (lexer_.TakeIf('#')) {
                    instances_.Instance();
                } else if (lexer_.TakeWord("ENDSEC")) {
                    lexer_.Expect(';');
                    return;
                } else {
                    lexer_.FailExpecting("an instance or ENDSEC");
                }
            } catch (const SyntaxError& error) {
                problems_.Report(error.place, error.text);
                for (const std::uint64_t id : instances_.TakeBroken()) broken_.insert(id);
                const std::uint64_t from = lexer_.Now().offset;
                lexer_.SkipStatement();
                skipped_.push_back({from, lexer_.Now()});
                if (lexer_.AtEnd()) throw EndsEarly();
            }
        }
    }

    // ---- The second half

    void BeginSecondHalf() {
        if (std::exchange(begun_, true)) return;
        const std::uint64_t size = source_.Size();
        const std::uint64_t here = lexer_.Now().offset;
        const std::size_t threads =
            options_.threads != 0 ? options_.threads : std::thread::hardware_concurrency();
        constexpr std::uint64_t kLeast = std::uint64_t{1} << 20;
        std::uint64_t from = here + (size - std::min(here, size)) / 2;
        if (options_.secondHalf.has_value()) {
            from = *options_.secondHalf;
        } else if (threads < 2 || size < kLeast) {
            return;
        }
        second_ =
            SecondHalf::Begin(source_, from, name_, options_, Model().SharedSchema(), instances_);
    }

    // The first half reads ahead into the second, and a second half that is not kept is read again:
    // what is reported counts each byte once and never decreases.
    void TellProgress(std::uint64_t read) {
        if (second_ != nullptr) read = std::min(read, second_->Start()) + second_->Progress();
        progress_ = std::max(progress_, read);
        options_.progress(progress_);
    }

    // At the start of a statement: if the second half starts here, continues after it.
    void MeetSecondHalf() {
        lexer_.Skip();
        const Input::Position here = lexer_.Now();
        if (here.offset < second_->Start()) return;
        const std::unique_ptr<SecondHalf> second = std::move(second_);
        if (here.offset != second->Start()) return;
        kor::Model* const model = second->Wait();
        if (model == nullptr || !Model().TakeOver(*model)) return;
        second->TellWarnings(here, messages_);
        lexer_.GoTo(second->End(here));
    }

    // ---- References

    void SettleReferences() {
        std::vector<std::uint64_t> missing = Model().SettleReferences();
        dataSet_.structure.scopes = instances_.TakeScopes();
        std::erase_if(dataSet_.structure.anchors, [&](const std::string& anchor) {
            const std::size_t before = missing.size();
            ForEachName(anchor, [&](std::string_view, std::uint64_t id) {
                if (Model().Find(id) == nullptr) missing.push_back(id);
            });
            return missing.size() != before;
        });
        std::sort(missing.begin(), missing.end());
        // An instance that refers to a broken one is valid itself.
        if (!options_.lenient)
            std::erase_if(missing, [&](auto id) { return broken_.contains(id); });
        Renumber();
        if (missing.empty()) return;
        // Their places are not stored while reading, since valid files do not need them.
        lexer_.TellProgress(nullptr);
        lexer_.GoTo({});
        FindReferences(missing);
    }

    // Reads what the first pass has read, and nothing else, for the places of references.
    void FindReferences(const std::vector<std::uint64_t>& missing) {
        std::set<std::uint64_t> unseen(missing.begin(), missing.end());
        const auto tell = [&](Place place, std::uint64_t id) {
            problems_.Report(place, "there is no instance " + lexer_.NameOf(id));
        };
        for (;;) {
            try {
                SkipWhatWasSkipped();
                if (lexer_.AtEnd() || lexer_.TakeWord("END-ISO-10303-21")) break;
                const char c = lexer_.Peek();
                const Place place = lexer_.Here();
                if (c == '\'') {
                    lexer_.SkipPast('\'');
                } else if (c == '<' && lexer_.Now().offset < dataStart_) {
                    lexer_.SkipPast('>');  // an address
                } else if (Is(c, kLetter | kDigit)) {
                    lexer_.SkipWord();
                } else {
                    lexer_.Advance();
                    // Others are the names of constants.
                    if (c != '#' || !Is(lexer_.Peek(), kDigit)) continue;
                    const std::uint64_t id = lexer_.InstanceName();
                    lexer_.Skip();
                    if (lexer_.Peek() == '=') continue;
                    if (!std::binary_search(missing.begin(), missing.end(), id)) continue;
                    tell(place, id);
                    unseen.erase(id);
                }
            } catch (const SyntaxError&) {
                // It was reported when the first pass came here.
            }
        }
        for (const std::uint64_t id : unseen) tell({}, id);
    }

    // Moves to the next token that the first pass did not skip after an error.
    void SkipWhatWasSkipped() {
        lexer_.Skip();
        while (nextSkipped_ != skipped_.size() &&
               skipped_[nextSkipped_].from <= lexer_.Now().offset) {
            const Input::Position& to = skipped_[nextSkipped_++].to;
            if (to.offset > lexer_.Now().offset) lexer_.SkipTo(to);
        }
    }

    kor::Model& Model() { return *dataSet_.model; }

    Source& source_;
    const std::string& name_;
    const SchemaCatalog& schemas_;
    const ReadOptions& options_;
    Messages& messages_;
    Problems problems_;
    ExchangeLexer lexer_;
    DataSet dataSet_;
    InstanceReader instances_;
    std::unique_ptr<SecondHalf> second_;  // while it is not met
    std::uint64_t progress_ = 0;          // the bytes reported as read
    bool begun_ = false;                  // no other half follows
    std::set<std::uint64_t> broken_;
    // From an error to where reading went on.
    struct Skipped {
        std::uint64_t from;
        Input::Position to;
    };
    std::vector<Skipped> skipped_;
    std::size_t nextSkipped_ = 0;  // while references are sought
    std::uint64_t dataStart_ = 0;  // the offset of the first data section
    bool complete_ = false;        // the end of the exchange file has been seen
};

}  // namespace

DataSet ReadDataSet(const std::string& path, const SchemaCatalog& schemas,
                    const ReadOptions& options, Messages& messages) {
    std::string error;
    const std::unique_ptr<Source> source = Source::Open(path, error);
    if (source == nullptr) {
        messages.AddError({path, 0, 0, error});
        return {};
    }
    return Reader(*source, path, schemas, options, messages).Read();
}

DataSet ParseDataSet(std::string_view text, const std::string& name, const SchemaCatalog& schemas,
                     const ReadOptions& options, Messages& messages) {
    const std::unique_ptr<Source> source = Source::Of(text);
    return Reader(*source, name, schemas, options, messages).Read();
}

}  // namespace exchange
