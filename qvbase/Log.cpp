// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/Log.h>

#include <QTextStream>

#include <cstdio>
#include <iostream>

namespace qv {

namespace {

    constexpr std::array<char const*, Log::LevelCount> prefixes = {"DEBUG: ", "INFO: ", "WARNING: ", "ERROR: "};

    bool isLevel(int level)
    {
        return level >= 0 && level < Log::LevelCount;
    }

    char const* prefix(int level)
    {
        return isLevel(level) ? prefixes[static_cast<std::size_t>(level)] : "";
    }

    template <class Streams> auto streamOf(Streams const& streams, int level)
    {
        return isLevel(level) ? streams[static_cast<std::size_t>(level)] : nullptr;
    }

    template <class Streams, class Stream> void assignStream(Streams& streams, int level, Stream* stream)
    {
        if (isLevel(level))
            streams[static_cast<std::size_t>(level)] = stream;
    }

} // namespace

Log::Log()
{
    m_streams.fill(&std::cerr);
}

Log* Log::instance()
{
    static Log* const log = new Log;
    return log;
}

std::ostream* Log::getStream(int level)
{
    MutexLocker const locker(m_mutex);
    return streamOf(m_streams, level);
}

std::string Log::pre(int level)
{
    return prefix(level);
}

void Log::setStream(int level, std::ostream* stream)
{
    MutexLocker const locker(m_mutex);
    assignStream(m_streams, level, stream);
}

LogQt::LogQt()
{
    static auto* const standardError = new QTextStream(stderr);
    m_streams.fill(standardError);
}

LogQt* LogQt::instance()
{
    static LogQt* const log = new LogQt;
    return log;
}

QTextStream* LogQt::getStream(int level)
{
    MutexLocker const locker(m_mutex);
    return streamOf(m_streams, level);
}

QString LogQt::pre(int level)
{
    return QString::fromLatin1(prefix(level));
}

void LogQt::setStream(int level, QTextStream* stream)
{
    MutexLocker const locker(m_mutex);
    assignStream(m_streams, level, stream);
}

} // namespace qv
