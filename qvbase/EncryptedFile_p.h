// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/FileTail_p.h>
#include <qvbase/NamedFile_p.h>
#include <qvbase/PlainReader_p.h>
#include <qvbase/RecordWriter_p.h>

#include <memory>
#include <optional>
#include <utility>

namespace qv::encrypted {

/// The header of @p fd and its keys, or nothing where the file has no header yet. Throws Failure where it is refused.
std::optional<std::pair<FileHeader, FileKeys>> readHeader(int fd, Credentials const& credentials);

/// An open encrypted file: what FileEncrypt does with a password, without Qt's device around it. Every function throws
/// Failure; the file can be used again afterwards.
class EncryptedFile {
public:
    /// Where it @p followsName, appends go to the file that the path then names.
    EncryptedFile(std::shared_ptr<Credentials const> credentials, bool followsName);

    /// @p fd stays the caller's.
    void openForReading(int fd, QByteArray const& path);
    void openForWriting(int fd, QByteArray const& path, bool truncated);

    /// As the file is now, whoever changed it.
    qint64 size();
    /// Where the last append of this device ended.
    qint64 appendedSize() const { return m_tail.tail.plainSize; }
    /// 0 at the end; else one byte at least.
    qint64 read(qint64 position, char* to, qint64 maxSize);
    /// How much reached the file. Without @p position, wherever the end is; else it must be there.
    qint64 append(char const* text, qint64 size, std::optional<qint64> position);
    void resize(qint64 size);
    void sync();
    /// Around several operations that nobody else's may come between. Returns where the file ends, in plain bytes.
    qint64 lock();
    void unlock() { m_file.unlock(); }
    /// How often another file had taken the path.
    int switches() const { return m_knownSwitches; }
    /// Of the records within the first @p size plain bytes.
    QByteArray anchor(qint64 size);

private:
    bool hasHeader() const { return !m_header.isNull(); }
    bool loadHeader();
    void makeHeader();
    void adopt(FileHeader const& header, FileKeys const& keys);
    void forget();
    void refresh();
    Tail startTail() const;
    /// What follows the records within the first @p size plain bytes.
    Tail tailWithin(qint64 size);

    /// Under the lock: brings header, tail and session up to what the file is now, and repairs its end.
    void settle();
    void noticeForkOrSwitch();
    void settleHeader();
    void settleTail();
    void requireWritable() const;
    void appendPiece(char const* text, qint64 size);
    qint64 appendLocked(char const* text, qint64 size);

    void enlarge(qint64 size);
    void shrink(qint64 size);
    void cutAt(Tail const& tail);
    void cutWithin(GoodRecord const& record, qint64 size);
    void writeCopy(int copy, GoodRecord const& record, qint64 size);

    std::shared_ptr<Credentials const> m_credentials;
    bool const m_followsName;
    posix::NamedFile m_file;
    int m_knownSwitches = 0;
    int m_knownForks = 0;

    FileHeader m_header;
    std::optional<RecordReader> m_reader;
    std::optional<RecordWriter> m_writer;
    PlainReader m_plain;
    FileTail m_tail;
    /// Whether tail and session were settled under the lock since.
    bool m_isSettled = false;
    bool m_hasSyncFailed = false;
};

} // namespace qv::encrypted
