// Empty databases of each kind for tests, and access to their contents by plain SQL.

#ifndef TESTS_RELATIONAL_PLACES_H
#define TESTS_RELATIONAL_PLACES_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "DataSets.h"
#include "Exchange.h"
#include "Orx.h"

// An empty database that is removed with the object.
class Place {
  public:
    virtual ~Place() = default;
    virtual std::string Name() const = 0;
    // Runs SQL statements.
    virtual void Execute(const std::string& sql) = 0;
    // The rows of a query: fields joined by "|", NULL for null.
    virtual std::vector<std::string> Query(const std::string& sql) = 0;

    bool IsSqlite() const { return Name().starts_with("sqlite:"); }
};

// An empty database of a kind ("sqlite", "postgresql"); null if that is not installed.
std::unique_ptr<Place> NewPlace(const std::string& kind);

using Lines = std::vector<std::string>;

// A data set, with the messages of its reading.
struct Opened {
    exchange::DataSet dataSet;
    Lines errors;
    Lines warnings;

    kor::Model& Model() const { return *dataSet.model; }
    std::string Text() const {
        return dataSet.model != nullptr ? exchange::ToExchangeText(dataSet) : "";
    }
};

Opened Open(const std::string& name, const exchange::SchemaCatalog& schemas = {},
            bool lenient = false);
// Returns the errors; empty on success.
Lines Save(const exchange::DataSet& dataSet, const std::string& name);

// A data set with a schema and a data section.
exchange::DataSet DataSetOf(const std::string& schema, const std::string& data,
                            const exchange::SchemaCatalog& schemas = {});

// Each test runs with each kind of database.
class Relational : public testing::TestWithParam<std::string> {
  protected:
    void SetUp() override {
        place_ = NewPlace(GetParam());
        if (place_ == nullptr) GTEST_SKIP() << GetParam() << " is not installed";
    }
    Place& At() { return *place_; }
    std::string Name() const { return place_->Name(); }

  private:
    std::unique_ptr<Place> place_;
};

#define ON_EACH_DATABASE(Suite)                                                  \
    INSTANTIATE_TEST_SUITE_P(On, Suite, testing::Values("sqlite", "postgresql"), \
                             [](const auto& kind) { return kind.param; })

#endif
