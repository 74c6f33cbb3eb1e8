// Loads a data set, calls a function for everything in it, and prints the measurements as a line of
// numbers:
//
//     measure-scale FUNCTION FILE
//
//     bytes of the file, seconds to load it, calls, seconds for the calls, peak memory in bytes
//
// If FILE is a number, it creates that many links with their placements in an empty model instead,
// and calls GetAbsPlacement for each before it creates the next; the bytes are then 0.

#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "Exchange.h"
#include "KORDMInstance.h"
#include "Modules.h"

namespace {

using namespace sdai_names;
using Handle = const SdaiPrimitiveH&;
using OneArgument = SdaiPrimitiveH(Handle);
using TwoArguments = SdaiPrimitiveH(Handle, Handle);

// The processor time in seconds, which other work on the machine disturbs least.
template <class Work>
double Seconds(Work work) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    };
    const double start = now();
    work();
    return now() - start;
}

// The peak memory of the process so far.
double PeakBytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return 1024.0 * static_cast<double>(usage.ru_maxrss);
}

// Calls ask(instance) for each instance of a type; returns the number of calls.
template <class Ask>
long ForEach(const SdaiModel& model, const SdaiName& type, Ask ask) {
    const SdaiAggrInstance* extent = model.GetEntityExtent(type);
    for (long i = 0; i < extent->GetMemberCount(); ++i) ask(extent->GetInstanceMember(i));
    return extent->GetMemberCount();
}

bool IsTrue(const SdaiPrimitiveH& answer) {
    return static_cast<bool>(static_cast<const SdaiLogical&>(answer) == sdaiLTRUE);
}

void Expect(bool holds) {
    if (!holds) throw std::runtime_error("an answer is not what it should be");
}

bool IsIdentity(const SdaiPrimitiveH& placement) {
    const SdaiAggrInstance* values = placement;
    for (long i = 0; i < 12; ++i) {
        if (values->GetRealMember(i) != (i < 9 && i % 4 == 0 ? 1.0 : 0.0)) return false;
    }
    return true;
}

// Calls the function for everything, and checks each result.
long Ask(const std::string& function, const SdaiModel& model) {
    const bench::Module& module = bench::TheModule();
    const auto one = [&] { return module.Find<OneArgument>(function); };
    const auto two = [&] { return module.Find<TwoArguments>(function); };
    if (function == "GetAbsPlacement") {
        // The occurrences are moved, so that no placement found equals the default.
        return ForEach(model, "NEXT_ASSEMBLY_USAGE_OCCURRENCE"_name,
                       [call = one()](SdaiEntityInstance* link) {
                           Expect(!IsIdentity(call(SdaiPrimitiveH(link))));
                       });
    }
    if (function == "IsVersion") {
        const SdaiPrimitiveH flag(1L);
        return ForEach(model, "part_object"_name, [&, call = two()](SdaiEntityInstance* part) {
            Expect(call(SdaiPrimitiveH(part), flag).exists());
        });
    }
    if (function == "IsNewer") {
        SdaiEntityInstance* before = nullptr;
        long newer = 0;
        const long calls =
            ForEach(model, "part_object"_name, [&, call = two()](SdaiEntityInstance* part) {
                newer += IsTrue(call(SdaiPrimitiveH(part), SdaiPrimitiveH(before)));
                before = part;
            });
        Expect(newer == calls / 4 * 3);
        return calls;
    }
    if (function == "ORXIdEff") {
        const SdaiPrimitiveH effectivity(
            model.GetEntityExtent("range_effectivity"_name)->GetInstanceMember(0));
        return ForEach(model, "part_object"_name, [&, call = two()](SdaiEntityInstance* part) {
            Expect(call(SdaiPrimitiveH(part), effectivity).exists());
        });
    }
    if (function == "ORXIdCfg") {
        return ForEach(model, "configuration_item"_name, [call = one()](SdaiEntityInstance* item) {
            const SdaiPrimitiveH id = call(SdaiPrimitiveH(item));
            Expect(static_cast<const SdaiString&>(id).length() > 30);
        });
    }
    if (function == "IsPartConfigurated") {
        return ForEach(model, "part_object"_name, [call = one()](SdaiEntityInstance* part) {
            Expect(IsTrue(call(SdaiPrimitiveH(part))));
        });
    }
    throw std::runtime_error("no work for " + function);
}

// Creates links with placements in the component's parent, and calls the function for each.
long Build(long count) {
    kor::Model model(exchange::BuiltInSchema("AUTOMOTIVE_DESIGN"));
    auto* placement = bench::TheModule().Find<OneArgument>("GetAbsPlacement");
    const auto create = [&model](const SdaiName& type) {
        return model.GetEntityDefinition(type)->CreateEntityInstance(&model);
    };
    const auto list = [](double x, double y, double z) {
        auto* values = new SdaiListClassOfSdaiReal(0, 3);
        SdaiPrimitiveH owner = SdaiPrimitiveH::TakeOver(values);
        for (const double value : {x, y, z}) values->Append(value);
        return owner;
    };
    SdaiAppInstance* assembly = create("PRODUCT_DEFINITION"_name);
    SdaiAppInstance* component = create("PRODUCT_DEFINITION"_name);
    for (long i = 0; i < count; ++i) {
        SdaiAppInstance* link = create("NEXT_ASSEMBLY_USAGE_OCCURRENCE"_name);
        link->PutAttr("RELATING_PRODUCT_DEFINITION"_name, assembly);
        link->PutAttr("RELATED_PRODUCT_DEFINITION"_name, component);
        SdaiAppInstance* shape = create("PRODUCT_DEFINITION_SHAPE"_name);
        shape->PutAttr("DEFINITION"_name, link);
        SdaiAppInstance* origin = create("CARTESIAN_POINT"_name);
        origin->PutAttr("COORDINATES"_name, list(static_cast<double>(i + 1), 2, 3));
        SdaiAppInstance* transformation = create("CARTESIAN_TRANSFORMATION_OPERATOR_3D"_name);
        transformation->PutAttr("LOCAL_ORIGIN"_name, origin);
        const kor::EntityType* parts[] = {
            model.FindEntity("REPRESENTATION_RELATIONSHIP"_name),
            model.FindEntity("REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION"_name)};
        const kor::EntityType* both = model.ComplexEntity({parts[0], parts[1]});
        SdaiAppInstance* relationship = both->CreateEntityInstance(&model);
        relationship->PutAttr("TRANSFORMATION_OPERATOR"_name, transformation);
        SdaiAppInstance* context = create("CONTEXT_DEPENDENT_SHAPE_REPRESENTATION"_name);
        context->PutAttr("REPRESENTATION_RELATION"_name, relationship);
        context->PutAttr("REPRESENTED_PRODUCT_RELATION"_name, shape);
        const SdaiPrimitiveH answer = placement(SdaiPrimitiveH(link));
        Expect(static_cast<SdaiAggrInstance*>(answer)->GetRealMember(9) ==
               static_cast<double>(i + 1));
    }
    return count;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: measure-scale FUNCTION FILE|NUMBER\n");
        return 2;
    }
    const std::string function = argv[1];
    const std::string path = argv[2];
    try {
        const double before = PeakBytes();
        double bytes = 0;
        double loading = 0;
        double asking = 0;
        long calls = 0;
        if (path.find_first_not_of("0123456789") == std::string::npos) {
            asking = Seconds([&] { calls = Build(std::atol(path.c_str())); });
        } else {
            bytes = static_cast<double>(std::filesystem::file_size(path));
            const exchange::SchemaCatalog schemas;
            exchange::Messages messages;
            exchange::DataSet dataSet;
            // As an engine loads a database: with its families of revisions.
            exchange::ReadOptions options;
            options.threads = 1;
            loading = Seconds([&] {
                dataSet = ReadDataSet(path, schemas, options, messages);
                if (dataSet.model != nullptr) KORDMStore::AddFamilies(*dataSet.model);
            });
            if (dataSet.model == nullptr) {
                throw std::runtime_error(messages.Errors().front().ToString());
            }
            asking = Seconds([&] { calls = Ask(function, *dataSet.model); });
        }
        std::printf("%.0f %.9f %ld %.9f %.0f\n", bytes, loading, calls, asking,
                    PeakBytes() - before);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "measure-scale: %s\n", error.what());
        return 1;
    }
}
