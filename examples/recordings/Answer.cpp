// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Answer.h"

#include <QElapsedTimer>

#include <algorithm>
#include <iterator>

using namespace qvgen;

namespace {

QVector<int> difference(QVector<int> const& rows, QVector<int> const& without)
{
    QVector<int> result;
    std::set_difference(rows.begin(), rows.end(), without.begin(), without.end(), std::back_inserter(result));
    return result;
}

QVector<int> findInMemory(ExpressionHandle const& condition, QVector<PropertySet> const& recordings)
{
    QVector<int> rows;
    for (int row = 0; row < recordings.size(); ++row) {
        if (condition.evaluate(recordings.at(row)).toBool())
            rows += row;
    }
    return rows;
}

double milliSeconds(QElapsedTimer const& timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

} // namespace

QVector<int> Answer::onlyByDatabase() const
{
    return difference(byDatabase, inMemory);
}

QVector<int> Answer::onlyInMemory() const
{
    return difference(inMemory, byDatabase);
}

Answer answer(
    ExpressionHandle const& condition, RecordingDatabase const& database, QVector<PropertySet> const& recordings)
{
    Answer result;
    QElapsedTimer timer;
    timer.start();
    result.byDatabase = database.find(condition);
    result.databaseMilliSeconds = milliSeconds(timer);
    timer.restart();
    result.inMemory = findInMemory(condition, recordings);
    result.memoryMilliSeconds = milliSeconds(timer);
    return result;
}
