// The parts of the extension module `orxexutilities._core` and what they share. Entity instances,
// extents and the mapping functions, which are used a million times in a row, are written against
// CPython's own interface; the rest is bound with pybind11.
//
// Everything here is called with the interpreter lock held unless said otherwise. A function that
// gives a null pointer or false has set a Python exception. "New" references belong to the caller.

#ifndef PYTHON_PACKAGE_H
#define PYTHON_PACKAGE_H

#include <Python.h>

#include <string>
#include <string_view>

#include "Exchange.h"
#include "ORXExportTable.h"
#include "SdaiPrimitiveH.h"

namespace python {

// ---- Models

// A data set, and the Python object that owns it. Whatever refers to the data keeps that object
// alive by a reference of its own.
class Model {
  public:
    explicit Model(exchange::DataSet dataSet);
    ~Model();
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;

    kor::Model& Data() const { return *dataSet_.model; }
    const exchange::DataSet& DataSet() const { return dataSet_; }

    PyObject* Self() const { return self_; }
    void SetSelf(PyObject* self) { self_ = self; }

    // While a thread works on the model without the interpreter lock, no other may write it.
    class Reading {
      public:
        explicit Reading(Model& model) : model_(model) { ++model_.readers_; }
        ~Reading() { --model_.readers_; }
        Reading(const Reading&) = delete;
        Reading& operator=(const Reading&) = delete;

      private:
        Model& model_;
    };
    // False, with an exception, while that is so, or while a function is in the middle of a line of
    // its trace.
    bool MayBeWritten() const;

  private:
    exchange::DataSet dataSet_;
    PyObject* self_ = nullptr;
    int readers_ = 0;
};

// The model of an instance or of the data access interface; it is one of the package's.
Model& ModelOf(const SdaiModel& model);
Model& ModelOf(const SdaiEntityInstance& instance);
// Null, without an exception, for anything but a Model.
Model* AsModel(PyObject* object);

// A model that IsVersion has met stays until RemoveValueVersion.
void Keep(Model& model);
void ReleaseKept();

// ---- Instances and extents

extern PyTypeObject InstanceType;
extern PyTypeObject ExtentType;
bool PrepareTypes();

// New references.
PyObject* NewInstance(SdaiEntityInstance& instance);
PyObject* NewInstance(SdaiEntityInstance& instance, Model& model);
PyObject* NewExtent(Model& model, const kor::EntityType& entity);

// Null, without an exception, for anything but an Instance.
SdaiEntityInstance* AsInstance(PyObject* object);

// The members of an Extent, which belong to its model; null, without an exception, for anything
// else.
const SdaiAggrInstance* AsExtent(PyObject* object);
Model& ModelOfExtent(PyObject* extent);

// The slot of an attribute, remembered by name and type. Absent: NameTable::kAbsent, without an
// exception. What is remembered is forgotten when a model goes.
int SlotOf(const kor::EntityType& entity, PyObject* name);
void ForgetSlots();

// "a PRODUCT has no attribute 'NAMES'; did you mean 'NAME'?"
void RaiseNoAttribute(const kor::EntityType& entity, std::string_view attribute);

// Writes a slot of an instance of the model, in which it must be.
bool Put(SdaiEntityInstance& instance, int slot, PyObject* name, PyObject* value);
// Only the checks and the conversion of that.
bool ConvertForSlot(const kor::EntityType& entity, const Model& model, int slot, PyObject* name,
                    PyObject* value, SdaiPrimitiveH& converted);

// ---- Values

// Where a value that is converted is to go, for messages: "GetInst: argument 'attribute'".
struct Place {
    std::string_view owner;
    std::string_view what;
    std::string ToString() const;
};

// The text as str; of a str, the text: a NUL or a lone surrogate is a ValueError.
PyObject* ToPython(const SdaiString& text);
bool FromPython(PyObject* text, const Place& place, SdaiString& converted);

// A value. Unset is None, a logical True, False or UNKNOWN, an aggregate a list of its own.
PyObject* ToPython(const SdaiPrimitiveH& value);

enum class Lists {
    Literal,  // one whose members are all numbers is a list of reals, as in a script
    AsGiven,
};
bool FromPython(PyObject* value, const Place& place, Lists lists, SdaiPrimitiveH& converted);

// The number of members and the name of the type, for messages.
std::string TypeName(PyObject* object);

// Classes of the package that are written in Python.
struct Classes {
    PyObject* enumeration;  // Enum
    PyObject* binary;       // Binary
    PyObject* typed;        // Typed
    PyObject* unknown;      // UNKNOWN
    PyObject* error;        // Error
    PyObject* notFound;     // NotFound
    PyObject* dataWarning;  // DataWarning
};
extern Classes classes;
bool PrepareClasses();

// ---- Functions

// Adds all functions of the export table to the module.
bool AddFunctions(PyObject* module);

// Whether a callable that takes trace lines has raised meanwhile; the exception is then set.
bool TraceHasRaised();
// Whether a callable is at work: the function whose line it has stands in the middle of its walk,
// and what that walks over must stay, whatever thread would change it.
bool TraceIsTold();

}  // namespace python

#endif
