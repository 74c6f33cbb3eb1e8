// orx copy: a data set from one place to another, files and databases alike.

#include "DataSets.h"
#include "commands/Commands.h"
#include "commands/Loading.h"
#include "console/Console.h"

namespace host {

int Copy(const Options& options) {
    Session session;
    Load(session, options);
    exchange::Messages messages;
    relational::Save(session.Models().front().dataSet, options.output, messages, {options.inPlace});
    Tell(messages);
    return kDone;
}

}  // namespace host
