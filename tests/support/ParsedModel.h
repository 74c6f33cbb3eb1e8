// Models for tests on the stand-alone platform, written as the data section of an exchange file and
// read from it.
//
//     const ParsedModel model("AUTOMOTIVE_DESIGN", "#1=PRODUCT('p','Part',$,());");
//     EXPECT_TRUE(IsTrue(IsFree(model[1], "DESCRIPTION"_h)));

#ifndef TESTS_PARSEDMODEL_H
#define TESTS_PARSEDMODEL_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Exchange.h"
#include "SdaiModel.h"
#include "SdaiPrimitiveH.h"
#include "TestValues.h"

class ParsedModel {
  public:
    // A model of a built-in schema, or of one declared as EXPRESS ("SCHEMA ... END_SCHEMA;").
    explicit ParsedModel(const std::string& schema, const std::string& data = "") {
        exchange::SchemaCatalog schemas;
        exchange::Messages messages;
        std::string name = schema;
        if (schema.find("SCHEMA ") == 0) {
            for (auto& parsed : exchange::ParseSchemas(schema, "schema", messages)) {
                name = parsed->Name().View();
                schemas.Add(parsed);
            }
        }
        dataSet_ =
            exchange::ParseDataSet("ISO-10303-21;HEADER;FILE_SCHEMA(('" + name +
                                       "'));ENDSEC;DATA;\n" + data + "\nENDSEC;END-ISO-10303-21;",
                                   "data", schemas, {}, messages);
        for (const exchange::Message& error : messages.Errors()) {
            ADD_FAILURE() << error.ToString();
        }
        if (dataSet_.model == nullptr) throw std::runtime_error("the test's data cannot be read");
    }

    // The instance with that number, which must exist.
    SdaiPrimitiveH operator[](unsigned long id) const {
        SdaiEntityInstance* instance = Model().Find(id);
        EXPECT_NE(instance, nullptr) << "no instance #" << id;
        return instance;
    }

    kor::Model& Model() const { return *dataSet_.model; }
    // All instances in the order of their creation.
    std::vector<SdaiEntityInstance*> Instances() const {
        std::vector<SdaiEntityInstance*> all;
        Model().ForEachInstance([&](const SdaiEntityInstance& instance) {
            all.push_back(Model().Find(instance.GetInstanceNameId()));
        });
        return all;
    }

    const exchange::DataSet& DataSet() const { return dataSet_; }

  private:
    exchange::DataSet dataSet_;
};

#endif
