// Models for tests, written as the data section of an exchange file.
//
//     const TestModel model("AUTOMOTIVE_DESIGN", "#1=PRODUCT('p','Part',$,());");
//     EXPECT_TRUE(IsTrue(IsFree(model[1], "DESCRIPTION"_h)));

#ifndef TESTS_TESTMODEL_H
#define TESTS_TESTMODEL_H

#include <gtest/gtest.h>

#include <string>

#include "Exchange.h"
#include "SdaiAggrInstance.h"
#include "SdaiModel.h"
#include "SdaiPrimitiveH.h"

class TestModel {
  public:
    // A model of a built-in schema, or of one declared as EXPRESS ("SCHEMA ... END_SCHEMA;").
    explicit TestModel(const std::string& schema, const std::string& data = "") {
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
    const exchange::DataSet& DataSet() const { return dataSet_; }

  private:
    exchange::DataSet dataSet_;
};

// Handles: "text"_h, 12_h, 1.5_h.
inline SdaiPrimitiveH operator""_h(const char* text, std::size_t length) {
    return SdaiString(std::string_view(text, length));
}
inline SdaiPrimitiveH operator""_h(unsigned long long value) { return static_cast<long>(value); }
inline SdaiPrimitiveH operator""_h(long double value) { return static_cast<double>(value); }
inline SdaiPrimitiveH Handle(std::string_view text) { return SdaiString(text); }
inline SdaiPrimitiveH Handle(long value) { return value; }

// The value of a handle, which must be of that kind.
inline std::string TextIn(const SdaiPrimitiveH& handle) {
    EXPECT_EQ(std::string(handle.UnderlyingTypeName()), "STRING");
    return std::string(static_cast<const SdaiString&>(handle).View());
}
inline long IntegerIn(const SdaiPrimitiveH& handle) {
    EXPECT_EQ(std::string(handle.UnderlyingTypeName()), "INTEGER");
    return handle;
}
inline double RealIn(const SdaiPrimitiveH& handle) {
    EXPECT_EQ(std::string(handle.UnderlyingTypeName()), "REAL");
    return handle;
}
inline bool IsTrue(const SdaiPrimitiveH& handle) {
    EXPECT_EQ(std::string(handle.UnderlyingTypeName()), "LOGICAL");
    return static_cast<bool>(static_cast<const SdaiLogical&>(handle) == sdaiLTRUE);
}
inline bool IsFalse(const SdaiPrimitiveH& handle) {
    EXPECT_EQ(std::string(handle.UnderlyingTypeName()), "LOGICAL");
    return static_cast<bool>(static_cast<const SdaiLogical&>(handle) == sdaiLFALSE);
}
inline bool IsUnset(const SdaiPrimitiveH& handle) { return !handle.exists(); }
inline SdaiEntityInstance* InstanceIn(const SdaiPrimitiveH& handle) { return handle; }
inline std::vector<double> RealsIn(const SdaiPrimitiveH& handle) {
    std::vector<double> reals;
    const SdaiAggrInstance* members = handle;
    EXPECT_NE(members, nullptr);
    for (long i = 0; members != nullptr && i < members->GetMemberCount(); ++i) {
        reals.push_back(members->GetRealMember(i));
    }
    return reals;
}

#endif
