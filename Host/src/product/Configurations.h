// Configuration items, effectivities and version families of a data set, either exchange data or
// database. Texts are readable (see Readable in Display.h).

#ifndef HOST_CONFIGURATIONS_H
#define HOST_CONFIGURATIONS_H

#include <optional>
#include <string>
#include <vector>

#include "Module.h"
#include "product/Assembly.h"

namespace host {

struct ConfigurationItem {
    std::string id;
    std::string name;
    std::string productConcept;         // exchange data only: the product concept
    std::vector<std::string> designs;   // the parts that are configured
    std::vector<std::string> handlers;  // database only: the handlers that apply the configuration
};

// An end of an effectivity.
struct Bound {
    std::string text;             // empty: open
    std::optional<double> value;  // a date in days since 1970-01-01, or a rank; none for an open
                                  // end and for a text that is neither
};

struct Effectivity {
    enum class Scale { None, Dates, Ranks };

    std::string id;
    std::string option;  // that it depends on
    Scale scale = Scale::None;
    Bound start;
    Bound end;
    std::vector<std::string> usages;  // the occurrences that it governs: "parent → component"
};

// The versions of one part, oldest first.
struct VersionFamily {
    struct Version {
        std::string id;
        std::string name;
    };
    std::string id;
    std::vector<Version> versions;
};

std::vector<ConfigurationItem> ConfigurationItems(const kor::Model& model,
                                                  const Assembly& assembly);

std::vector<Effectivity> Effectivities(const kor::Model& model, const Assembly& assembly,
                                       const calls::Module& module);

// In exchange data, only those with more than one version.
std::vector<VersionFamily> VersionFamilies(const kor::Model& model, const Assembly& assembly);

}  // namespace host

#endif
