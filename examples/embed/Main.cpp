// An engine in one page: it builds a model of the database side in memory, a small mapping
// transfers it to exchange data, and these are written to a file.
//
//     embed exported.stp

#include <cstdio>
#include <exception>
#include <iostream>
#include <memory>

#include "Engine.h"
#include "ExchangeModels.h"
#include "KORPSNTrace.h"
#include "ORXExUtilities.h"
#include "SdaiAggrInstance.h"
#include "SdaiIterator.h"
#include "SdaiModel.h"

namespace {

using namespace sdai_names;

std::unique_ptr<SdaiModel> MakeModel(const char* schema) {
    std::vector<std::string> messages;
    std::unique_ptr<SdaiModel> model = exchange::NewModel(schema, messages);
    if (model == nullptr) throw std::runtime_error(messages.front());
    return model;
}

SdaiAppInstance* Create(SdaiModel& model, const SdaiName& type) {
    return model.GetEntityDefinition(type)->CreateEntityInstance(&model);
}

SdaiAppInstance* CreatePart(SdaiModel& database, const char* number, const char* name) {
    SdaiAppInstance* part = Create(database, "part_object"_name);
    part->PutAttr("S_PART_NUMBER"_name, SdaiString(number));
    part->PutAttr("S_DESC"_name, SdaiString(name));
    part->PutAttr("C_VERSION"_name, 1);
    return part;
}

// An assembly of a frame and two wheels.
void FillDatabase(SdaiModel& database) {
    SdaiAppInstance* trolley = CreatePart(database, "TR-100", "Hand trolley");
    SdaiAppInstance* frame = CreatePart(database, "TR-110", "Frame");
    SdaiAppInstance* wheel = CreatePart(database, "TR-122", "Wheel");

    // The model keeps a copy of the list, so that it may be a local variable.
    SdaiAggrInstance links;
    for (SdaiAppInstance* component : {frame, wheel, wheel}) {
        SdaiAppInstance* link = Create(database, "part_link"_name);
        link->PutAttr("ref"_name, component);
        links.Append(link);
    }
    trolley->PutAttr("KORASS"_name, &links);
}

// The mapping: a product for each part, with the part's key as its description.
void Export(const Engine& engine, const SdaiModel& database, SdaiModel& step) {
    SdaiIterator_Of_SdaiEntityInstanceH part(database.GetEntityExtent("part_object"_name));
    while (part.Next()) {
        const SdaiPrimitiveH source = part.GetCurrentMember();
        SdaiAppInstance* product = Create(step, "PRODUCT"_name);
        product->PutAttr("ID"_name, source.GetAttr("S_PART_NUMBER"_name));
        product->PutAttr("NAME"_name, source.GetAttr("S_DESC"_name));
        product->PutAttr("DESCRIPTION"_name, engine.Call("ConcatPartAtb", source));
        const SdaiPrimitiveH isAssembly = engine.Call("IsAnAssembly", source);
        std::cout << static_cast<const char*>(TextOf(source.GetAttr("S_PART_NUMBER"_name))) << ' '
                  << static_cast<const SdaiLogical&>(isAssembly) << '\n';
    }
}

int Run(const std::string& target) {
    const Engine engine;
    const std::unique_ptr<SdaiModel> database = MakeModel("cdma");
    const std::unique_ptr<SdaiModel> step = MakeModel("AUTOMOTIVE_DESIGN");
    FillDatabase(*database);
    Export(engine, *database, *step);

    // One of the four functions with other signatures, by its declaration in ORXExUtilities.h.
    const SdaiPrimitiveH date =
        engine.As<decltype(BuildDatedEff)>("BuildDatedEff")("12312099235959", step.get());
    const SdaiPrimitiveH year = date.GetAttr("DATE_COMPONENT"_name).GetAttr("YEAR_COMPONENT"_name);
    std::cout << static_cast<long>(year) << '\n';

    // Writes what a function reads and decides to a file.
    const std::string traceFile = target + ".trace";
    if (!KORPSNTrace::Configure(12, traceFile.c_str())) {
        throw std::runtime_error(traceFile + ": the trace cannot be written");
    }
    engine.Call("Minus", SdaiPrimitiveH(1.5));
    KORPSNTrace::Configure(0, nullptr);

    std::vector<std::string> messages;
    if (!exchange::WriteModel(*step, target, messages)) throw std::runtime_error(messages.front());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: embed FILE\n";
        return 2;
    }
    try {
        return Run(argv[1]);
    } catch (const std::exception& error) {
        std::cerr << "embed: " << error.what() << '\n';
        return 1;
    }
}
