# SPDX-License-Identifier: LicenseRef-HXAux
"""What Python offers of the library: methods with their arguments and results, and their documentation."""
from __future__ import annotations

import dataclasses
import re
import textwrap

from . import headers, names
from .headers import Docs, Function, Library, Parameter

INTEGERS = {"char", "short", "int", "unsigned char", "unsigned short", "unsigned int", "unsigned long"}
FLOATS = {"float", "double"}
# Operations on buffers of the C allocator: how Python calls them, and the function of src/Buffers.h that does so.
BUFFERS = {
    "takeSnapshotRaw": ([("size", "int"), ("flag", "bool")], "bytes"),
    "takeSnapshotBmp": ([("first", "bool"), ("second", "bool")], "bytes"),
    "createBitmap": ([("raw", "bytes"), ("first", "bool"), ("second", "bool")], "bytes"),
    "freeBmpBuffer": ([("buffer", "bytes | None")], "None"),
}
# Functions on memory: how Python calls them; src/Jida.h does so.
MEMORY = {
    "JidaTemperatureGetInfo": ([("board", "int"), ("index", "int"), ("information", "bytes")], "tuple[int, bytes]"),
    "JidaI2CWrite": ([("board", "int"), ("bus", "int"), ("address", "int"), ("bytes", "bytes")], "int"),
    "JidaI2CWriteReadCombined": (
        [("board", "int"), ("bus", "int"), ("address", "int"), ("bytes", "bytes"), ("answerSize", "int")],
        "tuple[int, bytes]",
    ),
}
# Sentences about C++ that mean nothing in Python.
ABOUT_CPP = re.compile(
    r"must not be null|pointers? must (?:not )?be|untouched on failure|(?:is|are) unchanged\.?$|^unchanged\.$"
    r"|free it with|goes back with|pointer is invalid|terminating zero|zero-terminated|must hold size|needs its own"
    r"|written only with|longest accepted text|^an object comes from|outputs are unchanged|^never null",
    re.I,
)
ONLY_NULL = re.compile(r"^(?:@p )?\w+(?: \w+)? is (?:null|None)(?:; [^.]*)?\.$", re.I)


@dataclasses.dataclass
class Value:
    """An argument or a result."""

    name: str
    type: str  # as Python annotates it
    source: Parameter
    text: str = ""


@dataclasses.dataclass
class Method:
    interface: str
    name: str
    source: Function
    arguments: list[Value]
    results: list[Value]
    returns: str  # the annotation
    named: str  # class of several results, or empty
    alone: bool  # must not overlap on one object
    kind: str = "call"  # or "text", "buffer"

    @property
    def full_name(self) -> str:
        return f"{self.interface}.{self.name}"

    @property
    def signature(self) -> str:
        arguments = ", ".join(["self", *(f"{each.name}: {each.type}" for each in self.arguments)])
        return f"{self.name}({arguments}) -> {self.returns}"


@dataclasses.dataclass
class Call:
    """A function."""

    name: str
    source: Function
    arguments: list[Value]
    results: list[Value]
    returns: str
    kind: str = "call"  # or "memory"

    @property
    def signature(self) -> str:
        arguments = ", ".join(f"{each.name}: {each.type}" for each in self.arguments)
        return f"{self.name}({arguments}) -> {self.returns}"


class Builder:
    def __init__(self, library: Library) -> None:
        self.library = library
        self.enumerations = {each.name for each in library.enumerations}
        self.structures = {each.name for each in library.structures}
        self.methods = {each.name: [self.method(each, o) for o in each.operations] for each in library.interfaces}
        self.functions = [self.function(each) for each in library.functions]
        self.check_overloads()
        self.words = self.python_words()

    def python_words(self) -> dict[str, str]:
        """What the comments say, and what it is called in Python."""
        words = {"Halvix::eErr": "ErrorCode", "stdColor": "std_color", "CanSetting_Imp": "CanSetting"}
        for enumeration in self.library.enumerations:
            name = names.enumeration(enumeration.name)
            if enumeration.name != "eErr":
                for member, (source, _, _) in zip(names.members(enumeration), enumeration.members):
                    words[source] = f"{name}.{member}"
        for methods in self.methods.values():
            for method in methods:
                words[method.source.name] = method.name
                words |= {each.name: names.snake(each.name) for each in method.source.parameters}
        for call in self.functions:
            words[call.source.name] = call.name
        for interface in self.library.interfaces:
            words |= {f"{interface.factory}()": interface.name, interface.factory: interface.name}
        return words | {"Release()": "release()", "Release": "release"}

    def translated(self, text: str) -> str:
        """With the names of Python."""
        known = sorted((re.escape(each) for each in self.words if re.search("[A-Z]", each)), key=len, reverse=True)
        text = re.sub(r"\((\w+)\*\)", "()", text)
        text = re.sub(rf"(?<!\w)({'|'.join(known)})(?!\w)", lambda match: self.words[match[1]], text)
        return re.sub(r"(?:Halvix::)?(\w+)::(\w+)", r"\1.\2", text)

    def annotation(self, type_name: str) -> str:
        if type_name in INTEGERS:
            return "int"
        if type_name in FLOATS:
            return "float"
        if type_name == "bool":
            return "bool"
        if type_name in self.enumerations | self.structures:
            return names.enumeration(type_name)
        raise headers.Mistake(f"no type of Python for {type_name}")

    def is_output(self, parameter: Parameter, docs: Docs) -> bool:
        direction, _ = docs.params.get(parameter.name, ("", ""))
        if direction not in ("in", "out"):
            raise headers.Mistake(f"the parameter {parameter.name} is not documented")
        if direction == "out" and (not parameter.pointer or parameter.constant):
            raise headers.Mistake(f"the output {parameter.name} is not a pointer")
        return direction == "out"

    def method(self, interface: headers.Interface, function: Function) -> Method:
        name = names.operation(interface.name, function)
        try:
            if function.name in BUFFERS:
                return self.buffer_method(interface, function, name)
            arguments, results, kind = self.values(function)
        except headers.Mistake as mistake:
            raise headers.Mistake(f"{interface.name}::{function.name}: {mistake}") from None
        named = names.result_class(interface.name, name, function.name) if len(results) > 1 else ""
        returns = named or (results[0].type if results else "None")
        return Method(
            interface.name, name, function, arguments, results, returns, named, alone(interface, function), kind
        )

    def values(self, function: Function) -> tuple[list[Value], list[Value], str]:
        arguments: list[Value] = []
        results: list[Value] = []
        kind = "call"
        for parameter in function.parameters:
            output = self.is_output(parameter, function.docs)
            text = words_for_python(function.docs.params[parameter.name][1])
            if parameter.type == "char" and parameter.pointer == 1:
                kind = "text" if output else kind
                is_file = parameter.name in ("file", "path")
                value = Value(
                    names.snake(parameter.name), "str | os.PathLike[str]" if is_file else "str", parameter, text
                )
            elif kind == "text" and parameter.name == "size":
                continue  # of the text in front of it
            else:
                if parameter.pointer != int(output):
                    raise headers.Mistake(f"the parameter {parameter.name} is not understood")
                value = Value(names.snake(parameter.name), self.annotation(parameter.type), parameter, text)
            (results if output else arguments).append(value)
        if kind == "text" and (len(results) != 1 or function.parameters[-1].name != "size"):
            raise headers.Mistake("a text beside other results")
        return arguments, results, kind

    def buffer_method(self, interface: headers.Interface, function: Function, name: str) -> Method:
        arguments, returns = BUFFERS[function.name]
        sources = {each.name: each for each in function.parameters}
        values = [Value(n, t, sources[n], function.docs.params[n][1]) for n, t in arguments]
        return Method(interface.name, name, function, values, [], returns, "", False, "buffer")

    def function(self, function: Function) -> Call:
        name = names.function(function.name)
        try:
            if function.name in MEMORY:
                sources = {each.name: each for each in function.parameters}
                known, returns = MEMORY[function.name]
                values = [Value(names.snake(n), t, sources[n], function.docs.params[n][1]) for n, t in known]
                return Call(name, function, values, [], returns, "memory")
            values = [self.function_value(each, function.docs) for each in function.parameters]
        except (headers.Mistake, KeyError) as mistake:
            raise headers.Mistake(f"{function.name}: {mistake}") from None
        results = [each for each in values if each.source.pointer and each.source.type != "char"]
        returns = {"bool": "bool", "unsigned int": "int", "const char*": "str"}[function.result]
        if results:
            returns = f"tuple[{', '.join([returns, *(each.type for each in results)])}]"
        return Call(name, function, [each for each in values if each not in results], results, returns)

    def function_value(self, parameter: Parameter, docs: Docs) -> Value:
        output = self.is_output(parameter, docs)
        text = words_for_python(docs.params[parameter.name][1])
        if parameter.type == "char" and parameter.pointer == 1 and parameter.constant:
            return Value(names.snake(parameter.name), "str | None", parameter, text)
        if parameter.pointer != int(output):
            raise headers.Mistake(f"the parameter {parameter.name} is not understood")
        accepts_numbers = parameter.type in self.enumerations
        annotation = self.annotation(parameter.type) + (" | int" if accepts_numbers else "")
        return Value(names.snake(parameter.name), annotation, parameter, text)

    def check_overloads(self) -> None:
        """Operations of one name must differ in their arguments."""
        for interface, methods in self.methods.items():
            seen = set()
            for method in methods:
                key = (method.name, len(method.arguments))
                if key in seen:
                    raise headers.Mistake(f"{interface}.{method.name} has two meanings; name them in names.OVERLOADS")
                seen.add(key)

    def named_results(self) -> dict[str, list[Value]]:
        """The classes of several results, each once."""
        found: dict[str, list[Value]] = {}
        for method in (each for methods in self.methods.values() for each in methods if each.named):
            fields = [(each.name, each.type) for each in method.results]
            before = found.setdefault(method.named, method.results)
            if fields != [(each.name, each.type) for each in before]:
                raise headers.Mistake(f"{method.full_name}: another result is called {method.named} as well")
        taken = {names.enumeration(each) for each in self.enumerations} | self.structures | set(self.methods)
        for name in found:
            if name in taken:
                raise headers.Mistake(f"a result and a type of the library are called {name}")
        return found


def alone(interface: headers.Interface, function: Function) -> bool:
    """Whether the thread word forbids two calls on one object at once."""
    return not (function.docs.threads or interface.docs.threads).startswith("Always") and (
        "several threads may use one object" not in interface.docs.threads
    )


def words_for_python(text: str) -> str:
    """Without the sentences about pointers, and with this language's names."""
    text = re.sub(r"(?:,| with a| without the| without its) (?:terminating zero|zero-terminated)", "", text)
    sentences = re.split(r"(?<=[.;])\s+(?=[A-Z\"`(@]|$)", text)
    kept = " ".join(sentence for sentence in sentences if not ABOUT_CPP.search(sentence))
    kept = re.sub(r"(?:\w+ is null, or|; must not be null \(not checked\))\s*", "", kept).strip()
    for word, ours in {"true": "True", "false": "False", "null": "None"}.items():
        kept = re.sub(rf"\b{word}\b", ours, kept)
    return kept


def paragraphs(text: str) -> str:
    """Details of a comment: paragraphs, with their lines joined and wrapped."""
    kept = [words_for_python(headers.plain(each)) for each in re.split(r"\n\s*\n", text)]
    return "\n\n".join(textwrap.fill(each, 88) for each in kept if each)


def items(title: str, entries: list[tuple[str, str]]) -> list[str]:
    lines = [f"{title}:"]
    for name, text in entries:
        line = f"{name}: {text}" if name and text else name or text
        if line:
            lines.append(textwrap.fill(line, 88, initial_indent="    ", subsequent_indent=" " * 8))
    return ["\n".join(lines)] if len(lines) > 1 else []


def reasons(method: Method) -> dict[str, str]:
    """Why an operation answers which error code."""
    codes = {code: words_for_python(text) for code, text in method.source.docs.codes.items()}
    if method.kind == "text":
        codes.pop("ERR_BUFFER_SIZE")  # the buffer grows with the text
    return {
        c: t for c, t in codes.items() if c != "ERR_SUCCESS" and (not ONLY_NULL.match(t) or method.kind == "buffer")
    }


def method_docs(builder: Builder, method: Method) -> str:
    docs = method.source.docs
    parts = [docs.brief, paragraphs(docs.details)]
    parts += items("Args", [(each.name, each.text) for each in method.arguments])
    if len(method.results) == 1:
        parts += items("Returns", [("", method.results[0].text)])
    else:
        parts += items("Returns", [(each.name, each.text) for each in method.results])
    parts += items("Raises", [(names.error_class(code), text) for code, text in reasons(method).items()])
    parts += [words_for_python(note) for note in docs.notes]
    if docs.threads:
        parts.append(textwrap.fill(f"Threads: {docs.threads}", 88))
    text = builder.translated("\n\n".join(part for part in parts if part))
    return f"{text}\n\nC++: Halvix::{method.interface}::{method.source.name}"


def class_docs(builder: Builder, docs: Docs) -> str:
    parts = [docs.brief, paragraphs(docs.details)]
    if docs.threads:
        parts.append(textwrap.fill(f"Threads: {docs.threads}", 88))
    return builder.translated("\n\n".join(part for part in parts if part))


def function_docs(builder: Builder, call: Call) -> str:
    docs = call.source.docs
    parts = [docs.brief, paragraphs(docs.details)]
    parts += items("Args", [(each.name, each.text) for each in call.arguments])
    returned = words_for_python(re.sub(r"A constant text[^.]*\. ?", "", docs.returns))
    truth = {"true": "True", "false": "False"}
    entries = [("", returned)] + [(truth[code], text) for code, text in docs.codes.items() if code in truth]
    parts += items("Returns", entries + [(each.name, each.text) for each in call.results])
    return builder.translated("\n\n".join(part for part in parts if part)) + f"\n\nC++: {call.source.name}"
