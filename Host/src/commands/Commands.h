// The commands of orx. Each returns the exit status or throws Unusable.

#ifndef HOST_COMMANDS_H
#define HOST_COMMANDS_H

#include "commands/Options.h"

namespace host {

int Functions(const Options& options);
int Describe(const Options& options);
int Copy(const Options& options);
int Diff(const Options& options);
int Check(const Options& options);
int Tree(const Options& options);
int Report(const Options& options);
int CallOrRun(const Options& options);
int PartsList(const Options& options);
int ShowInstances(const Options& options);
int Users(const Options& options);
int PrintSchema(const Options& options);
int Shell(const Options& options);
int Sql(const Options& options);

}  // namespace host

#endif
