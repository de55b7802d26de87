"""GDB pretty-printers for the containers and exceptions of vorelCore.

GDB loads this file automatically if it is in the folder of the DLL as vorelCore.dll-gdb.py and the folder is trusted:
    add-auto-load-safe-path <folder>
Otherwise load it with:
    source vorelCore-gdb.py

The printers call no function of the program, so they also work for dumps. GDB reports memory that cannot be read. If a
count is damaged, the output ends where the readable memory ends.
"""

import re

import gdb
import gdb.printing
import gdb.types

UNKNOWN_LENGTH = 0xFFFFFFFF  # BaseString::kUnknownLength: the text ends at its terminator


def text_of(data, length):
    """The text of a string with this buffer and length field."""
    return data.lazy_string(length=-1 if length == UNKNOWN_LENGTH else length)


class BaseStringPrinter:
    """The text; a string without a buffer is empty."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        data = self.value["m_data"]
        length = int(self.value["m_length"])
        if int(data) == 0:
            return '""' if data.type.target().sizeof == 1 else 'L""'
        return text_of(data, length)

    def display_hint(self):
        return "string" if int(self.value["m_data"]) else None


def elements(array):
    """The elements of an Array."""
    for index in range(int(array["m_count"])):
        yield array["m_items"][index]


class ArrayPrinter:
    """The elements, without the unused slots."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        return "%s of %d" % (gdb.types.get_basic_type(self.value.type), int(self.value["m_count"]))

    def children(self):
        for index, element in enumerate(elements(self.value)):
            yield "[%d]" % index, element

    def display_hint(self):
        return "array"


class PointerStackPrinter(ArrayPrinter):
    """The elements of the array in which the stack keeps its pointers."""

    def __init__(self, value):
        super().__init__(value["m_items"])


def entries(hash_map):
    """The nodes of a HashMap in iteration order."""
    for node in elements(hash_map["m_buckets"]):
        while int(node) != 0:
            yield node.dereference()
            node = node["next"]


class HashMapPrinter:
    """Keys and values, bucket by bucket."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        buckets = int(self.value["m_buckets"]["m_count"])
        return "vorel::HashMap of %d in %d buckets" % (int(self.value["m_size"]), buckets)

    def children(self):
        for index, node in enumerate(entries(self.value)):
            yield "key %d" % index, node["key"]
            yield "value %d" % index, node["value"]

    def display_hint(self):
        return "map"


class HashMapIteratorPrinter:
    """The current entry, or the end."""

    def __init__(self, value):
        self.node = value["m_node"]

    def to_string(self):
        return "end" if int(self.node) == 0 else None

    def children(self):
        if int(self.node) != 0:
            yield "key", self.node["key"]
            yield "value", self.node["value"]


class ExceptionPrinter:
    """The messages: the failure, then the records of the handlers that the exception has passed.

    The compiler writes the debug information of a class with virtual functions only where its virtual functions are
    defined: in the DLL. The DLL in the package has no debug information. So this class finds the messages by the
    layout of Exception, which is the same in every build: the pointer to the virtual functions, then the pointers to
    the start and the end of m_stack. Each entry of m_stack consists of two wide strings, message and location.
    """

    POINTER = 8
    STRING = 16

    def __init__(self, value):
        self.value = value

    def to_string(self):
        count = len(list(self.entries()))
        return "%s with %d %s" % (self.class_name(), count, "message" if count == 1 else "messages")

    def children(self):
        for index, entry in enumerate(self.entries()):
            yield "[%d]" % index, wide_string_at(entry)
            location = wide_string_at(entry + self.STRING)
            if location is not None:
                yield "[%d].location" % index, location

    def class_name(self):
        try:
            kind = self.value.dynamic_type
        except gdb.error:
            kind = self.value.type
        return gdb.types.get_basic_type(kind)

    def entries(self):
        """The addresses of the entries."""
        start = int(self.value.address) + self.POINTER
        begin, end = number_at(start, "unsigned long long"), number_at(start + self.POINTER, "unsigned long long")
        return range(begin, end, 2 * self.STRING)


def number_at(address, kind):
    """An integer in the program's memory."""
    return int(gdb.Value(address).cast(gdb.lookup_type(kind).pointer()).dereference())


def wide_string_at(address):
    """The text of the BaseString<wchar_t> at an address; None if it has no buffer."""
    data = number_at(address, "unsigned long long")
    length = number_at(address + 12, "unsigned int")
    if data == 0:
        return None
    return text_of(gdb.Value(data).cast(gdb.lookup_type("wchar_t").pointer()), length)


class Printers(gdb.printing.RegexpCollectionPrettyPrinter):
    """Selects the printer of a type. A class that derives from an exception of the library is shown as an exception."""

    def __init__(self):
        super().__init__("vorelCore")
        for name, printer in (
            ("BaseString", BaseStringPrinter),
            ("Array", ArrayPrinter),
            ("PointerStack", PointerStackPrinter),
            ("HashMap", HashMapPrinter),
        ):
            self.add_printer(name, r"^vorel::%s<(?!.*>::).*>$" % name, printer)
        self.add_printer("HashMap::Iterator", r"^vorel::HashMap<.*>::Iterator$", HashMapIteratorPrinter)
        self.add_printer("Exception", r"^vorel::\w*Exception$", ExceptionPrinter)

    def __call__(self, value):
        kind = gdb.types.get_basic_type(value.type)
        if value.type.code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
            value = value.referenced_value()
        found = super().__call__(value)
        if found is None and is_exception(kind):
            return ExceptionPrinter(value)
        return found


def is_exception(kind):
    """Whether a class is an exception of the library, or its first base class is one, directly or indirectly."""
    if kind.code != gdb.TYPE_CODE_STRUCT:
        return False
    if re.match(r"^vorel::\w*Exception$", kind.name or ""):
        return True
    first = next(iter(kind.fields()), None)
    return first is not None and first.is_base_class and is_exception(gdb.types.get_basic_type(first.type))


gdb.printing.register_pretty_printer(gdb.current_objfile(), Printers(), replace=True)
