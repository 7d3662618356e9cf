// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QString>
#include <QtGlobal>

namespace qv {

/// What stays the same when a file is renamed: that of no file where it cannot be told.
struct FileIdentity {
    quint64 device = 0;
    quint64 number = 0;

    static FileIdentity of(QString const& path);
    static FileIdentity of(int fd);
    bool isKnown() const { return number != 0; }
    bool operator==(FileIdentity const& other) const { return device == other.device && number == other.number; }
};

} // namespace qv
