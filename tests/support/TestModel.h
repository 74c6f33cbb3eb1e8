// Models for tests on any platform: filled from tables through the contract alone. The tables are
// written as the data section of an exchange file.
//
//     const TestModel model("AUTOMOTIVE_DESIGN", "#1=PRODUCT('p','Part',$,());");
//     EXPECT_TRUE(IsTrue(IsFree(model[1], "DESCRIPTION"_h)));

#ifndef TESTS_TESTMODEL_H
#define TESTS_TESTMODEL_H

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <set>
#include <string>

#include "PlainTables.h"
#include "PlatformModels.h"
#include "SdaiModel.h"
#include "TestValues.h"

class TestModel {
  public:
    // A model of a built-in schema, or of one declared as EXPRESS ("SCHEMA ... END_SCHEMA;").
    explicit TestModel(const std::string& schema, const std::string& data = "");

    // The instance with that number, which must exist.
    SdaiPrimitiveH operator[](unsigned long number) const;

    SdaiModel& Model() const { return *model_; }

    // All instances, including those created since, in the order of their numbers.
    std::vector<SdaiEntityInstance*> Instances() const;

  private:
    SdaiPrimitiveH Handle(const tables::Value& value) const;

    tables::Schema schema_;
    std::unique_ptr<SdaiModel> model_;
    std::map<unsigned long, SdaiAppInstance*> instances_;
};

#endif
