// The mapping functions that a data-exchange engine calls by name while it moves product data
// between a PDM database (a model of the schema "cdma") and STEP exchange data (ISO 10303; a model
// of one of the application protocol schemas).
//
// The engine loads libORXExUtilities.so and finds each function by its plain name; ORXExportTable.h
// lists them with their arguments and results. What they have in common:
//
// - Arguments are value handles (SdaiPrimitiveH.h) and are never modified. The result is a handle
//   of its own, which the caller owns.
// - No function fails and nothing is thrown. Where an argument is missing, or memory runs out, the
//   result is the default that stands with the function; KORMemory.h tells whether memory was the
//   reason. An argument of another kind reads as nothing: as an empty text, the number 0, an
//   instance without attributes. What comes of that is the default, too, or stands with the
//   function. A logical is TRUE or FALSE, never UNKNOWN.
// - Each call opens a trace scope under the function's label and tells, when level 12 is switched
//   on, what it reads and decides (KORPSNTrace.h). Tracing never changes a result.
// - Nothing is kept between calls, except by IsVersion (see there). One call at a time; functions
//   that neither create instances nor keep versions may run from several threads over models that
//   no thread writes.
//
// With each function stand its arguments, its default, and what it reads: attributes, and extents
// of entity types. An entity instance is a "part", "model", "document" or "effectivity" of the
// database when it stands in a model of schema "cdma"; STEP entity types are written in upper case.

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
// as well formed; an empty string is no key.
//
// - key: the string
// - default: FALSE, when the key is missing
// - reads: the key alone
ORX_EXPORT SdaiPrimitiveH IsEncodedKey(const SdaiPrimitiveH& key);

// The value of field number `place`: a string, integer or real as its letter says. The string
// "EMPTY VALUE" when the key has fewer fields; for another letter, the value read as an integer, -1
// if it is no number.
//
// - key: the key
// - place: the number of the field, from 1
// - default: unset, when an argument is missing or the place is below 1; a key that is no text is
//   an empty one, of which place 1 is -1 and any other "EMPTY VALUE"
// - reads: the arguments alone
ORX_EXPORT SdaiPrimitiveH DecodeKey(const SdaiPrimitiveH& key, const SdaiPrimitiveH& place);

// The key of a database model. An unset attribute gives a field of length 0.
//
// - model: a model_object
// - default: "EMPTY VALUE", when the model is missing; "S0000I0000S0000S0000" for what is no
//   instance
// - reads: S_TYPE_REP, S_NEXT (an integer field), C_REVISION, C_NICKNAME of the model, in this
//   order
ORX_EXPORT SdaiPrimitiveH ConcatModelAtb(const SdaiPrimitiveH& model);

// The key of a database document: S_TYPE_REP, S_NAME, NOTES, S_FORMAT for one of the table
// DOCUMENT; S_TYPE_REP, S_NAME, NOTES for one of DOCCAD; S_TYPE_REP, NOTES for any other. The table
// is what follows the first "_" of the type's name (STORAGE_TABLE), the whole name where it has
// none. An unset attribute gives a field of length 0.
//
// - document: a document_object
// - default: "EMPTY VALUE", when the document is missing; "S0000S0000" for what is no instance
// - reads: the name of the document's type, and the attributes above
ORX_EXPORT SdaiPrimitiveH ConcatDocAtb(const SdaiPrimitiveH& document);

// The key of a database part. An unset attribute gives a field of length 0.
//
// - part: a part_object
// - default: "EMPTY VALUE", when the part is missing; "S0000S0000I0000S0000" for what is no
// instance
// - reads: S_PART_NUMBER, S_CHG_NUM, C_VERSION (an integer field), S_TYPE of the part, in this
//   order
ORX_EXPORT SdaiPrimitiveH ConcatPartAtb(const SdaiPrimitiveH& part);

// ---- Effectivities and configurations, database to STEP

// Whether an effectivity is a range_effectivity, a date_effectivity, or an option_effectivity whose
// option_type is "option_range" or "option_date".
//
// - effectivity: an effectivity of the database
// - default: FALSE
// - reads: the type of the effectivity, and option_type of an option effectivity
ORX_EXPORT SdaiPrimitiveH IsRangeOrDateEffectivity(const SdaiPrimitiveH& effectivity);

// Whether an effectivity is a range_effectivity, or an option_effectivity whose option_type is
// "option_range".
//
// - effectivity: an effectivity of the database
// - default: FALSE
// - reads: the type of the effectivity, and option_type of an option effectivity
ORX_EXPORT SdaiPrimitiveH IsRangeType(const SdaiPrimitiveH& effectivity);

// Whether an effectivity is a date_effectivity, or an option_effectivity whose option_type is
// "option_date".
//
// - effectivity: an effectivity of the database
// - default: FALSE
// - reads: the type of the effectivity, and option_type of an option effectivity
ORX_EXPORT SdaiPrimitiveH IsDateType(const SdaiPrimitiveH& effectivity);

// The identifier of an effectivity: option_id of an option effectivity, id of a range or date
// effectivity.
//
// - effectivity: an effectivity of the database
// - default: "EMPTY VALUE", when there is none
// - reads: option_id or id of the effectivity
ORX_EXPORT SdaiPrimitiveH GetIDEff(const SdaiPrimitiveH& effectivity);

// Whether an effectivity identifier (see ORXIdEff) ends in the type that the mode names: 1
// range_effectivity, 2 date_effectivity, 3 option_range, 4 option_date. The shorter of the two
// texts beginning the longer is enough.
//
// - identifier: the effectivity identifier
// - mode: 1 to 4
// - default: FALSE, for any other mode too
// - reads: the arguments alone
ORX_EXPORT SdaiPrimitiveH ExtractCFGType(const SdaiPrimitiveH& identifier,
                                         const SdaiPrimitiveH& mode);

// A bound of a range or option effectivity as decimal text.
//
// - effectivity: a range_effectivity or an option_effectivity
// - bound: 1 for the start, 2 for the end
// - default: "", when the bound is not set or not asked for so
// - reads: start_range or end_range of a range effectivity; option_start_range or option_end_range
//   of an option effectivity
ORX_EXPORT SdaiPrimitiveH GetRangeValue(const SdaiPrimitiveH& effectivity,
                                        const SdaiPrimitiveH& bound);

// Whether the end of a range effectivity is open: not set, or 0 or below. TRUE for an effectivity
// of another kind.
//
// - effectivity: a range_effectivity or an option_effectivity
// - default: TRUE, when the effectivity is missing
// - reads: end_range of a range effectivity, option_end_range of an option effectivity
ORX_EXPORT SdaiPrimitiveH IsInfiniteRank(const SdaiPrimitiveH& effectivity);

// Whether the end of a dated effectivity is open: not set, or "00000000000000". TRUE for an
// effectivity of another kind.
//
// - effectivity: a date_effectivity or an option_effectivity
// - default: TRUE, when the effectivity is missing
// - reads: end_date of a date effectivity, option_end_date of an option effectivity
ORX_EXPORT SdaiPrimitiveH IsInfiniteDate(const SdaiPrimitiveH& effectivity);

// The start of a dated effectivity as a new DATE_AND_TIME (see BuildDatedEff) in the model of the
// anchor. A start that is not set gives a date of zeros.
//
// - effectivity: a date_effectivity or an option_effectivity
// - anchor: any instance of the model to create in
// - default: unset, when an argument is missing; a date of zeros for an effectivity of another kind
// - reads: start_date of a date effectivity, option_start_date of an option effectivity
ORX_EXPORT SdaiPrimitiveH GetStartDate(const SdaiPrimitiveH& effectivity,
                                       const SdaiPrimitiveH& anchor);

// The end of a dated effectivity as a new DATE_AND_TIME (see BuildDatedEff) in the model of the
// anchor.
//
// - effectivity: a date_effectivity or an option_effectivity
// - anchor: any instance of the model to create in
// - default: unset, and nothing created, when an argument is missing, the end is not set or the
//   effectivity is of another kind
// - reads: end_date of a date effectivity, option_end_date of an option effectivity
ORX_EXPORT SdaiPrimitiveH GetEndDate(const SdaiPrimitiveH& effectivity,
                                     const SdaiPrimitiveH& anchor);

// A new DATE_AND_TIME in the model, with its CALENDAR_DATE, LOCAL_TIME and (empty)
// COORDINATED_UNIVERSAL_TIME_OFFSET, from a date string. What the string lacks counts as 0; no
// field is checked.
//
// - date: a date string: month, day, year (four digits), hour, minute, second, fourteen digits in
//   all
// - model: the model to create in
// - default: null, and nothing created, for a null model or one whose schema lacks one of the
// types;
//   where memory runs out on the way, what was created stays
// - reads: the date alone
ORX_EXPORT SdaiEntityInstance* BuildDatedEff(SdaiString date, SdaiModel* model);

// Whether the part is the design of the configuration_item.
//
// - part: a part_object
// - item: a configuration_item of the database
// - default: FALSE
// - reads: design of the item
ORX_EXPORT SdaiPrimitiveH IsPartInCfgitm(const SdaiPrimitiveH& part, const SdaiPrimitiveH& item);

// Whether the part is the design of any configuration_item of its model.
//
// - part: a part_object
// - default: FALSE
// - reads: design of the configuration_item instances of the part's model
ORX_EXPORT SdaiPrimitiveH IsPartConfigurated(const SdaiPrimitiveH& part);

// Whether the part is configurated and one of its links is among those that the effectivity
// governs.
//
// - part: a part_object
// - effectivity: an effectivity of the database
// - default: FALSE
// - reads: KORASS of the part, usage of the effectivity, and what IsPartConfigurated reads
ORX_EXPORT SdaiPrimitiveH IsUsedByPart(const SdaiPrimitiveH& part,
                                       const SdaiPrimitiveH& effectivity);

// The effectivity identifier: fields "ORX", id of the part's configuration item (of the model's
// last one when none has the part as its design), type of the effectivity: option_type of an option
// effectivity, "range_effectivity" or "date_effectivity"; "UNDEFINED" where option_type is not set
// and for an effectivity of another kind.
//
// - part: a part_object
// - effectivity: an effectivity of the database
// - default: "EMPTY VALUE", when an argument is missing; an empty id where the part is no instance
// - reads: design and id of the configuration_item instances of the part's model; the type of the
//   effectivity, option_type of an option effectivity
ORX_EXPORT SdaiPrimitiveH ORXIdEff(const SdaiPrimitiveH& part, const SdaiPrimitiveH& effectivity);

// The configuration identifier: fields "ORX", id of the configuration_item, id of the
// configuration_handler that applies to its design, where there is one.
//
// - item: a configuration_item of the database
// - default: "EMPTY VALUE", when the item is missing; "S0003ORXS0000" for what is no instance
// - reads: id and design of the item; apply and id of the configuration_handler instances of the
//   design's model
ORX_EXPORT SdaiPrimitiveH ORXIdCfg(const SdaiPrimitiveH& item);

// The effectivity attributes: fields "range" or "date", id; for an option effectivity option_type,
// option_id, id.
//
// - effectivity: an effectivity of the database
// - default: "EMPTY VALUE", when it is missing or of another kind
// - reads: the type of the effectivity, id; option_type and option_id of an option effectivity
ORX_EXPORT SdaiPrimitiveH ConcatEffAtb(const SdaiPrimitiveH& effectivity);

// Whether the description of a CONFIGURATION_ITEM is exactly three length-prefixed string fields.
//
// - item: a CONFIGURATION_ITEM of the exchange data
// - default: FALSE
// - reads: DESCRIPTION of the item
ORX_EXPORT SdaiPrimitiveH HasAORXValue(const SdaiPrimitiveH& item);

// ---- Effectivities and configurations, STEP to database

// A range bound as an integer.
//
// - text: the decimal text
// - default: 0, when the text is missing or no number
// - reads: the text alone
ORX_EXPORT SdaiPrimitiveH GetValue(const SdaiPrimitiveH& text);

// The date string (see BuildDatedEff) of a DATE_AND_TIME held by a select. A minute that is not set
// counts as 00, a second as 01.
//
// - select: the select, or the DATE_AND_TIME itself
// - default: "00000000000000", when it is missing or incomplete
// - reads: DATE_COMPONENT with its YEAR_COMPONENT, MONTH_COMPONENT, DAY_COMPONENT; TIME_COMPONENT
//   with its HOUR_COMPONENT, MINUTE_COMPONENT, SECOND_COMPONENT
ORX_EXPORT SdaiPrimitiveH GetDate(const SdaiPrimitiveH& select);

// Whether an effectivity attribute string (see ConcatEffAtb) is of the type that the mode names: 1
// range, 2 date, 3 option_range, 4 option_date.
//
// - text: the effectivity attribute string
// - mode: 1 to 4
// - default: FALSE, for any other mode too
// - reads: the arguments alone
ORX_EXPORT SdaiPrimitiveH ExtractEFFType(const SdaiPrimitiveH& text, const SdaiPrimitiveH& mode);

// A value of an effectivity attribute string (see ConcatEffAtb).
//
// - text: the effectivity attribute string
// - mode: 1 for the effectivity's id, 2 for the option's
// - default: "EMPTY VALUE", when there is none
// - reads: the arguments alone
ORX_EXPORT SdaiPrimitiveH DecodeEFF(const SdaiPrimitiveH& text, const SdaiPrimitiveH& mode);

// Whether the description of a CONFIGURATION_ITEM begins with the field "ORX".
//
// - item: a CONFIGURATION_ITEM of the exchange data
// - default: FALSE
// - reads: DESCRIPTION of the item
ORX_EXPORT SdaiPrimitiveH IsAORXCfg(const SdaiPrimitiveH& item);

// ---- Placements
//
// A placement is twelve reals: the three columns of a rotation, then a translation.

// Appends to the list the placement of a daughter AXIS2_PLACEMENT_3D in a mother one. A null list
// stays null.
//
// - daughter: the AXIS2_PLACEMENT_3D of the component
// - mother: the AXIS2_PLACEMENT_3D of the parent
// - list: the list to append to
// - default: for an unset axis (0,0,1), for an unset reference direction (1,0,0), or (0,1,0) where
//   the axis lies along x, for an unset location the origin
// - reads: LOCATION, AXIS and REF_DIRECTION of both, with COORDINATES and DIRECTION_RATIOS
ORX_EXPORT void ComputeABSPlacement(const SdaiPrimitiveH& daughter, const SdaiPrimitiveH& mother,
                                    SdaiListClassOfSdaiReal*& list);

// Makes the list the placement that a CONTEXT_DEPENDENT_SHAPE_REPRESENTATION states, seen from the
// representation that the role names.
//
// - context: the CONTEXT_DEPENDENT_SHAPE_REPRESENTATION
// - role: "REP_1" or "REP_2"
// - list: the list to fill
// - default: the list as it is, where the placement's items are not found in that representation
// - reads: REPRESENTATION_RELATION of the context; its TRANSFORMATION_OPERATOR with
//   TRANSFORM_ITEM_1 and TRANSFORM_ITEM_2, and ITEMS of the representation; of the items what
//   ComputeABSPlacement reads
ORX_EXPORT void GetPlacement0(const SdaiPrimitiveH& context, const SdaiString& role,
                              const SdaiPrimitiveH& list);

// GetPlacement0 for REP_1. Gives "GetPlacement1 done", whatever became of the list.
//
// - context: the CONTEXT_DEPENDENT_SHAPE_REPRESENTATION
// - list: the list to fill
// - default: "GetPlacement1 done"
// - reads: what GetPlacement0 reads
ORX_EXPORT SdaiPrimitiveH GetPlacement1(const SdaiPrimitiveH& context, const SdaiPrimitiveH& list);

// GetPlacement0 for REP_2. Gives "GetPlacement2 done", whatever became of the list.
//
// - context: the CONTEXT_DEPENDENT_SHAPE_REPRESENTATION
// - list: the list to fill
// - default: "GetPlacement2 done"
// - reads: what GetPlacement0 reads
ORX_EXPORT SdaiPrimitiveH GetPlacement2(const SdaiPrimitiveH& context, const SdaiPrimitiveH& list);

// The real with the other sign; 0.0 for 0.0.
//
// - value: a number
// - default: 0.0
// - reads: the value alone
ORX_EXPORT SdaiPrimitiveH Minus(const SdaiPrimitiveH& value);

// The placement of a component in its parent, as a new list.
//
// - link: the assembly link, a NEXT_ASSEMBLY_USAGE_OCCURRENCE
// - default: the identity placement (1,0,0, 0,1,0, 0,0,1, 0,0,0), where the data do not state one
// - reads: the CONTEXT_DEPENDENT_SHAPE_REPRESENTATION of the link; its TRANSFORMATION_OPERATOR;
//   RELATING_PRODUCT_DEFINITION and RELATED_PRODUCT_DEFINITION of the link and the
//   SHAPE_DEFINITION_REPRESENTATION of each; REP_1 and REP_2 of the relationship and the ITEMS of
//   both representations; of a cartesian transformation operator LOCAL_ORIGIN, AXIS1, AXIS2, AXIS3
ORX_EXPORT SdaiPrimitiveH GetAbsPlacement(const SdaiPrimitiveH& link);

// ---- Generic accessors

// The value of an attribute, taken out of its SELECT; unset when the attribute is not set.
//
// - instance: any instance
// - attribute: the name of the attribute
// - default: the integer 0, when an argument is missing; unset for what is no instance
// - reads: the attribute of the instance
ORX_EXPORT SdaiPrimitiveH GetInst(const SdaiPrimitiveH& instance, const SdaiPrimitiveH& attribute);

// An item of an ITEM_DEFINED_TRANSFORMATION held by a select.
//
// - index: 1 for TRANSFORM_ITEM_1, any other number for TRANSFORM_ITEM_2
// - transformation: the select, or the ITEM_DEFINED_TRANSFORMATION itself
// - default: unset, when an argument is missing; an index that is no number counts as 0
// - reads: TRANSFORM_ITEM_1 or TRANSFORM_ITEM_2
ORX_EXPORT SdaiPrimitiveH GetItem(const SdaiPrimitiveH& index,
                                  const SdaiPrimitiveH& transformation);

// The number of members of an aggregate.
//
// - aggregate: the aggregate
// - default: 0, when it is missing
// - reads: the aggregate alone
ORX_EXPORT SdaiPrimitiveH GetMemberCount(const SdaiPrimitiveH& aggregate);

// The DOCUMENT_FILE reached from an instance over the definition of a PROPERTY_DEFINITION. The
// integer 0 when the way leads elsewhere.
//
// - instance: the instance whose DEFINITION is the PROPERTY_DEFINITION
// - default: unset, when the instance is missing; the integer 0 for what is no instance
// - reads: DEFINITION of the instance, and DEFINITION of the PROPERTY_DEFINITION
ORX_EXPORT SdaiPrimitiveH GetRepFromProperty(const SdaiPrimitiveH& instance);

// A new unique identifier: the environment variable LOGNAME ("RZ/ORX" when it is not set or empty),
// "-", and a UUID.
//
// - ignored: not read
// - default: ""
// - reads: LOGNAME
ORX_EXPORT SdaiPrimitiveH GetUniqId(const SdaiPrimitiveH& ignored);

// Whether an attribute has no value.
//
// - instance: any instance
// - attribute: the name of the attribute
// - default: TRUE, when the instance is missing or lacks the attribute
// - reads: the attribute of the instance
ORX_EXPORT SdaiPrimitiveH IsFree(const SdaiPrimitiveH& instance, const SdaiPrimitiveH& attribute);

// Whether an instance is among the items of another.
//
// - definition: the instance that is looked for
// - set: the instance that has the items
// - default: FALSE
// - reads: ITEMS of the set
ORX_EXPORT SdaiPrimitiveH PRDDFN_IsIn(const SdaiPrimitiveH& definition, const SdaiPrimitiveH& set);

// The string itself; "ORX", with a warning in the trace that names the attribute, when it is
// missing or empty.
//
// - value: the string
// - attribute: the name of the attribute that the string is for
// - default: "ORX"
// - reads: the arguments alone
ORX_EXPORT SdaiPrimitiveH ReadMandatory(const SdaiPrimitiveH& value,
                                        const SdaiPrimitiveH& attribute);

// The first `count` characters of a text: all of a shorter one, none for a negative count.
//
// - text: the text
// - count: the number of characters
// - default: "NO VALUE", when an argument is missing; "" for a text that is none
// - reads: the arguments alone
ORX_EXPORT SdaiPrimitiveH ORXTrunc(const SdaiPrimitiveH& text, const SdaiPrimitiveH& count);

// ---- Product structure of the database

// Whether the part has links to components.
//
// - part: a part_object
// - default: FALSE
// - reads: KORASS of the part
ORX_EXPORT SdaiPrimitiveH IsAnAssembly(const SdaiPrimitiveH& part);

// Whether one of the root's links refers to the leaf.
//
// - root: the part_object that may be the assembly
// - leaf: the part_object that may be its component
// - default: FALSE
// - reads: KORASS of the root, and ref of its links
ORX_EXPORT SdaiPrimitiveH IsInAssembly(const SdaiPrimitiveH& root, const SdaiPrimitiveH& leaf);

// How many of the root's links refer to the leaf, as a real.
//
// - root: the part_object that may be the assembly
// - leaf: the part_object that may be its component
// - default: 0.0
// - reads: KORASS of the root, and ref of its links
ORX_EXPORT SdaiPrimitiveH QuantifyRef(const SdaiPrimitiveH& root, const SdaiPrimitiveH& leaf);

// Whether a part_object has any model or document.
//
// - part: a part_object; FALSE for an instance of any other type
// - default: FALSE
// - reads: models, and docs1, docs2, and so on up to the first that the part's entity type lacks
ORX_EXPORT SdaiPrimitiveH IsModelDocLinked(const SdaiPrimitiveH& part);

// ---- Identity of instances
//
// Two instances are the same only when they are one; equal values do not make them so.

// Whether two instances are the same.
//
// - a: an instance
// - b: an instance
// - default: FALSE
// - reads: the arguments alone
ORX_EXPORT SdaiPrimitiveH IsSame0(const SdaiPrimitiveH& a, const SdaiPrimitiveH& b);

// Whether a PRODUCT_DEFINITION is the one of a SHAPE_DEFINITION_REPRESENTATION.
//
// - definition: the PRODUCT_DEFINITION
// - shape: the SHAPE_DEFINITION_REPRESENTATION
// - default: FALSE
// - reads: DEFINITION of the shape, and DEFINITION of the PRODUCT_DEFINITION_SHAPE that it is
ORX_EXPORT SdaiPrimitiveH IsSamePart(const SdaiPrimitiveH& definition, const SdaiPrimitiveH& shape);

// Whether a SHAPE_DEFINITION_REPRESENTATION is that of the relating side (the parent) of the link
// of a CONTEXT_DEPENDENT_SHAPE_REPRESENTATION.
//
// - shape: the SHAPE_DEFINITION_REPRESENTATION
// - context: the CONTEXT_DEPENDENT_SHAPE_REPRESENTATION
// - default: FALSE
// - reads: DEFINITION of the shape and of what it is; REPRESENTED_PRODUCT_RELATION of the context,
//   its DEFINITION, and RELATING_PRODUCT_DEFINITION of that link
ORX_EXPORT SdaiPrimitiveH IsSameRelating(const SdaiPrimitiveH& shape,
                                         const SdaiPrimitiveH& context);

// Whether a SHAPE_DEFINITION_REPRESENTATION is that of the related side (the component) of the link
// of a CONTEXT_DEPENDENT_SHAPE_REPRESENTATION.
//
// - shape: the SHAPE_DEFINITION_REPRESENTATION
// - context: the CONTEXT_DEPENDENT_SHAPE_REPRESENTATION
// - default: FALSE
// - reads: DEFINITION of the shape and of what it is; REPRESENTED_PRODUCT_RELATION of the context,
//   its DEFINITION, and RELATED_PRODUCT_DEFINITION of that link
ORX_EXPORT SdaiPrimitiveH IsSameRelated(const SdaiPrimitiveH& shape, const SdaiPrimitiveH& context);

// Whether an assembly link is the one of a CONTEXT_DEPENDENT_SHAPE_REPRESENTATION.
//
// - link: the NEXT_ASSEMBLY_USAGE_OCCURRENCE
// - context: the CONTEXT_DEPENDENT_SHAPE_REPRESENTATION
// - default: FALSE
// - reads: REPRESENTED_PRODUCT_RELATION of the context, and its DEFINITION
ORX_EXPORT SdaiPrimitiveH IsSameNAUO(const SdaiPrimitiveH& link, const SdaiPrimitiveH& context);

// Whether the representation of a SHAPE_DEFINITION_REPRESENTATION is the first of the relationship
// of a CONTEXT_DEPENDENT_SHAPE_REPRESENTATION.
//
// - shape: the SHAPE_DEFINITION_REPRESENTATION
// - context: the CONTEXT_DEPENDENT_SHAPE_REPRESENTATION
// - default: FALSE
// - reads: USED_REPRESENTATION of the shape; REPRESENTATION_RELATION of the context, and its REP_1
ORX_EXPORT SdaiPrimitiveH IsSameShapeRep1(const SdaiPrimitiveH& shape,
                                          const SdaiPrimitiveH& context);

// Whether an ITEM_DEFINED_TRANSFORMATION (no subtype of it) is the operator of a
// REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION.
//
// - transformation: the ITEM_DEFINED_TRANSFORMATION
// - relationship: the REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION
// - default: FALSE
// - reads: TRANSFORMATION_OPERATOR of the relationship
ORX_EXPORT SdaiPrimitiveH IsSameIDT(const SdaiPrimitiveH& transformation,
                                    const SdaiPrimitiveH& relationship);

// Whether the formation of a PRODUCT_DEFINITION is the product or formation that a document is
// associated with.
//
// - definition: the PRODUCT_DEFINITION
// - association: the DOCUMENT_PRODUCT_ASSOCIATION
// - default: FALSE
// - reads: FORMATION of the definition, RELATED_PRODUCT_OR_FORMATION of the association
ORX_EXPORT SdaiPrimitiveH IsSameDocVersion(const SdaiPrimitiveH& definition,
                                           const SdaiPrimitiveH& association);

// ---- Names of models and documents

// Whether the first ".model" at or after the first "." ends the name.
//
// - name: a file name
// - default: FALSE
// - reads: the name alone
ORX_EXPORT SdaiPrimitiveH IsaNARVOModel(const SdaiPrimitiveH& name);

// IsaNARVOModel for the identifier of the DOCUMENT_FILE reached over the definition of a
// PROPERTY_DEFINITION.
//
// - representation: the instance whose DEFINITION is the PROPERTY_DEFINITION
// - default: FALSE
// - reads: what GetRepFromProperty reads, and ID of the DOCUMENT_FILE
ORX_EXPORT SdaiPrimitiveH IsaNARVORepProperty(const SdaiPrimitiveH& representation);

// Whether what follows the first "." of a file name is longer than 3 characters and begins with
// "KOR".
//
// - fileName: a file name
// - default: FALSE
// - reads: the file name alone
ORX_EXPORT SdaiPrimitiveH IsaNARVOV5Doc(const SdaiPrimitiveH& fileName);

// What follows the first "." of a file name, where it is longer than 3 characters and begins with
// "KOR".
//
// - fileName: a file name
// - default: "", for any other name
// - reads: the file name alone
ORX_EXPORT SdaiPrimitiveH GetNARVOV5Ext(const SdaiPrimitiveH& fileName);

// A document name of the database as a file name (every blank becomes the byte 0xB1), or a file
// name as a document name (the reverse).
//
// - name: the name to convert
// - direction: 1 to the file name, any other number to the document name
// - default: "", when an argument is missing
// - reads: the arguments alone
ORX_EXPORT SdaiPrimitiveH ORX_GetDocName(const SdaiPrimitiveH& name,
                                         const SdaiPrimitiveH& direction);

// A model name of the database as a file name (every blank becomes the byte 0xB1, and ".model"
// follows), or a file name as a model name (the reverse; the last six characters go, whatever they
// are).
//
// - name: the name to convert
// - direction: 1 to the file name, any other number to the model name
// - default: "", when an argument is missing; ".model" to the file name of what is no text
// - reads: the arguments alone
ORX_EXPORT SdaiPrimitiveH ORX_GetModelName(const SdaiPrimitiveH& name,
                                           const SdaiPrimitiveH& direction);

// The model identifier of a database model: C_SOFT_VER in file form, "_ORXExchangedRep2_", and
// C_SOFT_VER as it is. "EMPTY VALUE" stands for C_SOFT_VER where the model's type has no such
// attribute.
//
// - model: a model_object
// - default: "", when the model is missing; of what is no instance, the identifier of a model whose
//   type has no such attribute
// - reads: C_SOFT_VER of the model; S_TYPE_REP and S_NEXT, too, which the identifier drops
ORX_EXPORT SdaiPrimitiveH ORX_GetModelId_Exp(const SdaiPrimitiveH& model);

// The first field of a model identifier NAME _ORXExchangedRep_ NUMBER _ORXExchangedRep2_ NAME, in
// database form. A tag at the very start does not count.
//
// - identifier: the model identifier
// - default: "", when there is none
// - reads: the identifier alone
ORX_EXPORT SdaiPrimitiveH ORX_GetModelId_Imp1(const SdaiPrimitiveH& identifier);

// The number in a model identifier (see ORX_GetModelId_Imp1); 0 when it is no number.
//
// - identifier: the model identifier
// - default: -999, when there is none
// - reads: the identifier alone
ORX_EXPORT SdaiPrimitiveH ORX_GetModelId_Imp2(const SdaiPrimitiveH& identifier);

// The last field of a model identifier (see ORX_GetModelId_Imp1), in database form.
//
// - identifier: the model identifier
// - default: "EMPTY VALUE", when there is none
// - reads: the identifier alone
ORX_EXPORT SdaiPrimitiveH ORX_GetModelId_Imp3(const SdaiPrimitiveH& identifier);

// The key of a database document (see ConcatDocAtb) behind the marker "_ORX_".
//
// - document: a document_object
// - default: "EMPTY VALUE", when the document is missing; "_ORX_S0000S0000" for what is no instance
// - reads: what ConcatDocAtb reads
ORX_EXPORT SdaiPrimitiveH EncodeNARVOV5Doc(const SdaiPrimitiveH& document);

// Whether a string begins with the marker "_ORX_".
//
// - value: the string
// - default: FALSE
// - reads: the value alone
ORX_EXPORT SdaiPrimitiveH IsEncodedNARVOV5(const SdaiPrimitiveH& value);

// Field number `place` of the key behind the marker "_ORX_" (see DecodeKey). Unset without the
// marker.
//
// - key: the key with its marker
// - place: the number of the field, from 1
// - default: "EMPTY VALUE", when an argument is missing; unset for a key that is no text
// - reads: the arguments alone
ORX_EXPORT SdaiPrimitiveH DecodeNARVOV5(const SdaiPrimitiveH& key, const SdaiPrimitiveH& place);

// The external name of a document or model: its assigned identifier or else the identifier of its
// source; the name of a model file in database form.
//
// - instance: what the name was assigned to
// - source: the source, asked when the instance has no identifier
// - default: "", when there is none; an instance that is none has no identifier
// - reads: ASSIGNED_ID of the instance, SOURCE_ID of the source
ORX_EXPORT SdaiPrimitiveH GetExternalName(const SdaiPrimitiveH& instance,
                                          const SdaiPrimitiveH& source);

// ---- Versions of parts
//
// The revisions of a part are asked of document management (KORDMInstance.h), by the identity that
// a `cdma_id` instance of the part's model records for it.

// Whether part A is the revision that directly follows part B.
//
// - partA: a part_object
// - partB: a part_object of the same model
// - default: FALSE
// - reads: CdmaObject, Coid, Compid, Caenv and Catab of the cdma_id instances of part A's model;
//   the revisions that document management knows, or the families that IsVersion has seen
ORX_EXPORT SdaiPrimitiveH IsNewer(const SdaiPrimitiveH& partA, const SdaiPrimitiveH& partB);

// For flag 1 the part through which the part's family of revisions was first seen, this one if it
// is the first; for flag 0 whether another part of the family was seen before. The families seen
// are remembered, for the whole process, until RemoveValueVersion; a model may not be deleted
// before that.
//
// - part: a part_object
// - flag: 1 or 0
// - default: for flag 1 unset, when the part is missing, has no recorded identity or is not known
// to
//   document management; for flag 0, any other flag and none, FALSE
// - reads: CdmaObject, Coid, Compid, Caenv and Catab of the cdma_id instances of the part's model;
//   the revisions that document management knows
ORX_EXPORT SdaiPrimitiveH IsVersion(const SdaiPrimitiveH& part, const SdaiPrimitiveH& flag);

// Forgets the families that IsVersion has seen. Always TRUE.
//
// - default: TRUE
// - reads: nothing
ORX_EXPORT SdaiPrimitiveH RemoveValueVersion();

// The version text of an imported part: itself when it has 1 to 3 characters, else the database's
// starting revision value, with a warning in the trace.
//
// - version: the version text
// - default: "", when it is missing; the starting revision value for what is no text
// - reads: the version, and the starting revision value (KORDMNarvo.h)
ORX_EXPORT SdaiPrimitiveH ReadPartVersion(const SdaiPrimitiveH& version);

}  // extern "C"

#ifdef __clang__
#pragma clang diagnostic pop
#endif

#endif
