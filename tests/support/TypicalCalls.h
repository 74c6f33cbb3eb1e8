// A call of every function of the export table on typical data: one part with a few components, in
// a database and in its exchange file. The tests count the allocations of such a call, the
// benchmarks measure its time.

#ifndef TESTS_TYPICALCALLS_H
#define TESTS_TYPICALCALLS_H

#include <array>
#include <string>
#include <string_view>

#include "Exchange.h"
#include "ORXExportTable.h"
#include "SdaiAggrInstance.h"
#include "SdaiModel.h"
#include "SdaiPrimitiveH.h"

// The texts among the arguments, and the schema of the documents.
namespace typical {

inline constexpr std::string_view kDocumentSchema = R"(
    SCHEMA documents;
    ENTITY product_definition_formation; id : STRING; END_ENTITY;
    ENTITY product_definition; formation : product_definition_formation; END_ENTITY;
    TYPE product_or_formation = SELECT (product_definition_formation); END_TYPE;
    ENTITY document_product_association;
      related_product_or_formation : product_or_formation;
    END_ENTITY;
    END_SCHEMA;)";

inline constexpr std::string_view kKey = "S0013ABC-123456-01S0001AI000212S0004PART";
inline constexpr std::string_view kEffectivityId = "S0003ORXS0010CFG-000060S0011option_date";
inline constexpr std::string_view kConfigurationId = "S0003ORXS0010CFG-000060S0011HANDLER-070";
inline constexpr std::string_view kEffectivityAttributes =
    "S0011option_dateS0016OPTION-LEFT-HANDS0017EFFECTIVITY-00001";
inline constexpr std::string_view kModelId =
    "Wheel\xB1"
    "front\xB1left_ORXExchangedRep_1234_ORXExchangedRep2_V5\xB1R19\xB1SP3";
inline constexpr std::string_view kDocumentKey =
    "_ORX_S0003DOCS0016Wheel front leftS0023Released for productionS0003PDF";
inline constexpr std::string_view kName = "Wheel front left";
inline constexpr std::string_view kModelFile =
    "Wheel\xB1"
    "front\xB1left.model";
inline constexpr std::string_view kDocumentFile = "Wheel front left.KORPart";
inline constexpr std::string_view kDate = "12312024235959";

}  // namespace typical

// An assembly as the data section of an exchange file: NEXT_ASSEMBLY_USAGE_OCCURRENCE number 20 * i
// + 12 for i from 1 to `occurrences`, each of a different component, with its placement and all
// instances required for it. #1 is the assembly.
std::string AssemblyData(long occurrences);

// A model of the schema with these instances. Throws std::runtime_error with the error if they
// cannot be read.
exchange::DataSet ReadData(const exchange::SchemaPtr& schema, const std::string& data);

class TypicalData {
  public:
    // Document management knows the revisions of the database while the object exists.
    TypicalData();
    ~TypicalData();
    TypicalData(const TypicalData&) = delete;
    TypicalData& operator=(const TypicalData&) = delete;

    SdaiPrimitiveH Database(unsigned long id) const { return database_.model->Find(id); }
    SdaiPrimitiveH Step(unsigned long id) const { return step_.model->Find(id); }
    // An association of a document with the formation of a part, and that part.
    SdaiPrimitiveH Documents(unsigned long id) const { return documents_.model->Find(id); }
    // The model in which functions create instances.
    SdaiModel* Target() const { return target_.model.get(); }
    SdaiPrimitiveH Anchor() const { return target_.model->Find(1); }

  private:
    exchange::DataSet database_;
    exchange::DataSet step_;
    exchange::DataSet documents_;
    exchange::DataSet target_;
};

using TypicalArguments = std::array<SdaiPrimitiveH, 3>;

// The arguments of the typical call of a function; for an argument that is a model, an instance of
// that model.
TypicalArguments ArgumentsOf(const orx::Export& function, const TypicalData& data);

// Calls use(call), where call() calls the function at that address with the arguments and returns
// its result. A list that the function fills is cleared before each call.
template <class Use>
void WithCall(const orx::Export& function, void* address, const TypicalArguments& arguments,
              Use use) {
    using Handle = const SdaiPrimitiveH&;
    Handle a = arguments[0];
    Handle b = arguments[1];
    Handle c = arguments[2];
    switch (function.ArgumentCount()) {
        case 0: {
            use(reinterpret_cast<SdaiPrimitiveH (*)()>(address));
            break;
        }
        case 1: {
            auto* call = reinterpret_cast<SdaiPrimitiveH (*)(Handle)>(address);
            use([call, &a] { return call(a); });
            break;
        }
        case 2: {
            if (function.arguments[1] == orx::Model) {
                auto* call =
                    reinterpret_cast<SdaiEntityInstance* (*)(SdaiString, SdaiModel*)>(address);
                const SdaiString& text = a;
                use([call, &text, model = b.FindEntityInstanceModel()] {
                    return SdaiPrimitiveH(call(text, model));
                });
            } else {
                auto* call = reinterpret_cast<SdaiPrimitiveH (*)(Handle, Handle)>(address);
                use([call, &a, &b] { return call(a, b); });
            }
            break;
        }
        default: {
            auto* list = static_cast<SdaiListClassOfSdaiReal*>(static_cast<SdaiAggrInstance*>(c));
            if (function.arguments[2] == orx::RealList) {
                auto* call =
                    reinterpret_cast<void (*)(Handle, Handle, SdaiListClassOfSdaiReal*&)>(address);
                use([call, &a, &b, list]() mutable {
                    list->RemoveAll();
                    call(a, b, list);
                    return SdaiPrimitiveH();
                });
            } else {
                auto* call = reinterpret_cast<void (*)(Handle, const SdaiString&, Handle)>(address);
                const SdaiString& text = b;
                use([call, &a, &text, &c] {
                    call(a, text, c);
                    return SdaiPrimitiveH();
                });
            }
        }
    }
}

#endif
