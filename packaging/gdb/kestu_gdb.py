"""Shows what the records of libkestu hold when gdb prints pointers to them.

gdb loads this by itself with the library. Errors, lists, stacks, trees, tries, maps, string lists, bit arrays,
objects and images are shown as what they mean; *pointer shows the record of a node itself, as does print /r.
"""
import struct

import gdb
import gdb.printing

LEAF = 0
OCCUPIED = 1


def text(pointer):
    """The string at a pointer, quoted, or null."""
    return '"' + pointer.string(errors="backslashreplace") + '"' if pointer else "null"


def quoted(data):
    plain = (chr(byte) if 32 <= byte < 127 and byte not in b'"\\' else f"\\x{byte:02x}" for byte in data)
    return '"' + "".join(plain) + '"'


def read(layout, address):
    """What stands in memory, as struct.unpack takes it apart."""
    return struct.unpack(layout, gdb.selected_inferior().read_memory(address, struct.calcsize(layout)))


def chain(node, link):
    """The nodes from one on. Stops at a loop, which only broken memory has."""
    seen = set()
    while node and int(node) not in seen:
        seen.add(int(node))
        yield node
        node = node[link]


def first(node):
    for node in chain(node, "prev"):
        pass
    return node


def ranges(numbers):
    """Ascending numbers in short: 1, 4-7. No more than a line of them."""
    found = []
    for number in numbers:
        if found and found[-1][1] == number - 1:
            found[-1][1] = number
        elif len(found) == 32:
            found[-1] = [number, "..."]
            break
        else:
            found.append([number, number])
    return ", ".join(str(low) if low == high else f"{low}-{high}" for low, high in found)


class Printer:
    """A pointer, or a record, that is not null. `entries` are pairs of a key and a value."""

    hint = "map"

    def __init__(self, pointer):
        self.pointer = pointer

    def display_hint(self):
        return self.hint

    def to_string(self):
        return self.title()

    def children(self):
        for number, (key, value) in enumerate(self.entries()):
            yield f"key {number}", key
            yield f"value {number}", value


class Nodes(Printer):
    """A list of any kind: tags and data, from its first node on."""

    def title(self):
        return "list"

    def start(self):
        return first(self.pointer)

    def entries(self):
        return ((node["tag"], node["data"]) for node in chain(self.start(), "next"))


class Ring(Nodes):
    def title(self):
        free = sum(not int(node["flags"]) & OCCUPIED for node in chain(self.start(), "next"))
        return f"circular list, {free} free" if free else "circular list"

    def entries(self):
        nodes = chain(self.start(), "next")
        return ((node["tag"], node["data"]) for node in nodes if int(node["flags"]) & OCCUPIED)


class SinglyLinked(Nodes):
    def start(self):
        return self.pointer


class Stack(Nodes):
    def title(self):
        return f"stack of {int(self.pointer['count'])}"

    def start(self):
        return self.pointer["top"]


class Strings(Printer):
    hint = "array"

    def title(self):
        return "strings"

    def children(self):
        char = gdb.lookup_type("char").pointer()
        for number, node in enumerate(chain(first(self.pointer["head"]), "next")):
            yield str(number), text(node["data"].cast(char))


class Tree(Printer):
    """All nodes, from the first sibling on; a key says which child of which child a node is, and its tag."""

    def title(self):
        return "tree"

    def entries(self):
        waiting = [iter(enumerate(chain(first(self.pointer), "next")))]
        path = []
        while waiting:
            number, node = next(waiting[-1], (0, None))
            if node is None:
                waiting.pop()
                path = path[:-1]
                continue
            place = ".".join(map(str, path + [number]))
            yield f"{place} tag {int(node['tag'])}", node["data"]
            path.append(number)
            waiting.append(iter(enumerate(chain(first(node["child"]), "next"))))


class Trie(Printer):
    """Keys and values, in the order of a walk."""

    def title(self):
        return "trie"

    def entries(self):
        waiting = [int(self.pointer["root"])]
        while waiting:
            node = waiting.pop()
            if not node:
                continue
            # Programs have the types of the nodes only when they use them.
            kind, first_word, second_word, third_word = read("<I4xQQQ", node)
            if kind == LEAF:
                key = read(f"{second_word}s", first_word)[0] if second_word else b""
                yield quoted(key), gdb.Value(third_word).cast(gdb.lookup_type("void").pointer())
            else:
                waiting += reversed((first_word, *read("<16Q", node + 24)))


class Map(Printer):
    """Keys and values in their order."""

    DIRECT, SLOTS = 8, 257

    def title(self):
        return f"map of {read('<8xQ', int(self.pointer))[0]}"

    def entries(self):
        waiting = [*read("<Q", int(self.pointer))]
        while waiting:
            child = waiting.pop()
            if child & 1:
                value, length = read("<QQ", child - 1)
                key = read(f"{length}s", child + 15)[0] if length else b""
                yield quoted(key), gdb.Value(value).cast(gdb.lookup_type("void").pointer())
            elif child:
                waiting += reversed(self.below(child))

    def below(self, node):
        count, kind = read("<HxB", node + 16)
        places = node + 8 * kind
        if kind < self.DIRECT:
            return read(f"<{count}Q", places)
        if kind == self.DIRECT:
            return read(f"<{self.SLOTS}Q", places)
        return [read("<Q", places + 8 * (number - 1))[0] for number in read(f"{self.SLOTS}B", node + 20) if number]


class Bits(Printer):
    hint = None

    def title(self):
        if int(self.pointer["nwords"]) != (int(self.pointer["nbits"]) + 63) // 64:
            return "not a bit array"
        words = (int(self.pointer["words"][word]) for word in range(int(self.pointer["nwords"])))
        bits = (64 * number + bit for number, word in enumerate(words) for bit in range(64) if word >> bit & 1)
        return f"{int(self.pointer['nbits'])} bits, set {{{ranges(bits)}}}"

    def entries(self):
        return ()


class Error(Printer):
    """The elements of a chain as they are reported, from the outermost on."""

    hint = "array"
    kinds = ("error", "warning", "malfunction", "assertion", "message")

    def title(self):
        kind = int(self.pointer["type"])
        return self.kinds[kind] if 0 <= kind < len(self.kinds) else f"error of type {kind}"

    def children(self):
        for number, error in enumerate(chain(self.pointer, "child")):
            place = f" at {error['file'].string()}:{int(error['line'])}" if error["file"] else ""
            message = f" {text(error['message'])}" if error["message"] else ""
            yield str(number), f"{int(error['code'])}{message}{place}"


class Object(Printer):
    hint = None

    def title(self):
        return f"object {text(self.pointer['name'])} of type {int(self.pointer['type'])}"

    def children(self):
        obj = self.pointer
        yield "data", obj["data"]
        yield "parent", text(obj["parent"]["name"]) if obj["parent"] else "null"
        root = obj["children"]
        below = first(root["child"]) if root else root
        nodes = [node["data"].cast(obj.type) for node in chain(below, "next") if node["data"]] if root else []
        yield "children", "{" + ", ".join(text(child["name"]) for child in nodes) + "}"
        array = obj["signals"]
        size = int(array["icd"]["sz"]) if array else 0
        codes = (read("<i", int(array["d"]) + number * size)[0] for number in range(int(array["i"]) if array else 0))
        yield "signals", "{" + ", ".join(map(str, codes)) + "}"


class Image(Printer):
    hint = None

    def title(self):
        image = self.pointer
        size = f"{int(image['width'])} x {int(image['height'])} pixels"
        pixels = f"{int(image['bits'][0])} bits each" if image["data8"] or image["data16"] else "not read"
        return f"image of {size}, {pixels}, {float(image['xres']):g} per inch"

    def entries(self):
        return ()


NODES = {"kestu_dl_t": Nodes, "kestu_sl_t": SinglyLinked, "kestu_cdl_t": Ring, "kestu_tree_t": Tree}
RECORDS = {
    "kestu_stk_t": Stack,
    "kestu_strlist_t": Strings,
    "kestu_trie_t": Trie,
    "kestu_map_t": Map,
    "kestu_bitarr_t": Bits,
    "kestu_error_t": Error,
    "kestu_obj_t": Object,
    "kestu_img_t": Image,
}


def is_readable(pointer):
    """Whether there is something at a pointer, which may not have been set yet."""
    try:
        pointer.dereference().fetch_lazy()
        return True
    except gdb.MemoryError:
        return False


def find(value):
    """The printer of a value: a pointer to a node or a record, or a record."""
    kind = value.type.strip_typedefs()
    if kind.code == gdb.TYPE_CODE_PTR:
        name = kind.target().unqualified().strip_typedefs().name
        printer = NODES.get(name) or RECORDS.get(name)
        return printer(value) if printer and is_readable(value) else None
    printer = RECORDS.get(kind.unqualified().name)
    return printer(value.address) if printer and value.address else None


find.name = "kestu"
find.enabled = True
gdb.printing.register_pretty_printer(gdb.current_objfile(), find, replace=True)
