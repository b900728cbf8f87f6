// SPDX-License-Identifier: LicenseRef-HXAux
// The client of a simulated unit: hx-sim/client.h for Python. hxaux/sim.py is what programs import.
#include <hx-sim/client.h>

#include <algorithm>
#include <mutex>
#include <optional>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

namespace py = pybind11;

namespace {

using namespace std::chrono_literals;
using Seconds = std::chrono::duration<double>;

std::chrono::nanoseconds nanoseconds(double seconds)
{
    constexpr double kLongest = 1e9; // thirty years
    if (!(seconds >= 0 && seconds <= kLongest))
        throw py::value_error{"the time must be 0 to 1e9 seconds"};
    return std::chrono::duration_cast<std::chrono::nanoseconds>(Seconds{seconds});
}

double seconds(std::chrono::nanoseconds time)
{
    return Seconds{time}.count();
}

/// Runs the handlers of signals: a wait ends with the exception of one, as Ctrl-C does.
void runHandlers()
{
    const py::gil_scoped_acquire lock;
    if (PyErr_CheckSignals() != 0)
        throw py::error_already_set{};
}

/// A program on a unit. Ends with the object.
class Program {
public:
    explicit Program(hxsim::Program&& program) : program_{std::move(program)} {}

    /// Its exit status, or nothing when the time is over.
    std::optional<int> wait(std::optional<double> timeout)
    {
        const auto patience = timeout ? nanoseconds(*timeout) : std::chrono::nanoseconds::max();
        const py::gil_scoped_release others;
        return program_.wait(patience);
    }
    void stop()
    {
        const py::gil_scoped_release others;
        program_.stop();
    }
    [[nodiscard]] bool isRunning() { return program_.isRunning(); }
    [[nodiscard]] py::object output()
    {
        std::string text;
        {
            const py::gil_scoped_release others;
            text = program_.output();
        }
        return py::reinterpret_steal<py::object>(
            PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "replace"));
    }

private:
    hxsim::Program program_;
};

/// The end of a program that runs takes some time.
struct EndsWithoutLock {
    void operator()(Program* program) const
    {
        const py::gil_scoped_release others;
        delete program;
    }
};
using ProgramHolder = std::unique_ptr<Program, EndsWithoutLock>;

/// A unit until it is stopped. One thread at a time uses it; others wait for their turn.
class Unit {
public:
    explicit Unit(hxsim::Unit&& unit) : unit_{std::move(unit)}, name_{unit_->name()} {}

    /// Calls the unit while other threads of Python continue.
    template <class Work>
    auto use(Work work)
    {
        const py::gil_scoped_release others;
        const std::lock_guard guard{mutex_};
        if (!unit_)
            throw hxsim::Error{"the unit has been stopped"};
        return work(*unit_);
    }
    void stop()
    {
        const py::gil_scoped_release others;
        const std::lock_guard guard{mutex_};
        unit_.reset();
    }
    [[nodiscard]] const std::string& name() const { return name_; }

private:
    std::mutex mutex_{};
    std::optional<hxsim::Unit> unit_;
    std::string name_;
};

std::unique_ptr<Unit> start(const std::vector<std::string>& settings, double scale, bool isVirtual)
{
    const py::gil_scoped_release others;
    return std::make_unique<Unit>(hxsim::Unit{hxsim::Options{settings, scale, isVirtual}});
}

std::unique_ptr<Unit> attach(const std::string& name)
{
    const py::gil_scoped_release others;
    return std::make_unique<Unit>(hxsim::Unit::attach(name));
}

ProgramHolder run(Unit& self, const std::vector<std::string>& command)
{
    if (command.empty())
        throw py::value_error{"the command is empty"};
    return self.use([&](hxsim::Unit& unit) { return ProgramHolder{new Program{unit.run(command)}}; });
}

/// Checks an expectation with one of the client's methods.
py::tuple checked(Unit& self, const std::string& expectation, hxsim::Result (hxsim::Unit::*check)(const std::string&))
{
    const hxsim::Result result = self.use([&](hxsim::Unit& unit) { return (unit.*check)(expectation); });
    return py::make_tuple(result.met, seconds(result.time), result.seen);
}

/// A method that passes texts on.
template <class... Texts>
auto passes(void (hxsim::Unit::*method)(const Texts&...))
{
    return
        [method](Unit& self, const Texts&... texts) { self.use([&](hxsim::Unit& unit) { (unit.*method)(texts...); }); };
}

void addUnit(py::module_& module)
{
    using Text = std::string;
    py::class_<Unit> type{module, "Unit"};
    type.def(py::init(&start), py::arg("settings"), py::arg("scale"), py::arg("virtual"));
    type.def_static("attach", &attach);
    type.def("stop", &Unit::stop);
    type.def_property_readonly("name", &Unit::name);
    type.def("get",
             [](Unit& self, const Text& key) { return self.use([&](hxsim::Unit& unit) { return unit.get(key); }); });
    type.def("set", passes(static_cast<void (hxsim::Unit::*)(const Text&, const Text&)>(&hxsim::Unit::set)));
    type.def("act", passes(&hxsim::Unit::act));
    type.def("fail", [](Unit& self, const Text& node, const Text& call, const Text& error, int count) {
        self.use([&](hxsim::Unit& unit) { unit.fail(node, call, error, count); });
    });
    type.def("unfail", passes(&hxsim::Unit::unfail));
    type.def("remove", passes(&hxsim::Unit::remove));
    type.def("restore", passes(&hxsim::Unit::restore));
    type.def("follow", passes(&hxsim::Unit::follow));
    type.def("run", &run);
    type.def("check", [](Unit& self, const Text& text) { return checked(self, text, &hxsim::Unit::check); });
    type.def("wait", [](Unit& self, const Text& text) { return checked(self, text, &hxsim::Unit::wait); });
    type.def("sleep", [](Unit& self, double time) {
        const auto duration = nanoseconds(time);
        self.use([&](hxsim::Unit& unit) { unit.sleep(duration); });
    });
    type.def("time", [](Unit& self) { return seconds(self.use([](hxsim::Unit& unit) { return unit.time(); })); });
    type.def("log", [](Unit& self) { return self.use([](hxsim::Unit& unit) { return unit.log(); }); });
}

} // namespace

PYBIND11_MODULE(_sim, module)
{
    module.doc() = "The client of a simulated unit.";
    hxsim::onSignal(runHandlers);
    py::register_exception<hxsim::Error>(module, "Error", PyExc_RuntimeError);
    py::class_<Program, ProgramHolder> program{module, "Program"};
    program.def("wait", &Program::wait, py::arg("timeout"));
    program.def("stop", &Program::stop);
    program.def("is_running", &Program::isRunning);
    program.def("output", &Program::output);
    addUnit(module);
}
