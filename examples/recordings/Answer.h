// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "RecordingDatabase.h"

/// The rows that a condition holds for, found both ways; in ascending order.
struct Answer {
    QVector<int> byDatabase;
    QVector<int> inMemory;
    double databaseMilliSeconds = 0;
    double memoryMilliSeconds = 0;

    bool agrees() const { return byDatabase == inMemory; }
    /// Those that only one of the two ways has found.
    QVector<int> onlyByDatabase() const;
    QVector<int> onlyInMemory() const;
};

Answer answer(qvgen::ExpressionHandle const& condition, RecordingDatabase const& database,
    QVector<qvgen::PropertySet> const& recordings);
