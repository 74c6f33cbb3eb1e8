// There and back: the parts of a STEP file become parts of the database, with the placements of
// their components, and those become products of a new STEP file.
//
//     journey IN.stp DATABASE.stp OUT.stp

#include <array>
#include <iostream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "ExchangeModels.h"
#include "ORXFunctions.h"

namespace {

using namespace sdai_names;
using Messages = std::vector<std::string>;
using ModelPtr = std::unique_ptr<SdaiModel>;

// The model; throws if there is none, with the reason.
ModelPtr Need(ModelPtr model, const Messages& messages) {
    if (model == nullptr) throw std::runtime_error(messages.front());
    return model;
}

ModelPtr NewModel(const char* schema) {
    Messages messages;
    return Need(exchange::NewModel(schema, messages), messages);
}

void Write(const SdaiModel& model, const std::string& file) {
    Messages messages;
    if (!exchange::WriteModel(model, file, messages)) throw std::runtime_error(messages.front());
}

SdaiAppInstance* Create(SdaiModel& model, const SdaiName& type) {
    return model.GetEntityDefinition(type)->CreateEntityInstance(&model);
}

// Three of the twelve numbers of a placement.
void PutTriple(SdaiAppInstance& link, const SdaiName& attribute,
               const std::array<double, 12>& placement, std::size_t first) {
    SdaiListClassOfSdaiReal triple(0, 0);
    for (std::size_t i = first; i < first + 3; ++i) triple.Append(placement[i]);
    link.PutAttr(attribute, &triple);
}

// A part for each product definition, and a link for each occurrence, with its placement.
void Import(const SdaiModel& step, SdaiModel& database) {
    std::map<SdaiEntityInstance*, SdaiAppInstance*> parts;
    for (SdaiEntityInstance* definition : orx::Extent(step, "PRODUCT_DEFINITION"_name)) {
        const SdaiPrimitiveH formation = definition->GetAttr("FORMATION"_name);
        const SdaiPrimitiveH product = formation.GetAttr("OF_PRODUCT"_name);
        SdaiAppInstance* part = Create(database, "part_object"_name);
        part->PutAttr("S_PART_NUMBER"_name, product.GetAttr("ID"_name));
        part->PutAttr("S_DESC"_name, product.GetAttr("NAME"_name));
        part->PutAttr("S_CHG_NUM"_name, formation.GetAttr("ID"_name));
        parts[definition] = part;
    }
    std::map<SdaiAppInstance*, SdaiAggrInstance> links;
    for (SdaiEntityInstance* use : orx::Extent(step, "NEXT_ASSEMBLY_USAGE_OCCURRENCE"_name)) {
        const std::array<double, 12> placement = orx::GetAbsPlacement(use);
        SdaiAppInstance* link = Create(database, "part_link"_name);
        link->PutAttr("id"_name, use->GetAttr("ID"_name));
        link->PutAttr("ref"_name, parts.at(use->GetAttr("RELATED_PRODUCT_DEFINITION"_name)));
        PutTriple(*link, "ref_direction"_name, placement, 0);
        PutTriple(*link, "axis"_name, placement, 6);
        PutTriple(*link, "origin"_name, placement, 9);
        links[parts.at(use->GetAttr("RELATING_PRODUCT_DEFINITION"_name))].Append(link);
    }
    for (auto& [assembly, owned] : links) assembly->PutAttr("KORASS"_name, &owned);
}

// A product for each part, with the part's key as its description, and an occurrence for each link.
void Export(const SdaiModel& database, SdaiModel& step) {
    std::map<SdaiEntityInstance*, SdaiAppInstance*> definitions;
    for (SdaiEntityInstance* part : orx::Extent(database, "part_object"_name)) {
        SdaiAppInstance* product = Create(step, "PRODUCT"_name);
        product->PutAttr("ID"_name, part->GetAttr("S_PART_NUMBER"_name));
        product->PutAttr("NAME"_name, part->GetAttr("S_DESC"_name));
        product->PutAttr("DESCRIPTION"_name, SdaiString(orx::ConcatPartAtb(part)));
        SdaiAppInstance* formation = Create(step, "PRODUCT_DEFINITION_FORMATION"_name);
        formation->PutAttr("ID"_name, part->GetAttr("S_CHG_NUM"_name));
        formation->PutAttr("OF_PRODUCT"_name, product);
        SdaiAppInstance* definition = Create(step, "PRODUCT_DEFINITION"_name);
        definition->PutAttr("FORMATION"_name, formation);
        definitions[part] = definition;
    }
    for (SdaiEntityInstance* part : orx::Extent(database, "part_object"_name)) {
        if (orx::IsAnAssembly(part) != sdaiLTRUE) continue;
        for (SdaiEntityInstance* link : orx::Instances(part->GetAttr("KORASS"_name))) {
            SdaiAppInstance* use = Create(step, "NEXT_ASSEMBLY_USAGE_OCCURRENCE"_name);
            use->PutAttr("ID"_name, link->GetAttr("id"_name));
            use->PutAttr("RELATING_PRODUCT_DEFINITION"_name, definitions.at(part));
            use->PutAttr("RELATED_PRODUCT_DEFINITION"_name,
                         definitions.at(link->GetAttr("ref"_name)));
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::cerr << "usage: journey IN.stp DATABASE.stp OUT.stp\n";
        return 2;
    }
    try {
        Messages messages;
        const ModelPtr step = Need(exchange::ReadModel(argv[1], messages), messages);
        const ModelPtr database = NewModel("cdma");
        Import(*step, *database);
        Write(*database, argv[2]);
        const ModelPtr back = NewModel("AUTOMOTIVE_DESIGN");
        Export(*database, *back);
        Write(*back, argv[3]);
        std::cout << orx::Extent(*back, "PRODUCT"_name).size() << " parts, "
                  << orx::Extent(*back, "NEXT_ASSEMBLY_USAGE_OCCURRENCE"_name).size()
                  << " occurrences\n";
    } catch (const std::exception& error) {
        std::cerr << "journey: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
