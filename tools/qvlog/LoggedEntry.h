// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QDateTime>
#include <QPair>
#include <QString>
#include <QVector>

/// An entry as it is shown: what the file holds, and what that means to people.
struct LoggedEntry {
    QString file;
    QString id;
    QDateTime time; ///< Null where the file has none, or one of another locale.
    bool hasSeconds = true; ///< Else the time means a whole minute.
    QString loggedTime; ///< As it stands in the file, as are the next and the values.
    QString user;
    QVector<QPair<QString, QString>> values; ///< Those of its type, by their names in the file.
    QString category; ///< Its code and its translated name; empty where the type of the entry is not known.
    QString categoryName;
    QString action; ///< Translated; "[id]" where the type is not known.
    QString description;

    /// In ISO 8601, without seconds where they are not known, with @p separator between day and time; as it stands in
    /// the file where it cannot be read.
    QString timeText(QChar separator) const
    {
        if (!time.isValid())
            return loggedTime;
        QString const clock = time.time().toString(Qt::ISODate);
        return time.date().toString(Qt::ISODate) + separator + (hasSeconds ? clock : clock.left(5));
    }
    /// The last moment that the time may mean.
    QDateTime lastMoment() const { return time.addMSecs((hasSeconds ? 1 : 60) * 1000 - 1); }
};
