// Models for programs that embed the stand-alone platform: creates empty models, and reads and
// writes exchange files (ISO 10303-21). Requires only the contract headers.
//
// A schema is found by its case-insensitive name: first among those that the caller declares in
// EXPRESS (ISO 10303-11), then among the built-in ones: CONFIG_CONTROL_DESIGN, AUTOMOTIVE_DESIGN,
// PDM_SCHEMA, later editions, and "cdma", the database side.
//
// Problems in a text or file are reported as messages, each with its place (FILE:LINE:COLUMN:
// text). Only running out of memory throws (std::bad_alloc).

#ifndef EXCHANGEMODELS_H
#define EXCHANGEMODELS_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "SdaiModel.h"

namespace exchange {

// Creates an empty model of a schema. Returns null, with messages, if there is no such schema or if
// `express`, the caller's own schemas, cannot be read.
std::unique_ptr<SdaiModel> NewModel(std::string_view schema, std::vector<std::string>& messages,
                                    std::string_view express = {});

// Reads the model in an exchange file, with the schema that the file names. Returns null, with
// messages, if the file cannot be read: a file is read completely or not at all. The rest of the
// file (header, anchors, references, names of data sections, scopes) is not part of the model.
std::unique_ptr<SdaiModel> ReadModel(const std::string& path, std::vector<std::string>& messages,
                                     std::string_view express = {});

// How a model is read.
struct ModelOptions {
    // Schemas of the caller's own, as EXPRESS.
    std::string_view express = {};
    // Reads what can be read of a damaged file: each error becomes a warning, a reference to
    // nothing an unset value; a broken instance is left out.
    bool lenient = false;
    // Called now and then with the number of bytes read so far. May throw, which ends the reading.
    std::function<void(std::uint64_t read)> progress = {};
};

// The same with options; of a text, which messages call by `name`.
std::unique_ptr<SdaiModel> ReadModel(const std::string& path, std::vector<std::string>& messages,
                                     const ModelOptions& options);
std::unique_ptr<SdaiModel> ReadText(std::string_view text, std::vector<std::string>& messages,
                                    const ModelOptions& options = {},
                                    const std::string& name = "<text>");

// The model as the text of an exchange file; empty, with a message, if an exchange file cannot hold
// it.
std::string WriteText(const SdaiModel& model, std::vector<std::string>& messages,
                      const std::string& name = "");

// Writes a model returned by one of the functions above to an exchange file, through a temporary
// file that replaces the target at the end. On failure, reported in messages, the target is
// unchanged.
bool WriteModel(const SdaiModel& model, const std::string& path,
                std::vector<std::string>& messages);

}  // namespace exchange

#endif
