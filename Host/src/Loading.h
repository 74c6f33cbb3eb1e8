// Data sets and the module, as the command line names them. What cannot be loaded or saved is told,
// and Unusable thrown.

#ifndef HOST_LOADING_H
#define HOST_LOADING_H

#include <memory>
#include <string>
#include <vector>

#include "Module.h"
#include "Options.h"
#include "Session.h"
#include "TraceView.h"

namespace host {

// Refuses a command line that would write over what it reads (a trace or a page in the place of a
// data set, schema or script), or two things into one file.
void CheckTargets(const Options& options);

// The whole of a file or, for "-", of the standard input: one that cannot be read to its end is
// refused. And what it is called in messages.
std::string ReadText(const std::string& file);
std::string TextName(const std::string& file);

// Reads or makes a data set as the command line names it, [NAME=]FILE or NAME=SCHEMA.
void AddModel(Session& session, const Options::Model& model, bool lenient);

// Reads the schemas and the data sets.
void Load(Session& session, const Options& options);

// Switches the trace on where it is asked for.
void StartTrace(TraceView& trace, const Options& options);

// The functions must be in the export table.
void CheckFunctions(const std::vector<std::string>& names);

std::unique_ptr<calls::Module> LoadModule(const Options& options);

// Whether the models that are to be saved are there; to be asked before anything runs.
void CheckSaves(const Session& session, const Options& options);
void Save(Session& session, const Options& options);

// Writes one model: NAME=FILE.
void SaveModel(Session& session, const std::string& save, bool inPlace);

}  // namespace host

#endif
