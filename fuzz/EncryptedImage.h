// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QByteArray>

namespace fuzz {

constexpr char const* const imageUser = "u";
constexpr char const* const imagePassword = "p";

/// What is put right in the bytes of an input, so that a change gets behind the checks that would stop it.
enum Repair : unsigned {
    RepairChecksums = 1, ///< CRC-32C of header and records, both lengths of a record
    RepairSecrets = 2, ///< the header's HMAC, the tags: what only the owner of the password can make
    RepairPlaces = 4, ///< what a record says of its place: index, offsets, session, number
    RepairEnd = 8, ///< what is no record at the end is left out
    RepairAll = RepairChecksums | RepairSecrets | RepairPlaces // whole, if nothing is left at the end
};

/// A file made of an input.
struct EncryptedImage {
    QByteArray bytes;
    bool isWhole = false; ///< a device could have written it: it must be found intact
    bool asksTooMuch = false; ///< for more key derivation than is ever granted
    bool isChanged = false; ///< it was whole, then a stranger changed some bytes
    bool arePlacesRight = false;
    QByteArray text; ///< of a whole file, before any change
};

/// Takes the bytes for a file and puts right what @p repairs names. The magic is always right, and key derivation
/// that would be granted is made cheap.
EncryptedImage repaired(QByteArray const& bytes, unsigned repairs);

/// A whole file as somebody leaves it who does not have the password: each three bytes of @p changes are a place (two
/// bytes, counted round the file) and what is flipped there. Another file stays as it is.
EncryptedImage changed(EncryptedImage image, QByteArray const& changes);

} // namespace fuzz
