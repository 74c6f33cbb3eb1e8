// The mapping functions that a data-exchange engine calls by name to move product data between a
// PDM database (a model of the schema "cdma") and STEP exchange data (ISO 10303; a model of one of
// the application protocol schemas).
//
// The engine loads libORXExUtilities.so and finds each function by its plain name; ORXExportTable.h
// lists them with their arguments and results. They have the following in common:
//
// - Arguments are value handles (SdaiPrimitiveH.h) and are never modified. The result is a new
//   handle, owned by the caller.
// - No function fails or throws. If an argument is missing, or memory runs out, the result is the
//   function's documented default; KORMemory.h reports whether memory was the reason. An argument
//   of another kind reads as empty: as an empty text, the number 0, or an instance without
//   attributes. The result is then the default too, unless the function documents another. A
//   logical result is TRUE or FALSE, never UNKNOWN.
// - Each call opens a trace scope under the function's label and, if level 12 is active, traces
//   what it reads and decides (KORPSNTrace.h). Tracing never changes a result.
// - No state is kept between calls, except by IsVersion (see there). Functions that neither create
//   instances nor use that state may run on several threads at once, over models that no thread
//   writes; all others run one at a time.
//
// Each function documents its arguments, its default, and the attributes and entity extents that it
// reads. "Part", "model", "document" and "effectivity" are entity instances of the database, a
// model of schema "cdma"; STEP entity types are written in upper case.

#ifndef ORXEXUTILITIES_H
#define ORXEXUTILITIES_H

#include "SdaiAggrInstance.h"
#include "SdaiModel.h"
#include "SdaiPrimitiveH.h"
#include "SdaiString.h"

#define ORX_EXPORT __attribute__((visibility("default")))

#ifdef __clang__
// The functions have C linkage for plain symbol names only; otherwise they are C++.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif

extern "C" {

// ---- Encoded keys: typed, length-prefixed fields in one string
//
// A field is a letter (S, I or R for string, integer, real), the length of the value as four
// decimal digits, and the value; a key is a concatenation of fields: S0002ABI000212S0000. Fields
// are numbered from 1.

// Whether a string is a well-formed key. The last field may be shorter than its stated length; an
// empty string is not a key.
//
// - key: the string
// - default: FALSE if the key is missing
// - reads: only the key
ORX_EXPORT SdaiPrimitiveH IsEncodedKey(const SdaiPrimitiveH& key);

// The value of field number `place`: a string, integer or real according to its letter. "EMPTY
// VALUE" if the key has fewer fields. A field with any other letter is read as an integer, or as -1
// if it is not a number.
//
// - key: the key
// - place: the number of the field, from 1
// - default: unset if an argument is missing or the place is below 1; a key that is not a text
//   counts as empty: -1 at place 1 and "EMPTY VALUE" at any other
// - reads: only the arguments
ORX_EXPORT SdaiPrimitiveH DecodeKey(const SdaiPrimitiveH& key, const SdaiPrimitiveH& place);

// The key of a database model. An unset attribute becomes a field of length 0.
//
// - model: a model_object
// - default: "EMPTY VALUE" if the model is missing; "S0000I0000S0000S0000" if it is not an instance
// - reads: S_TYPE_REP, S_NEXT (an integer field), C_REVISION and C_NICKNAME of the model, in this
//   order
ORX_EXPORT SdaiPrimitiveH ConcatModelAtb(const SdaiPrimitiveH& model);

// The key of a database document: S_TYPE_REP, S_NAME, NOTES, S_FORMAT for the table DOCUMENT;
// S_TYPE_REP, S_NAME, NOTES for DOCCAD; S_TYPE_REP, NOTES for any other table. The table is the
// part of the type's name after the first "_" (STORAGE_TABLE), or the whole name if there is no
// "_". An unset attribute becomes a field of length 0.
//
// - document: a document_object
// - default: "EMPTY VALUE" if the document is missing; "S0000S0000" if it is not an instance
// - reads: the name of the document's type, and the attributes above
ORX_EXPORT SdaiPrimitiveH ConcatDocAtb(const SdaiPrimitiveH& document);

// The key of a database part. An unset attribute becomes a field of length 0.
//
// - part: a part_object
// - default: "EMPTY VALUE" if the part is missing; "S0000S0000I0000S0000" if it is not an instance
// - reads: S_PART_NUMBER, S_CHG_NUM, C_VERSION (an integer field) and S_TYPE of the part, in this
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
// - default: "EMPTY VALUE" if there is none
// - reads: option_id or id of the effectivity
ORX_EXPORT SdaiPrimitiveH GetIDEff(const SdaiPrimitiveH& effectivity);

// Whether an effectivity identifier (see ORXIdEff) ends in the type selected by the mode: 1
// range_effectivity, 2 date_effectivity, 3 option_range, 4 option_date. The types also match if one
// of them is a prefix of the other.
//
// - identifier: the effectivity identifier
// - mode: 1 to 4
// - default: FALSE, also for any other mode
// - reads: only the arguments
ORX_EXPORT SdaiPrimitiveH ExtractCFGType(const SdaiPrimitiveH& identifier,
                                         const SdaiPrimitiveH& mode);

// A bound of a range or option effectivity as a decimal text.
//
// - effectivity: a range_effectivity or an option_effectivity
// - bound: 1 for the start, 2 for the end
// - default: "" if the bound is not set, or for any other number
// - reads: start_range or end_range of a range effectivity; option_start_range or option_end_range
//   of an option effectivity
ORX_EXPORT SdaiPrimitiveH GetRangeValue(const SdaiPrimitiveH& effectivity,
                                        const SdaiPrimitiveH& bound);

// Whether the end of a range effectivity is open: not set, or at most 0. TRUE for an effectivity of
// another kind.
//
// - effectivity: a range_effectivity or an option_effectivity
// - default: TRUE if the effectivity is missing
// - reads: end_range of a range effectivity, option_end_range of an option effectivity
ORX_EXPORT SdaiPrimitiveH IsInfiniteRank(const SdaiPrimitiveH& effectivity);

// Whether the end of a dated effectivity is open: not set, or "00000000000000". TRUE for an
// effectivity of another kind.
//
// - effectivity: a date_effectivity or an option_effectivity
// - default: TRUE if the effectivity is missing
// - reads: end_date of a date effectivity, option_end_date of an option effectivity
ORX_EXPORT SdaiPrimitiveH IsInfiniteDate(const SdaiPrimitiveH& effectivity);

// The start of a dated effectivity as a new DATE_AND_TIME (see BuildDatedEff) in the model of the
// anchor. If the start is not set, all fields of the date are 0.
//
// - effectivity: a date_effectivity or an option_effectivity
// - anchor: any instance of the model to create in
// - default: unset if an argument is missing; a date with all fields 0 for an effectivity of
//   another kind
// - reads: start_date of a date effectivity, option_start_date of an option effectivity
ORX_EXPORT SdaiPrimitiveH GetStartDate(const SdaiPrimitiveH& effectivity,
                                       const SdaiPrimitiveH& anchor);

// The end of a dated effectivity as a new DATE_AND_TIME (see BuildDatedEff) in the model of the
// anchor.
//
// - effectivity: a date_effectivity or an option_effectivity
// - anchor: any instance of the model to create in
// - default: unset, and nothing is created, if an argument is missing, the end is not set or the
//   effectivity is of another kind
// - reads: end_date of a date effectivity, option_end_date of an option effectivity
ORX_EXPORT SdaiPrimitiveH GetEndDate(const SdaiPrimitiveH& effectivity,
                                     const SdaiPrimitiveH& anchor);

// A new DATE_AND_TIME in the model, with its CALENDAR_DATE, LOCAL_TIME and (empty)
// COORDINATED_UNIVERSAL_TIME_OFFSET, from a date string. Digits missing from the string count as 0;
// no field is checked.
//
// - date: the date string, 14 digits: month, day, year (four digits), hour, minute, second
// - model: the model to create in
// - default: null, and nothing is created, if the model is null or its schema does not declare all
//   of the types; if memory runs out halfway, the instances created so far stay
// - reads: only the date
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

// Whether the part is configurated and the effectivity governs one of its links.
//
// - part: a part_object
// - effectivity: an effectivity of the database
// - default: FALSE
// - reads: KORASS of the part, usage of the effectivity, and what IsPartConfigurated reads
ORX_EXPORT SdaiPrimitiveH IsUsedByPart(const SdaiPrimitiveH& part,
                                       const SdaiPrimitiveH& effectivity);

// The effectivity identifier: the fields "ORX", the id of the part's configuration item (of the
// model's last item if the part is not the design of any), and the type of the effectivity. The
// type is option_type for an option effectivity, "range_effectivity" or "date_effectivity" for the
// others; "UNDEFINED" if option_type is not set and for an effectivity of another kind.
//
// - part: a part_object
// - effectivity: an effectivity of the database
// - default: "EMPTY VALUE" if an argument is missing; the id is empty if the part is not an
//   instance
// - reads: design and id of the configuration_item instances of the part's model; the type of the
//   effectivity, option_type of an option effectivity
ORX_EXPORT SdaiPrimitiveH ORXIdEff(const SdaiPrimitiveH& part, const SdaiPrimitiveH& effectivity);

// The configuration identifier: the fields "ORX", the id of the configuration_item and, if there is
// one, the id of the configuration_handler that applies to its design.
//
// - item: a configuration_item of the database
// - default: "EMPTY VALUE" if the item is missing; "S0003ORXS0000" if it is not an instance
// - reads: id and design of the item; apply and id of the configuration_handler instances of the
//   design's model
ORX_EXPORT SdaiPrimitiveH ORXIdCfg(const SdaiPrimitiveH& item);

// The effectivity attributes: the fields "range" or "date", and id; for an option effectivity
// option_type, option_id and id.
//
// - effectivity: an effectivity of the database
// - default: "EMPTY VALUE" if it is missing or of another kind
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
// - default: 0 if the text is missing or not a number
// - reads: only the text
ORX_EXPORT SdaiPrimitiveH GetValue(const SdaiPrimitiveH& text);

// The date string (see BuildDatedEff) of a DATE_AND_TIME held by a select. An unset minute becomes
// 00, an unset second 01.
//
// - select: the select, or the DATE_AND_TIME itself
// - default: "00000000000000" if it is missing or incomplete
// - reads: DATE_COMPONENT with its YEAR_COMPONENT, MONTH_COMPONENT, DAY_COMPONENT; TIME_COMPONENT
//   with its HOUR_COMPONENT, MINUTE_COMPONENT, SECOND_COMPONENT
ORX_EXPORT SdaiPrimitiveH GetDate(const SdaiPrimitiveH& select);

// Whether an effectivity attribute string (see ConcatEffAtb) is of the type selected by the mode: 1
// range, 2 date, 3 option_range, 4 option_date.
//
// - text: the effectivity attribute string
// - mode: 1 to 4
// - default: FALSE, also for any other mode
// - reads: only the arguments
ORX_EXPORT SdaiPrimitiveH ExtractEFFType(const SdaiPrimitiveH& text, const SdaiPrimitiveH& mode);

// A value of an effectivity attribute string (see ConcatEffAtb).
//
// - text: the effectivity attribute string
// - mode: 1 for the effectivity's id, 2 for the option's
// - default: "EMPTY VALUE" if there is none
// - reads: only the arguments
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

// Appends to the list the placement of a daughter AXIS2_PLACEMENT_3D in a mother
// AXIS2_PLACEMENT_3D. A null list stays null.
//
// - daughter: the AXIS2_PLACEMENT_3D of the component
// - mother: the AXIS2_PLACEMENT_3D of the parent
// - list: the list to append to
// - default: an unset axis is (0,0,1); an unset reference direction is (1,0,0), or (0,1,0) if the
//   axis is parallel to x; an unset location is the origin
// - reads: LOCATION, AXIS and REF_DIRECTION of both, with COORDINATES and DIRECTION_RATIOS
ORX_EXPORT void ComputeABSPlacement(const SdaiPrimitiveH& daughter, const SdaiPrimitiveH& mother,
                                    SdaiListClassOfSdaiReal*& list);

// Replaces the contents of the list with the placement that a
// CONTEXT_DEPENDENT_SHAPE_REPRESENTATION states, as seen from the representation that the role
// names.
//
// - context: the CONTEXT_DEPENDENT_SHAPE_REPRESENTATION
// - role: "REP_1" or "REP_2"
// - list: the list to fill
// - default: the list is unchanged if an argument is missing or that representation does not
//   contain the transformation's items
// - reads: REPRESENTATION_RELATION of the context; its TRANSFORMATION_OPERATOR with
//   TRANSFORM_ITEM_1 and TRANSFORM_ITEM_2, and ITEMS of the representation; of the items what
//   ComputeABSPlacement reads
ORX_EXPORT void GetPlacement0(const SdaiPrimitiveH& context, const SdaiString& role,
                              const SdaiPrimitiveH& list);

// GetPlacement0 for REP_1. Always returns "GetPlacement1 done", whether or not the list was
// changed.
//
// - context: the CONTEXT_DEPENDENT_SHAPE_REPRESENTATION
// - list: the list to fill
// - default: "GetPlacement1 done"
// - reads: what GetPlacement0 reads
ORX_EXPORT SdaiPrimitiveH GetPlacement1(const SdaiPrimitiveH& context, const SdaiPrimitiveH& list);

// GetPlacement0 for REP_2. Always returns "GetPlacement2 done", whether or not the list was
// changed.
//
// - context: the CONTEXT_DEPENDENT_SHAPE_REPRESENTATION
// - list: the list to fill
// - default: "GetPlacement2 done"
// - reads: what GetPlacement0 reads
ORX_EXPORT SdaiPrimitiveH GetPlacement2(const SdaiPrimitiveH& context, const SdaiPrimitiveH& list);

// The negated real; 0.0 for 0.0.
//
// - value: a number
// - default: 0.0
// - reads: only the value
ORX_EXPORT SdaiPrimitiveH Minus(const SdaiPrimitiveH& value);

// The placement of a component in its parent, as a new list.
//
// - link: the assembly link, a NEXT_ASSEMBLY_USAGE_OCCURRENCE
// - default: the identity placement (1,0,0, 0,1,0, 0,0,1, 0,0,0) if the data do not state one
// - reads: the CONTEXT_DEPENDENT_SHAPE_REPRESENTATION of the link; its TRANSFORMATION_OPERATOR;
//   RELATING_PRODUCT_DEFINITION and RELATED_PRODUCT_DEFINITION of the link and the
//   SHAPE_DEFINITION_REPRESENTATION of each; REP_1 and REP_2 of the relationship and the ITEMS of
//   both representations; of a cartesian transformation operator LOCAL_ORIGIN, AXIS1, AXIS2, AXIS3
ORX_EXPORT SdaiPrimitiveH GetAbsPlacement(const SdaiPrimitiveH& link);

// ---- Generic accessors

// The value of an attribute; for a SELECT, the value that it holds. Unset if the attribute is not
// set.
//
// - instance: any instance
// - attribute: the name of the attribute
// - default: the integer 0 if an argument is missing; unset if the first is not an instance
// - reads: the attribute of the instance
ORX_EXPORT SdaiPrimitiveH GetInst(const SdaiPrimitiveH& instance, const SdaiPrimitiveH& attribute);

// An item of an ITEM_DEFINED_TRANSFORMATION held by a select.
//
// - index: 1 for TRANSFORM_ITEM_1, any other number for TRANSFORM_ITEM_2
// - transformation: the select, or the ITEM_DEFINED_TRANSFORMATION itself
// - default: unset if an argument is missing; an index that is not a number counts as 0
// - reads: TRANSFORM_ITEM_1 or TRANSFORM_ITEM_2
ORX_EXPORT SdaiPrimitiveH GetItem(const SdaiPrimitiveH& index,
                                  const SdaiPrimitiveH& transformation);

// The number of members of an aggregate.
//
// - aggregate: the aggregate
// - default: 0 if the aggregate is missing
// - reads: only the aggregate
ORX_EXPORT SdaiPrimitiveH GetMemberCount(const SdaiPrimitiveH& aggregate);

// The DOCUMENT_FILE that an instance refers to through a PROPERTY_DEFINITION. The integer 0 if
// these attributes refer to anything else.
//
// - instance: the instance whose DEFINITION is the PROPERTY_DEFINITION
// - default: unset if the instance is missing; the integer 0 if it is not an instance
// - reads: DEFINITION of the instance, and DEFINITION of the PROPERTY_DEFINITION
ORX_EXPORT SdaiPrimitiveH GetRepFromProperty(const SdaiPrimitiveH& instance);

// A new unique identifier: the environment variable LOGNAME ("RZ/ORX" if it is unset or empty),
// "-", and a UUID.
//
// - ignored: not used
// - default: ""
// - reads: LOGNAME
ORX_EXPORT SdaiPrimitiveH GetUniqId(const SdaiPrimitiveH& ignored);

// Whether an attribute has no value.
//
// - instance: any instance
// - attribute: the name of the attribute
// - default: TRUE if the instance is missing or has no such attribute
// - reads: the attribute of the instance
ORX_EXPORT SdaiPrimitiveH IsFree(const SdaiPrimitiveH& instance, const SdaiPrimitiveH& attribute);

// Whether an instance is one of the items of another.
//
// - definition: the instance to look for
// - set: the instance with the items
// - default: FALSE
// - reads: ITEMS of the set
ORX_EXPORT SdaiPrimitiveH PRDDFN_IsIn(const SdaiPrimitiveH& definition, const SdaiPrimitiveH& set);

// The string itself, or "ORX" if it is missing or empty, with a trace warning that names the
// attribute.
//
// - value: the string
// - attribute: the name of the string's attribute, for the warning
// - default: "ORX"
// - reads: only the arguments
ORX_EXPORT SdaiPrimitiveH ReadMandatory(const SdaiPrimitiveH& value,
                                        const SdaiPrimitiveH& attribute);

// The first `count` characters of a text: the whole text if it is shorter, none if the count is
// negative.
//
// - text: the text
// - count: the number of characters
// - default: "NO VALUE" if an argument is missing; "" if the first is not a text
// - reads: only the arguments
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

// Whether a part_object has a model or document.
//
// - part: a part_object; FALSE for an instance of any other type
// - default: FALSE
// - reads: models, and docs1, docs2 and so on, up to the first that the part's entity type does not
//   have
ORX_EXPORT SdaiPrimitiveH IsModelDocLinked(const SdaiPrimitiveH& part);

// ---- Identity of instances
//
// Two handles refer to the same instance only if it is one instance; instances with equal values
// are different.

// Whether two instances are the same.
//
// - a: an instance
// - b: an instance
// - default: FALSE
// - reads: only the arguments
ORX_EXPORT SdaiPrimitiveH IsSame0(const SdaiPrimitiveH& a, const SdaiPrimitiveH& b);

// Whether a SHAPE_DEFINITION_REPRESENTATION represents the shape of a PRODUCT_DEFINITION.
//
// - definition: the PRODUCT_DEFINITION
// - shape: the SHAPE_DEFINITION_REPRESENTATION
// - default: FALSE
// - reads: DEFINITION of the shape, and DEFINITION of that PRODUCT_DEFINITION_SHAPE
ORX_EXPORT SdaiPrimitiveH IsSamePart(const SdaiPrimitiveH& definition, const SdaiPrimitiveH& shape);

// Whether a SHAPE_DEFINITION_REPRESENTATION represents the relating side (the parent) of the
// assembly link of a CONTEXT_DEPENDENT_SHAPE_REPRESENTATION.
//
// - shape: the SHAPE_DEFINITION_REPRESENTATION
// - context: the CONTEXT_DEPENDENT_SHAPE_REPRESENTATION
// - default: FALSE
// - reads: DEFINITION of the shape, and DEFINITION of that PRODUCT_DEFINITION_SHAPE;
//   REPRESENTED_PRODUCT_RELATION of the context, its DEFINITION, and RELATING_PRODUCT_DEFINITION of
//   that link
ORX_EXPORT SdaiPrimitiveH IsSameRelating(const SdaiPrimitiveH& shape,
                                         const SdaiPrimitiveH& context);

// Whether a SHAPE_DEFINITION_REPRESENTATION represents the related side (the component) of the
// assembly link of a CONTEXT_DEPENDENT_SHAPE_REPRESENTATION.
//
// - shape: the SHAPE_DEFINITION_REPRESENTATION
// - context: the CONTEXT_DEPENDENT_SHAPE_REPRESENTATION
// - default: FALSE
// - reads: DEFINITION of the shape, and DEFINITION of that PRODUCT_DEFINITION_SHAPE;
//   REPRESENTED_PRODUCT_RELATION of the context, its DEFINITION, and RELATED_PRODUCT_DEFINITION of
//   that link
ORX_EXPORT SdaiPrimitiveH IsSameRelated(const SdaiPrimitiveH& shape, const SdaiPrimitiveH& context);

// Whether an assembly link is the one that a CONTEXT_DEPENDENT_SHAPE_REPRESENTATION refers to.
//
// - link: the NEXT_ASSEMBLY_USAGE_OCCURRENCE
// - context: the CONTEXT_DEPENDENT_SHAPE_REPRESENTATION
// - default: FALSE
// - reads: REPRESENTED_PRODUCT_RELATION of the context, and its DEFINITION
ORX_EXPORT SdaiPrimitiveH IsSameNAUO(const SdaiPrimitiveH& link, const SdaiPrimitiveH& context);

// Whether the representation of a SHAPE_DEFINITION_REPRESENTATION is REP_1 of the relationship of a
// CONTEXT_DEPENDENT_SHAPE_REPRESENTATION.
//
// - shape: the SHAPE_DEFINITION_REPRESENTATION
// - context: the CONTEXT_DEPENDENT_SHAPE_REPRESENTATION
// - default: FALSE
// - reads: USED_REPRESENTATION of the shape; REPRESENTATION_RELATION of the context, and its REP_1
ORX_EXPORT SdaiPrimitiveH IsSameShapeRep1(const SdaiPrimitiveH& shape,
                                          const SdaiPrimitiveH& context);

// Whether an ITEM_DEFINED_TRANSFORMATION (not a subtype of it) is the operator of a
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

// Whether the name ends with the first ".model" at or after its first ".".
//
// - name: a file name
// - default: FALSE
// - reads: only the name
ORX_EXPORT SdaiPrimitiveH IsaNARVOModel(const SdaiPrimitiveH& name);

// IsaNARVOModel for the identifier of the DOCUMENT_FILE that an instance refers to through a
// PROPERTY_DEFINITION.
//
// - representation: the instance whose DEFINITION is the PROPERTY_DEFINITION
// - default: FALSE
// - reads: what GetRepFromProperty reads, and ID of the DOCUMENT_FILE
ORX_EXPORT SdaiPrimitiveH IsaNARVORepProperty(const SdaiPrimitiveH& representation);

// Whether the part of a file name after its first "." begins with "KOR" and is longer than 3
// characters.
//
// - fileName: a file name
// - default: FALSE
// - reads: only the file name
ORX_EXPORT SdaiPrimitiveH IsaNARVOV5Doc(const SdaiPrimitiveH& fileName);

// The part of a file name after its first ".", if it begins with "KOR" and is longer than 3
// characters.
//
// - fileName: a file name
// - default: "" for any other name
// - reads: only the file name
ORX_EXPORT SdaiPrimitiveH GetNARVOV5Ext(const SdaiPrimitiveH& fileName);

// Converts a document name of the database to a file name (every blank becomes the byte 0xB1), or a
// file name to a document name (every 0xB1 becomes a blank).
//
// - name: the name to convert
// - direction: 1 converts to a file name, any other number to a document name
// - default: "" if an argument is missing
// - reads: only the arguments
ORX_EXPORT SdaiPrimitiveH ORX_GetDocName(const SdaiPrimitiveH& name,
                                         const SdaiPrimitiveH& direction);

// Converts a model name of the database to a file name (every blank becomes the byte 0xB1, and
// ".model" is appended), or a file name to a model name (the last six characters are removed,
// whatever they are, and every 0xB1 becomes a blank).
//
// - name: the name to convert
// - direction: 1 converts to a file name, any other number to a model name
// - default: "" if an argument is missing; if the name is not a text, the file name is ".model"
// - reads: only the arguments
ORX_EXPORT SdaiPrimitiveH ORX_GetModelName(const SdaiPrimitiveH& name,
                                           const SdaiPrimitiveH& direction);

// The model identifier of a database model: C_SOFT_VER in file form, "_ORXExchangedRep2_", and
// C_SOFT_VER unchanged. If the model's type has no C_SOFT_VER, "EMPTY VALUE" is used instead.
//
// - model: a model_object
// - default: "" if the model is missing; if it is not an instance, the identifier of a model whose
//   type has no C_SOFT_VER
// - reads: C_SOFT_VER of the model; also S_TYPE_REP and S_NEXT, which the identifier does not
//   contain
ORX_EXPORT SdaiPrimitiveH ORX_GetModelId_Exp(const SdaiPrimitiveH& model);

// The first field of a model identifier NAME _ORXExchangedRep_ NUMBER _ORXExchangedRep2_ NAME, in
// database form. A tag at the very start is ignored.
//
// - identifier: the model identifier
// - default: "" if there is none
// - reads: only the identifier
ORX_EXPORT SdaiPrimitiveH ORX_GetModelId_Imp1(const SdaiPrimitiveH& identifier);

// The number in a model identifier (see ORX_GetModelId_Imp1), or 0 if that field is not a number.
//
// - identifier: the model identifier
// - default: -999 if there is none
// - reads: only the identifier
ORX_EXPORT SdaiPrimitiveH ORX_GetModelId_Imp2(const SdaiPrimitiveH& identifier);

// The last field of a model identifier (see ORX_GetModelId_Imp1), in database form.
//
// - identifier: the model identifier
// - default: "EMPTY VALUE" if there is none
// - reads: only the identifier
ORX_EXPORT SdaiPrimitiveH ORX_GetModelId_Imp3(const SdaiPrimitiveH& identifier);

// The marker "_ORX_" followed by the key of a database document (see ConcatDocAtb).
//
// - document: a document_object
// - default: "EMPTY VALUE" if the document is missing; "_ORX_S0000S0000" if it is not an instance
// - reads: what ConcatDocAtb reads
ORX_EXPORT SdaiPrimitiveH EncodeNARVOV5Doc(const SdaiPrimitiveH& document);

// Whether a string begins with the marker "_ORX_".
//
// - value: the string
// - default: FALSE
// - reads: only the value
ORX_EXPORT SdaiPrimitiveH IsEncodedNARVOV5(const SdaiPrimitiveH& value);

// Field number `place` of the key that follows the marker "_ORX_" (see DecodeKey). Unset if the
// marker is missing.
//
// - key: the key with its marker
// - place: the number of the field, from 1
// - default: "EMPTY VALUE" if an argument is missing; unset if the key is not a text
// - reads: only the arguments
ORX_EXPORT SdaiPrimitiveH DecodeNARVOV5(const SdaiPrimitiveH& key, const SdaiPrimitiveH& place);

// The external name of a document or model: its assigned identifier or, if there is none, the
// identifier of its source. The name of a model file is converted to database form.
//
// - instance: the instance that the name was assigned to
// - source: the source, read if the instance has no identifier
// - default: "" if there is no name; an argument that is not an instance has no identifier
// - reads: ASSIGNED_ID of the instance, SOURCE_ID of the source
ORX_EXPORT SdaiPrimitiveH GetExternalName(const SdaiPrimitiveH& instance,
                                          const SdaiPrimitiveH& source);

// ---- Versions of parts
//
// Document management (KORDMInstance.h) knows the revisions of a part by its identity, which a
// `cdma_id` instance of the part's model records.

// Whether part A is the revision directly after part B.
//
// - partA: a part_object
// - partB: a part_object of the same model
// - default: FALSE
// - reads: CdmaObject, Coid, Compid, Caenv and Catab of the cdma_id instances of part A's model;
//   the revisions known to document management, or the families that IsVersion has seen
ORX_EXPORT SdaiPrimitiveH IsNewer(const SdaiPrimitiveH& partA, const SdaiPrimitiveH& partB);

// For flag 1, the part through which the part's family of revisions was first seen, which is this
// part if it is the first. For flag 0, whether the family was first seen through another part. The
// families seen are remembered for the whole process until RemoveValueVersion is called; do not
// delete their models before that.
//
// - part: a part_object
// - flag: 1 or 0
// - default: for flag 1, unset if the part is missing, has no recorded identity or is unknown to
//   document management; FALSE for flag 0, any other flag or a missing flag
// - reads: CdmaObject, Coid, Compid, Caenv and Catab of the cdma_id instances of the part's model;
//   the revisions known to document management
ORX_EXPORT SdaiPrimitiveH IsVersion(const SdaiPrimitiveH& part, const SdaiPrimitiveH& flag);

// Forgets the families that IsVersion has seen. Always returns TRUE.
//
// - default: TRUE
// - reads: nothing
ORX_EXPORT SdaiPrimitiveH RemoveValueVersion();

// The version text of an imported part: the text itself if it has 1 to 3 characters, otherwise the
// database's starting revision value, with a trace warning.
//
// - version: the version text
// - default: "" if it is missing; the starting revision value if it is not a text
// - reads: the version, and the starting revision value (KORDMNarvo.h)
ORX_EXPORT SdaiPrimitiveH ReadPartVersion(const SdaiPrimitiveH& version);

}  // extern "C"

#ifdef __clang__
#pragma clang diagnostic pop
#endif

#endif
