// Models for a program that embeds the stand-alone platform: made empty, read from exchange files
// (ISO 10303-21) and written to them. It needs the contract headers alone.
//
// A schema is found by its name, without regard to case: first among those that the caller declares
// in EXPRESS (ISO 10303-11), then among the built-in ones: CONFIG_CONTROL_DESIGN,
// AUTOMOTIVE_DESIGN, PDM_SCHEMA, later editions, and "cdma", the database side.
//
// What is wrong with a text or a file is told in messages, each with its place
// (FILE:LINE:COLUMN: text). Only a lack of memory throws (std::bad_alloc).

#ifndef EXCHANGEMODELS_H
#define EXCHANGEMODELS_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "SdaiModel.h"

namespace exchange {

// An empty model of a schema. Null, with messages, when there is no such schema or `express`, a
// text of schemas of the caller's own, cannot be read.
std::unique_ptr<SdaiModel> NewModel(std::string_view schema, std::vector<std::string>& messages,
                                    std::string_view express = {});

// The model that an exchange file holds, of the schema that the file names. Null, with messages,
// when the file cannot be read: a file is read as a whole or not at all. What the file has around
// its instances (header, anchors, references, names of data sections, scopes) is no part of the
// model.
std::unique_ptr<SdaiModel> ReadModel(const std::string& path, std::vector<std::string>& messages,
                                     std::string_view express = {});

// Writes a model that one of the two functions above gave as an exchange file: to a temporary file
// that takes the target's place at the end. On failure, with messages, the target is as it was.
bool WriteModel(const SdaiModel& model, const std::string& path,
                std::vector<std::string>& messages);

}  // namespace exchange

#endif
