// The shared parts of the extension module `orxexutilities._core`. Entity instances, extents and
// the mapping functions, which programs use millions of times, use the CPython API directly; the
// rest is bound with pybind11.
//
// Everything here is called with the interpreter lock held unless documented otherwise. A function
// that returns a null pointer or false has set a Python exception. "New" references belong to the
// caller.

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

// A data set and the Python object that owns it. Every object that refers to the data holds a
// reference to that object.
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

    // While it exists, a thread may read the model without the interpreter lock, and no other
    // thread may write it.
    class Reading {
      public:
        explicit Reading(Model& model) : model_(model) { ++model_.readers_; }
        ~Reading() { --model_.readers_; }
        Reading(const Reading&) = delete;
        Reading& operator=(const Reading&) = delete;

      private:
        Model& model_;
    };
    // Returns false, with an exception, while a Reading exists or a function is in the middle of a
    // trace line.
    bool MayBeWritten() const;

  private:
    exchange::DataSet dataSet_;
    PyObject* self_ = nullptr;
    int readers_ = 0;
};

// The package's model of an instance or of a model of the data access interface.
Model& ModelOf(const SdaiModel& model);
Model& ModelOf(const SdaiEntityInstance& instance);
// Null, without an exception, if the object is not a Model.
Model* AsModel(PyObject* object);

// A model that IsVersion has seen is kept alive until RemoveValueVersion.
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

// Null, without an exception, if the object is not an Instance.
SdaiEntityInstance* AsInstance(PyObject* object);

// The members of an Extent, which belong to its model; null, without an exception, for any other
// object.
const SdaiAggrInstance* AsExtent(PyObject* object);
Model& ModelOfExtent(PyObject* extent);

// The slot of an attribute; none, without an exception, if the type does not have it.
kor::Index SlotOf(const kor::EntityType& entity, PyObject* name);

// Clears the cache of slots, when a model is destroyed.
void ForgetSlots();

// "a PRODUCT has no attribute 'NAMES'; did you mean 'NAME'?"
void RaiseNoAttribute(const kor::EntityType& entity, std::string_view attribute);

// Writes a slot of an instance, which must belong to the model.
bool Put(SdaiEntityInstance& instance, kor::Index slot, PyObject* name, PyObject* value);
// Only the checks and the conversion of Put.
bool ConvertForSlot(const kor::EntityType& entity, const Model& model, kor::Index slot,
                    PyObject* name, PyObject* value, SdaiPrimitiveH& converted);

// ---- Values

// The destination of a converted value, for messages: "GetInst: argument 'attribute'".
struct Destination {
    std::string_view owner;
    std::string_view what;
    std::string ToString() const;
};

// Text to str and back. A NUL or a lone surrogate raises ValueError.
PyObject* ToPython(const SdaiString& text);
bool FromPython(PyObject* text, const Destination& destination, SdaiString& converted);

// A value: None if unset, True, False or UNKNOWN for a logical, a new list for an aggregate.
PyObject* ToPython(const SdaiPrimitiveH& value);

enum class Lists {
    Literal,  // as in a script, a list whose members are all numbers is a list of reals
    AsGiven,
};
bool FromPython(PyObject* value, const Destination& destination, Lists lists,
                SdaiPrimitiveH& converted);

// The name of the object's type, for messages.
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

// Whether a callable that receives trace lines has raised; the exception is then set.
bool TraceHasRaised();
// Whether a callable is running: the function that traces is then in the middle of an iteration,
// and no thread may change what it iterates over.
bool TraceCallableIsRunning();

}  // namespace python

#endif
