// orx copy: a data set from one place to another, files and databases alike.

#include "Commands.h"
#include "Console.h"
#include "DataSets.h"
#include "Loading.h"

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
