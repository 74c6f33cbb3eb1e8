// The options of the command line.

#ifndef HOST_OPTIONS_H
#define HOST_OPTIONS_H

#include <cstddef>
#include <string>
#include <vector>

namespace host {

struct Options {
    // A data set to read or create, in the order of the command line.
    struct Model {
        bool isNew;
        std::string argument;
    };
    std::vector<Model> models;
    std::vector<std::string> schemas;
    std::string as;  // the schema with which files are read, whatever they name
    bool json = false;
    bool csv = false;
    bool box = false;
    bool lenient = false;
    std::size_t threads = 0;  // that read a file; 0: as many as there are processors
    std::string module;

    // Of tree.
    bool placements = false;
    bool absolute = false;
    bool names = false;
    std::string root;         // empty: all roots
    std::size_t depth = 100;  // deeper than any real assembly
    std::size_t lines =
        1'000'000;  // more than anybody reads; shared subassemblies can produce more

    // Of diff.
    double tolerance = 0;

    // Of schema.
    std::string schemaName;
    std::string sql;

    // Of report and copy.
    std::string output;

    // Of all that write files.
    bool inPlace = false;

    // Of call, run and shell.
    std::string trace;
    std::vector<std::string> traceOnly;  // names of functions; none: all
    int traceDepth = 0;                  // 0: all
    std::vector<std::string> saves;
    bool keepGoing = false;
    bool quiet = false;
    bool strict = false;
    std::string script;
    std::vector<std::string> expressions;
};

}  // namespace host

#endif
