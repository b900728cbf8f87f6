// SPDX-License-Identifier: LicenseRef-HXAux
// Arguments and results: between Python's values and those of the library.
#pragma once

#include <hx-aux/errors.h>

#include <limits>
#include <pybind11/pybind11.h>
#include <string>
#include <utility>

namespace hxpython {

namespace py = pybind11;

/// An argument that is an integer, or a member of an enumeration, of any size.
struct Integer {
    long long value = 0;
    bool fits = true;

    /// Throws ValueError when the type of the operation cannot hold it.
    template <typename Number>
    [[nodiscard]] Number as(const char* name) const
    {
        using Limits = std::numeric_limits<Number>;
        if (fits && std::in_range<Number>(value))
            return static_cast<Number>(value);
        throw py::value_error{std::string{name} + " must be " + std::to_string(Limits::min()) + " to " +
                              std::to_string(Limits::max())};
    }
    template <typename Enumeration>
    [[nodiscard]] Enumeration named(const char* name) const
    {
        return static_cast<Enumeration>(as<int>(name));
    }
};

/// An argument that is a text, or the name of a file. Undecodable bytes survive, as in the functions of Python's os.
struct Text {
    std::string value{};

    [[nodiscard]] const char* get() const { return value.c_str(); }
    /// For operations that take a text and do not change it, but do not say so.
    [[nodiscard]] char* changeable() { return value.data(); }
};

struct FileName : Text {};

/// The generated Python module with enumerations, results and errors.
inline py::object values(const char* name)
{
    return py::module_::import("hxaux._values").attr(name);
}

inline py::object text(const char* bytes)
{
    return py::reinterpret_steal<py::object>(PyUnicode_DecodeFSDefault(bytes));
}

template <typename Value>
py::object result(Value value)
{
    return py::cast(value);
}
inline py::object result(unsigned char value)
{
    return py::int_(value);
}

/// A member of an enumeration.
template <typename Enumeration>
py::object member(const char* enumeration, Enumeration value)
{
    return values(enumeration)(static_cast<int>(value));
}

template <typename Value, std::size_t kCount>
py::object results(const Value (&array)[kCount])
{
    py::tuple tuple{kCount};
    for (std::size_t i = 0; i < kCount; ++i)
        tuple[i] = result(array[i]);
    return tuple;
}

/// Throws the Python exception of an error code.
[[noreturn]] inline void raise(const char* operation, Halvix::eErr code)
{
    const py::object error = values("error")(static_cast<int>(code), text(GetErrorStringA(code)), operation);
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error.ptr())), error.ptr());
    throw py::error_already_set{};
}

} // namespace hxpython

namespace pybind11::detail {

template <>
struct type_caster<hxpython::Integer> {
    PYBIND11_TYPE_CASTER(hxpython::Integer, const_name("int"));

    bool load(handle source, bool)
    {
        if (PyIndex_Check(source.ptr()) == 0)
            return false;
        const auto number = reinterpret_steal<object>(PyNumber_Index(source.ptr()));
        if (!number)
            throw error_already_set{};
        int overflow = 0;
        value.value = PyLong_AsLongLongAndOverflow(number.ptr(), &overflow);
        value.fits = overflow == 0;
        return true;
    }
};

template <>
struct type_caster<hxpython::Text> {
    PYBIND11_TYPE_CASTER(hxpython::Text, const_name("str"));

    bool load(handle source, bool) { return PyUnicode_Check(source.ptr()) && encode(source, value.value); }

    /// Throws ValueError for a text with a null character.
    static bool encode(handle source, std::string& bytes)
    {
        PyObject* encoded = nullptr;
        if (PyUnicode_FSConverter(source.ptr(), &encoded) == 0)
            throw error_already_set{};
        bytes = reinterpret_steal<class bytes>(encoded);
        return true;
    }
};

template <>
struct type_caster<hxpython::FileName> {
    PYBIND11_TYPE_CASTER(hxpython::FileName, const_name("str | os.PathLike[str]"));

    bool load(handle source, bool)
    {
        const bool isName =
            PyUnicode_Check(source.ptr()) || PyBytes_Check(source.ptr()) || hasattr(source, "__fspath__");
        return isName && type_caster<hxpython::Text>::encode(source, value.value);
    }
};

} // namespace pybind11::detail
