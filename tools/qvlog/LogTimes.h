// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QDateTime>
#include <QLocale>
#include <QString>

/// Reads the times of a log file, which stand there in the short format of the locale that it was written under.
class LogTimes {
public:
    /// Two-digit years are completed from the century of @p logDate, the date of the file's header; where that is null
    /// they stay in the century that Qt puts them in, the 20th.
    LogTimes(QLocale const& locale, QDateTime const& logDate);

    /// Null where the text is no time of that locale.
    QDateTime read(QString const& text);
    /// Whether the locale writes seconds; else a time means a whole minute.
    bool hasSeconds() const { return m_hasSeconds; }

private:
    QDateTime parsed(QString const& text) const;

    QLocale m_locale;
    bool m_hasSeconds;
    int m_century; ///< The years to add to a two-digit year; 0 where years are whole.
    QString m_text; ///< The last one that was read, as the next: entries of a second or a minute share it.
    QDateTime m_time;
};
