// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/Export.h>
#include <qvbase/Mutex.h>

#include <QString>

#include <array>
#include <atomic>
#include <iosfwd>
#include <string>

QT_BEGIN_NAMESPACE
class QTextStream;
QT_END_NAMESPACE

namespace qv {

/// Where warnings of these libraries go, for users of standard streams. One object per process, never destroyed, so
/// that destructors of static objects may still log.
///
/// Levels: 0 debug, 1 info, 2 warning, 3 error. A writer holds mutex() for the whole of a line, takes the stream of his
/// level, writes only where there is one and logLevel() admits the level, and puts pre() before the message.
class QVBASE_EXPORT Log {
public:
    static constexpr int LevelCount = 4;

    static Log* instance();
    Log(Log const&) = delete;
    Log& operator=(Log const&) = delete;

    /// Guards the streams and the level; recursive. Hold it while a line is written.
    Mutex& mutex() { return m_mutex; }
    /// The stream of a level, standard error at first; null where the level is silenced or not one of 0 to 3.
    std::ostream* getStream(int level);
    /// The lowest level that is meant to be written; 2 (warning) at first.
    int logLevel() const { return m_logLevel; }
    void setLogLevel(int level) { m_logLevel = level; }
    /// The text before a message: "DEBUG: ", "INFO: ", "WARNING: ", "ERROR: "; empty for any other level.
    std::string pre(int level);
    /// Sends a level to @p stream, which stays the caller's and must outlive its use here; null silences the level.
    /// A level other than 0 to 3 is ignored.
    void setStream(int level, std::ostream* stream);

private:
    Log();

    Mutex m_mutex;
    std::array<std::ostream*, LevelCount> m_streams;
    std::atomic<int> m_logLevel{2};
};

/// The same for users of Qt's text streams.
class QVBASE_EXPORT LogQt {
public:
    static constexpr int LevelCount = Log::LevelCount;

    static LogQt* instance();
    LogQt(LogQt const&) = delete;
    LogQt& operator=(LogQt const&) = delete;

    Mutex& mutex() { return m_mutex; }
    /// As Log::getStream(); end a line with Qt::endl, since a text stream holds back what is not flushed.
    QTextStream* getStream(int level);
    int logLevel() const { return m_logLevel; }
    void setLogLevel(int level) { m_logLevel = level; }
    QString pre(int level);
    void setStream(int level, QTextStream* stream);

private:
    LogQt();

    Mutex m_mutex;
    std::array<QTextStream*, LevelCount> m_streams;
    std::atomic<int> m_logLevel{2};
};

} // namespace qv
