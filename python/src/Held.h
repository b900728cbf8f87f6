// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "python/src/Values.h"

#include <memory>
#include <mutex>
#include <vector>

namespace hxpython {

/// An object of the library that a Python object holds. Calls run without the interpreter's lock, so that other threads
/// of Python continue; the object is released when it is asked for, but not under a running call.
template <class Interface>
class Held {
public:
    explicit Held(Interface* (*factory)())
    {
        Interface* const object = create(factory);
        if (object == nullptr)
            throw std::bad_alloc{};
        object_.reset(object, [](Interface* released) {
            const py::gil_scoped_release others;
            const std::lock_guard guard{created()};
            (void)released->Release();
        });
    }

    void release() { object_.reset(); }
    [[nodiscard]] bool isReleased() const { return !object_; }

    /// Calls an operation; throws what it answers.
    template <class Work>
    void call(const char* operation, Work work)
    {
        check(operation, answer(work));
    }
    /// The same for operations that must not overlap on one object.
    template <class Work>
    void callAlone(const char* operation, Work work)
    {
        check(operation, answer([&](Interface& object) {
                  const std::lock_guard guard{*alone_};
                  return work(object);
              }));
    }
    /// An operation that writes a text, whatever its length. `work` gets a buffer and the longest text for it.
    template <class Work>
    py::object text(const char* operation, Work work)
    {
        constexpr std::size_t kLongest = 1U << 20U;
        std::vector<char> buffer(256);
        for (;;) {
            const Halvix::eErr err = answer([&](Interface& object) {
                const std::lock_guard guard{*alone_};
                return work(object, buffer.data(), static_cast<int>(buffer.size() - 1));
            });
            if (err != Halvix::ERR_BUFFER_SIZE || buffer.size() == kLongest) {
                check(operation, err);
                return hxpython::text(buffer.data());
            }
            buffer.resize(buffer.size() * 2);
        }
    }

private:
    template <class Work>
    Halvix::eErr answer(Work work)
    {
        const std::shared_ptr<Interface> object = object_; // lives until the call has returned
        if (!object)
            throw py::value_error{"the object is released"};
        const py::gil_scoped_release others;
        return work(*object);
    }
    static void check(const char* operation, Halvix::eErr code)
    {
        if (code != Halvix::ERR_SUCCESS)
            raise(operation, code);
    }
    static Interface* create(Interface* (*factory)())
    {
        const py::gil_scoped_release others;
        const std::lock_guard guard{created()};
        return factory();
    }
    /// Objects that a process shares must not be created and released at the same time.
    static std::mutex& created()
    {
        static std::mutex mutex;
        return mutex;
    }

    std::shared_ptr<Interface> object_{};
    std::shared_ptr<std::mutex> alone_ = std::make_shared<std::mutex>();
};

/// The class of an interface with what all have in common.
template <class Interface>
py::class_<Held<Interface>> addClass(py::module_& module, const char* name, Interface* (*factory)(), const char* about)
{
    using Object = Held<Interface>;
    py::class_<Object> type{module, name, about};
    type.def(py::init([factory] { return std::make_unique<Object>(factory); }));
    type.def("release", &Object::release,
             "release() -> None\n\nReleases the object; every later call raises ValueError.");
    type.def("__enter__", [](py::object self) { return self; });
    type.def("__exit__", [](Object& self, const py::args&) { self.release(); });
    type.def("__repr__", [name](const Object& self) {
        return std::string{"<hxaux."} + name + (self.isReleased() ? ", released>" : ">");
    });
    type.attr("__module__") = "hxaux";
    return type;
}

} // namespace hxpython
