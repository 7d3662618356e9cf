#!/usr/bin/env python3
# SPDX-License-Identifier: LGPL-2.1-or-later
"""Fails where a translation catalogue lacks a text of the library, holds one that is gone, leaves one untranslated, or
gives one other placeholders.

usage: check_catalogues.py <lupdate> <source tree>
"""
import pathlib
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree


def messages(catalogue):
    """The translation of each text, by context and text; None where it is unfinished."""
    found = {}
    for context in ElementTree.parse(catalogue).getroot().iter("context"):
        for message in context.iter("message"):
            translation = message.find("translation")
            key = context.findtext("name"), message.findtext("source")
            found[key] = None if translation.get("type") else translation.text
    return found


def placeholders(text):
    return sorted(re.findall(r"%\d", text))


def main(lupdate, tree):
    folder = pathlib.Path(tree, "GenericUtilities")
    catalogues = sorted(folder.glob("resources/translations/*.ts"))
    with tempfile.TemporaryDirectory() as scratch:
        extracted = pathlib.Path(scratch, "all.ts")
        subprocess.run([lupdate, "-silent", folder, "-ts", extracted], check=True, stderr=subprocess.DEVNULL)
        wanted = set(messages(extracted))
    problems = [] if catalogues and wanted else ["no catalogues or no texts found"]
    for catalogue in catalogues:
        held = messages(catalogue)
        problems += [f"{catalogue.name} lacks {key}" for key in sorted(wanted - held.keys())]
        problems += [f"{catalogue.name} holds {key}, which is gone" for key in sorted(held.keys() - wanted)]
        problems += [f"{catalogue.name} leaves {key} untranslated" for key, text in held.items() if not text]
        problems += [f"{catalogue.name} changes the placeholders of {key}" for key, text in held.items()
                     if text and placeholders(text) != placeholders(key[1])]
    print("\n".join(problems) or f"{len(wanted)} texts in {len(catalogues)} catalogues")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
