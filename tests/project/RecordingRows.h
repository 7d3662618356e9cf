// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <recordings/Answer.h>
#include <recordings/Recording.h>

#include <QTemporaryDir>

/// Recordings that differ from the prototype by the given values only, one for each row of them.
inline QVector<qvgen::PropertySet> recordingsWith(QList<QVariantMap> const& rows)
{
    QVector<qvgen::PropertySet> recordings;
    for (QVariantMap const& values : rows) {
        qvgen::PropertySet recording = RecordingMaker::prototype();
        recording.setVariantValues(values);
        recordings.append(recording);
    }
    return recordings;
}

/// The rows that @p search finds among @p recordings, by a database made for it and in memory.
inline Answer answerAmong(QVector<qvgen::PropertySet> const& recordings, Search const& search)
{
    QTemporaryDir const folder;
    RecordingDatabase database(folder.filePath("recordings.sqlite"), RecordingMaker::prototype());
    database.store(recordings, [](int) {});
    return answer(search, database, recordings);
}
