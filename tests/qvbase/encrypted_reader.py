# SPDX-License-Identifier: LGPL-2.1-or-later
"""Prints the text of an encrypted file, by docs/formats.md alone: encrypted_reader.py FILE USER PASSWORD"""
import hashlib
import hmac
import os
import pathlib
import struct
import sys

from cryptography.exceptions import InvalidTag
from cryptography.hazmat.primitives.ciphers.aead import AESGCM

HEADER = struct.Struct("<8sHHIIII32s32s32sI")
RECORD = struct.Struct("<IHHQQQQI")
SESSION = 1


def require(holds, what):
    if not holds:
        sys.exit(what)


def crc32c(data):
    crc = 0xFFFFFFFF
    for byte in data:
        crc ^= byte
        for _ in range(8):
            crc = crc >> 1 ^ (0x82F63B78 if crc & 1 else 0)
    return crc ^ 0xFFFFFFFF


def hkdf(key, salt, info):
    """RFC 5869 for one block of output."""
    return hmac.digest(hmac.digest(salt, key, "sha256"), info + b"\x01", "sha256")


def read_header(data, user, password):
    magic, major, _, length, log_n, r, p, salt, file_id, mac, crc = HEADER.unpack_from(data)
    require(magic == b"\x89ALE\r\n\x1a\n", "no encrypted file")
    require(crc == crc32c(data[: HEADER.size - 4]), "header: checksum")
    require((major, length) == (1, HEADER.size), "header: version")
    require(log_n <= 17 and r <= 8 and p <= 8, "header: cost")
    kek = hashlib.scrypt(password, salt=salt + user, n=1 << log_n, r=r, p=p, maxmem=1 << 28, dklen=32)
    header_key = hkdf(kek, file_id, b"header")
    require(hmac.compare_digest(mac, hmac.digest(header_key, data[:92], "sha256")), "wrong user or password")
    return hkdf(kek, file_id, b"file"), mac[16:]


def read_records(data, file_key, chain):
    text, offset, index, sessions = b"", HEADER.size, 0, {}
    while offset < len(data):
        where = f"record {index} at {offset}: "
        require(len(data) - offset >= RECORD.size + 20, where + "cut short")
        head = data[offset : offset + RECORD.size]
        length, kind, _, own_index, plain, session, number, crc = RECORD.unpack(head)
        require(crc == crc32c(head[:-4]), where + "checksum")
        end = offset + length
        require(end <= len(data) and data[end - 4 : end] == head[:4], where + "length")
        require((own_index, plain) == (index, len(text)), where + "out of place")
        payload, tag = data[offset + RECORD.size : end - 20], data[end - 20 : end - 4]
        if kind == SESSION:
            require(session == offset and number == 0, where + "session")
            sessions[offset] = AESGCM(hkdf(file_key, payload, b"session"))
        salt, sealed = (payload, b"") if kind == SESSION else (b"", payload)
        try:
            text += sessions[session].decrypt(struct.pack("<QI", number, 0), sealed + tag, head + chain + salt)
        except (InvalidTag, KeyError):
            sys.exit(where + "tag")
        offset, index, chain = end, index + 1, tag
    return text


def main():
    name, user, password = map(os.fsencode, sys.argv[1:])
    data = pathlib.Path(os.fsdecode(name)).read_bytes()
    sys.stdout.buffer.write(read_records(data, *read_header(data, user, password)))


main()
