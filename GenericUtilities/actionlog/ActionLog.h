// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/actionlog/ActionLogContextSwitchEntry.h>
#include <GenericUtilities/actionlog/ActionLogExceptions.h>
#include <GenericUtilities/actionlog/Durability.h>
#include <GenericUtilities/actionlog/LogEntry.h>
#include <GenericUtilities/actionlog/SplitPolicy.h>

#include <QFileInfo>
#include <QIODevice>
#include <QList>
#include <QObject>
#include <QSharedPointer>
#include <QString>

#include <memory>

namespace qv {

class IPersistDestination;

/// The audit trail of this process: appends what users do to a file, keeps the entries of that file in memory, splits
/// and switches files, and tells of everything by signals. docs/actionlog.md says what is promised.
///
/// May be called in any thread. One mutex is held during each call, and while signals are emitted, on the calling
/// thread: a receiver connected directly may call back on that thread, but must not wait for another thread that
/// calls. What a receiver logs is written at once; the list and the signals follow when the outer call is done.
///
/// Where something fails, a signal tells; log() neither throws nor waits for good.
class GENERICUTILITIES_EXPORT ActionLog : public QObject {
    Q_OBJECT

public:
    /// The log of this process, made on first use. It belongs to the library.
    static ActionLog* getInstance();
    /// Ends the file and destroys the log; from then on no pointer to it may be used. The next getInstance() makes a
    /// fresh one. Where a receiver of a signal calls it, the log lives until the call is done that emitted the signal.
    static void deleteActionLog();

    /// "ActionLog.qvl" in the log folder of this application and user, see FileUtils::userLogDir().
    static QFileInfo defaultFileInfo();
    /// Whether a fresh log is active: true unless set otherwise.
    static bool defaultActive();
    static void setDefaultActive(bool active);

    /// Appends a copy of @p entry, with userName() as its user, to the file and to the list. An inactive log ignores
    /// it. Errors are told by errorFile(), errorXml() or errorLogon(); one met while a receiver is told of another is
    /// not told.
    void log(LogEntry const& entry);
    /// Whether log() does anything.
    bool isActive() const;
    void activate();

    /// Reads the file anew into the list. Damage is told by errorXml(), a file that cannot be read by errorFile();
    /// the entries before the damage are listed, and nothing is moved or changed.
    void readLog();
    /// The same, with QIODevice::ReadWrite leaving the file open to be extended. False where it cannot be opened, its
    /// header is refused or @p mode is not for reading. Throws ActionLogXmlException where it is damaged.
    bool readEntries(QIODevice::OpenMode mode);

    /// The entries in memory, which are those of the current file, oldest first: of what other processes write to it
    /// only what was there when it was opened or read. The entries belong to the log and live until the list next
    /// changes; another thread takes snapshot(), whose entries never change.
    int entryCount() const;
    /// Null where there is no such row.
    LogEntry* entry(int row) const;
    QList<LogEntry*> entries() const;
    QList<QSharedPointer<LogEntry const>> snapshot() const;

    /// Empties the list; the file stays as it is.
    void removeAllLogEntries();
    /// Takes out of the list, not out of the file, and destroys those of @p entries that are in it; leaves the others
    /// in @p entries.
    void deleteEntries(QList<LogEntry*>& entries);
    /// The same, after writing them as a complete document, kept as the log itself is (encrypted, durable), to
    /// @p fileName. False, with errorFile(), where such a file exists or cannot be written; nothing is deleted then.
    bool backupEntries(QList<LogEntry*>& entries, QString const& fileName);

    /// Ends the current file and goes on in @p newFile, whose first new entry tells of the switch. Does nothing where
    /// that is the current file, or empty. An inactive log makes no entry.
    void switchFileHandle(QString const& newFile);
    QFileInfo fileInfo() const;
    /// Ends the current file and goes on in this one; the list is emptied. Does nothing where it is the current one.
    void setFileInfo(QFileInfo const& fileInfo);
    /// In whose name the file is written: @p user, unless empty, is logged on (FileUserLogon). With a @p password the
    /// file is encrypted (FileEncrypt). A current file of other credentials is ended.
    void setFileUserPassword(QString const& user, QString const& password);
    /// Who is logging: the file user, as "login (full name)" or "login"; without one the value of the environment
    /// variable USERNAME and " (System)"; else nothing.
    QString userName() const;

    /// For the headers of files begun from now on.
    void setApplicationVersion(QString const& version);
    void setLanguageVersion(QString const& version);

    ESplitPolicy splitPolicy() const;
    /// In bytes.
    int splitSize() const;
    /// @p size matters to SplitBySize: a file larger than that is moved aside before the next entry.
    void setSplitPolicy(ESplitPolicy policy, int size);

    EDurability durability() const;
    void setDurability(EDurability durability);

    /// The configuration: file, split policy, file user and durability, in the group "ActionLog". The password is
    /// encoded there, not encrypted. What load() does not find stays as it is. @p destination stays the caller's.
    void save(IPersistDestination* destination) const;
    void load(IPersistDestination* destination);

signals:
    /// Before and after rows @p first to @p last are there; entries are added one by one.
    void addingLogEntries(int first, int last);
    void logEntriesAdded(int first, int last);
    /// Before and after they are taken away.
    void removingLogEntries(int first, int last);
    void logEntriesRemoved(int first, int last);
    /// The file user could not be logged on; @p error is an errno value.
    void errorLogon(QString user, int error);
    /// The file could not be used; @p type is an ActionLogFileException::eType.
    void errorFile(QString file, int type);
    /// The file, or an entry that was to be logged, cannot be read back; line and column as ActionLogXmlException has.
    void errorXml(QString error, int line, int colum);
    void switchedFileHandle(QString fileName);

public slots:
    /// Does nothing; clients connect it by name.
    void incompatibleHeader();

private:
    friend class ActionLogModel;
    class Private;

    ActionLog();
    ~ActionLog() override;

    std::unique_ptr<Private> m_d;
};

} // namespace qv
