// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "RecordingDatabase.h"

/// The rows that a search finds, both ways, each in its order.
struct Answer {
    QVector<int> byDatabase;
    QVector<int> inMemory;
    double databaseMilliSeconds = 0;
    double memoryMilliSeconds = 0;

    bool agrees() const { return byDatabase == inMemory; }
    /// Those that only one of the two ways has found, in ascending order.
    QVector<int> onlyByDatabase() const;
    QVector<int> onlyInMemory() const;
};

Answer answer(Search const& search, RecordingDatabase const& database, QVector<qvgen::PropertySet> const& recordings);
