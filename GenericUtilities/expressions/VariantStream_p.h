// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QDataStream>
#include <QVariant>

/// Values from bytes of any origin; not installed.
namespace qvgen {

/// One reading of a tree on this thread, from its outermost record on; records inside are readings inside it.
class Reading {
public:
    Reading();
    ~Reading();
    Reading(Reading const&) = delete;
    Reading& operator=(Reading const&) = delete;

    bool isTooDeep() const;
    /// Takes @p bytes from what the regular expressions of a tree may take in all; false where that is used up.
    static bool allows(double bytes);

private:
    struct State {
        int depth;
        double patternBytes;
    };
    static thread_local State s_state __attribute__((tls_model("initial-exec")));
};

/// Reads a variant as QDataStream's own operator does, but only of the types that constants have; sizes are believed
/// only as far as the stream reaches, containers nest at most 100 deep, and of the keys of a map or a hash at most 100
/// have one hash value. Anything else sets QDataStream::ReadCorruptData. Of several entries with one key the last
/// stands.
QVariant readVariant(QDataStream& in);

/// Whether readVariant() takes what QDataStream writes of @p value; of regular expressions in one tree it takes only as
/// many as Reading allows.
bool isReadable(QVariant const& value);

/// Reads a QDateTime as QDataStream's own operator does. A kind of clock or a zone that Qt does not know sets
/// QDataStream::ReadCorruptData.
QDateTime readDateTime(QDataStream& in);

} // namespace qvgen
