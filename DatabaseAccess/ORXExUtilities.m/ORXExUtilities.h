// The mapping functions that a data-exchange engine calls by name while it moves product data
// between a PDM database (a model of the schema "cdma") and STEP exchange data (ISO 10303; a model
// of one of the application protocol schemas).
//
// The engine loads libORXExUtilities.so and finds each function by its plain name; ORXExportTable.h
// lists them with their arguments and results. What they have in common:
//
// - Arguments are value handles (SdaiPrimitiveH.h) and are never modified. The result is a handle
//   of its own, which the caller owns.
// - No function fails and nothing is thrown. Where an argument is missing or of the wrong shape, or
//   memory runs out, the result is the default that stands with the function; unless something else
//   is said, that is FALSE for a logical. A logical is TRUE or FALSE, never UNKNOWN.
// - Each call opens a trace scope under the function's label and tells, when level 12 is switched
//   on, what it reads and decides (KORPSNTrace.h). Tracing never changes a result.
// - Nothing is kept between calls, except by IsVersion (see there). One call at a time; functions
//   that neither create instances nor keep versions may run from several threads over models that
//   no thread writes.
//
// An entity instance is a "part", "model", "document" or "effectivity" of the database when it
// stands in a model of schema "cdma"; STEP entity types are written in upper case.

#ifndef ORXEXUTILITIES_H
#define ORXEXUTILITIES_H

#include "SdaiAggrInstance.h"
#include "SdaiModel.h"
#include "SdaiPrimitiveH.h"
#include "SdaiString.h"

#define ORX_EXPORT __attribute__((visibility("default")))

#ifdef __clang__
// The functions have C linkage for the sake of their names and are C++ in all else.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif

extern "C" {

// ---- Encoded keys: typed, length-prefixed fields in one string
//
// A field is a letter (S, I or R for string, integer, real), the length of the value as four
// decimal digits, and the value; a key is fields end to end: S0002ABI000212S0000. Fields count
// from 1.

// Whether a string is a well-formed key. A last field that is shorter than its length says counts
// as well formed.
ORX_EXPORT SdaiPrimitiveH IsEncodedKey(const SdaiPrimitiveH& key);

// The value of field number `place`: a string, integer or real as its letter says. The string
// "EMPTY VALUE" when the key has fewer fields; unset when an argument is missing or the place is
// below 1; for another letter, the value read as an integer, -1 if it is no number.
ORX_EXPORT SdaiPrimitiveH DecodeKey(const SdaiPrimitiveH& key, const SdaiPrimitiveH& place);

// The keys of a database model, document and part; "EMPTY VALUE" when it is missing.
//   model:    S_TYPE_REP, S_NEXT (integer), C_REVISION, C_NICKNAME
//   part:     S_PART_NUMBER, S_CHG_NUM, C_VERSION (integer), S_TYPE
//   document: of a type named ..._DOCUMENT: S_TYPE_REP, S_NAME, NOTES, S_FORMAT;
//             of a type named ..._DOCCAD: S_TYPE_REP, S_NAME, NOTES;
//             of any other: S_TYPE_REP, NOTES
// An unset attribute gives a field of length 0.
ORX_EXPORT SdaiPrimitiveH ConcatModelAtb(const SdaiPrimitiveH& model);
ORX_EXPORT SdaiPrimitiveH ConcatDocAtb(const SdaiPrimitiveH& document);
ORX_EXPORT SdaiPrimitiveH ConcatPartAtb(const SdaiPrimitiveH& part);

// ---- Effectivities and configurations, database to STEP

// Whether an effectivity is a range_effectivity, a date_effectivity, or an option_effectivity whose
// option_type is "option_range" or "option_date"; and the same for ranges and for dates alone.
ORX_EXPORT SdaiPrimitiveH IsRangeOrDateEffectivity(const SdaiPrimitiveH& effectivity);
ORX_EXPORT SdaiPrimitiveH IsRangeType(const SdaiPrimitiveH& effectivity);
ORX_EXPORT SdaiPrimitiveH IsDateType(const SdaiPrimitiveH& effectivity);

// The identifier of an effectivity: option_id of an option effectivity, id of a range or date
// effectivity; "EMPTY VALUE" when there is none.
ORX_EXPORT SdaiPrimitiveH GetIDEff(const SdaiPrimitiveH& effectivity);

// Whether an effectivity identifier (see ORXIdEff) ends in the type that the mode names:
// 1 range_effectivity, 2 date_effectivity, 3 option_range, 4 option_date. The shorter of the two
// texts beginning the longer is enough.
ORX_EXPORT SdaiPrimitiveH ExtractCFGType(const SdaiPrimitiveH& identifier,
                                         const SdaiPrimitiveH& mode);

// A bound of a range or option effectivity as decimal text: 1 the start, 2 the end; "" when it is
// not set or not asked for so.
ORX_EXPORT SdaiPrimitiveH GetRangeValue(const SdaiPrimitiveH& effectivity,
                                        const SdaiPrimitiveH& bound);

// Whether the end of a range effectivity is open: not set, or 0 or below. TRUE when the effectivity
// is missing or of another kind.
ORX_EXPORT SdaiPrimitiveH IsInfiniteRank(const SdaiPrimitiveH& effectivity);

// Whether the end of a dated effectivity is open: not set, or "00000000000000". TRUE when the
// effectivity is missing or of another kind.
ORX_EXPORT SdaiPrimitiveH IsInfiniteDate(const SdaiPrimitiveH& effectivity);

// The start and the end of a dated effectivity as new DATE_AND_TIME instances in the model of
// `anchor` (any instance of the target model). GetEndDate gives an unset handle and creates nothing
// when the end is not set; GetStartDate of an unset start creates a date of zeros.
ORX_EXPORT SdaiPrimitiveH GetStartDate(const SdaiPrimitiveH& effectivity,
                                       const SdaiPrimitiveH& anchor);
ORX_EXPORT SdaiPrimitiveH GetEndDate(const SdaiPrimitiveH& effectivity,
                                     const SdaiPrimitiveH& anchor);

// A new DATE_AND_TIME in the model, with its CALENDAR_DATE, LOCAL_TIME and (empty)
// COORDINATED_UNIVERSAL_TIME_OFFSET, from a date string: month, day, year (four digits), hour,
// minute, second, fourteen digits in all. What the string lacks counts as 0; no field is checked.
// Null, and nothing created, for a null model or one whose schema lacks one of the types.
ORX_EXPORT SdaiEntityInstance* BuildDatedEff(SdaiString date, SdaiModel* model);

// Whether the part is the design of the configuration_item.
ORX_EXPORT SdaiPrimitiveH IsPartInCfgitm(const SdaiPrimitiveH& part, const SdaiPrimitiveH& item);

// Whether the part is the design of any configuration_item of its model.
ORX_EXPORT SdaiPrimitiveH IsPartConfigurated(const SdaiPrimitiveH& part);

// Whether the part is configurated and one of its links (KORASS) is among those that the
// effectivity governs (usage).
ORX_EXPORT SdaiPrimitiveH IsUsedByPart(const SdaiPrimitiveH& part,
                                       const SdaiPrimitiveH& effectivity);

// The effectivity identifier: fields "ORX", id of the part's configuration item (of the model's
// last one when none has the part as its design), type of the effectivity. "EMPTY VALUE" when an
// argument is missing.
ORX_EXPORT SdaiPrimitiveH ORXIdEff(const SdaiPrimitiveH& part, const SdaiPrimitiveH& effectivity);

// The configuration identifier: fields "ORX", id of the configuration_item, id of the
// configuration_handler that applies to its design, where there is one. "EMPTY VALUE" when the item
// is missing.
ORX_EXPORT SdaiPrimitiveH ORXIdCfg(const SdaiPrimitiveH& item);

// The effectivity attributes: fields "range" or "date", id; for an option effectivity option_type,
// option_id, id. "EMPTY VALUE" when it is missing or of another kind.
ORX_EXPORT SdaiPrimitiveH ConcatEffAtb(const SdaiPrimitiveH& effectivity);

// Whether the DESCRIPTION of a CONFIGURATION_ITEM is exactly three length-prefixed string fields.
ORX_EXPORT SdaiPrimitiveH HasAORXValue(const SdaiPrimitiveH& item);

// ---- Effectivities and configurations, STEP to database

// A range bound as an integer; 0 when the string is missing or no number.
ORX_EXPORT SdaiPrimitiveH GetValue(const SdaiPrimitiveH& text);

// The date string (see BuildDatedEff) of a DATE_AND_TIME held by a select. "00000000000000" when it
// is missing or incomplete; a minute that is not set counts as 00, a second as 01.
ORX_EXPORT SdaiPrimitiveH GetDate(const SdaiPrimitiveH& select);

// Whether an effectivity attribute string (see ConcatEffAtb) is of the type that the mode names:
// 1 range, 2 date, 3 option_range, 4 option_date.
ORX_EXPORT SdaiPrimitiveH ExtractEFFType(const SdaiPrimitiveH& text, const SdaiPrimitiveH& mode);

// A value of an effectivity attribute string: 1 the effectivity's id, 2 the option's. "EMPTY VALUE"
// when there is none.
ORX_EXPORT SdaiPrimitiveH DecodeEFF(const SdaiPrimitiveH& text, const SdaiPrimitiveH& mode);

// Whether the DESCRIPTION of a CONFIGURATION_ITEM begins with the field "ORX".
ORX_EXPORT SdaiPrimitiveH IsAORXCfg(const SdaiPrimitiveH& item);

// ---- Placements
//
// A placement is twelve reals: the three columns of a rotation, then a translation.

// Appends to the list the placement of a daughter AXIS2_PLACEMENT_3D in a mother one. A null list
// stays null.
ORX_EXPORT void ComputeABSPlacement(const SdaiPrimitiveH& daughter, const SdaiPrimitiveH& mother,
                                    SdaiListClassOfSdaiReal*& list);

// Makes the list the placement that a CONTEXT_DEPENDENT_SHAPE_REPRESENTATION states, seen from the
// representation that the role names ("REP_1" or "REP_2"). The list stays as it is where the
// placement's items are not found in that representation.
ORX_EXPORT void GetPlacement0(const SdaiPrimitiveH& context, const SdaiString& role,
                              const SdaiPrimitiveH& list);

// GetPlacement0 for REP_1 and REP_2. They give "GetPlacement1 done" and "GetPlacement2 done".
ORX_EXPORT SdaiPrimitiveH GetPlacement1(const SdaiPrimitiveH& context, const SdaiPrimitiveH& list);
ORX_EXPORT SdaiPrimitiveH GetPlacement2(const SdaiPrimitiveH& context, const SdaiPrimitiveH& list);

// The real with the other sign; 0.0 for 0.0 and for a missing one.
ORX_EXPORT SdaiPrimitiveH Minus(const SdaiPrimitiveH& value);

// The placement of a component in its parent, as a new list; the argument is the assembly link (a
// NEXT_ASSEMBLY_USAGE_OCCURRENCE). The identity placement where the data do not state one.
ORX_EXPORT SdaiPrimitiveH GetAbsPlacement(const SdaiPrimitiveH& link);

// ---- Generic accessors

// The value of an attribute, taken out of its SELECT. The integer 0 when an argument is missing.
ORX_EXPORT SdaiPrimitiveH GetInst(const SdaiPrimitiveH& instance, const SdaiPrimitiveH& attribute);

// TRANSFORM_ITEM_1 (index 1) or TRANSFORM_ITEM_2 (any other index) of an
// ITEM_DEFINED_TRANSFORMATION held by a select. Unset when an argument is missing.
ORX_EXPORT SdaiPrimitiveH GetItem(const SdaiPrimitiveH& index,
                                  const SdaiPrimitiveH& transformation);

// The number of members of an aggregate; 0 when it is missing.
ORX_EXPORT SdaiPrimitiveH GetMemberCount(const SdaiPrimitiveH& aggregate);

// The DOCUMENT_FILE reached from an instance over the DEFINITION of a PROPERTY_DEFINITION. The
// integer 0 when the way leads elsewhere; unset when the instance is missing.
ORX_EXPORT SdaiPrimitiveH GetRepFromProperty(const SdaiPrimitiveH& instance);

// A new unique identifier: the environment variable LOGNAME ("RZ/ORX" when it is not set or empty),
// "-", and a UUID. The argument is not read.
ORX_EXPORT SdaiPrimitiveH GetUniqId(const SdaiPrimitiveH& ignored);

// Whether an attribute has no value. TRUE when the instance is missing.
ORX_EXPORT SdaiPrimitiveH IsFree(const SdaiPrimitiveH& instance, const SdaiPrimitiveH& attribute);

// Whether an instance is among the ITEMS of another.
ORX_EXPORT SdaiPrimitiveH PRDDFN_IsIn(const SdaiPrimitiveH& definition, const SdaiPrimitiveH& set);

// The string itself; "ORX", with a warning in the trace that names the attribute, when it is
// missing or empty.
ORX_EXPORT SdaiPrimitiveH ReadMandatory(const SdaiPrimitiveH& value,
                                        const SdaiPrimitiveH& attribute);

// The first `count` characters of a text; "NO VALUE" when an argument is missing.
ORX_EXPORT SdaiPrimitiveH ORXTrunc(const SdaiPrimitiveH& text, const SdaiPrimitiveH& count);

// ---- Product structure of the database

// Whether the part has links to components (KORASS).
ORX_EXPORT SdaiPrimitiveH IsAnAssembly(const SdaiPrimitiveH& part);

// Whether one of the root's links refers to the leaf (ref), and how many do, as a real.
ORX_EXPORT SdaiPrimitiveH IsInAssembly(const SdaiPrimitiveH& root, const SdaiPrimitiveH& leaf);
ORX_EXPORT SdaiPrimitiveH QuantifyRef(const SdaiPrimitiveH& root, const SdaiPrimitiveH& leaf);

// Whether a part_object has any model (models) or document (docs1, docs2, and so on up to the first
// that its entity type lacks).
ORX_EXPORT SdaiPrimitiveH IsModelDocLinked(const SdaiPrimitiveH& part);

// ---- Identity of instances
//
// Two instances are the same only when they are one; equal values do not make them so.

ORX_EXPORT SdaiPrimitiveH IsSame0(const SdaiPrimitiveH& a, const SdaiPrimitiveH& b);

// Whether a PRODUCT_DEFINITION is the one of a SHAPE_DEFINITION_REPRESENTATION.
ORX_EXPORT SdaiPrimitiveH IsSamePart(const SdaiPrimitiveH& definition, const SdaiPrimitiveH& shape);

// Whether a SHAPE_DEFINITION_REPRESENTATION is that of the relating (the parent), or of the related
// (the component) side of the link of a CONTEXT_DEPENDENT_SHAPE_REPRESENTATION.
ORX_EXPORT SdaiPrimitiveH IsSameRelating(const SdaiPrimitiveH& shape,
                                         const SdaiPrimitiveH& context);
ORX_EXPORT SdaiPrimitiveH IsSameRelated(const SdaiPrimitiveH& shape, const SdaiPrimitiveH& context);

// Whether an assembly link is the one of a CONTEXT_DEPENDENT_SHAPE_REPRESENTATION.
ORX_EXPORT SdaiPrimitiveH IsSameNAUO(const SdaiPrimitiveH& link, const SdaiPrimitiveH& context);

// Whether the representation of a SHAPE_DEFINITION_REPRESENTATION is REP_1 of the relationship of a
// CONTEXT_DEPENDENT_SHAPE_REPRESENTATION.
ORX_EXPORT SdaiPrimitiveH IsSameShapeRep1(const SdaiPrimitiveH& shape,
                                          const SdaiPrimitiveH& context);

// Whether an ITEM_DEFINED_TRANSFORMATION (no subtype of it) is the operator of a
// REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION.
ORX_EXPORT SdaiPrimitiveH IsSameIDT(const SdaiPrimitiveH& transformation,
                                    const SdaiPrimitiveH& relationship);

// Whether the FORMATION of a PRODUCT_DEFINITION is the product or formation that a document is
// associated with.
ORX_EXPORT SdaiPrimitiveH IsSameDocVersion(const SdaiPrimitiveH& definition,
                                           const SdaiPrimitiveH& association);

// ---- Names of models and documents

// Whether the first ".model" at or after the first "." ends the name.
ORX_EXPORT SdaiPrimitiveH IsaNARVOModel(const SdaiPrimitiveH& name);

// The same for the ID of the DOCUMENT_FILE reached over the DEFINITION of a PROPERTY_DEFINITION.
ORX_EXPORT SdaiPrimitiveH IsaNARVORepProperty(const SdaiPrimitiveH& representation);

// Whether what follows the first "." of a file name is longer than 3 characters and begins with
// "KOR"; and that extension, "" when it is not so.
ORX_EXPORT SdaiPrimitiveH IsaNARVOV5Doc(const SdaiPrimitiveH& fileName);
ORX_EXPORT SdaiPrimitiveH GetNARVOV5Ext(const SdaiPrimitiveH& fileName);

// A document name of the database as a file name (direction 1: every blank becomes the byte 0xB1)
// or a file name as a document name (any other direction: the reverse). "" when an argument is
// missing.
ORX_EXPORT SdaiPrimitiveH ORX_GetDocName(const SdaiPrimitiveH& name,
                                         const SdaiPrimitiveH& direction);

// The same for a model; the file name ends in ".model", and on the way back loses its last six
// characters, whatever they are.
ORX_EXPORT SdaiPrimitiveH ORX_GetModelName(const SdaiPrimitiveH& name,
                                           const SdaiPrimitiveH& direction);

// The model identifier of a database model: C_SOFT_VER ("EMPTY VALUE" where its type has no such
// attribute) in file form, "_ORXExchangedRep2_", and C_SOFT_VER as it is. "" when the model is
// missing.
ORX_EXPORT SdaiPrimitiveH ORX_GetModelId_Exp(const SdaiPrimitiveH& model);

// The fields of a model identifier  NAME _ORXExchangedRep_ NUMBER _ORXExchangedRep2_ NAME : the
// first in database form, "" when there is none; the number, -999 when there is none and 0 when it
// is no number; the last in database form, "EMPTY VALUE" when there is none. A tag at the very
// start does not count.
ORX_EXPORT SdaiPrimitiveH ORX_GetModelId_Imp1(const SdaiPrimitiveH& identifier);
ORX_EXPORT SdaiPrimitiveH ORX_GetModelId_Imp2(const SdaiPrimitiveH& identifier);
ORX_EXPORT SdaiPrimitiveH ORX_GetModelId_Imp3(const SdaiPrimitiveH& identifier);

// The key of a database document behind the marker "_ORX_"; "EMPTY VALUE" when it is missing.
ORX_EXPORT SdaiPrimitiveH EncodeNARVOV5Doc(const SdaiPrimitiveH& document);

// Whether a string begins with the marker "_ORX_".
ORX_EXPORT SdaiPrimitiveH IsEncodedNARVOV5(const SdaiPrimitiveH& value);

// Field number `place` of the key behind the marker (see DecodeKey). Unset without the marker;
// "EMPTY VALUE" when an argument is missing.
ORX_EXPORT SdaiPrimitiveH DecodeNARVOV5(const SdaiPrimitiveH& key, const SdaiPrimitiveH& place);

// The external name of a document or model: its ASSIGNED_ID or else the SOURCE_ID of its source;
// the name of a model file in database form. "" where there is none.
ORX_EXPORT SdaiPrimitiveH GetExternalName(const SdaiPrimitiveH& instance,
                                          const SdaiPrimitiveH& source);

// ---- Versions of parts
//
// The revisions of a part are asked of document management (KORDMInstance.h), by the identity that
// a `cdma_id` instance of the part's model records for it.

// Whether part A is the revision that directly follows part B.
ORX_EXPORT SdaiPrimitiveH IsNewer(const SdaiPrimitiveH& partA, const SdaiPrimitiveH& partB);

// Flag 1: the part through which the part's family of revisions was first seen, this one if it is
// the first; unset when the part has no recorded identity. Flag 0: whether another part of the
// family was seen before. FALSE for any other flag. The families seen are remembered, for the whole
// process, until RemoveValueVersion; a model may not be deleted before that.
ORX_EXPORT SdaiPrimitiveH IsVersion(const SdaiPrimitiveH& part, const SdaiPrimitiveH& flag);

// Forgets the families that IsVersion has seen. Always TRUE.
ORX_EXPORT SdaiPrimitiveH RemoveValueVersion();

// The version text of an imported part: itself when it has 1 to 3 characters, else the database's
// starting revision value, with a warning in the trace. "" when it is missing.
ORX_EXPORT SdaiPrimitiveH ReadPartVersion(const SdaiPrimitiveH& version);

}  // extern "C"

#ifdef __clang__
#pragma clang diagnostic pop
#endif

#endif
