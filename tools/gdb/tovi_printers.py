"""Shows the library's objects in gdb as what they stand for.

    Ref, RefPtr, id      the object, by its run-time class; nil; one that is not listed here: (host::Account *) 0x...
    NSString             u"text"
    NSNumber             42, 2.5; truth values are 1 and 0
    NSArray, NSSet       NSArray of 2 = {1, u"two"}
    NSDictionary         NSDictionary of 1 = {[u"width"] = 3}
    NSIndexSet           NSIndexSet of 3 = {0-1, 5}
    NSDate               2001-01-01 00:00:00 UTC
    NSData               NSData of 3 = <01 fe 7f>
    NSError, NSException NSError NSPOSIXErrorDomain 2; NSRangeException: index 5 beyond bounds [0 .. 2]
    Selector             "insertObject:atIndex:"

gdb loads this file by itself together with the library; `source` loads it by hand. It reads memory and calls nothing in
the program, so it works on core files too. It needs the debug information of the library's classes.
"""

import datetime

import gdb


def pointee(reference):
    """The object that a Ref or RefPtr holds, in its run-time class; None for nil."""
    pointer = reference["object_"]
    if not pointer:
        return None
    return pointer.cast(pointer.dynamic_type).dereference()


def as_id(slot):
    """A place in memory that holds a pointer to an object, seen as the id that it amounts to."""
    return slot.cast(gdb.lookup_type("tovi::RefPtr<tovi::NSObject>").pointer()).dereference()


def text(reference):
    """The text of the string that a Ref or RefPtr holds."""
    string = pointee(reference)
    if string is None:
        return "nil"
    units = gdb.selected_inferior().read_memory(int(string["units_"]), 2 * int(string["length_"]))
    return units.tobytes().decode("utf-16-le", "replace")


def shown(length):
    """How many of so many elements gdb is to show."""
    return min(length, gdb.parameter("print elements") or length)


class Text:
    def __init__(self, text):
        self.text = text

    def to_string(self):
        return self.text


class String:
    def __init__(self, value, name):
        self.value = value

    def to_string(self):
        return self.value["units_"].lazy_string(length=int(self.value["length_"]))


class Collection:
    """What has a count and, in memory, a row of places that hold objects."""

    def __init__(self, value, name):
        self.value = value
        self.name = name

    def to_string(self):
        return f"{self.name} of {self.count()}"

    def children(self):
        return ((f"[{i}]", as_id(slot)) for i, slot in enumerate(self.slots()))

    def display_hint(self):
        return "array"


class Array(Collection):
    def count(self):
        return int(self.value["count_"])

    def slots(self):
        return (self.value["objects_"] + i for i in range(self.count()))


class Set(Collection):
    fields = ("key",)

    def count(self):
        return int(self.value["table_"]["count_"])

    def slots(self):
        table = self.value["table_"]
        for place in range(int(table["first_"]), int(table["used_"])):
            entry = table["entries_"][place]
            if entry["key"]:  # removed entries leave holes
                for field in self.fields:
                    yield entry[field].address


class Dictionary(Set):
    fields = ("key", "value")

    def display_hint(self):
        return "map"


def number_text(value):
    letter = chr(int(value["type_"]))
    if letter in "fd":
        real = float(value["real_"])
        return f"{real:.9g}" if letter == "f" else repr(real)
    integer = int(value["integer_"])
    return str(integer + 2**64 if letter.isupper() and integer < 0 else integer)


def pieces(blocks):
    """The runs of an index set as its blocks have them: first index, one behind the last."""
    block, end = blocks["blocks_"]["_M_impl"]["_M_start"], blocks["blocks_"]["_M_impl"]["_M_finish"]
    while block != end:
        data = block["data"]
        if block["capacity"]:
            for i in range(int(block["count"])):
                yield int(data[2 * i]), int(data[2 * i + 1])
        else:
            memory = gdb.selected_inferior().read_memory(int(data), int(blocks["chunkLength"]) // 8)
            bits, first = int.from_bytes(memory.tobytes(), "little"), int(block["first"])
            while bits:
                gap = (bits & -bits).bit_length() - 1
                length = (~(bits >> gap) & (bits >> gap) + 1).bit_length() - 1
                yield first + gap, first + gap + length
                bits >>= gap + length
                first += gap + length
        block += 1


def runs(blocks):
    """The pieces, those that touch joined."""
    first = last = None
    for start, end in pieces(blocks):
        if last == start:
            last = end
            continue
        if last is not None:
            yield first, last - 1
        first, last = start, end
    if last is not None:
        yield first, last - 1


def index_set_text(value):
    blocks, most = value["blocks_"], shown(2**64)
    texts = []
    for first, last in runs(blocks):
        if len(texts) == most:
            texts.append("...")
            break
        texts.append(str(first) if first == last else f"{first}-{last}")
    return f"NSIndexSet of {int(blocks['count_'])} = {{{', '.join(texts)}}}"


def date_text(value):
    seconds = float(value["seconds_"])
    try:
        return f"{datetime.datetime(2001, 1, 1) + datetime.timedelta(seconds=seconds)} UTC"
    except (OverflowError, ValueError):  # beyond the years 1 to 9999, or not a number
        return f"{seconds!r} seconds since 2001-01-01 00:00:00 UTC"


def data_text(value):
    length = int(value["length_"])
    bytes_ = gdb.selected_inferior().read_memory(int(value["bytes_"]), shown(length)).tobytes() if length else b""
    return f"NSData of {length} = <{bytes_.hex(' ')}{' ...' if len(bytes_) < length else ''}>"


def exception_text(value):
    content = value["content_"]["_M_ptr"].dereference()
    return f"{text(content['name'])}: {text(content['reason'])}"


def selector_text(value):
    record = value["record_"]
    return f'"{record["name"].string()}"' if record else "null"


def reference_printer(value):
    held = pointee(value)
    if held is None:
        return Text("nil")
    return object_printer(held) or Text(f"({held.type.name} *) {int(held.address):#x}")


def as_text(function):
    return lambda value, name: Text(function(value))


# An object of a class that is not listed is shown as the nearest class above it that is.
OBJECTS = {
    "NSString": String,
    "NSNumber": as_text(number_text),
    "NSArray": Array,
    "NSMutableArray": Array,
    "NSDictionary": Dictionary,
    "NSMutableDictionary": Dictionary,
    "NSSet": Set,
    "NSMutableSet": Set,
    "NSIndexSet": as_text(index_set_text),
    "NSDate": as_text(date_text),
    "NSData": as_text(data_text),
    "NSError": as_text(lambda value: f"NSError {text(value['domain_'])} {int(value['code_'])}"),
    "NSNull": as_text(lambda value: "NSNull"),
    "Class": as_text(lambda value: f"Class {value['recipe_']['name'].string()}"),
}
OTHERS = {"Selector": selector_text, "NSException": exception_text}


def library_name(type_):
    """The name of one of the library's types, without its namespace; "" for another's."""
    name = type_.name or ""
    return name[len("tovi::") :] if name.startswith("tovi::") else ""


def lineage(type_):
    """A class and, upwards, its first base classes."""
    while type_ and type_.code == gdb.TYPE_CODE_STRUCT:
        yield type_
        type_ = next((field.type.strip_typedefs() for field in type_.fields() if field.is_base_class), None)


def object_printer(value):
    """The printer of an object, by its run-time class."""
    value = value.address.cast(value.dynamic_type.unqualified().pointer()).dereference()
    for type_ in lineage(value.type):
        name = library_name(type_)
        if name in OBJECTS:
            return OBJECTS[name](value.cast(type_), name)
    return None


def find_printer(value):
    type_ = value.type.strip_typedefs().unqualified()
    name = library_name(type_)
    if name.startswith(("Ref<", "RefPtr<")):
        return reference_printer(value)
    if name in OTHERS:
        return Text(OTHERS[name](value))
    if value.address is not None and any(library_name(each) == "NSObject" for each in lineage(type_)):
        return object_printer(value)
    return None


def printer(value):
    """The printer of any value; None where it is to be shown as gdb itself does."""
    try:
        return find_printer(value.referenced_value() if value.type.code == gdb.TYPE_CODE_REF else value)
    except gdb.error:  # not an object yet, or no more; or a class without debug information
        return None


printer.name = "ToviFoundationKit"
(gdb.current_objfile() or gdb).pretty_printers.append(printer)
