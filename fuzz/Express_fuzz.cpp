// The reader of EXPRESS schemas: a schema that was read can be used.

#include "Input.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    exchange::Messages messages;
    for (const exchange::SchemaPtr& schema :
         exchange::ParseSchemas(AsText(data, size), "input", messages)) {
        Require(messages.ErrorCount() == 0, "there is no schema where there is an error");
        const exchange::DataSet dataSet = exchange::NewDataSet(schema, "input");
        for (const kor::EntityType* entity : schema->Entities()) {
            const kor::ModelType* type = dataSet.model->TypeOf(*entity);
            Require(type != nullptr, "a declared type has instances");
            kor::Instance& instance = dataSet.model->Create(*type);
            Require(instance.IsKindOf(entity->Name()), "an instance is of its type");
            for (const std::string& name : entity->AttributeNames()) {
                instance.PutAttr(SdaiString(std::string_view(name)), SdaiString("text"));
                instance.GetAttr(SdaiString(std::string_view(name)));
            }
        }
        exchange::SchemaCatalog schemas;
        schemas.Add(schema);
        std::string problem;
        const std::string written = exchange::ToExchangeText(dataSet, &problem);
        if (!problem.empty()) continue;
        exchange::Messages again;
        Require(exchange::ParseDataSet(written, "written", schemas, {}, again).model != nullptr,
                "what is written can be read",
                again.ErrorCount() != 0 ? again.Errors().front().ToString() + '\n' + written : "");
    }
    return 0;
}
