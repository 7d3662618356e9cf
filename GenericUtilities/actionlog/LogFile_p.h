// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/actionlog/ActionLogExceptions.h>
#include <GenericUtilities/actionlog/Durability.h>
#include <GenericUtilities/actionlog/FileIdentity_p.h>
#include <GenericUtilities/actionlog/LogFileContent_p.h>
#include <GenericUtilities/actionlog/LogFileEnd_p.h>
#include <GenericUtilities/actionlog/MoveAside_p.h>
#include <GenericUtilities/actionlog/WaitingEntries_p.h>
#include <qvbase/FileEncrypt.h>

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <memory>
#include <optional>

namespace qv {

class LogFileReader;

/// The file that a log writes to. It is extended so that it stays well-formed, whoever else appends to it and wherever
/// a crash cut it off: each writer takes turns with the others, and in his turn looks at how the file ends now.
///
/// Functions throw ActionLogFileException or ActionLogXmlException; the file can be used again afterwards.
class GENERICUTILITIES_EXPORT LogFile {
public:
    LogFile();
    ~LogFile();
    LogFile(LogFile const&) = delete;
    LogFile& operator=(LogFile const&) = delete;

    /// Which file, and as whom; for a file that is not open.
    void setPath(QString const& path) { m_path = path; }
    void setCredentials(QString const& user, QString const& password);
    /// For the headers of files begun from now on.
    void setVersions(QString const& application, QString const& language);
    void setDurability(EDurability durability) { m_durability = durability; }

    QString const& path() const { return m_path; }
    bool isOpen() const { return m_device != nullptr; }

    /// Opens the file if it is not open, keeps others from it until the turn ends, and looks at what they did to it;
    /// half an entry is kept aside and cut off. Returns whether the path names another file than in the turn before.
    bool takeTurn();
    void endTurn();

    // In a turn:

    /// Whether it has a header.
    bool isBegun() const { return m_end.kind != LogFileEnd::Empty; }
    /// When the file was begun, local time.
    QDateTime const& date() const { return m_date; }
    /// In plain bytes, with the entries that wait to be written.
    qint64 size() const { return m_size + m_waiting.size(); }
    /// The element of an entry: behind a header where there is none, in place of an end tag where there is one.
    void append(QByteArray const& entry);
    /// Ends the file by its end tag and moves it aside, which ends the turn. False where it cannot be moved.
    bool moveAside(AsideName const& name);

    // In a turn or not:

    /// Writes the entries that wait.
    void flush();
    /// What the file holds, up to its end or its first damage.
    LogFileContent read();
    std::optional<ActionLogXmlException> damageOf(LogFileContent const& content) const;
    /// Throws the damage, if there is any: the file is bad then.
    void requireSound(LogFileContent const& content);
    /// Whether what was thrown last is the fault of the file, not of the system; the file is closed then.
    bool isBad() const { return m_isBad; }
    ActionLogFileException couldNotOpen() const;
    /// Moves the bad file aside as it is. True as well where another one has taken its place.
    bool moveBadAside(AsideName const& name);
    /// Ends the file by its end tag, if it is open, and closes it. What cannot be written then is lost.
    void leave();

    /// A device, not open, for another file of the same user, and the header of one that is begun now.
    std::unique_ptr<FileEncrypt> newDevice(QString const& path) const;
    LogFileHeader newHeader(QString const& path) const;

private:
    void requireFile() const;
    void open();
    void look();
    void refuseDamaged();
    void readHeader(FileEncrypt& file);
    std::unique_ptr<LogFileReader> newReader();

    void writeWaiting(QByteArray const& more);
    void makeReady();
    void begin();
    void finish();
    void put(QByteArray const& bytes);
    void cutAt(qint64 offset);
    void keepTorn(FileEncrypt& file);
    void sync();

    /// Throws why @p device did not do what was asked for.
    [[noreturn]] void refuse(FileEncrypt& device);
    [[noreturn]] void refuseHeader();
    bool isDamaged(FileEncrypt& device) const;
    void noteBad();

    QString m_path;
    QString m_user;
    QString m_password;
    QString m_applicationVersion;
    QString m_languageVersion;
    EDurability m_durability = DurabilityFlush;

    std::unique_ptr<FileEncrypt> m_device; // open as long as it is there
    QDateTime m_date;
    LogFileEnd m_end;
    qint64 m_size = -1; // where the file ended when it was last seen; -1 unknown
    WaitingEntries m_waiting;
    FileIdentity m_identity; // of the file that was bad or is to be opened
    bool m_isBad = false;
};

/// Holds a turn to the end of its scope.
class LogFileTurn {
public:
    explicit LogFileTurn(LogFile& file)
        : m_file(file)
        , m_isAnother(file.takeTurn())
    {
    }
    LogFileTurn(LogFileTurn const&) = delete;
    LogFileTurn& operator=(LogFileTurn const&) = delete;
    ~LogFileTurn() { m_file.endTurn(); }

    /// See LogFile::takeTurn().
    bool isAnother() const { return m_isAnother; }

private:
    LogFile& m_file;
    bool const m_isAnother;
};

} // namespace qv
