# SPDX-License-Identifier: LGPL-2.1-or-later
"""Reads a log file with an XML parser of its own and prints, as JSON, each element as [name, {attribute: text}]."""
import json
import sys
from xml.parsers import expat


def elements(path):
    found = []
    parser = expat.ParserCreate()
    parser.StartElementHandler = lambda name, attributes: found.append([name, attributes])
    with open(path, "rb") as file:
        # In one piece: given in several, a long tag is scanned anew with each.
        parser.Parse(file.read(), True)
    return found


json.dump(elements(sys.argv[1]), sys.stdout)
