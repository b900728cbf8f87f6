# SPDX-License-Identifier: LicenseRef-HXAux
"""Writes the C++ source of the extension, its types, and the module with enumerations, results and errors."""
from __future__ import annotations

import re
import textwrap

from . import headers, names
from .bindings import INTEGERS, Builder, Call, Method, Value, class_docs, function_docs, method_docs, reasons

LICENCE = "SPDX-License-Identifier: LicenseRef-HXAux"
GENERATED = "Generated from the public headers by python/generate.py."


def raw(text: str) -> str:
    """A literal of C++."""
    return f'R"doc({text})doc"'


def quoted(text: str, indent: int = 4) -> str:
    """A docstring of Python."""
    text = text.replace("\\", "\\\\").replace('"""', "'''")
    text = text + " " if text.endswith('"') else text
    body = textwrap.indent(text, " " * indent).strip()
    return f'{" " * indent}"""{body}{chr(10) + " " * indent if chr(10) in body else ""}"""'


class Cpp:
    def __init__(self, builder: Builder) -> None:
        self.builder = builder

    def module(self) -> str:
        library = self.builder.library
        adders = [self.interface(each) for each in library.interfaces]
        calls = [f"    add{each.name}(module);" for each in library.interfaces]
        return "\n".join(
            [
                f"// {LICENCE}",
                f"// {GENERATED}",
                '#include "python/src/Buffers.h"',
                '#include "python/src/Held.h"',
                '#include "python/src/Jida.h"',
                "",
                "#include <hx-aux/Jida.h>",
                "#include <hx-aux/hx-aux.h>",
                "",
                "#include <pybind11/stl.h>",
                "",
                "namespace hxpython {",
                "",
                "namespace {",
                "",
                *adders,
                self.functions(),
                "} // namespace",
                "",
                "} // namespace hxpython",
                "",
                "PYBIND11_MODULE(_hxaux, module)",
                "{",
                "    pybind11::options options;",
                "    options.disable_function_signatures();",
                '    module.doc() = "The library libhx-aux.so.1.";',
                *(f"    hxpython::{call.strip()}" for call in [*calls, "addFunctions(module);"]),
                "}",
                "",
            ]
        )

    def interface(self, interface: headers.Interface) -> str:
        lines = [
            f"void add{interface.name}(py::module_& module)",
            "{",
            f"    using Halvix::{interface.name};",
            f'    auto bound = addClass<{interface.name}>(module, "{interface.name}", {interface.factory},',
            f"        {raw(class_docs(self.builder, interface.docs))});",
        ]
        for method in self.builder.methods[interface.name]:
            lines += self.method(method)
        for owner, name, _ in self.builder.library.constants:
            if owner == interface.name:
                lines.append(f'    bound.attr("{name}") = py::int_(Halvix::{owner}_Imp::{name} + 0);')
        return "\n".join([*lines, "}", ""])

    def method(self, method: Method) -> list[str]:
        arguments = "".join(f', py::arg("{each.name}")' for each in method.arguments)
        if method.kind == "buffer":
            return [f'    bound.def("{method.name}", {method.source.name}, {self.docs(method)}{arguments});']
        parameters = "".join(f", {self.accepted(each.type)} {each.source.name}" for each in method.arguments)
        body = self.text_body(method) if method.kind == "text" else self.call_body(method)
        return [
            f'    bound.def("{method.name}", [](Held<{method.interface}>& self{parameters}) {{',
            *(f"        {line}" for line in body),
            f"    }}, {self.docs(method)}{arguments});",
        ]

    def docs(self, called: Method | Call) -> str:
        text = method_docs(self.builder, called) if isinstance(called, Method) else function_docs(self.builder, called)
        return raw(f"{called.signature}\n\n{text}")

    def accepted(self, annotation: str) -> str:
        known = {"float": "double", "bool": "bool", "str": "Text", "str | os.PathLike[str]": "FileName"}
        return known.get(annotation, "Integer")

    def inputs(self, method: Method) -> tuple[list[str], dict[str, str]]:
        """Statements that convert the arguments, and what to pass for each."""
        lines, passed = [], {}
        for each in method.arguments:
            name, type_name = each.source.name, each.source.type
            if each.type.startswith("str"):
                passed[name] = f"{name}.get()" if each.source.constant else f"{name}.changeable()"
            elif type_name in INTEGERS:
                chosen = "signed char" if type_name == "char" else type_name
                lines.append(f'const auto {name}In = static_cast<{type_name}>({name}.as<{chosen}>("{each.name}"));')
                passed[name] = f"{name}In"
            elif each.type in ("bool", "float"):
                passed[name] = f"static_cast<{type_name}>({name})"
            else:
                lines.append(f'const auto {name}In = {name}.named<Halvix::{type_name}>("{each.name}");')
                passed[name] = f"{name}In"
        return lines, passed

    def call_body(self, method: Method) -> list[str]:
        lines, passed = self.inputs(method)
        for each in method.results:
            known = each.source.type in self.builder.enumerations | self.builder.structures
            lines.append(f"{'Halvix::' if known else ''}{each.source.type} {each.source.name}Out{{}};")
            passed[each.source.name] = f"&{each.source.name}Out"
        words = ", ".join(passed[each.name] for each in method.source.parameters)
        call = "callAlone" if method.alone else "call"
        lines.append(
            f'self.{call}("{method.full_name}", [&]({method.interface}& object) '
            f"{{ return object.{method.source.name}({words}); }});"
        )
        results = [self.converted(each.source.type, f"{each.source.name}Out") for each in method.results]
        if method.named:
            lines.append(f'return values("{method.named}")({", ".join(results)});')
        elif results:
            lines.append(f"return {results[0]};")
        return lines

    def text_body(self, method: Method) -> list[str]:
        lines, passed = self.inputs(method)
        passed |= {method.results[0].source.name: "buffer", "size": "longest"}
        words = ", ".join(passed[each.name] for each in method.source.parameters)
        lines.append(
            f'return self.text("{method.full_name}", [&]({method.interface}& object, char* buffer, int longest) '
            f"{{ return object.{method.source.name}({words}); }});"
        )
        return lines

    def converted(self, type_name: str, value: str) -> str:
        if type_name in self.builder.enumerations:
            return f'member("{names.enumeration(type_name)}", {value})'
        if type_name in self.builder.structures:
            fields = self.fields(type_name)
            inside = [
                f"results({value}.{each.name})" if each.count else self.converted(each.type, f"{value}.{each.name}")
                for each in fields
            ]
            return f'values("{type_name}")({", ".join(inside)})'
        return f"result({value})"

    def fields(self, structure: str) -> list[headers.Field]:
        found = next(each for each in self.builder.library.structures if each.name == structure)
        return [each for each in found.fields if each.name != "reserved"]

    def functions(self) -> str:
        lines = ["void addFunctions(py::module_& module)", "{"]
        for each in self.builder.functions:
            arguments = "".join(f', py::arg("{value.name}")' for value in each.arguments)
            docs = self.docs(each)
            if each.kind == "memory":
                lines.append(f'    module.def("{each.name}", {names.camel(each.source.name)}, {docs}{arguments});')
                continue
            lines += [f'    module.def("{each.name}", []({self.function_parameters(each)}) {{']
            lines += [*(f"        {line}" for line in self.function_body(each)), f"    }}, {docs}{arguments});"]
        for name, count, _ in self.builder.library.data:
            lines.append(
                f'    module.attr("{names.snake(name)}") = py::memoryview::from_memory({name}, {count}, false);'
            )
        return "\n".join([*lines, "}", ""])

    @staticmethod
    def function_parameters(call: Call) -> str:
        types = {"str | None": "std::optional<Text>"}
        return ", ".join(f"{types.get(each.type, 'Integer')} {each.source.name}" for each in call.arguments)

    @staticmethod
    def output(result: Value) -> str:
        """The board library stores some numbers of 32 bits in words without a sign."""
        name = f"{result.source.name}Out"
        return f"static_cast<int>({name})" if "signed 32 bits" in result.text else name

    def function_body(self, call: Call) -> list[str]:
        lines, passed = [], {}
        for each in call.arguments:
            name, type_name = each.source.name, each.source.type
            if type_name == "char":
                passed[name] = f"{name} ? {name}->get() : nullptr"
                continue
            known = f"named<Halvix::{type_name}>" if type_name in self.builder.enumerations else f"as<{type_name}>"
            lines.append(f'const auto {name}In = {name}.{known}("{each.name}");')
            passed[name] = f"{name}In"
        for each in call.results:
            lines.append(f"{each.source.type} {each.source.name}Out{{}};")
            passed[each.source.name] = f"&{each.source.name}Out"
        words = ", ".join(passed[each.name] for each in call.source.parameters)
        lines.append(f"const auto answer = withoutLock([&] {{ return {call.source.name}({words}); }});")
        if call.source.result == "const char*":
            return [*lines, "return text(answer);"]
        if not call.results:
            return [*lines, "return answer;"]
        outputs = ", ".join(self.output(each) for each in call.results)
        return [*lines, f"return py::make_tuple(answer, {outputs});"]


class Stubs:
    """Types of the extension."""

    def __init__(self, builder: Builder) -> None:
        self.builder = builder

    def module(self) -> str:
        library = self.builder.library
        imported = sorted(exported_values(self.builder))
        functions = [each.name for each in self.builder.functions]
        data = [names.snake(name) for name, _, _ in library.data]
        exported = [each.name for each in library.interfaces] + functions + data
        lines = [f"# {LICENCE}", f"# {GENERATED}", "import os", "import types", "from typing import overload", ""]
        lines += [f"from ._values import {name}" for name in imported if not name.endswith("Error")]
        lines += ["", f"__all__ = {exported!r}", ""]
        for each in library.interfaces:
            lines += self.interface(each)
        for function in self.builder.functions:
            lines += [f"def {function.signature}:", quoted(function_docs(self.builder, function)), ""]
        for name, _, docs in library.data:
            lines += [f"{names.snake(name)}: memoryview", quoted(class_docs(self.builder, docs), 0), ""]
        return "\n".join(lines)

    def interface(self, interface: headers.Interface) -> list[str]:
        lines = [f"class {interface.name}:", quoted(class_docs(self.builder, interface.docs)), ""]
        for owner, name, text in self.builder.library.constants:
            if owner == interface.name:
                lines += [f"    {name}: int", quoted(self.builder.translated(text))]
        lines += ["    def __init__(self) -> None: ..."]
        lines += [
            "    def release(self) -> None:",
            quoted("Releases the object; every later call raises ValueError.", 8),
        ]
        lines += [f"    def __enter__(self) -> {interface.name}: ..."]
        lines += ["    def __exit__(self, *args: object) -> None: ..."]
        methods = self.builder.methods[interface.name]
        for method in methods:
            if [each.name for each in methods].count(method.name) > 1:
                lines.append("    @overload")
            lines += [f"    def {method.signature}:", quoted(method_docs(self.builder, method), 8)]
        return [*lines, ""]


def exported_values(builder: Builder) -> list[str]:
    library = builder.library
    codes = next(each for each in library.enumerations if each.name == "eErr")
    errors = [names.error_class(name) for name, value, _ in codes.members if value]
    return [
        *(names.enumeration(each.name) for each in library.enumerations),
        *(each.name for each in library.structures),
        *builder.named_results(),
        "Error",
        *errors,
    ]


class Values:
    """The module with enumerations, results and errors."""

    def __init__(self, builder: Builder) -> None:
        self.builder = builder

    def module(self) -> str:
        lines = [
            f"# {LICENCE}",
            f'"""{GENERATED}"""',
            "from __future__ import annotations",
            "",
            "from typing import NamedTuple",
        ]
        lines += ["", "from . import _base", "", f"__all__ = {exported_values(self.builder)!r}", ""]
        for each in self.builder.library.enumerations:
            lines += self.enumeration(each)
        for structure in self.builder.library.structures:
            lines += self.structure(structure)
        for name, values in self.builder.named_results().items():
            lines += [f"class {name}(NamedTuple):", quoted("Several results of one operation."), ""]
            for value in values:
                lines.append(f"    {value.name}: {value.type}")
                lines += [quoted(self.builder.translated(value.text))] if value.text else []
            lines.append("")
        return "\n".join([*lines, *self.errors(), ""])

    def enumeration(self, enumeration: headers.Enumeration) -> list[str]:
        lines = [
            f"class {names.enumeration(enumeration.name)}(_base.Enumeration):",
            quoted(class_docs(self.builder, enumeration.docs)),
            "",
        ]
        for name, (_, value, text) in zip(names.members(enumeration), enumeration.members):
            lines += [f"    {name} = {value}", quoted(self.builder.translated(text))]
        return [*lines, ""]

    def structure(self, structure: headers.Structure) -> list[str]:
        lines = [f"class {structure.name}(NamedTuple):", quoted(class_docs(self.builder, structure.docs)), ""]
        for field in Cpp(self.builder).fields(structure.name):
            annotation = self.builder.annotation(field.type)
            lines += [
                f"    {field.name}: {f'tuple[{annotation}, ...]' if field.count else annotation}",
                quoted(self.builder.translated(field.text)),
            ]
        return [*lines, ""]

    def errors(self) -> list[str]:
        codes = next(each for each in self.builder.library.enumerations if each.name == "eErr")
        lines = ["class Error(_base.Failure[ErrorCode]):", quoted("An operation answered an error code.")]
        lines += ["", "    code: ErrorCode", "", ""]
        for name, value, text in codes.members:
            if value:
                lines += [f"class {names.error_class(name)}(Error):", quoted(f"{name}: {text}"), "", ""]
        lines += ["_CLASSES: dict[int, type[Error]] = {"]
        lines += [f"    {value}: {names.error_class(name)}," for name, value, _ in codes.members if value]
        lines += ["}", "", "_REASONS: dict[str, dict[str, str]] = {"]
        for method in (each for methods in self.builder.methods.values() for each in methods):
            translated = {code: self.builder.translated(text) for code, text in reasons(method).items()}
            lines.append(f"    {method.full_name!r}: {translated!r},")
        lines += ["}", "", "def error(code: int, text: str, operation: str) -> Error:"]
        lines += [quoted("The exception for an operation's answer.")]
        lines += ["    known = ErrorCode(code)"]
        lines += ["    reason = _REASONS.get(operation, {}).get(known.name, '')"]
        lines += ["    return _CLASSES.get(code, Error)(known, text, operation, reason)", ""]
        return [*lines, "for _name in __all__:", "    globals()[_name].__module__ = 'hxaux'  # where users find them"]


def one_blank_line(text: str) -> str:
    return re.sub(r"\n{3,}", "\n\n", text)
