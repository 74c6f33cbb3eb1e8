// Loads and saves the data sets and the module named on the command line. Errors are reported, and
// Unusable is thrown.

#ifndef HOST_LOADING_H
#define HOST_LOADING_H

#include <memory>
#include <string>
#include <vector>

#include "Module.h"
#include "commands/Options.h"
#include "script/Session.h"
#include "script/TraceView.h"

namespace host {

// Rejects a command line that would overwrite an input (a data set, a schema or a script) with a
// trace, a page or another model, or write two results to the same file.
void CheckTargets(const Options& options);

// The complete text of a file or, for "-", of the standard input, which must be readable to its
// end; and its name in messages.
std::string ReadText(const std::string& file);
std::string TextName(const std::string& file);

// Reads or creates a data set given on the command line, as [NAME=]FILE or NAME=SCHEMA.
void AddModel(Session& session, const Options::Model& model, const Options& options);

// Reads the schemas and the data sets.
void Load(Session& session, const Options& options);

// Switches the trace on if requested.
void StartTrace(TraceView& trace, const Options& options);

// The functions must be in the export table.
void CheckFunctions(const std::vector<std::string>& names);

std::unique_ptr<calls::Module> LoadModule(const Options& options);

// Checks that the models to be saved exist; call before anything runs.
void CheckSaves(const Session& session, const Options& options);
void Save(Session& session, const Options& options);

// Writes one model: NAME=FILE.
void SaveDataSet(const exchange::DataSet& dataSet, const std::string& target, bool inPlace);
void SaveModel(Session& session, const std::string& save, bool inPlace);

}  // namespace host

#endif
