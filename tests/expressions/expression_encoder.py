#!/usr/bin/env python3
# SPDX-License-Identifier: LGPL-2.1-or-later
"""Encodes expression trees as docs/formats.md describes them, by `struct` alone: an oracle that shares no code with Qt.

Reads {"version": <number of the stream version>, "trees": [...]} from standard input, prints a line of hex per tree.
A tree is {"class": "Comparator", "op": 5, "operands": [...]} and so on, a value [<type>, <value>, <null flag>]."""
import datetime, json, struct, sys

QT_4_8 = 12
KINDS = ("invalid bool int uint longlong ulonglong double char map list string stringlist bytearray bitarray "
         "date time datetime url locale rect").split()
VERSION_2 = ("ValueExpression", "FunctionExpression")
NUMBERED = ("Comparator", "BooleanOperator", "NumericOperator", "UnaryOperator")


class Encoder:
    def __init__(self, version):
        self.is_old = version <= QT_4_8
        self.types = {kind: number for number, kind in enumerate(KINDS)}
        self.types.update(regexp=27, hash=28, float=135 if self.is_old else 38)

    def text(self, value):
        if value is None:
            return b"\xff\xff\xff\xff"
        units = value.encode("utf-16-be", "surrogatepass")
        return struct.pack(">I", len(units)) + units

    def bytes(self, digits):
        if digits is None:
            return b"\xff\xff\xff\xff"
        return struct.pack(">I", len(digits) // 2) + bytes.fromhex(digits)

    def date(self, parts):
        null = 0 if self.is_old else -2**63
        julian_day = datetime.date(*parts).toordinal() + 1721425 if parts else null
        return struct.pack(">I" if self.is_old else ">q", julian_day)

    def time(self, parts):
        if not parts:
            return b"\xff\xff\xff\xff"
        hours, minutes, seconds, millis = parts
        return struct.pack(">I", ((hours * 60 + minutes) * 60 + seconds) * 1000 + millis)

    def datetime(self, value):
        spec = {"local": -1, "utc": 2}[value["spec"]] if self.is_old else {"local": 0, "utc": 1}[value["spec"]]
        return self.date(value["date"]) + self.time(value["time"]) + struct.pack(">b", spec)

    def regexp(self, value):
        flags = struct.pack(">BBB", value["case"], value["syntax"], value["minimal"])
        return self.text(value["pattern"]) + flags

    def entries(self, value):
        pairs = sorted(value.items(), reverse=True)
        return struct.pack(">I", len(pairs)) + b"".join(self.text(k) + self.variant(v) for k, v in pairs)

    def sequence(self, values, encode):
        return struct.pack(">I", len(values)) + b"".join(map(encode, values))

    def data(self, kind, value):
        plain = {"bool": ">?", "int": ">i", "uint": ">I", "longlong": ">q", "ulonglong": ">Q", "double": ">d", "float": ">d"}
        if kind in plain:
            return struct.pack(plain[kind], float(value) if kind in ("double", "float") else int(value))
        return {"invalid": lambda: self.text(None) if self.is_old else b"",
                "char": lambda: struct.pack(">H", ord(value)), "string": lambda: self.text(value),
                "bytearray": lambda: self.bytes(value),
                "stringlist": lambda: self.sequence(value, self.text), "list": lambda: self.sequence(value, self.variant),
                "map": lambda: self.entries(value), "hash": lambda: self.entries(value),
                "rect": lambda: struct.pack(">4i", *value), "date": lambda: self.date(value),
                "time": lambda: self.time(value), "datetime": lambda: self.datetime(value),
                "regexp": lambda: self.regexp(value)}[kind]()

    def variant(self, typed):
        kind, value, is_null = typed
        return struct.pack(">I?", self.types[kind], is_null) + self.data(kind, value)

    def fields(self, name, node):
        if name == "ConstExpression":
            return struct.pack(">?", node["placeholder"]) + self.variant(node["value"])
        if name == "ValueExpression":
            return self.text(node["name"]) + self.text(node["alias"])
        if name == "CastExpression":
            return struct.pack(">I", node["target"]) + self.record(node["operand"])
        operands = struct.pack(">i", 1) + self.sequence(node["operands"], self.record)
        if name in NUMBERED:
            return struct.pack(">i", node["op"]) + operands
        if name == "FunctionExpression":
            return self.text(node["name"]) + struct.pack(">?", node["distinct"]) + operands
        return operands[4:]

    def record(self, node):
        name = node["class"]
        key = f"N5qvgen{len(name)}{name}E".encode() + b"\0"
        version = 2 if name in VERSION_2 else 1
        return struct.pack(">I", len(key)) + key + struct.pack(">i", version) + self.fields(name, node)


if __name__ == "__main__":
    order = json.load(sys.stdin)
    for tree in order["trees"]:
        print(Encoder(order["version"]).record(tree).hex())
