// orx copy: a data set from one place to another, files and databases alike.

#include "commands/Commands.h"
#include "commands/Loading.h"
#include "console/Console.h"

namespace host {

int Copy(const Options& options) {
    Session session;
    Load(session, options);
    SaveDataSet(session.Models().front().dataSet, options.output, options.inPlace);
    return kDone;
}

}  // namespace host
