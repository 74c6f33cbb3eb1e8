// The types Instance and Extent. They use the CPython API directly, since a program that iterates
// over an extent creates and reads millions of them.

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Expectation.h"
#include "Package.h"
#include "Users.h"
#include "services/Suggestions.h"

namespace python {

namespace {

struct InstanceObject {
    PyObject ob_base;
    SdaiEntityInstance* instance;
    Model* model;  // kept alive by a reference to its object
};

struct ExtentObject {
    PyObject ob_base;
    const SdaiAggrInstance* members;
    const kor::EntityType* entity;
    Model* model;  // likewise
};

struct ExtentIteratorObject {
    PyObject ob_base;
    ExtentObject* extent;
    long position;
    long end;
};

InstanceObject& AsObject(PyObject* self) { return *reinterpret_cast<InstanceObject*>(self); }
ExtentObject& AsExtentObject(PyObject* self) { return *reinterpret_cast<ExtentObject*>(self); }
ExtentIteratorObject& AsIterator(PyObject* self) {
    return *reinterpret_cast<ExtentIteratorObject*>(self);
}

const kor::EntityType& TypeOf(const SdaiEntityInstance& instance) {
    return *kor::Instance::Of(instance).Type().entity;
}

// A name as UTF-8. It can only match a dictionary name if it is ASCII.
std::string_view Utf8(PyObject* text) {
    Py_ssize_t size = 0;
    const char* characters = PyUnicode_AsUTF8AndSize(text, &size);
    if (characters == nullptr) {
        PyErr_Clear();
        return {};
    }
    return {characters, static_cast<std::size_t>(size)};
}

const char* Article(std::string_view name) {
    return std::string_view("AEIOUaeiou").find(name.substr(0, 1)) != std::string_view::npos ? "an "
                                                                                            : "a ";
}

// ---- Slots

// What Python reads or writes under a name: an attribute of the instance's type, or one of the
// package's own names, which take precedence.
struct Meaning {
    kor::Index slot;
    bool isOwnName = false;
};

// A cache, since programs read the same few attributes of the same few types over and over.
struct RememberedSlot {
    PyObject* name = nullptr;  // owned
    const kor::EntityType* entity = nullptr;
    Meaning meaning;
};
std::array<RememberedSlot, 1024> rememberedSlots;

constexpr std::array kOwnNames{"number", "entity", "model", "users"};

bool IsOwnName(std::string_view name) {
    return name.starts_with("__") ||
           std::find(kOwnNames.begin(), kOwnNames.end(), name) != kOwnNames.end();
}

Meaning MeaningOf(const kor::EntityType& entity, PyObject* name) {
    const auto hash = reinterpret_cast<std::uintptr_t>(name) / 16 +
                      reinterpret_cast<std::uintptr_t>(&entity) / 16 * 31;
    RememberedSlot& place = rememberedSlots[hash % rememberedSlots.size()];
    if (place.name != name || place.entity != &entity) {
        const std::string_view text = Utf8(name);
        Py_XSETREF(place.name, Py_NewRef(name));
        place.entity = &entity;
        place.meaning = IsOwnName(text) ? Meaning{{}, true} : Meaning{entity.SlotOf(text)};
    }
    return place.meaning;
}

}  // namespace

kor::Index SlotOf(const kor::EntityType& entity, PyObject* name) {
    return entity.SlotOf(Utf8(name));
}

void ForgetSlots() {
    for (RememberedSlot& place : rememberedSlots) {
        Py_CLEAR(place.name);
        place.entity = nullptr;
    }
}

void RaiseNoAttribute(const kor::EntityType& entity, std::string_view attribute) {
    const std::string_view type = entity.Name().View();
    const std::string message = Article(type) + std::string(type) + " has no attribute '" +
                                std::string(attribute) + "'" +
                                kor::DidYouMean(attribute, entity.AttributeNames());
    PyErr_SetString(PyExc_AttributeError, message.c_str());
}

// ---- Writing

bool ConvertForSlot(const kor::EntityType& entity, const Model& model, kor::Index slot,
                    PyObject* name, PyObject* value, SdaiPrimitiveH& converted) {
    if (!slot) {
        RaiseNoAttribute(entity, Utf8(name));
        return false;
    }
    const kor::Slot& definition = entity.Slots()[*slot];
    const std::string type(entity.Name().View());
    const std::string attribute(
        definition.attribute != nullptr ? definition.attribute->Name().View() : Utf8(name));
    const Destination destination{type, attribute};
    if (definition.derived) {
        PyErr_Format(PyExc_AttributeError, "%s: derived from others, and cannot be written",
                     destination.ToString().c_str());
        return false;
    }
    if (!FromPython(value, destination, Lists::AsGiven, converted)) return false;
    if (!calls::Fits(converted, definition.domain)) {
        PyErr_Format(PyExc_TypeError, "%s: %s expected, found %R", destination.ToString().c_str(),
                     calls::Expectation(*definition.domain).c_str(), value);
        return false;
    }
    if (!RefersOnlyTo(model.Data(), converted)) {
        PyErr_Format(PyExc_ValueError,
                     "%s: an instance of the same model expected, found one of another",
                     destination.ToString().c_str());
        return false;
    }
    return true;
}

bool Put(SdaiEntityInstance& instance, kor::Index slot, PyObject* name, PyObject* value) {
    Model& model = ModelOf(instance);
    SdaiPrimitiveH converted;
    if (!ConvertForSlot(TypeOf(instance), model, slot, name, value, converted)) return false;
    // The conversion may have run code that lent the model to another thread.
    if (!model.MayBeWritten()) return false;
    kor::Instance::Of(instance).Write(slot, converted);
    return true;
}

// ---- Instance

namespace {

PyObject* GetAttribute(PyObject* self, PyObject* name) {
    const InstanceObject& object = AsObject(self);
    const kor::EntityType& entity = TypeOf(*object.instance);
    const Meaning meaning = MeaningOf(entity, name);
    if (meaning.slot) return ToPython(kor::Instance::Of(*object.instance).Read(meaning.slot));
    if (meaning.isOwnName) return PyObject_GenericGetAttr(self, name);
    RaiseNoAttribute(entity, Utf8(name));
    return nullptr;
}

int SetAttribute(PyObject* self, PyObject* name, PyObject* value) {
    const InstanceObject& object = AsObject(self);
    const kor::EntityType& entity = TypeOf(*object.instance);
    if (value == nullptr) {
        PyErr_SetString(PyExc_TypeError,
                        "an attribute cannot be deleted; None takes its value away");
        return -1;
    }
    const Meaning meaning = MeaningOf(entity, name);
    if (meaning.isOwnName) return PyObject_GenericSetAttr(self, name, value);
    return Put(*object.instance, meaning.slot, name, value) ? 0 : -1;
}

// The slot of an attribute that is named with the type that declares it,
// "CHARACTERIZED_OBJECT.NAME": a type may inherit attributes of one name from several.
kor::Index SlotOfQualified(const kor::EntityType& entity, std::string_view owner,
                           std::string_view attribute) {
    for (const kor::EntityType* type : entity.Lineage()) {
        if (!kor::MatchesFolded(owner, type->FoldedName())) continue;
        const kor::Index own = type->SlotOf(attribute);
        if (!own) break;
        const auto& slots = entity.Slots();
        const auto slot = std::find_if(slots.begin(), slots.end(), [&](const kor::Slot& candidate) {
            return candidate.attribute == type->Slots()[*own].attribute;
        });
        if (slot != slots.end()) return static_cast<std::size_t>(slot - slots.begin());
    }
    return std::nullopt;
}

// The slot of instance["NAME"], or of instance[1] if the type is undeclared.
kor::Index SlotOfKey(const SdaiEntityInstance& instance, PyObject* key) {
    const kor::EntityType& entity = TypeOf(instance);
    if (PyUnicode_Check(key)) {
        const std::string_view name = Utf8(key);
        const std::size_t point = name.find('.');
        const kor::Index slot =
            point == std::string_view::npos
                ? SlotOf(entity, key)
                : SlotOfQualified(entity, name.substr(0, point), name.substr(point + 1));
        if (!slot) RaiseNoAttribute(entity, name);
        return slot;
    }
    if (!PyLong_Check(key)) {
        PyErr_Format(PyExc_TypeError, "the name of an attribute expected, found %s",
                     TypeName(key).c_str());
        return std::nullopt;
    }
    const Py_ssize_t position = PyLong_AsSsize_t(key);
    if (position == -1 && PyErr_Occurred() != nullptr) PyErr_Clear();
    if (entity.IsDeclared() || position < 1 || position > std::ssize(entity.Slots())) {
        PyErr_Format(PyExc_AttributeError,
                     "%s%s has no value %R; values have positions, from 1, only in types that the "
                     "schema does not declare",
                     Article(entity.Name().View()), entity.FoldedName().c_str(), key);
        return std::nullopt;
    }
    return static_cast<std::size_t>(position - 1);
}

PyObject* GetItem(PyObject* self, PyObject* key) {
    const InstanceObject& object = AsObject(self);
    const kor::Index slot = SlotOfKey(*object.instance, key);
    if (!slot) return nullptr;
    return ToPython(kor::Instance::Of(*object.instance).Read(slot));
}

int SetItem(PyObject* self, PyObject* key, PyObject* value) {
    const InstanceObject& object = AsObject(self);
    if (value == nullptr) {
        PyErr_SetString(PyExc_TypeError,
                        "an attribute cannot be deleted; None takes its value away");
        return -1;
    }
    const kor::Index slot = SlotOfKey(*object.instance, key);
    if (!slot) return -1;
    return Put(*object.instance, slot, key, value) ? 0 : -1;
}

PyObject* Number(PyObject* self, void*) {
    return PyLong_FromUnsignedLong(AsObject(self).instance->GetInstanceNameId());
}
PyObject* EntityName(PyObject* self, void*) {
    return ToPython(TypeOf(*AsObject(self).instance).Name());
}
PyObject* ItsModel(PyObject* self, void*) { return Py_NewRef(AsObject(self).model->Self()); }

PyObject* Users(PyObject* self, PyObject* name) {
    const InstanceObject& object = AsObject(self);
    const kor::Model& model = object.model->Data();
    const std::string_view text = PyUnicode_Check(name) ? Utf8(name) : std::string_view();
    const std::size_t point = text.find('.');
    if (point == std::string_view::npos) {
        PyErr_Format(PyExc_TypeError,
                     "users: argument 'name': a str such as 'ENTITY_TYPE.ATTRIBUTE' expected, "
                     "found %R",
                     name);
        return nullptr;
    }
    const std::string_view type = text.substr(0, point);
    const std::string_view attribute = text.substr(point + 1);
    const kor::EntityType* entity = model.FindEntity(type);
    if (entity == nullptr) {
        const std::string message = "unknown entity type '" + std::string(type) + "'" +
                                    kor::DidYouMean(type, model.GetSchema().EntityNames());
        PyErr_SetString(classes.notFound, message.c_str());
        return nullptr;
    }
    if (!entity->SlotOf(attribute)) {
        RaiseNoAttribute(*entity, attribute);
        return nullptr;
    }
    const std::vector<SdaiEntityInstance*> users =
        UsersOf(*object.instance, model, *entity, attribute);
    PyObject* list = PyList_New(std::ssize(users));
    for (std::size_t i = 0; list != nullptr && i < users.size(); ++i) {
        PyObject* user = NewInstance(*users[i], *object.model);
        if (user == nullptr) {
            Py_CLEAR(list);
        } else {
            PyList_SET_ITEM(list, static_cast<Py_ssize_t>(i), user);
        }
    }
    return list;
}

PyObject* Directory(PyObject* self, PyObject*) {
    PyObject* names = PyObject_Dir(reinterpret_cast<PyObject*>(&InstanceType));
    if (names == nullptr) return nullptr;
    for (const std::string& attribute : TypeOf(*AsObject(self).instance).AttributeNames()) {
        PyObject* name = PyUnicode_FromString(attribute.c_str());
        if (name == nullptr || PyList_Append(names, name) != 0) {
            Py_XDECREF(name);
            Py_DECREF(names);
            return nullptr;
        }
        Py_DECREF(name);
    }
    return names;
}

PyObject* Show(PyObject* self) {
    const SdaiEntityInstance& instance = *AsObject(self).instance;
    return PyUnicode_FromFormat("<%s #%lu>", std::string(TypeOf(instance).Name().View()).c_str(),
                                instance.GetInstanceNameId());
}

Py_hash_t Hash(PyObject* self) { return _Py_HashPointer(AsObject(self).instance); }

PyObject* CompareInstances(PyObject* self, PyObject* other, int operation) {
    if (!Py_IS_TYPE(other, &InstanceType) || (operation != Py_EQ && operation != Py_NE)) {
        Py_RETURN_NOTIMPLEMENTED;
    }
    const bool same = AsObject(self).instance == AsObject(other).instance;
    return PyBool_FromLong(same == (operation == Py_EQ) ? 1 : 0);
}

void DestroyInstance(PyObject* self) {
    Py_DECREF(AsObject(self).model->Self());
    PyObject_Free(self);
}

PyGetSetDef instanceProperties[] = {
    {"number", Number, nullptr, "The number after the # of an exchange file.", nullptr},
    {"entity", EntityName, nullptr, "The name of the entity type.", nullptr},
    {"model", ItsModel, nullptr, "The model that holds the instance.", nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyMethodDef instanceMethods[] = {
    {"users", Users, METH_O,
     "users($self, name, /)\n--\n\n"
     "The instances of an entity type that refer to this one through an attribute of theirs,\n"
     "named as 'ENTITY_TYPE.ATTRIBUTE', in the order of the extent. An aggregate counts for its\n"
     "members."},
    {"__dir__", Directory, METH_NOARGS, nullptr},
    {nullptr, nullptr, 0, nullptr},
};

PyMappingMethods instanceItems = {nullptr, GetItem, SetItem};

}  // namespace

PyObject* NewInstance(SdaiEntityInstance& instance, Model& model) {
    auto* object = PyObject_New(InstanceObject, &InstanceType);
    if (object == nullptr) return nullptr;
    object->instance = &instance;
    object->model = &model;
    Py_INCREF(model.Self());
    return &object->ob_base;
}

PyObject* NewInstance(SdaiEntityInstance& instance) {
    return NewInstance(instance, ModelOf(instance));
}

SdaiEntityInstance* AsInstance(PyObject* object) {
    return Py_IS_TYPE(object, &InstanceType) ? AsObject(object).instance : nullptr;
}

// ---- Extent

namespace {

Py_ssize_t ExtentLength(PyObject* self) { return AsExtentObject(self).members->GetMemberCount(); }

PyObject* ExtentMember(const ExtentObject& extent, long position) {
    return NewInstance(*extent.members->GetInstanceMember(position), *extent.model);
}

PyObject* ExtentAt(PyObject* self, Py_ssize_t position) {
    if (position < 0 || position >= ExtentLength(self)) {
        PyErr_SetString(PyExc_IndexError, "the extent has no such position");
        return nullptr;
    }
    return ExtentMember(AsExtentObject(self), position);
}

PyObject* ExtentItem(PyObject* self, PyObject* key) {
    const Py_ssize_t length = ExtentLength(self);
    if (PyIndex_Check(key)) {
        const Py_ssize_t position = PyNumber_AsSsize_t(key, PyExc_IndexError);
        if (position == -1 && PyErr_Occurred() != nullptr) return nullptr;
        return ExtentAt(self, position < 0 ? position + length : position);
    }
    if (!PySlice_Check(key)) {
        PyErr_Format(PyExc_TypeError, "a position or slice of an extent expected, found %s",
                     TypeName(key).c_str());
        return nullptr;
    }
    Py_ssize_t start = 0;
    Py_ssize_t stop = 0;
    Py_ssize_t step = 0;
    if (PySlice_Unpack(key, &start, &stop, &step) != 0) return nullptr;
    const Py_ssize_t count = PySlice_AdjustIndices(length, &start, &stop, step);
    PyObject* list = PyList_New(count);
    for (Py_ssize_t i = 0; list != nullptr && i < count; ++i) {
        PyObject* member = ExtentMember(AsExtentObject(self), start + i * step);
        if (member == nullptr) {
            Py_CLEAR(list);
        } else {
            PyList_SET_ITEM(list, i, member);
        }
    }
    return list;
}

bool Holds(const ExtentObject& extent, const SdaiEntityInstance* instance) {
    return instance != nullptr && instance->FindEntityInstanceModel() == &extent.model->Data() &&
           TypeOf(*instance).IsKindOf(std::string_view(extent.entity->FoldedName()));
}

int ExtentContains(PyObject* self, PyObject* value) {
    return Holds(AsExtentObject(self), AsInstance(value)) ? 1 : 0;
}

PyObject* ExtentCount(PyObject* self, PyObject* value) {
    return PyLong_FromLong(ExtentContains(self, value));
}

PyObject* ExtentIndex(PyObject* self, PyObject* const* arguments, Py_ssize_t count) {
    const ExtentObject& extent = AsExtentObject(self);
    if (count < 1 || count > 3) {
        PyErr_Format(PyExc_TypeError, "index takes 1 to 3 arguments, found %zd", count);
        return nullptr;
    }
    Py_ssize_t range[] = {0, ExtentLength(self)};
    for (Py_ssize_t i = 1; i < count; ++i) {
        range[i - 1] = PyNumber_AsSsize_t(arguments[i], nullptr);
        if (range[i - 1] == -1 && PyErr_Occurred() != nullptr) return nullptr;
        if (range[i - 1] < 0) range[i - 1] += ExtentLength(self);
    }
    const SdaiEntityInstance* sought = AsInstance(arguments[0]);
    const Py_ssize_t end = std::min(range[1], ExtentLength(self));
    for (Py_ssize_t i = std::max<Py_ssize_t>(range[0], 0); sought != nullptr && i < end; ++i) {
        if (extent.members->GetInstanceMember(i) == sought) return PyLong_FromSsize_t(i);
    }
    PyErr_Format(PyExc_ValueError, "%R is not in the extent", arguments[0]);
    return nullptr;
}

PyObject* ExtentEntity(PyObject* self, void*) {
    return ToPython(AsExtentObject(self).entity->Name());
}
PyObject* ExtentModel(PyObject* self, void*) {
    return Py_NewRef(AsExtentObject(self).model->Self());
}

PyObject* ShowExtent(PyObject* self) {
    const ExtentObject& extent = AsExtentObject(self);
    return PyUnicode_FromFormat("<Extent %s, %zd instances>",
                                std::string(extent.entity->Name().View()).c_str(),
                                ExtentLength(self));
}

void DestroyExtent(PyObject* self) {
    Py_DECREF(AsExtentObject(self).model->Self());
    PyObject_Free(self);
}

// An iterator visits the instances that existed when it was created.
extern PyTypeObject ExtentIteratorType;

PyObject* Iterate(PyObject* self) {
    auto* iterator = PyObject_New(ExtentIteratorObject, &ExtentIteratorType);
    if (iterator == nullptr) return nullptr;
    iterator->extent = &AsExtentObject(self);
    Py_INCREF(self);
    iterator->position = 0;
    iterator->end = ExtentLength(self);
    return &iterator->ob_base;
}

PyObject* NextMember(PyObject* self) {
    ExtentIteratorObject& iterator = AsIterator(self);
    if (iterator.position >= iterator.end) return nullptr;
    return ExtentMember(*iterator.extent, iterator.position++);
}

PyObject* LengthHint(PyObject* self, PyObject*) {
    return PyLong_FromLong(AsIterator(self).end - AsIterator(self).position);
}

void DestroyIterator(PyObject* self) {
    Py_DECREF(&AsIterator(self).extent->ob_base);
    PyObject_Free(self);
}

PyMethodDef iteratorMethods[] = {
    {"__length_hint__", LengthHint, METH_NOARGS, nullptr},
    {nullptr, nullptr, 0, nullptr},
};

PyTypeObject ExtentIteratorType = [] {
    PyTypeObject type = {PyVarObject_HEAD_INIT(nullptr, 0)};
    type.tp_name = "orxexutilities.ExtentIterator";
    type.tp_basicsize = sizeof(ExtentIteratorObject);
    type.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION;
    type.tp_dealloc = DestroyIterator;
    type.tp_iter = PyObject_SelfIter;
    type.tp_iternext = NextMember;
    type.tp_methods = iteratorMethods;
    return type;
}();

PyGetSetDef extentProperties[] = {
    {"entity", ExtentEntity, nullptr, "The name of the entity type.", nullptr},
    {"model", ExtentModel, nullptr, "The model that the extent is of.", nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyMethodDef extentMethods[] = {
    {"index", reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(ExtentIndex)),
     METH_FASTCALL,
     "index($self, value, start=0, stop=None, /)\n--\n\nThe position of an instance."},
    {"count", ExtentCount, METH_O, "count($self, value, /)\n--\n\n1 for a member, else 0."},
    {nullptr, nullptr, 0, nullptr},
};

PySequenceMethods extentSequence = [] {
    PySequenceMethods methods{};
    methods.sq_length = ExtentLength;
    methods.sq_item = ExtentAt;
    methods.sq_contains = ExtentContains;
    return methods;
}();

PyMappingMethods extentItems = {ExtentLength, ExtentItem, nullptr};

}  // namespace

PyObject* NewExtent(Model& model, const kor::EntityType& entity) {
    auto* object = PyObject_New(ExtentObject, &ExtentType);
    if (object == nullptr) return nullptr;
    object->members = model.Data().Extent(std::string_view(entity.FoldedName()));
    object->entity = &entity;
    object->model = &model;
    Py_INCREF(model.Self());
    return &object->ob_base;
}

const SdaiAggrInstance* AsExtent(PyObject* object) {
    return Py_IS_TYPE(object, &ExtentType) ? AsExtentObject(object).members : nullptr;
}

Model& ModelOfExtent(PyObject* extent) { return *AsExtentObject(extent).model; }

// ---- The types

PyTypeObject InstanceType = [] {
    PyTypeObject type = {PyVarObject_HEAD_INIT(nullptr, 0)};
    type.tp_name = "orxexutilities.Instance";
    type.tp_doc =
        "An entity instance. Its attributes are read and written without regard to case; one that\n"
        "has the name of a property of its own is instance['name']. An aggregate is read as a "
        "list\n"
        "of its own: to change it, write the list back. Two are equal when they are the same\n"
        "instance. It keeps its model alive.";
    type.tp_basicsize = sizeof(InstanceObject);
    type.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION;
    type.tp_dealloc = DestroyInstance;
    type.tp_repr = Show;
    type.tp_hash = Hash;
    type.tp_richcompare = CompareInstances;
    type.tp_getattro = GetAttribute;
    type.tp_setattro = SetAttribute;
    type.tp_as_mapping = &instanceItems;
    type.tp_getset = instanceProperties;
    type.tp_methods = instanceMethods;
    return type;
}();

PyTypeObject ExtentType = [] {
    PyTypeObject type = {PyVarObject_HEAD_INIT(nullptr, 0)};
    type.tp_name = "orxexutilities.Extent";
    type.tp_doc =
        "The instances of an entity type and of its subtypes, in the order of their creation: a\n"
        "Sequence that grows as instances are created.";
    type.tp_basicsize = sizeof(ExtentObject);
    type.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION | Py_TPFLAGS_SEQUENCE;
    type.tp_dealloc = DestroyExtent;
    type.tp_repr = ShowExtent;
    type.tp_iter = Iterate;
    type.tp_as_sequence = &extentSequence;
    type.tp_as_mapping = &extentItems;
    type.tp_getset = extentProperties;
    type.tp_methods = extentMethods;
    return type;
}();

bool PrepareTypes() {
    return PyType_Ready(&InstanceType) == 0 && PyType_Ready(&ExtentType) == 0 &&
           PyType_Ready(&ExtentIteratorType) == 0;
}

}  // namespace python
