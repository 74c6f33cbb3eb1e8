// Single instances and values as texts in the notation of exchange files.

#include "InstanceTexts.h"

#include "ExchangeLexer.h"
#include "ExchangeWriter.h"
#include "InstanceReader.h"

namespace exchange {

namespace {

// One text after the other.
class ChangingSource final : public Source {
  public:
    std::string_view text;

    std::size_t Read(char* to, std::size_t size) override {
        const std::size_t count = text.copy(to, size, read_);
        read_ += count;
        return count;
    }
    void Seek(std::uint64_t offset) override { read_ = static_cast<std::size_t>(offset); }
    std::uint64_t Size() const override { return text.size(); }
    std::unique_ptr<Source> Again() const override { return nullptr; }
    bool IsUtf8() override { return true; }

  private:
    std::size_t read_ = 0;
};

constexpr std::size_t kLongestText = std::size_t{1} << 30;

}  // namespace

class InstanceTextReader::Texts {
  public:
    Texts(kor::Model& model, const Structure& structure)
        : problems_(kNoFile, false, messages_),
          lexer_(source_, problems_, kLongestText),
          reader_(lexer_, problems_),
          model_(model) {
        problems_.EnterData();
        reader_.Into(model);
        for (const std::string& reference : structure.references) {
            reader_.AddExternal(ExternalName(reference.substr(0, reference.find('='))));
        }
        reader_.TakeInfinite();
    }

    bool Value(std::string_view text, const kor::Domain* domain, kor::Cell& value,
               std::string& error) {
        return Read(text, error, [&] {
            kor::CellHolder holder(reader_.Value(domain));
            ExpectEnd();
            value = holder.Take();
        });
    }

    kor::Instance* Instance(std::uint64_t id, std::string_view text, std::string& error) {
        statement_ = '#' + std::to_string(id) + '=';
        statement_.append(text).append(";");
        const bool read = Read(statement_, error, [&] {
            lexer_.Expect('#');
            reader_.Instance();
            ExpectEnd();
        });
        if (!read) return nullptr;
        return static_cast<kor::Instance*>(model_.Find(id));
    }

  private:
    template <class Take>
    bool Read(std::string_view text, std::string& error, Take take) {
        source_.text = text;
        lexer_.GoTo({});
        try {
            take();
            return true;
        } catch (const SyntaxError& wrong) {
            reader_.TakeBroken();
            error = wrong.text;
            return false;
        }
    }

    void ExpectEnd() {
        lexer_.Skip();
        if (!lexer_.AtEnd()) lexer_.FailExpecting("the end");
    }

    static inline const std::string kNoFile;

    Messages messages_;
    Problems problems_;
    ChangingSource source_;
    ExchangeLexer lexer_;
    InstanceReader reader_;
    kor::Model& model_;
    std::string statement_;
};

InstanceTextReader::InstanceTextReader(kor::Model& model, const Structure& structure)
    : texts_(std::make_unique<Texts>(model, structure)) {}
InstanceTextReader::~InstanceTextReader() = default;

bool InstanceTextReader::Value(std::string_view text, const kor::Domain* domain, kor::Cell& value,
                               std::string& error) {
    return texts_->Value(text, domain, value, error);
}

kor::Instance* InstanceTextReader::Instance(std::uint64_t id, std::string_view text,
                                            std::string& error) {
    return texts_->Instance(id, text, error);
}

}  // namespace exchange
