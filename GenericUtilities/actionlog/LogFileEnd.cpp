// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/LogFileEnd_p.h>

#include <GenericUtilities/actionlog/LogReader.h>
#include <GenericUtilities/actionlog/XmlScanner_p.h>

#include <QIODevice>

#include <array>

namespace qv {

using xml::XmlScanner;

namespace {

    constexpr qint64 TailBytes = qint64{16} * 1024;

    bool isBlank(char byte)
    {
        return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r';
    }

    bool isByteOrderMark(char byte, qint64 offset)
    {
        return offset < 3 && byte == "\xEF\xBB\xBF"[offset];
    }

    /// Follows a log file from its first byte on, and knows at any time how it ends if that was the last one.
    class EndFinder {
    public:
        void scan(char byte);
        bool isDamaged() const { return m_isDamaged; }
        LogFileEnd end() const;

    private:
        void noteMarkup(XmlScanner::Markup markup);
        void noteStart(bool isEmpty);
        void noteEnd();
        void noteWhole();
        void noteDamage(qint64 offset);

        XmlScanner m_scanner;
        qint64 m_size = 0;
        qint64 m_begin = 0; // of the last piece of markup that began
        qint64 m_whole = 0; // end of the root's start tag or of the last whole piece within the root
        qint64 m_end = 0; // where the next entry goes in an ended file; or of the damage
        int m_depth = 0;
        bool m_isClean = true; // only blanks since m_whole
        bool m_isBegun = false;
        bool m_isEnded = false;
        bool m_isDamaged = false;
    };

    void EndFinder::scan(char byte)
    {
        qint64 const offset = m_size++;
        if (XmlScanner::isDropped(byte)) {
            m_isClean = false;
            return;
        }
        if (m_scanner.isInText() && byte == '<')
            m_begin = offset;
        else if (m_scanner.isInText() && !isBlank(byte)) {
            m_isClean = false;
            if (m_depth == 0 && !isByteOrderMark(byte, offset))
                return noteDamage(offset);
        }
        noteMarkup(m_scanner.scan(byte));
        if (m_scanner.fault() != XmlScanner::Sound)
            noteDamage(m_begin);
    }

    void EndFinder::noteMarkup(XmlScanner::Markup markup)
    {
        if (markup == XmlScanner::Nothing)
            return;
        if (m_isEnded)
            return noteDamage(m_begin);
        if (markup == XmlScanner::StartTag || markup == XmlScanner::EmptyTag)
            noteStart(markup == XmlScanner::EmptyTag);
        else if (markup == XmlScanner::EndTag)
            noteEnd();
        else if (m_depth == 1)
            noteWhole();
    }

    void EndFinder::noteStart(bool isEmpty)
    {
        bool const isRoot = m_depth == 0;
        if (isRoot != (m_scanner.tagName() == "Entries") || m_depth == XMLLogReader::MaxDepth)
            return noteDamage(m_begin);
        m_isBegun = true;
        m_isEnded = isRoot && isEmpty; // nothing to cut here: m_end stays 0
        m_depth += isEmpty ? 0 : 1;
        if (m_depth == 1)
            noteWhole();
    }

    void EndFinder::noteEnd()
    {
        if (m_depth == 0)
            return noteDamage(m_begin);
        if (--m_depth == 1)
            return noteWhole();
        m_isEnded = m_depth == 0;
        if (m_isEnded)
            m_end = m_isClean ? m_whole : m_begin;
    }

    void EndFinder::noteWhole()
    {
        m_whole = m_size;
        m_isClean = true;
    }

    void EndFinder::noteDamage(qint64 offset)
    {
        m_isDamaged = true;
        m_end = offset;
    }

    LogFileEnd EndFinder::end() const
    {
        if (m_isDamaged)
            return {LogFileEnd::Damaged, m_end};
        if (m_size == 0)
            return {LogFileEnd::Empty, 0};
        if (m_isEnded)
            return {m_end > 0 ? LogFileEnd::Ended : LogFileEnd::Torn, m_end};
        if (m_isBegun && m_depth == 1 && m_isClean && m_scanner.isInText())
            return {LogFileEnd::Open, m_size};
        return {LogFileEnd::Torn, m_whole};
    }

    /// Without those at the end.
    QByteArray withoutBlanks(QByteArray const& bytes)
    {
        int size = bytes.size();
        while (size > 0 && isBlank(bytes.at(size - 1)))
            --size;
        return bytes.left(size);
    }

    /// Whether @p bytes, which begin with "<", are one entry.
    bool isEntry(QByteArray const& bytes)
    {
        XmlScanner scanner;
        XmlScanner::Markup last = XmlScanner::Nothing;
        for (char const byte : bytes)
            last = XmlScanner::isDropped(byte) ? last : scanner.scan(byte);
        bool const isSound = scanner.fault() == XmlScanner::Sound && bytes.endsWith('>');
        return isSound && last == XmlScanner::EmptyTag && scanner.tagName() == "Entry";
    }

    /// What the last bytes of a file tell for sure. The writer never leaves a raw "<" or ">" in a value: these are
    /// markup.
    bool readTail(QByteArray const& tail, LogFileEnd& end)
    {
        int const last = tail.lastIndexOf('<');
        QByteArray const before = withoutBlanks(tail.left(last));
        int const lastBefore = before.lastIndexOf('<');
        if (last < 0 || lastBefore < 0 || !isEntry(before.mid(lastBefore)))
            return false;
        QByteArray const piece = withoutBlanks(tail.mid(last));
        if (piece == "</Entries>")
            end = {LogFileEnd::Ended, end.offset - tail.size() + before.size()};
        return piece == "</Entries>" || isEntry(piece);
    }

    bool beginsAsLogFile(QIODevice& device)
    {
        constexpr char declaration[] = "<?xml";
        return device.seek(0) && device.peek(qstrlen(declaration)) == declaration;
    }

} // namespace

LogFileEnd findLogFileEnd(QIODevice& device)
{
    LogFileEnd end = {LogFileEnd::Open, device.size()};
    if (beginsAsLogFile(device)) {
        qint64 const start = qMax<qint64>(0, end.offset - TailBytes);
        QByteArray const tail = device.seek(start) ? device.read(end.offset - start) : QByteArray();
        // What ends before the file does shows no end of it.
        if (start + tail.size() < end.offset)
            return {LogFileEnd::Unreadable, start + tail.size()};
        if (readTail(tail, end))
            return end;
    }
    return device.seek(0) ? scanLogFileEnd(device) : LogFileEnd{LogFileEnd::Unreadable, 0};
}

LogFileEnd scanLogFileEnd(QIODevice& device)
{
    qint64 const expected = device.isSequential() ? 0 : device.size() - device.pos();
    EndFinder finder;
    std::array<char, TailBytes> block;
    qint64 offset = 0;
    qint64 size = 0;
    while (!finder.isDamaged() && (size = device.read(block.data(), TailBytes)) > 0) {
        for (qint64 i = 0; i < size && !finder.isDamaged(); ++i)
            finder.scan(block[static_cast<std::size_t>(i)]);
        offset += size;
    }
    bool const isShort = !finder.isDamaged() && (size < 0 || offset < expected);
    return isShort ? LogFileEnd{LogFileEnd::Unreadable, offset} : finder.end();
}

} // namespace qv
