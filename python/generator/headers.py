# SPDX-License-Identifier: LicenseRef-HXAux
"""Reads the public headers: what they declare, with its documentation.

Whatever looks like a declaration and is not understood is an error, so that nothing of the library is forgotten.
"""
from __future__ import annotations

import dataclasses
import pathlib
import re

# Names that the public headers declare and Python does not offer, and why.
NOT_OFFERED = {
    "GetErrorStringW": "get_error_string returns the same text",
    "GetHwErrorStatusStringW": "get_hw_error_status_string returns the same text",
    "GetStartupReasonStringW": "get_startup_reason_string returns the same text",
}
# Pointers to functions of C, which a program of C may replace.
NOT_OFFERED_POINTER = re.compile(r"HX_EXPORT unsigned int \(\*pJida\w+\)\(")


class Mistake(Exception):
    """A header says something that the generator does not understand."""


@dataclasses.dataclass
class Docs:
    """The documentation comment in front of a declaration."""

    brief: str = ""
    details: str = ""
    params: dict[str, tuple[str, str]] = dataclasses.field(default_factory=dict)  # name: direction, text
    codes: dict[str, str] = dataclasses.field(default_factory=dict)  # name of the error code: text
    returns: str = ""
    threads: str = ""
    notes: list[str] = dataclasses.field(default_factory=list)


@dataclasses.dataclass
class Parameter:
    type: str  # "unsigned char", without the pointer
    name: str
    pointer: int = 0
    constant: bool = False


@dataclasses.dataclass
class Function:
    name: str
    result: str
    parameters: list[Parameter]
    docs: Docs


@dataclasses.dataclass
class Enumeration:
    name: str
    members: list[tuple[str, int, str]]  # name, value, documentation
    docs: Docs


@dataclasses.dataclass
class Field:
    type: str
    name: str
    count: int  # of an array, or 0
    text: str


@dataclasses.dataclass
class Structure:
    name: str
    fields: list[Field]
    docs: Docs


@dataclasses.dataclass
class Interface:
    name: str
    operations: list[Function]
    docs: Docs
    factory: str = ""


@dataclasses.dataclass
class Library:
    enumerations: list[Enumeration] = dataclasses.field(default_factory=list)
    structures: list[Structure] = dataclasses.field(default_factory=list)
    interfaces: list[Interface] = dataclasses.field(default_factory=list)
    functions: list[Function] = dataclasses.field(default_factory=list)
    constants: list[tuple[str, str, str]] = dataclasses.field(default_factory=list)  # class, name, documentation
    data: list[tuple[str, int, Docs]] = dataclasses.field(default_factory=list)  # name, count, documentation


def plain(text: str) -> str:
    """A comment's text on one line, without the marks of its notation."""
    text = re.sub(r"@(?:p|ref) (\S+?)(?=[.,;:)]*(?:\s|$))", r"\1", text)
    return re.sub(r"\s+", " ", text.replace("**", "")).strip()


def read_docs(lines: list[str]) -> Docs:
    """Of the lines of a comment, without its slashes."""
    docs = Docs()
    parts = re.split(r"(?:\n|(?<=[.\d]) )(?=@(?!p |ref |[{}]))", "\n".join(lines).strip())
    for part in parts:
        command = re.match(r"@(\w+|[{}])(?:\[([\w,]+)\])?\s*(.*)", part, re.S)
        if not command:
            docs.details = part
            continue
        kind, direction, text = command.groups()
        if kind == "brief":
            brief, _, details = text.partition("\n\n")
            docs.brief, docs.details = plain(brief), details
        elif kind == "param":
            name, _, meaning = text.partition(" ")
            docs.params[name] = (direction or "in", plain(meaning))
        elif kind == "retval":
            name, _, meaning = text.partition(" ")
            docs.codes[name] = plain(meaning)
        elif kind == "return":
            docs.returns = plain(text)
        elif kind == "threadsafe":
            docs.threads = plain(text)
        elif kind == "note":
            docs.notes.append(plain(text))
        elif kind not in ("throws", "file", "name", "def", "{", "}"):
            raise Mistake(f"@{kind} in a comment is not understood")
    return docs


def read_parameters(text: str) -> list[Parameter]:
    parameters = []
    for one in filter(None, (part.strip() for part in text.split(","))):
        match = re.fullmatch(r"(?P<type>[\w: ]+?)\s*(?P<stars>\**)\s*(?P<name>\w+)", one)
        if not match:
            raise Mistake(f"the parameter '{one}' is not understood")
        words = match["type"].replace("Halvix::", "").split()
        constant = "const" in words
        type_name = " ".join(word for word in words if word != "const")
        parameters.append(Parameter(type_name, match["name"], len(match["stars"]), constant))
    return parameters


def read_enumeration(name: str, body: str, docs: Docs) -> Enumeration:
    members = []
    for match in re.finditer(r"(\w+)\s*=\s*(\d+),?((?:\s*///<[^\n]*(?:\n\s*///<?[^\n]*)*)?)", body):
        comment = re.sub(r"\n?\s*///<?", " ", match[3])
        members.append((match[1], int(match[2]), plain(comment)))
    listed = re.sub(r"//[^\n]*|HX_32BIT_RANGE\(\w+\)", "", body).split(",")
    if not members or len(members) != sum(bool(each.strip()) for each in listed):
        raise Mistake(f"the enumeration {name} is not understood")
    return Enumeration(name, members, docs)


def read_structure(name: str, body: str, docs: Docs) -> Structure:
    fields = []
    for statement, comment in re.findall(r"([^;]+);[ \t]*(?:///<([^\n]*))?", body):
        match = re.fullmatch(r"([\w ]+?) (\w+)(?:\[(\d+)\])?", statement.strip())
        if not match:
            raise Mistake(f"'{statement.strip()}' in {name} is not understood")
        fields.append(Field(match[1], match[2], int(match[3] or 0), plain(comment)))
    return Structure(name, fields, docs)


class Reader:
    """Reads one header after the other into a library."""

    def __init__(self) -> None:
        self.library = Library()
        self.factories: dict[str, str] = {}

    def read(self, header: pathlib.Path) -> None:
        comment: list[str] = []
        statement = ""
        for line in self.code_of(header):
            text = line.strip()
            if text.startswith("///") and not statement:
                comment.append(text[3:].removeprefix(" "))
                continue
            statement += line + "\n"
            if not text and not statement.strip():
                comment, statement = [], ""  # a comment of its own
                continue
            if not self.is_complete(statement):
                continue
            if statement.strip():
                self.take(statement.strip(), comment)
            comment, statement = [], ""

    @staticmethod
    def code_of(header: pathlib.Path) -> list[str]:
        text = header.read_text(encoding="utf-8")
        text = re.sub(r"^[ \t]*#.*\n", "", text.replace("\\\n", ""), flags=re.M)
        text = re.sub(r"^[ \t]*//(?!/).*\n", "", text, flags=re.M)
        return text.splitlines()

    @staticmethod
    def is_complete(statement: str) -> bool:
        code = re.sub(r"//[^\n]*", "", statement).strip()
        if not code:
            return True
        if re.match(r"namespace \w+ \{$|\}$", code):
            return True
        return code.count("{") == code.count("}") and code.endswith((";", "{}"))

    def take(self, statement: str, comment: list[str]) -> None:
        docs = read_docs(comment)
        code = re.sub(r"[ \t]*//[^\n]*", "", statement)
        compact = re.sub(r"\s+", " ", code).strip()
        if re.match(r"namespace Halvix \{$|\}$", compact):
            return
        if match := re.match(r"enum (\w+) HX_32BIT \{(.*)\};$", statement, re.S):
            self.library.enumerations.append(read_enumeration(match[1], match[2], docs))
        elif match := re.match(r"struct (\w+) \{(.*)\};$", statement, re.S):
            self.library.structures.append(read_structure(match[1], match[2], docs))
        elif match := re.match(r"class (\w+)_Imp : public (\w+) \{(.*)\};$", statement, re.S):
            self.take_constants(match[2], match[3])
        elif match := re.match(r"class (\w+) \{(.*)\};$", statement, re.S):
            self.library.interfaces.append(self.interface(match[1], match[2], docs))
        elif match := re.match(r"HX_EXPORT Halvix::(\w+)\* (\w+)\(\);$", compact):
            self.factories[match[1]] = match[2]
        elif match := re.match(r"HX_EXPORT unsigned char (\w+)\[(\d+)\];$", compact):
            self.library.data.append((match[1], int(match[2]), docs))
        elif NOT_OFFERED_POINTER.match(compact):
            return
        elif match := re.match(r"HX_EXPORT ([\w* ]+?) ?(\w+)\((.*)\);$", compact):
            self.take_function(Function(match[2], match[1], read_parameters(match[3]), docs))
        else:
            raise Mistake(f"not understood: {compact}")

    def take_function(self, function: Function) -> None:
        if function.name not in NOT_OFFERED:
            self.library.functions.append(function)

    def take_constants(self, interface: str, body: str) -> None:
        for match in re.finditer(r"static const [\w ]+? (\w+);\s*///< (.*)", body):
            self.library.constants.append((interface, match[1], plain(match[2])))

    @staticmethod
    def interface(name: str, body: str, docs: Docs) -> Interface:
        operations = []
        for match in re.finditer(r"((?:[ \t]*///[^\n]*\n)*)[ \t]*virtual (\w+) (\w+)\(([^)]*)\) = 0;", body):
            comment = [line.strip()[3:].removeprefix(" ") for line in match[1].splitlines()]
            operation = Function(match[3], match[2], read_parameters(match[4]), read_docs(comment))
            if match[2] != "eErr":
                raise Mistake(f"{name}::{match[3]} does not return eErr")
            operations.append(operation)
        if len(operations) != body.count("virtual ") or not operations or operations[-1].name != "Release":
            raise Mistake(f"an operation of {name} is not understood")
        return Interface(name, operations[:-1], docs)


def read(directory: pathlib.Path) -> Library:
    reader = Reader()
    for header in sorted(directory.glob("*.h")):
        try:
            reader.read(header)
        except Mistake as mistake:
            raise Mistake(f"{header.name}: {mistake}") from None
    for interface in reader.library.interfaces:
        if interface.name not in reader.factories:
            raise Mistake(f"no function creates a {interface.name}")
        interface.factory = reader.factories.pop(interface.name)
    if reader.factories:
        raise Mistake(f"{', '.join(reader.factories)}: creates something that is not an interface")
    return reader.library
