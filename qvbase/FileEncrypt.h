// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/Export.h>

#include <QByteArray>
#include <QFile>
#include <QString>

#include <memory>

namespace qv {

/// A QFile that, given a password, keeps its content secret, shows tampering and survives crashes. docs/formats.md
/// describes the file. Without a password it is a plain QFile, which refuses a file that bears the encrypted header.
///
/// With a password the file grows at its end only: a write anywhere else returns -1. Each write() hands whole records
/// to the system in one call before it returns; nothing is held back for flush(). Several processes, and several
/// devices of one process, may append to one file (QIODevice::Append): each append takes the file's lock, goes on
/// behind what others wrote, and follows its name to a new file where the old one was moved aside. What a crash left
/// half written is cut off when the file is next opened for writing, and kept in a file of its own,
/// "<base>.<suffix>.torn".
///
/// With a password, errorString() tells of every failure; error() only of what QFile itself met in open().
/// Open for writing with a password, openMode() shows QIODevice::Unbuffered as well.
///
/// A device belongs to one thread at a time. After a fork parent and child may both go on with theirs.
class QVBASE_EXPORT FileEncrypt : public QFile {
public:
    /// Why a header was refused; stored nowhere.
    enum HeaderError {
        NoHeaderError = 0,
        NotOurFormat, ///< with a password: no encrypted file; without one: an encrypted file
        Damaged, ///< its checksum does not match, or it asks for more key derivation than is ever granted
        UnknownVersion, ///< of a later format
        WrongCredentials ///< the header is whole, user or password are not those that it was made with
    };

    struct VerifyResult {
        /// What was found first on the way through the file.
        enum Class {
            Intact,
            Torn, ///< the last write is incomplete, as a crash leaves it
            TornOrTampered, ///< the last write is wrong in itself: a crash or a change, nothing tells which
            RecordDamaged, ///< a record that others follow is wrong, or the file does not continue the anchor
            HeaderRefused, ///< see headerError(); for a device without a password always
            NotReadable ///< the system's error is in the text
        };
        Class result = Intact;
        qint64 offset = 0; ///< bytes from the file's start to the first fault, or to the end of an intact file
        qint64 record = 0; ///< number of the first faulty record, from 0; records in all of an intact file
        QString text; ///< for a person; empty where the file is intact
    };

    explicit FileEncrypt(QString const& fileName);
    ~FileEncrypt() override;

    /// Takes effect with the next open(). With an empty @p password the file is plain, whoever the user.
    void setFileUserPassword(QString const& user, QString const& password);

    /// False with headerError() set where the file was reached but its header refused; nothing is changed then, with
    /// QIODevice::Truncate neither.
    bool open(OpenMode mode) override;
    void close() override;

    /// In plain bytes, as pos().
    qint64 size() const override;
    bool seek(qint64 position) override;
    bool atEnd() const override;
    bool canReadLine() const override;
    bool isSequential() const override;
    /// Cuts between two records in place, within one through a copy that takes the file's name; enlarges by zeros.
    bool resize(qint64 size) override;

    /// Why the last open(), verify(), or append to a file that had taken the name, refused the header.
    HeaderError headerError() const;

    /// Brings what was written to the disk. Once it failed, what the disk holds is unknown: sync() and write() fail
    /// until the file is opened anew.
    bool sync();

    /// Keeps others from appending until unlock(), so that what is found in the file still holds when it is written to.
    /// For a device open with QIODevice::Append; the file is then the one that the name stands for, and pos() its end.
    /// @p isAnother tells whether that is another file than at the last lock(), as it is for the first one since
    /// open(). Waits for whoever holds the lock, 10 seconds at most. Each lock() needs its own unlock(); close() ends
    /// them all.
    bool lock(bool* isAnother = nullptr);
    void unlock();

    /// Reads the whole file, open or not. With an @p anchor kept from an earlier anchor(), also tells whether the file
    /// is the same one and still holds what it held then.
    VerifyResult verify(QByteArray const& anchor = {});

    /// File id (32 bytes), number of records (8, little endian) and last tag (16); empty unless an encrypted file is
    /// open. Kept elsewhere, it shows what the file alone cannot: its end cut between two records, an older copy in its
    /// place.
    QByteArray anchor() const;
    /// The same of the records within the first @p size plain bytes: what follows may then be cut or changed.
    QByteArray anchor(qint64 size) const;

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 readLineData(char* data, qint64 maxSize) override;
    qint64 writeData(char const* data, qint64 size) override;

private:
    class Private;
    std::unique_ptr<Private> m_d;
};

} // namespace qv
