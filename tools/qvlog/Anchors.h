// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "Output.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QMultiMap>
#include <QString>

/// What encrypted logs held at an earlier time, as a file keeps it: in each line the anchor of a log, in hexadecimal
/// digits.
class Anchors {
public:
    /// None.
    Anchors() = default;
    /// Throws RefusalException where @p path does not hold them.
    explicit Anchors(QString const& path);

    /// Those of the log that now has this anchor; that log is not missing.
    QByteArrayList take(QByteArray const& anchor);
    /// How many logs they are of, and how many of these were not met.
    int logs() const { return m_logs; }
    int missing() const { return m_anchors.uniqueKeys().size(); }

private:
    QMultiMap<QByteArray, QByteArray> m_anchors; ///< By the id of the log's file.
    int m_logs = 0;
};

/// A new file of anchors. It is taken away again unless it is kept.
class NewAnchors {
public:
    /// Throws OutputException where the file exists, or cannot be made.
    explicit NewAnchors(QString const& path);
    ~NewAnchors();
    Q_DISABLE_COPY_MOVE(NewAnchors)

    void add(QByteArray const& anchor);
    /// Throws OutputException where there are none.
    void keep();

private:
    QString m_path;
    Output m_output;
    bool m_isEmpty = true;
    bool m_isKept = false;
};
