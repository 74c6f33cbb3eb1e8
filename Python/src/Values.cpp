// Conversion between values of the data access interface and Python objects.

#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Arguments.h"
#include "Package.h"
#include "model/Aggregate.h"
#include "model/Cell.h"

namespace python {

Classes classes;

namespace {

// Owns a reference.
class Reference {
  public:
    explicit Reference(PyObject* object) : object_(object) {}
    ~Reference() { Py_XDECREF(object_); }
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;
    PyObject* Get() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

  private:
    PyObject* object_;
};

}  // namespace

bool PrepareClasses() {
    const Reference module(PyImport_ImportModule("orxexutilities._values"));
    if (!module) return false;
    struct Name {
        PyObject*& object;
        const char* name;
    };
    for (const auto& [object, name] :
         {Name{classes.enumeration, "Enum"}, Name{classes.binary, "Binary"},
          Name{classes.typed, "Typed"}, Name{classes.unknown, "UNKNOWN"},
          Name{classes.error, "Error"}, Name{classes.notFound, "NotFound"},
          Name{classes.dataWarning, "DataWarning"}}) {
        object = PyObject_GetAttrString(module.Get(), name);
        if (object == nullptr) return false;
    }
    return true;
}

std::string TypeName(PyObject* object) {
    return object == Py_None ? "None" : Py_TYPE(object)->tp_name;
}

std::string Destination::ToString() const {
    std::string text(owner);
    if (!what.empty()) text.append(": ").append(what);
    return text;
}

// ---- Texts

PyObject* ToPython(const SdaiString& text) {
    if (!static_cast<const KORUnicodeString&>(text).IsWide()) {
        const std::string_view characters = text.View();
        return PyUnicode_DecodeLatin1(characters.data(), static_cast<Py_ssize_t>(characters.size()),
                                      nullptr);
    }
    const std::string utf8 = text.ToUtf8();
    return PyUnicode_DecodeUTF8(utf8.data(), static_cast<Py_ssize_t>(utf8.size()), nullptr);
}

bool FromPython(PyObject* text, const Destination& destination, SdaiString& converted) {
    if (PyUnicode_READY(text) != 0) return false;
    const Py_ssize_t size = PyUnicode_GET_LENGTH(text);
    const int kind = PyUnicode_KIND(text);
    const void* data = PyUnicode_DATA(text);
    const auto refuse = [&](const char* what, Py_UCS4 character, Py_ssize_t position) {
        char code[16];
        std::snprintf(code, sizeof code, "U+%04X", static_cast<unsigned>(character));
        PyErr_Format(PyExc_ValueError, "%s holds %s (%s) at position %zd",
                     destination.ToString().c_str(), what, code, position);
        return false;
    };
    if (kind == PyUnicode_1BYTE_KIND) {
        const std::string_view characters(static_cast<const char*>(data),
                                          static_cast<std::size_t>(size));
        const std::size_t nul = characters.find('\0');
        if (nul != std::string_view::npos) {
            return refuse("a NUL", 0, static_cast<Py_ssize_t>(nul));
        }
        converted = SdaiString(characters);
        return true;
    }
    std::u32string characters;
    characters.reserve(static_cast<std::size_t>(size));
    for (Py_ssize_t i = 0; i < size; ++i) {
        const Py_UCS4 character = PyUnicode_READ(kind, data, i);
        if (character == 0) return refuse("a NUL", character, i);
        if (character >= 0xD800 && character <= 0xDFFF) {
            return refuse("a lone surrogate", character, i);
        }
        characters += static_cast<char32_t>(character);
    }
    converted = KORUnicodeString(std::u32string_view(characters));
    return true;
}

// ---- Values as Python objects

namespace {

PyObject* ListOf(const SdaiAggrInstance& members) {
    const long count = members.GetMemberCount();
    PyObject* list = PyList_New(count);
    if (list == nullptr) return nullptr;
    for (long i = 0; i < count; ++i) {
        PyObject* member = ToPython(members.GetMember(i));
        if (member == nullptr) {
            Py_DECREF(list);
            return nullptr;
        }
        PyList_SET_ITEM(list, i, member);
    }
    return list;
}

PyObject* TruthOf(const SdaiLogical& logical) {
    PyObject* truth = logical == sdaiLTRUE    ? Py_True
                      : logical == sdaiLFALSE ? Py_False
                                              : classes.unknown;
    return Py_NewRef(truth);
}

PyObject* OfClass(PyObject* itsClass, const SdaiPrimitiveH& value) {
    const Reference text(ToPython(kor::HandleAccess::TextOf(value)));
    return text ? PyObject_CallOneArg(itsClass, text.Get()) : nullptr;
}

}  // namespace

PyObject* ToPython(const SdaiPrimitiveH& value) {
    if (const kor::TypedValue* typed = kor::HandleAccess::TypedOf(value)) {
        const Reference name(ToPython(typed->definedType));
        const Reference held(ToPython(typed->value));
        if (!name || !held) return nullptr;
        return PyObject_CallFunctionObjArgs(classes.typed, name.Get(), held.Get(), nullptr);
    }
    switch (value.Kind()) {
        case SdaiKind::Integer: return PyLong_FromLong(value);
        case SdaiKind::Real: return PyFloat_FromDouble(value);
        case SdaiKind::Logical:
        case SdaiKind::Boolean: return TruthOf(value);
        case SdaiKind::String: return ToPython(TextOf(value));
        case SdaiKind::Enumeration: return OfClass(classes.enumeration, value);
        case SdaiKind::Binary: return OfClass(classes.binary, value);
        case SdaiKind::Instance: return NewInstance(*static_cast<SdaiEntityInstance*>(value));
        case SdaiKind::Aggregate: return ListOf(*static_cast<SdaiAggrInstance*>(value));
        default: Py_RETURN_NONE;
    }
}

// ---- Python objects as values

namespace {

bool FromSequence(PyObject* value, const Destination& destination, Lists lists,
                  SdaiPrimitiveH& converted) {
    // Stops at a list that contains itself.
    if (Py_EnterRecursiveCall(" while a list is converted") != 0) return false;
    const Reference sequence(PySequence_Fast(value, "a sequence expected"));
    bool good = static_cast<bool>(sequence);
    std::vector<SdaiPrimitiveH> members;
    for (Py_ssize_t i = 0; good && i < PySequence_Fast_GET_SIZE(sequence.Get()); ++i) {
        const Reference member(Py_NewRef(PySequence_Fast_GET_ITEM(sequence.Get(), i)));
        good = FromPython(member.Get(), destination, lists, members.emplace_back());
    }
    Py_LeaveRecursiveCall();
    if (good) {
        converted = lists == Lists::Literal ? calls::LiteralList(members) : calls::ListOf(members);
    }
    return good;
}

bool FromInteger(PyObject* value, const Destination& destination, SdaiPrimitiveH& converted) {
    int overflow = 0;
    const long number = PyLong_AsLongAndOverflow(value, &overflow);
    if (overflow != 0) {
        PyErr_Format(PyExc_ValueError, "%s: an integer of 64 bits expected, found %R",
                     destination.ToString().c_str(), value);
        return false;
    }
    if (number == -1 && PyErr_Occurred() != nullptr) return false;
    converted = SdaiPrimitiveH(number);
    return true;
}

// Gets the text of an attribute of an Enum, Binary or Typed.
bool TextOf(PyObject* value, const char* attribute, const Destination& destination,
            SdaiString& text) {
    const Reference object(PyObject_GetAttrString(value, attribute));
    return object && FromPython(object.Get(), destination, text);
}

bool IsOf(PyObject* value, PyObject* itsClass) {
    return reinterpret_cast<PyObject*>(Py_TYPE(value)) == itsClass;
}

// An object that behaves as a number, such as a scalar of numpy; anything else is a TypeError.
bool FromNumberLike(PyObject* value, const Destination& destination, SdaiPrimitiveH& converted) {
    if (std::string_view(Py_TYPE(value)->tp_name) == "numpy.bool_") {
        const int truth = PyObject_IsTrue(value);
        if (truth < 0) return false;
        converted = SdaiPrimitiveH(truth != 0 ? sdaiLTRUE : sdaiLFALSE);
        return true;
    }
    if (PyIndex_Check(value)) {
        const Reference number(PyNumber_Index(value));
        return number && FromInteger(number.Get(), destination, converted);
    }
    const PyNumberMethods* numbers = Py_TYPE(value)->tp_as_number;
    if (numbers != nullptr && numbers->nb_float != nullptr) {
        const double number = PyFloat_AsDouble(value);
        if (number == -1.0 && PyErr_Occurred() != nullptr) return false;
        converted = SdaiPrimitiveH(number);
        return true;
    }
    PyErr_Format(PyExc_TypeError,
                 "%s: None, a bool, int, float, str, Instance, list, Enum, Binary or Typed "
                 "expected, found %s",
                 destination.ToString().c_str(), TypeName(value).c_str());
    return false;
}

}  // namespace

bool FromPython(PyObject* value, const Destination& destination, Lists lists,
                SdaiPrimitiveH& converted) {
    if (value == Py_None) return true;
    if (SdaiEntityInstance* instance = AsInstance(value)) {
        converted = SdaiPrimitiveH(instance);
        return true;
    }
    if (PyUnicode_Check(value)) {
        SdaiString text;
        if (!FromPython(value, destination, text)) return false;
        converted = SdaiPrimitiveH(std::move(text));
        return true;
    }
    if (PyBool_Check(value)) {
        converted = SdaiPrimitiveH(value == Py_True ? sdaiLTRUE : sdaiLFALSE);
        return true;
    }
    if (PyLong_Check(value)) return FromInteger(value, destination, converted);
    if (PyFloat_Check(value)) {
        converted = SdaiPrimitiveH(PyFloat_AS_DOUBLE(value));
        return true;
    }
    if (value == classes.unknown) {
        converted = SdaiPrimitiveH(SdaiLogical());
        return true;
    }
    if (const SdaiAggrInstance* extent = AsExtent(value)) {
        converted = SdaiPrimitiveH(const_cast<SdaiAggrInstance*>(extent));
        return true;
    }
    if (IsOf(value, classes.enumeration) || IsOf(value, classes.binary)) {
        const bool isEnumeration = IsOf(value, classes.enumeration);
        SdaiString text;
        if (!TextOf(value, isEnumeration ? "name" : "digits", destination, text)) return false;
        converted =
            isEnumeration ? SdaiPrimitiveH::Enumeration(text) : SdaiPrimitiveH::Binary(text);
        return true;
    }
    if (IsOf(value, classes.typed)) {
        SdaiString name;
        if (!TextOf(value, "type", destination, name)) return false;
        const Reference held(PyObject_GetAttrString(value, "value"));
        SdaiPrimitiveH plain;
        if (!held || !FromPython(held.Get(), destination, lists, plain)) return false;
        converted = SdaiPrimitiveH(SdaiSelectH(name, plain));
        return true;
    }
    if (PySequence_Check(value) != 0 && !PyBytes_Check(value) && !PyByteArray_Check(value) &&
        !PyRange_Check(value)) {
        return FromSequence(value, destination, lists, converted);
    }
    return FromNumberLike(value, destination, converted);
}

}  // namespace python
