// The mapping functions, one built-in function of Python for each row of the export table.

#include <array>
#include <new>
#include <span>
#include <string>
#include <utility>

#include "Arguments.h"
#include "Calls.h"
#include "Documentation.h"
#include "Module.h"
#include "Package.h"
#include "Signature.h"

namespace python {

const calls::Module& TheModule() {
    static const calls::Module module("");
    return module;
}

namespace {

constexpr std::size_t kMostArguments = 3;

// The documentation of one row; Documentation.h is generated from the header.
struct Function {
    const orx::Export& row;
    const Documentation& documentation;

    Destination DestinationOf(std::size_t argument) const {
        return {row.name, documentation.what[argument]};
    }
};

bool RaiseMisfit(const Destination& destination, orx::Kind expected, PyObject* found) {
    struct Name {
        orx::Kind kind;
        const char* name;
    };
    static constexpr Name kNames[] = {
        {orx::String, "a str"},     {orx::Integer, "an int"},
        {orx::Real, "a float"},     {orx::Instance, "an Instance"},
        {orx::Aggregate, "a list"}, {orx::RealList, "a list of floats"},
        {orx::Model, "a Model"},
    };
    const char* expectation = "a value";
    for (const auto& [kind, name] : kNames) {
        if (kind == expected) expectation = name;
    }
    const bool orNone = expected != orx::RealList && expected != orx::Model;
    PyErr_Format(PyExc_TypeError, "%s: %s%s expected, found %s", destination.ToString().c_str(),
                 expectation, orNone ? " or None" : "", TypeName(found).c_str());
    return false;
}

bool Convert(const Function& function, std::size_t i, PyObject* given, calls::Argument& argument) {
    const orx::Kind expected = function.row.arguments[i];
    const Destination destination = function.DestinationOf(i);
    if (expected == orx::Model) {
        Model* model = AsModel(given);
        if (model == nullptr) return RaiseMisfit(destination, expected, given);
        argument.model = &model->Data();
        return model->MayBeWritten();
    }
    if (calls::IsFilled(function.row, i) && !PyList_Check(given) &&
        (given != Py_None || expected == orx::RealList)) {
        return RaiseMisfit(destination, expected, given);
    }
    if (!FromPython(given, destination, Lists::Literal, argument.handle)) return false;
    const bool fits = expected == orx::RealList || calls::Accepts(expected, argument.handle);
    if (!fits || calls::Misfit(expected, argument) != nullptr) {
        return RaiseMisfit(destination, expected, given);
    }
    return true;
}

// Arranges the arguments in the order of the table, first positional, then keyword arguments.
bool Arrange(const Function& function, PyObject* const* given, Py_ssize_t positional,
             PyObject* names, std::array<PyObject*, kMostArguments>& arranged) {
    const std::size_t expected = function.row.ArgumentCount();
    const Py_ssize_t named = names != nullptr ? PyTuple_GET_SIZE(names) : 0;
    bool good = positional + named == static_cast<Py_ssize_t>(expected);
    for (Py_ssize_t i = 0; good && i < positional; ++i) {
        arranged[static_cast<std::size_t>(i)] = given[i];
    }
    for (Py_ssize_t i = 0; good && i < named; ++i) {
        PyObject* name = PyTuple_GET_ITEM(names, i);
        good = false;
        for (std::size_t parameter = 0; parameter < expected; ++parameter) {
            const char* known = function.documentation.parameters[parameter];
            if (PyUnicode_CompareWithASCIIString(name, known) == 0 &&
                arranged[parameter] == nullptr) {
                arranged[parameter] = given[positional + i];
                good = true;
            }
        }
    }
    if (good) return true;
    std::string expectation;
    for (std::size_t i = 0; i < expected; ++i) {
        expectation += (i == 0 ? "" : ", ") + std::string(function.documentation.parameters[i]);
    }
    std::string found = std::to_string(positional);
    for (Py_ssize_t i = 0; i < named; ++i) {
        const char* name = PyUnicode_AsUTF8(PyTuple_GET_ITEM(names, i));
        if (name == nullptr) return false;
        found += std::string(i == 0 ? " and " : ", ") + name;
    }
    PyErr_Format(PyExc_TypeError, "%s takes %zu argument%s (%s), found %s",
                 std::string(function.row.name).c_str(), expected, expected == 1 ? "" : "s",
                 expectation.c_str(), found.c_str());
    return false;
}

// Copies the contents that the function filled in back to the list.
bool Refill(PyObject* list, const SdaiPrimitiveH& filled) {
    PyObject* members = ToPython(filled);
    if (members == nullptr) return false;
    const int failed = PyList_SetSlice(list, 0, PyList_GET_SIZE(list), members);
    Py_DECREF(members);
    return failed == 0;
}

// The effect of some functions on the lifetime of models.
bool BeforeCall(const orx::Export& row, std::span<const calls::Argument> arguments) {
    // The versions seen are a state shared by all calls.
    if (row.unit == "Version" && TraceCallableIsRunning()) {
        PyErr_Format(classes.error,
                     "%s cannot be called while a callable takes a line of the trace",
                     std::string(row.name).c_str());
        return false;
    }
    if (row.name != "IsVersion" && !calls::MayCreate(row)) return true;
    for (const calls::Argument& argument : arguments) {
        const SdaiEntityInstance* instance = argument.handle;
        if (instance == nullptr) continue;
        Model& model = ModelOf(*instance);
        if (row.name == "IsVersion") Keep(model);
        if (calls::MayCreate(row) && !model.MayBeWritten()) return false;
    }
    return true;
}

PyObject* CallRow(const Function& function, PyObject* const* given, Py_ssize_t positional,
                  PyObject* names) {
    std::array<PyObject*, kMostArguments> arranged{};
    if (!Arrange(function, given, positional, names, arranged)) return nullptr;
    const orx::Export& row = function.row;
    const std::size_t count = row.ArgumentCount();
    std::array<calls::Argument, kMostArguments> all;
    const std::span<calls::Argument> arguments(all.data(), count);
    for (std::size_t i = 0; i < count; ++i) {
        if (!Convert(function, i, arranged[i], arguments[i])) return nullptr;
    }
    if (!BeforeCall(row, arguments)) return nullptr;
    SdaiPrimitiveH result;
    try {
        result = TheModule().Call(row, arguments);
    } catch (const std::bad_alloc&) {
        return PyErr_NoMemory();
    }
    if (row.name == "RemoveValueVersion") ReleaseKept();
    if (row.result == orx::Nothing) {
        PyObject* list = arranged[count - 1];
        if (list != Py_None && !Refill(list, result)) return nullptr;
        return TraceHasRaised() ? nullptr : Py_NewRef(list);
    }
    return TraceHasRaised() ? nullptr : ToPython(result);
}

template <std::size_t I>
PyObject* Call(PyObject*, PyObject* const* given, Py_ssize_t positional, PyObject* names) {
    static constexpr Function kFunction{orx::kExports[I], kDocumentation[I]};
    return CallRow(kFunction, given, positional, names);
}

template <std::size_t... I>
std::array<PyMethodDef, sizeof...(I) + 1> Definitions(std::index_sequence<I...>) {
    return {PyMethodDef{kDocumentation[I].name,
                        reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(&Call<I>)),
                        METH_FASTCALL | METH_KEYWORDS, kDocumentation[I].text}...,
            PyMethodDef{nullptr, nullptr, 0, nullptr}};
}

auto definitions = Definitions(std::make_index_sequence<orx::kExports.size()>());

}  // namespace

bool AddFunctions(PyObject* module) {
    return PyModule_AddFunctions(module, definitions.data()) == 0;
}

}  // namespace python
