// The reader and the evaluator of scripts, on two small models: the resulting models can be written
// and read, or there is a reason why not.

#include <iostream>

#include "Input.h"
#include "script/Evaluator.h"
#include "script/Script.h"

namespace {

constexpr std::string_view kStep =
    "ISO-10303-21;HEADER;FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));ENDSEC;DATA;"
    "#1=PRODUCT_DEFINITION('root',$,$,$);#2=PRODUCT_DEFINITION('leaf',$,$,$);"
    "#3=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','',$,#1,#2,$);#4=CARTESIAN_POINT('',(1.,2.,3.));"
    "#5=AXIS2_PLACEMENT_3D('',#4,$,$);#6=CONFIGURATION_ITEM('c','n',$,$,$);"
    "#7=OWN_TYPE('text',(1,2),MEASURE(2.5),#1);#8=SI_UNIT(*,.MILLI.,.METRE.);"
    "ENDSEC;END-ISO-10303-21;";
constexpr std::string_view kDatabase =
    "ISO-10303-21;HEADER;FILE_SCHEMA(('cdma'));ENDSEC;DATA;"
    "#1=PART_OBJECT('ROOT','A',1,'t','d',(#3),(),(),(#5),$);#2=PART_OBJECT($,$,$,$,$,$,$,$,$,$);"
    "#3=PART_LINK('l',$,#2,$,$,$,$);#5=CDM_DOCUMENT('T','N','O','F');"
    "#6=RANGE_EFFECTIVITY('R',(#3),1,5);ENDSEC;END-ISO-10303-21;";

// Limits: longer scripts and larger models reveal nothing new.
constexpr int kMostStatements = 20;
constexpr std::uint64_t kMostInstances = 2'000;

host::NamedModel Model(const char* name, std::string_view text) {
    exchange::Messages messages;
    return {name, "", exchange::ParseDataSet(text, name, {}, {}, messages)};
}

bool IsSmall(const host::Session& session) {
    std::uint64_t count = 0;
    for (const host::NamedModel& model : session.Models()) count += model.Model().InstanceCount();
    return count <= kMostInstances;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool silent = (std::cout.setstate(std::ios::badbit), true);
    host::Session session;
    session.Add(Model("step", kStep));
    session.Add(Model("db", kDatabase));
    host::Printer printer(session, host::Form{static_cast<int>(silent ? size % 4 : 0)});
    host::Evaluator evaluator(TheModule(), session, printer);
    host::ScriptReader reader(AsText(data, size), host::kStartOfScript, session.ModelNames());
    for (int i = 0; i < kMostStatements && IsSmall(session); ++i) {
        try {
            const std::optional<host::Statement> statement = reader.Next();
            if (!statement.has_value()) break;
            evaluator.Run(*statement);
        } catch (const host::ScriptError& error) {
            Require(error.Where().line > 0 && error.what()[0] != '\0', "an error has a place");
        }
    }
    for (const host::NamedModel& model : session.Models()) {
        std::string problem;
        const std::string written = exchange::ToExchangeText(model.dataSet, &problem);
        if (!problem.empty()) continue;
        exchange::Messages messages;
        const exchange::DataSet again =
            exchange::ParseDataSet(written, "written", {}, {}, messages);
        Require(again.model != nullptr, "what is written can be read", written);
        Require(exchange::ToExchangeText(again) == written, "what is written reads the same",
                written);
    }
    TheModule().Call(*orx::FindExport("RemoveValueVersion"), {});
    return 0;
}
