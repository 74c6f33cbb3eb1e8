// A schema with every kind of column, and instances of it, for the tests of models as tables.

#ifndef TESTS_SHAPES_H
#define TESTS_SHAPES_H

// A supertype, two levels of subtypes, attributes that are derived in a subtype, names that columns
// of every table or inherited attributes already have, and a type that refers to others.
inline constexpr const char* kShapesSchema = R"(SCHEMA shapes;
  TYPE colour = ENUMERATION OF (red, green); END_TYPE;
  TYPE label = STRING; END_TYPE;
  TYPE place = SELECT (thing, other); END_TYPE;
  TYPE mixed = SELECT (thing, label); END_TYPE;
  ENTITY other; END_ENTITY;
  ENTITY thing;
    entity : OPTIONAL label;
    size : OPTIONAL REAL;
    count : OPTIONAL INTEGER;
    made : OPTIONAL BOOLEAN;
    good : OPTIONAL LOGICAL;
    code : OPTIONAL BINARY;
    tint : OPTIONAL colour;
  END_ENTITY;
  ENTITY part SUBTYPE OF (thing);
    next : OPTIONAL thing;
    at : OPTIONAL place;
    of_any : OPTIONAL mixed;
    parts : OPTIONAL SET OF thing;
    grid : OPTIONAL LIST OF LIST OF REAL;
    marks : OPTIONAL LIST OF mixed;
  END_ENTITY;
  ENTITY bolt SUBTYPE OF (part);
  DERIVE
    SELF\thing.size : REAL := 1.0;
  END_ENTITY;
  ENTITY nut SUBTYPE OF (part);
    next : OPTIONAL other;
  END_ENTITY;
  ENTITY named;
    Name : label;
    instance : INTEGER;
    weight : NUMBER;
  END_ENTITY;
  ENTITY renamed SUBTYPE OF (named);
    name : label;
    instance_ : INTEGER;
  DERIVE
    SELF\named.weight : NUMBER := 1.0;
  END_ENTITY;
END_SCHEMA;)";

// Of declared types and of one that is not declared.
inline constexpr const char* kShapesData = R"(
    #5=THING('first',1.5,7,.T.,.U.,"0A",.RED.);
    #2=OTHER();
    #3=PART('it''s \X2\0141\X0\',-0.25,$,.F.,.T.,$,.GREEN.,#5,#2,#5,(#5,#3),((1.,2.),()),(#5,LABEL('x')));
    #4=BOLT($,*,$,$,.F.,$,$,#3,#3,LABEL('m\X\E9'),(),$,$);
    #9=PART($,$,$,$,$,$,$,#5,$,$,$,$,$);
    #7=POINT('p',(1.,2.),#5);
    #8=POINT('q',$);)";

#endif
