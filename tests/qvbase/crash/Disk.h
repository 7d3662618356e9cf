// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "Folder.h"
#include "SystemCalls.h"

#include <QRandomGenerator>
#include <QVector>

namespace crash {

/// What a disk may hold after the power failed, given what programs did to the files of a folder until then.
///
/// Of a file's content, what was synced is there. Each piece of 512 bytes changed since is as it was after any of the
/// changes, each for itself, and the size is that after any of them. Names are kept as after any change since the
/// folder itself was synced: syncing a new file does not keep its name.
class Disk {
public:
    /// The event happened completely.
    void apply(calls::Event const& event);
    /// Only so many bytes of a write arrived.
    void applyPart(calls::Event event, int bytes);

    /// What programs see that go on.
    Files seen() const;
    /// What the disk holds when the power fails now.
    Files afterLoss(QRandomGenerator& random) const;

private:
    using Versions = QVector<QByteArray>; ///< The first is on the disk, the last is what programs see.
    using Names = QMap<QByteArray, int>;

    void write(int file, qint64 offset, QByteArray const& bytes);
    void truncate(int file, qint64 size);
    Names& changedNames();

    QMap<int, Versions> m_files;
    QVector<Names> m_names = {Names()}; ///< In the same order.
};

} // namespace crash
