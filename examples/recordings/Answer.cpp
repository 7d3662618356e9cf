// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Answer.h"

#include "Sorting.h"

#include <QElapsedTimer>

#include <algorithm>
#include <iterator>

using namespace qvgen;

namespace {

QVector<int> difference(QVector<int> rows, QVector<int> without)
{
    std::sort(rows.begin(), rows.end());
    std::sort(without.begin(), without.end());
    QVector<int> result;
    std::set_difference(rows.begin(), rows.end(), without.begin(), without.end(), std::back_inserter(result));
    return result;
}

QVector<int> findInMemory(Search const& search, QVector<PropertySet> const& recordings)
{
    bool const findsAll = search.findsAll();
    QVector<int> rows;
    for (int row = 0; row < recordings.size(); ++row) {
        if (findsAll || search.condition.evaluate(recordings.at(row)).toBool())
            rows += row;
    }
    sortRows(rows, search.order, recordings);
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

Answer answer(Search const& search, RecordingDatabase const& database, QVector<PropertySet> const& recordings)
{
    Answer result;
    QElapsedTimer timer;
    timer.start();
    result.byDatabase = database.find(search);
    result.databaseMilliSeconds = milliSeconds(timer);
    timer.restart();
    result.inMemory = findInMemory(search, recordings);
    result.memoryMilliSeconds = milliSeconds(timer);
    return result;
}
