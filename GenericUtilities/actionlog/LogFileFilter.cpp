// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/LogFileFilter_p.h>

#include <GenericUtilities/actionlog/Translation_p.h>

namespace qv {

using xml::XmlScanner;

namespace {

    char const* const NotUtf8 = QT_TRANSLATE_NOOP("ActionLog", "A log file is written in UTF-8.");

    /// Null for what the XML reader notices and words itself.
    char const* refusal(XmlScanner::Fault fault)
    {
        switch (fault) {
        case XmlScanner::Sound:
        case XmlScanner::NotWellFormed:
            break;
        case XmlScanner::DocumentType:
            return QT_TRANSLATE_NOOP("ActionLog", "A log file has no document type.");
        case XmlScanner::TooLarge:
            return QT_TRANSLATE_NOOP("ActionLog", "An entry is larger than 16 MiB.");
        case XmlScanner::TooManyAttributes:
            return QT_TRANSLATE_NOOP("ActionLog", "An entry has more than 1000 attributes.");
        }
        return nullptr;
    }

} // namespace

LogFileFilter::LogFileFilter(QIODevice* source)
    : m_source(source)
{
    setOpenMode(ReadOnly | Unbuffered);
    if (!source->isReadable())
        fail(translated(QT_TRANSLATE_NOOP("ActionLog", "The file is not open.")));
}

LogFileFilter::~LogFileFilter() = default;

qint64 LogFileFilter::readData(char* data, qint64 maxSize)
{
    while (!hasFailed()) {
        qint64 const size = m_source->read(data, maxSize);
        if (size < 0) {
            fail(m_source->errorString());
            break;
        }
        m_isAtEnd = size == 0;
        qint64 const kept = keep(data, size);
        if (kept > 0 || m_isAtEnd)
            return kept;
    }
    return -1;
}

qint64 LogFileFilter::writeData(char const*, qint64)
{
    return -1;
}

qint64 LogFileFilter::keep(char* data, qint64 size)
{
    qint64 kept = 0;
    for (qint64 i = 0; i < size && !hasFailed(); ++i) {
        if (XmlScanner::isDropped(data[i]))
            continue;
        m_scanner.scan(data[i]);
        if (!m_utf8.scan(data[i]))
            fail(translated(NotUtf8));
        else if (char const* const text = refusal(m_scanner.fault()))
            fail(translated(text));
        else
            data[kept++] = data[i];
    }
    return kept;
}

void LogFileFilter::fail(QString const& text)
{
    m_failure = text.isEmpty() ? translated(QT_TRANSLATE_NOOP("ActionLog", "The file cannot be read.")) : text;
    m_isAtEnd = true;
}

} // namespace qv
