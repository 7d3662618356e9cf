#!/usr/bin/env python3
# SPDX-License-Identifier: LGPL-2.1-or-later
"""Holds the #include lines of the libraries against the table of rooms in docs/architecture.md."""
import pathlib
import re
import sys

ROW = re.compile(r"^\| `(?P<room>[\w/]+)/` \| (?P<imports>.*?) \|")
INCLUDE = re.compile(r'^\s*#\s*include\s*(?P<quote>["<])(?P<path>[^">]+)[">]')
LIBRARIES = ("GenericUtilities", "qvbase")
# Made by the build, free for all.
EXPORT_HEADERS = {f"{library}/Export.h" for library in LIBRARIES}
QT_CORE = re.compile(r"^Q\w+$")
SYSTEM = re.compile(r"^(sys/)?[a-z_]+(\.h)?$")
OPENSSL = re.compile(r"^openssl/\w+\.h$")


def read_rules(document):
    rules = {}
    for line in document.read_text(encoding="utf-8").splitlines():
        row = ROW.match(line)
        if row:
            rules[row["room"]] = set(re.findall(r"`([\w/]+)/`", row["imports"]))
    return rules


def complaint(room, line, rules):
    """What is wrong with an include line of a room, or None."""
    include = INCLUDE.match(line)
    if not include:
        return None
    path = include["path"]
    if path.split("/")[0] in LIBRARIES:
        if include["quote"] == '"':
            return "own headers are included with <>"
        imported = str(pathlib.PurePosixPath(path).parent)
        if path in EXPORT_HEADERS or imported == room or imported in rules[room]:
            return None
        return f"{room}/ must not import {imported}/"
    if QT_CORE.match(path) or SYSTEM.match(path) or OPENSSL.match(path):
        return None
    return "neither QtCore, libcrypto, the standard library nor the whole way to an own header"


def check(top):
    rules = read_rules(top / "docs" / "architecture.md")
    complaints = []
    files = sorted(file for library in LIBRARIES for file in (top / library).rglob("*") if file.suffix in (".h", ".cpp"))
    for file in files:
        room = str(file.parent.relative_to(top))
        if room not in rules:
            complaints.append(f"{file.relative_to(top)}: {room}/ is no room of docs/architecture.md")
            continue
        for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
            what = complaint(room, line, rules)
            if what:
                complaints.append(f"{file.relative_to(top)}:{number}: {what}: {line.strip()}")
    return len(files), complaints


def self_check():
    """The check itself must be able to fail."""
    rules = {"a/up": {"a/down"}, "a/down": set()}
    global LIBRARIES
    libraries, LIBRARIES = LIBRARIES, ("a",)
    assert complaint("a/up", "#include <a/down/X.h>", rules) is None
    assert complaint("a/down", "#include <a/down/X.h>", rules) is None
    assert complaint("a/up", "int include;", rules) is None
    assert complaint("a/down", "#include <a/up/X.h>", rules)
    assert complaint("a/up", '#include "a/down/X.h"', rules)
    assert complaint("a/up", '#include "X.h"', rules)
    assert complaint("a/up", "#include <QtSql/QSqlQuery>", rules)
    LIBRARIES = libraries


def main():
    self_check()
    count, complaints = check(pathlib.Path(sys.argv[1]))
    print(*complaints, sep="\n")
    print(f"{count} files, {len(complaints)} against the rules")
    return 1 if complaints or count == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
