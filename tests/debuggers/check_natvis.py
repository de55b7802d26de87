#!/usr/bin/python3
"""Checks the views for Visual Studio, as far as that is possible without Visual Studio.

    check_natvis.py <file.natvis> <folder of headers>

The file must be well-formed, and contain only elements that this script knows. BaseString, Array, HashMap and Exception
must have views. Each type must be a class of the headers, with the same number of template arguments. Each name in an
expression must be in the headers. Each hexadecimal constant must be equal to `kUnknownLength` of the headers.
"""

import pathlib
import re
import sys
import xml.etree.ElementTree as ElementTree

NAMESPACE = "{http://schemas.microsoft.com/vstudio/debugger/natvis/2010}"
ELEMENTS = {
    "AutoVisualizer", "Type", "DisplayString", "StringView", "Expand", "Item", "ArrayItems", "Size", "ValuePointer",
    "ExpandedItem", "CustomListItems", "Variable", "Loop", "Exec",
}
EXPRESSIONS = {"StringView", "Item", "Size", "ValuePointer", "ExpandedItem", "Exec"}
KEYWORDS = {"nullptr"}


class Failure(Exception):
    """An error in the file."""


def declarations(text):
    """The code of `text` without comments."""
    return re.sub(r"//[^\n]*|/\*.*?\*/", "", text, flags=re.DOTALL)


def body_of(name, code):
    """The template parameters and the body of a class in the code."""
    found = re.search(r"(?:template\s*<([^{};]*?)>\s*)?\b(?:class|struct)\s+(?:VOREL_API\s+)?%s\s*\{" % name, code)
    if not found:
        raise Failure("no class %s in the headers" % name)
    depth, end = 1, found.end()
    while depth:
        depth += {"{": 1, "}": -1}.get(code[end], 0)
        end += 1
    return found.group(1), code[found.end():end]


def expressions_of(node):
    """The expressions of one element: its text, its condition, its initial value, and the parts in braces of a
    displayed text or of the name of an item."""
    tag = node.tag.removeprefix(NAMESPACE)
    text = node.text or ""
    if tag in EXPRESSIONS:
        yield text
    elif tag == "DisplayString":
        yield from re.findall(r"\{([^{}]+)\}", text.replace("{{", "").replace("}}", ""))
    for attribute in ("Condition", "InitialValue"):
        if attribute in node.attrib:
            yield node.attrib[attribute]
    yield from re.findall(r"\{([^{}]+)\}", node.get("Name", "") if tag == "Item" else "")


def identifiers_of(expression):
    """The names in an expression, without strings, numbers and format specifiers. A member within a format specifier,
    such as m_length in ",[m_length]su", is included."""
    expression = re.sub(r'"[^"]*"', "", expression)
    expression = re.sub(r",\s*(\[[^\]]*\])?(su|s)$", r" \1", expression.strip())
    return re.findall(r"(?<![\w])[A-Za-z_]\w*", expression)


def check_type(node, code):
    """Checks one type and returns the number of checked identifiers."""
    name = node.get("Name", "")
    count = 0
    scope = code
    for part in re.findall(r"(\w+)(?:<([^>]*)>)?", name.removeprefix("vorel::")):
        parameters, scope = body_of(part[0], scope)
        given = len(part[1].split(",")) if part[1] else 0
        declared = len(parameters.split(",")) if parameters else 0
        if given != declared:
            raise Failure("%s: in the headers, %s has %d template parameters" % (name, part[0], declared))
    known = KEYWORDS | {variable.get("Name") for variable in node.iter(NAMESPACE + "Variable")}
    for element in node.iter():
        tag = element.tag.removeprefix(NAMESPACE)
        if tag not in ELEMENTS:
            raise Failure("%s: <%s> is not a known element" % (name, tag))
        for expression in expressions_of(element):
            for identifier in identifiers_of(expression):
                # A name after "." or "->" may be anywhere in the headers, because it is a member of Array, BaseString
                # or Node. Every other name must be in the class.
                through = re.search(r"(?:->|\.)\s*%s\b" % identifier, expression)
                if identifier not in known and not re.search(r"\b%s\b" % identifier, code if through else scope):
                    raise Failure("%s: the headers do not contain %s (%s)" % (name, identifier, expression))
                count += 1
            for constant in re.findall(r"0x[0-9A-Fa-f]+u", expression):
                if "kUnknownLength = %s;" % constant not in scope:
                    raise Failure("%s: %s is not the value of kUnknownLength" % (name, constant))
    return count


def main():
    views, headers = map(pathlib.Path, sys.argv[1:])
    code = "\n".join(declarations(path.read_text("utf-8")) for path in sorted(headers.rglob("*.h")))
    try:
        root = ElementTree.parse(views).getroot()
        types = root.findall(NAMESPACE + "Type")
        viewed = {re.sub(r"<.*>", "", node.get("Name")).removeprefix("vorel::") for node in types}
        missing = {"BaseString", "Array", "HashMap", "Exception"} - viewed
        if root.tag != NAMESPACE + "AutoVisualizer" or missing:
            raise Failure("the root element is wrong, or these classes have no view: %s" % ", ".join(sorted(missing)))
        count = sum(check_type(node, code) for node in types)
    except (ElementTree.ParseError, Failure) as failure:
        print("%s: %s" % (views, failure))
        return 1
    print("all %d types and %d names are in the headers" % (len(types), count))
    return 0 if count else 1


if __name__ == "__main__":
    sys.exit(main())
