// The extension module: models, columns of values, placements of many occurrences at once.

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Calls.h"
#include "DataSets.h"
#include "KORDMInstance.h"
#include "Package.h"
#include "Trace.h"
#include "model/Cell.h"
#include "services/Suggestions.h"

namespace py = pybind11;

namespace python {

// ---- The existing models

namespace {

std::unordered_map<const SdaiModel*, Model*>& Models() {
    static auto* models = new std::unordered_map<const SdaiModel*, Model*>;
    return *models;
}

// The objects of the models that IsVersion has seen. They outlive the interpreter and are not
// destroyed when the process ends.
std::vector<PyObject*>& Kept() {
    static auto* kept = new std::vector<PyObject*>;
    return *kept;
}

}  // namespace

Model::Model(exchange::DataSet dataSet) : dataSet_(std::move(dataSet)) {
    Models().emplace(dataSet_.model.get(), this);
}

Model::~Model() {
    Models().erase(dataSet_.model.get());
    ForgetSlots();
}

bool Model::MayBeWritten() const {
    if (TraceCallableIsRunning()) {
        PyErr_SetString(classes.error,
                        "a model cannot be written while a callable takes a line of the trace");
        return false;
    }
    if (readers_ == 0) return true;
    PyErr_SetString(classes.error,
                    "the model cannot be written while another thread writes it to a file or works "
                    "out placements");
    return false;
}

Model& ModelOf(const SdaiModel& model) { return *Models().at(&model); }
Model& ModelOf(const SdaiEntityInstance& instance) {
    return ModelOf(*instance.FindEntityInstanceModel());
}

Model* AsModel(PyObject* object) {
    return py::isinstance<Model>(object) ? py::handle(object).cast<Model*>() : nullptr;
}

void Keep(Model& model) {
    if (std::find(Kept().begin(), Kept().end(), model.Self()) != Kept().end()) return;
    Kept().push_back(Py_NewRef(model.Self()));
}

void ReleaseKept() {
    // Destroying a model may run code that calls IsVersion again.
    std::vector<PyObject*> released;
    released.swap(Kept());
    for (PyObject* model : released) Py_DECREF(model);
}

namespace {

// ---- Errors

[[noreturn]] void Raise() { throw py::error_already_set(); }

[[noreturn]] void Raise(PyObject* itsClass, const std::string& message) {
    PyErr_SetString(itsClass, message.c_str());
    Raise();
}

// A file name, decoded as the operating system encodes it.
py::str FileName(const std::string& name) {
    return py::reinterpret_steal<py::str>(PyUnicode_DecodeFSDefault(name.c_str()));
}

// Messages may quote text from files, in any encoding.
py::str Message(const std::string& text) {
    return py::reinterpret_steal<py::str>(
        PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "surrogateescape"));
}

// Raises an Error if there are errors, otherwise issues the warnings.
void Tell(const exchange::Messages& messages) {
    if (messages.ErrorCount() != 0) {
        const exchange::Message& first = messages.Errors().front();
        py::list lines;
        for (const exchange::Message& error : messages.Errors()) {
            lines.append(Message(error.ToString()));
        }
        if (messages.ErrorCount() > messages.Errors().size()) {
            lines.append(py::str("... and {} more errors")
                             .format(messages.ErrorCount() - messages.Errors().size()));
        }
        const auto number = [](std::uint64_t place) {
            return place != 0 ? py::object(py::int_(place)) : py::object(py::none());
        };
        const py::object file =
            first.file.empty() ? py::object(py::none()) : py::object(FileName(first.file));
        const py::handle error(classes.error);
        const py::object raised = error(py::str("\n").attr("join")(lines), file, number(first.line),
                                        number(first.column), py::tuple(lines));
        PyErr_SetObject(classes.error, raised.ptr());
        Raise();
    }
    for (const exchange::Message& warning : messages.Warnings()) {
        if (PyErr_WarnEx(classes.dataWarning, warning.ToString().c_str(), 1) != 0) Raise();
    }
}

// ---- Reading, making and writing

// The name of a file or of a database.
std::string NameOf(const py::object& path, const char* function) {
    const auto name = py::reinterpret_steal<py::object>(PyOS_FSPath(path.ptr()));
    if (!name) {
        PyErr_Clear();
        Raise(PyExc_TypeError, std::string(function) +
                                   ": argument 'path': a str or os.PathLike expected, found " +
                                   TypeName(path.ptr()));
    }
    PyObject* bytes = nullptr;
    if (PyUnicode_FSConverter(name.ptr(), &bytes) == 0) Raise();
    return py::reinterpret_steal<py::bytes>(bytes);
}

exchange::SchemaCatalog CatalogWith(const py::object& schemas, const char* function) {
    exchange::SchemaCatalog catalog;
    if (PyUnicode_Check(schemas.ptr()) || !py::isinstance<py::iterable>(schemas)) {
        Raise(PyExc_TypeError, std::string(function) +
                                   ": argument 'schemas': a list of files expected, found " +
                                   TypeName(schemas.ptr()));
    }
    for (const py::handle file : schemas) {
        const std::string name = NameOf(py::reinterpret_borrow<py::object>(file), function);
        exchange::Messages messages;
        std::vector<exchange::SchemaPtr> read;
        {
            const py::gil_scoped_release released;
            read = exchange::ReadSchemas(name, messages);
        }
        Tell(messages);
        for (exchange::SchemaPtr& schema : read) catalog.Add(std::move(schema));
    }
    return catalog;
}

py::object NewModel(exchange::DataSet dataSet) {
    KORDMStore::AddFamilies(*dataSet.model);
    py::object object = py::cast(std::make_unique<Model>(std::move(dataSet)));
    object.cast<Model&>().SetSelf(object.ptr());
    return object;
}

exchange::SchemaPtr SchemaNamed(const exchange::SchemaCatalog& catalog, const std::string& name) {
    exchange::SchemaPtr found = catalog.Find(name);
    if (found == nullptr) {
        Raise(classes.notFound, "unknown schema '" + name + "'" +
                                    kor::DidYouMean(name, catalog.Names()) +
                                    " (give its EXPRESS file in `schemas`)");
    }
    return found;
}

py::object Read(const py::object& path, const py::object& schemas, bool lenient,
                const std::optional<std::string>& schema) {
    const std::string name = NameOf(path, "read");
    const exchange::SchemaCatalog catalog = CatalogWith(schemas, "read");
    exchange::ReadOptions options;
    options.lenient = lenient;
    if (schema.has_value()) options.schema = SchemaNamed(catalog, *schema);
    exchange::Messages messages;
    exchange::DataSet dataSet;
    {
        const py::gil_scoped_release released;
        dataSet = relational::Open(name, catalog, options, messages);
    }
    Tell(messages);
    return NewModel(std::move(dataSet));
}

py::object New(const std::string& schema, const py::object& schemas) {
    const exchange::SchemaCatalog catalog = CatalogWith(schemas, "new");
    return NewModel(exchange::NewDataSet(SchemaNamed(catalog, schema), ""));
}

void Write(Model& model, const py::object& path) {
    const std::string name = NameOf(path, "write");
    exchange::Messages messages;
    {
        const Model::Reading reading(model);
        const py::gil_scoped_release released;
        relational::Save(model.DataSet(), name, messages);
    }
    Tell(messages);
}

// ---- The contents of a model

const kor::EntityType& EntityNamed(const Model& model, const std::string& name) {
    const kor::Model& data = model.Data();
    if (const kor::EntityType* entity = data.FindEntity(std::string_view(name))) return *entity;
    std::vector<std::string> known = data.GetSchema().EntityNames();
    for (const kor::ModelType& type : data.Types()) known.push_back(type.entity->FoldedName());
    Raise(classes.notFound, "unknown entity type '" + name + "'" + kor::DidYouMean(name, known));
}

py::object Steal(PyObject* object) {
    if (object == nullptr) Raise();
    return py::reinterpret_steal<py::object>(object);
}

py::object ItemOf(Model& model, const py::object& key) {
    if (PyUnicode_Check(key.ptr())) {
        return Steal(NewExtent(model, EntityNamed(model, key.cast<std::string>())));
    }
    if (!PyIndex_Check(key.ptr()) || PyBool_Check(key.ptr())) {
        Raise(PyExc_TypeError,
              "the number of an instance or the name of an entity type expected, found " +
                  TypeName(key.ptr()));
    }
    const py::object number = Steal(PyNumber_Index(key.ptr()));
    const unsigned long long id = PyLong_AsUnsignedLongLong(number.ptr());
    if (PyErr_Occurred() != nullptr) PyErr_Clear();  // there is no such instance
    SdaiEntityInstance* instance = model.Data().Find(id);
    if (instance == nullptr) {
        Raise(classes.notFound, "there is no instance #" + std::string(py::str(number)));
    }
    return Steal(NewInstance(*instance, model));
}

bool Contains(Model& model, const py::object& value) {
    if (const SdaiEntityInstance* instance = AsInstance(value.ptr())) {
        return instance->FindEntityInstanceModel() == &model.Data();
    }
    if (PyUnicode_Check(value.ptr())) {
        return model.Data().FindEntity(std::string_view(value.cast<std::string>())) != nullptr;
    }
    if (!PyLong_Check(value.ptr()) || PyBool_Check(value.ptr())) return false;
    const unsigned long long id = PyLong_AsUnsignedLongLong(value.ptr());
    if (PyErr_Occurred() != nullptr) {
        PyErr_Clear();
        return false;
    }
    return model.Data().Find(id) != nullptr;
}

py::iterator Iterate(Model& model) {
    py::list all(model.Data().InstanceCount());
    std::size_t i = 0;
    model.Data().ForEachInstance(
        [&](kor::Instance& instance) { all[i++] = Steal(NewInstance(instance, model)); });
    return py::iter(all);
}

// The entity type of a new instance: one of the schema's, or several of them joined by "+".
const kor::EntityType& NewEntity(Model& model, const std::string& name) {
    const kor::Schema& schema = model.Data().GetSchema();
    std::vector<const kor::EntityType*> parts;
    for (std::size_t at = 0; at <= name.size();) {
        const std::size_t end = std::min(name.find('+', at), name.size());
        const std::string part = name.substr(at, end - at);
        parts.push_back(schema.FindEntity(std::string_view(part)));
        if (parts.back() == nullptr) {
            Raise(classes.notFound, "unknown entity type '" + part + "'" +
                                        kor::DidYouMean(part, schema.EntityNames()));
        }
        at = end + 1;
    }
    if (parts.size() == 1) return *parts.front();
    std::sort(parts.begin(), parts.end(),
              [](const auto* a, const auto* b) { return a->FoldedName() < b->FoldedName(); });
    parts.erase(std::unique(parts.begin(), parts.end()), parts.end());
    const kor::EntityType* entity = model.Data().ComplexEntity(parts);
    if (entity == nullptr) Raise(classes.error, "too many combinations of entity types");
    return *entity;
}

py::object Create(Model& model, const std::string& name, const py::kwargs& attributes) {
    if (!model.MayBeWritten()) Raise();
    const kor::EntityType& entity = NewEntity(model, name);
    // Values first: the instance is created only if all of them are valid.
    std::vector<std::pair<kor::Index, SdaiPrimitiveH>> values;
    for (const auto& [attribute, value] : attributes) {
        const kor::Index slot = SlotOf(entity, attribute.ptr());
        SdaiPrimitiveH converted;
        if (!ConvertForSlot(entity, model, slot, attribute.ptr(), value.ptr(), converted)) Raise();
        values.emplace_back(slot, std::move(converted));
    }
    if (!model.MayBeWritten()) Raise();
    const kor::ModelType* type = model.Data().TypeOf(entity);
    kor::Instance& instance = model.Data().Create(*type);
    for (const auto& [slot, value] : values) instance.Write(slot, value);
    return Steal(NewInstance(instance, model));
}

// ---- Columns

// The values of an attribute over an extent.
class Column {
  public:
    Column(Model& model, const kor::EntityType& entity, const std::string& attribute)
        : members_(kor::AggregateAccess::ExtentMembers(
              *model.Data().Extent(std::string_view(entity.FoldedName())))),
          attribute_(attribute) {
        slot_ = entity.SlotOf(std::string_view(attribute));
        if (!slot_) {
            RaiseNoAttribute(entity, attribute);
            Raise();
        }
        domain_ = entity.Slots()[*slot_].domain;
    }

    // Numbers as an array, if every value is a number; reals may be missing (nan).
    py::object Values() {
        using kor::Base;
        const Base base = domain_ != nullptr ? domain_->base : Base::Generic;
        if (base == Base::Real && AllAre(kor::Tag::Real, true)) return Array<double>();
        if (base == Base::Integer && AllAre(kor::Tag::Integer, false)) return Array<long>();
        return List();
    }

  private:
    // The slot of the attribute in an instance of a subtype.
    const kor::Cell& CellOf(const kor::Instance& instance) {
        if (&instance.Type() != type_) {
            type_ = &instance.Type();
            slot_ = type_->entity->SlotOf(std::string_view(attribute_));
        }
        static constexpr kor::Cell kUnset;
        return slot_ ? instance.Cells()[*slot_] : kUnset;
    }

    bool AllAre(kor::Tag tag, bool orUnset) {
        return std::all_of(members_.begin(), members_.end(), [&](SdaiEntityInstance* member) {
            const kor::Tag found = CellOf(kor::Instance::Of(*member)).GetTag();
            return found == tag || (orUnset && found <= kor::Tag::Derived);
        });
    }

    template <class Number>
    py::object Array() {
        py::object array = NumpyArray<Number>();
        if (!array) return List();
        auto* to = static_cast<Number*>(py::array(array).mutable_data());
        for (SdaiEntityInstance* member : members_) {
            const kor::Cell& cell = CellOf(kor::Instance::Of(*member));
            *to++ = cell.GetTag() > kor::Tag::Derived ? cell.Get<Number>()
                                                      : std::numeric_limits<Number>::quiet_NaN();
        }
        return array;
    }

    // Null if numpy is not installed.
    template <class Number>
    py::object NumpyArray() const {
        try {
            return py::array_t<Number>(static_cast<py::ssize_t>(members_.size()));
        } catch (py::error_already_set& error) {
            if (!error.matches(PyExc_ImportError)) throw;
            return py::object();
        }
    }

    py::object List() {
        PyObject* list = PyList_New(std::ssize(members_));
        if (list == nullptr) Raise();
        py::object result = py::reinterpret_steal<py::object>(list);
        for (std::size_t i = 0; i < members_.size(); ++i) {
            const kor::Cell& cell = CellOf(kor::Instance::Of(*members_[i]));
            PyObject* value = cell.GetTag() == kor::Tag::Text && cell.Buffer() == nullptr
                                  ? ShortText(cell.Text())
                                  : ToPython(kor::ToHandle(cell, false));
            if (value == nullptr) Raise();
            PyList_SET_ITEM(list, static_cast<Py_ssize_t>(i), value);
        }
        return result;
    }

    static PyObject* ShortText(std::string_view text) { return ToPython(SdaiString(text)); }

    std::span<SdaiEntityInstance* const> members_;
    const std::string& attribute_;
    const kor::Domain* domain_ = nullptr;
    const kor::ModelType* type_ = nullptr;
    kor::Index slot_;
};

py::object ColumnOf(Model& model, const std::string& entity, const std::string& attribute) {
    return Column(model, EntityNamed(model, entity), attribute).Values();
}

std::vector<std::string> AttributesOf(const Model& model, const std::string& entity) {
    std::vector<std::string> names;
    for (const kor::Slot& slot : EntityNamed(model, entity).Slots()) {
        if (slot.attribute == nullptr || slot.derived) continue;
        std::string name(slot.attribute->Name().View());
        if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    }
    return names;
}

// ---- Placements

constexpr long kPlacement = 12;

py::object Placements(const py::object& occurrences) {
    // The arguments and their models stay alive.
    std::vector<SdaiEntityInstance*> instances;
    py::list held;
    Model* model = nullptr;
    if (const SdaiAggrInstance* extent = AsExtent(occurrences.ptr())) {
        const auto members = kor::AggregateAccess::ExtentMembers(*extent);
        instances.assign(members.begin(), members.end());
        model = &ModelOfExtent(occurrences.ptr());
    } else {
        for (const py::handle occurrence : occurrences) {
            SdaiEntityInstance* instance = AsInstance(occurrence.ptr());
            if (instance == nullptr) {
                Raise(PyExc_TypeError,
                      "placements: argument 'occurrences': instances expected, found " +
                          TypeName(occurrence.ptr()) + " at position " +
                          std::to_string(instances.size()));
            }
            instances.push_back(instance);
            held.append(occurrence);
        }
    }
    const std::vector<py::ssize_t> shape{std::ssize(instances), kPlacement};
    py::array_t<double> placements(shape);
    double* to = placements.mutable_data();
    const orx::Export& row = *orx::FindExport("GetAbsPlacement");
    const calls::Module& module = TheModule();
    // No thread may write these models meanwhile.
    std::vector<std::unique_ptr<Model::Reading>> reading;
    if (model != nullptr) reading.push_back(std::make_unique<Model::Reading>(*model));
    const Model* last = nullptr;
    for (std::size_t i = 0; model == nullptr && i < instances.size(); ++i) {
        Model& its = ModelOf(*instances[i]);
        if (&its != last) reading.push_back(std::make_unique<Model::Reading>(its));
        last = &its;
    }
    {
        const py::gil_scoped_release released;
        calls::Argument argument;
        for (SdaiEntityInstance* instance : instances) {
            argument.handle = SdaiPrimitiveH(instance);
            const SdaiPrimitiveH placement = module.Call(row, {&argument, 1});
            const SdaiAggrInstance* members = placement;
            for (long i = 0; i < kPlacement; ++i) *to++ = members->GetRealMember(i);
        }
    }
    if (TraceHasRaised()) Raise();
    return placements;
}

std::string Show(const Model& model) {
    return "<Model " + std::string(model.Data().SchemaName().View()) + ", " +
           std::to_string(model.Data().InstanceCount()) + " instances>";
}

}  // namespace

PYBIND11_MODULE(_core, module) {
    if (!PrepareClasses() || !PrepareTypes() || !AddFunctions(module.ptr())) Raise();
    TheModule();
    module.attr("Instance") = py::handle(reinterpret_cast<PyObject*>(&InstanceType));
    module.attr("Extent") = py::handle(reinterpret_cast<PyObject*>(&ExtentType));

    py::options options;
    options.disable_function_signatures();
    py::class_<Model>(module, "Model", py::is_final(),
                      "A data set: the instances of the entity types of one schema.")
        .def("__len__", [](const Model& model) { return model.Data().InstanceCount(); })
        .def("__bool__", [](const Model&) { return true; })
        .def("__getitem__", ItemOf)
        .def("__contains__", Contains)
        .def("__iter__", Iterate)
        .def("__repr__", Show)
        .def_property_readonly(
            "schema", [](const Model& model) { return Steal(ToPython(model.Data().SchemaName())); },
            "The name of the schema.")
        .def("create", Create, py::arg("entity"), py::pos_only(),
             "create(entity, /, **attributes)\n\n"
             "A new instance of an entity type, or of several joined by '+', with these "
             "attributes,\n"
             "numbered after the largest. Nothing is made when one of them is wrong.")
        .def("write", Write, py::arg("path"),
             "write(path)\n\n"
             "Writes the model as an exchange file (ISO 10303-21), which takes the place of one\n"
             "that is there at the end. Other threads may read the model meanwhile.")
        .def("column", ColumnOf, py::arg("entity"), py::arg("attribute"),
             "column(entity, attribute)\n\n"
             "An attribute of each instance of an extent: an array where the schema declares an\n"
             "integer or a real and every value is one (a missing real is nan), else a list.")
        .def("_attributes", AttributesOf);

    module.def(
        "read", Read, py::arg("path"), py::arg("schemas") = py::tuple(), py::arg("lenient") = false,
        py::arg("schema") = py::none(),
        "read(path, schemas=(), lenient=False, schema=None)\n\n"
        "The model that an exchange file (ISO 10303-21) holds, read with the schema that it\n"
        "names: one of the EXPRESS files `schemas` or a built-in one; `schema`, where given, is\n"
        "the name of another one to read it with. A file that is wrong is\n"
        "refused as a whole, by an Error; `lenient` reads what can be read, each error\n"
        "becoming a DataWarning. Other threads run meanwhile.");
    module.def("new", New, py::arg("schema"), py::arg("schemas") = py::tuple(),
               "new(schema, schemas=())\n\nAn empty model of a schema.");
    module.def("placements", Placements, py::arg("occurrences"),
               "placements(occurrences)\n\n"
               "GetAbsPlacement of each of many instances, as an array with a row of twelve reals\n"
               "for each: the three columns of a rotation, then a translation.");
    AddTrace(module);
}

}  // namespace python
