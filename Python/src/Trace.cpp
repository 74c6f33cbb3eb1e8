// `orxexutilities.trace`.

#include "Trace.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "KORPSNTrace.h"
#include "Package.h"
#include "services/TraceFile.h"

namespace py = pybind11;

namespace python {

namespace {

constexpr int kLevel = 12;

// The destination of the lines in one `with`.
class Target {
  public:
    explicit Target(const py::object& target) : target_(target) {
        if (PyCallable_Check(target.ptr()) != 0) return;
        const auto path = py::reinterpret_steal<py::object>(PyOS_FSPath(target.ptr()));
        if (!path) {
            PyErr_Clear();
            PyErr_Format(
                PyExc_TypeError,
                "trace: argument 'target': a str, os.PathLike or callable expected, found %s",
                TypeName(target.ptr()).c_str());
            throw py::error_already_set();
        }
        PyObject* bytes = nullptr;
        if (PyUnicode_FSConverter(path.ptr(), &bytes) == 0) throw py::error_already_set();
        path_ = std::string(py::reinterpret_steal<py::bytes>(bytes));
    }
    ~Target();
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    void Open() {
        if (!path_.has_value()) return;
        // While it is entered, entering it again would empty the file.
        if (open_ || path_->empty() || !file_.StartAnew(path_->c_str())) {
            PyErr_SetString(classes.error, (*path_ + ": the trace cannot be written").c_str());
            throw py::error_already_set();
        }
        open_ = true;
    }
    void Close() {
        file_.Close();
        open_ = false;
    }

    void Write(std::string_view line) {
        if (path_.has_value()) {
            file_.Write(line);
            return;
        }
        if (line.ends_with('\n')) line.remove_suffix(1);
        const auto text = py::reinterpret_steal<py::object>(ToPython(SdaiString(line)));
        if (!text) throw py::error_already_set();
        target_(text);
    }

    py::object Given() const { return target_; }

  private:
    py::object target_;
    std::optional<std::string> path_;
    kor::TraceFile file_;
    bool open_ = false;
};

// Passes the lines to the innermost `with`. An exception from a callable ends the call that traces;
// functions called by a callable are not traced.
class Lines final {
  public:
    void Begin(Target& target) {
        target.Open();
        if (targets_.empty()) {
            capture_.emplace([this](std::string_view line) { Write(line); }, kLevel);
        }
        targets_.push_back(&target);
    }
    // Returns false if it was not entered.
    bool End(Target& target) {
        const auto found = std::find(targets_.begin(), targets_.end(), &target);
        if (found == targets_.end()) return false;
        targets_.erase(found);
        if (targets_.empty()) capture_.reset();
        target.Close();
        return true;
    }

    bool IsWriting() const { return writing_; }

    // The exception of a callable, which is now set.
    bool Raise() {
        if (!raised_.has_value()) return false;
        raised_->restore();
        raised_.reset();
        return true;
    }

  private:
    void Write(std::string_view line) {
        const py::gil_scoped_acquire acquired;
        if (targets_.empty() || writing_ || raised_.has_value()) return;
        writing_ = true;
        try {
            targets_.back()->Write(line);
        } catch (py::error_already_set& error) {
            raised_.emplace(error);
        } catch (...) {
        }
        writing_ = false;
    }

    std::vector<Target*> targets_;
    std::optional<KORPSNCapture> capture_;
    bool writing_ = false;
    std::optional<py::error_already_set> raised_;
};

// Never destroyed: the platform may hold it until the process ends.
Lines& TheLines() {
    static auto* lines = new Lines;
    return *lines;
}

// It may have been entered and never left.
Target::~Target() {
    while (TheLines().End(*this)) {
    }
    file_.Close();
}

}  // namespace

bool TraceHasRaised() { return TheLines().Raise(); }
bool TraceCallableIsRunning() { return TheLines().IsWriting(); }

void AddTrace(py::module_& module) {
    py::class_<Target>(
        module, "trace", py::is_final(),
        "trace(target)\n\n"
        "Within its `with` block, the functions trace what they read and decide: into a\n"
        "file, which is emptied first unless standard output or error goes there too, or\n"
        "to a callable, which gets each line as a str without its line break. A pipe is\n"
        "opened for the first line, which waits for its reader. If the callable raises an\n"
        "exception, it gets no more lines of that call, and the call raises the exception\n"
        "when it ends.")
        .def(py::init<py::object>(), py::arg("target"))
        .def("__enter__",
             [](const py::object& self) {
                 TheLines().Begin(self.cast<Target&>());
                 return self;
             })
        .def("__exit__", [](Target& self, const py::args&) { TheLines().End(self); });
}

}  // namespace python
