// The reader of exchange files, strict and lenient: what it reads can be written, and reading and
// writing that again produces the same text.

#include "Input.h"

namespace {

using exchange::DataSet;

DataSet Parse(std::string_view text, bool lenient, exchange::Messages& messages) {
    static const exchange::SchemaCatalog schemas;
    exchange::ReadOptions options;
    options.lenient = lenient;
    return exchange::ParseDataSet(text, "input", schemas, options, messages);
}

void ReadWriteReadWrite(std::string_view text, bool lenient) {
    exchange::Messages messages;
    const DataSet first = Parse(text, lenient, messages);
    Require((first.model == nullptr) == (messages.ErrorCount() != 0),
            "a file is read as a whole, or there is an error");
    if (first.model == nullptr) return;
    std::string problem;
    const std::string written = exchange::ToExchangeText(first, &problem);
    Require(problem.empty(), "what is read can be written", problem);
    exchange::Messages again;
    const DataSet second = Parse(written, false, again);
    Require(second.model != nullptr, "what is written can be read",
            again.ErrorCount() != 0 ? again.Errors().front().ToString() + '\n' + written : written);
    const std::string rewritten = exchange::ToExchangeText(second);
    Require(rewritten == written, "what is written reads the same", written + '\n' + rewritten);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ReadWriteReadWrite(AsText(data, size), false);
    ReadWriteReadWrite(AsText(data, size), true);
    return 0;
}
