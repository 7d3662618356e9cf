// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/actionlog/ActionLog.h>
#include <GenericUtilities/actionlog/ActionLogTesting_p.h>
#include <GenericUtilities/actionlog/ExportLogEntries.h>
#include <GenericUtilities/actionlog/LogFileContent_p.h>
#include <GenericUtilities/actionlog/LogXml_p.h>
#include <qvbase/FileEncrypt.h>
#include <qvbase/FileEncryptTesting_p.h>

#include <QDir>
#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

/// What tests of the log share: a folder, a fresh log that writes into it, and a view of what it wrote and told.
namespace scene {

inline QString const user = QStringLiteral("tester (System)");

/// A file as the log keeps it, made by hand.
inline QByteArray header(QString const& path, char const* date = "2026-11-21T10:11:12", char const* version = "v0.1")
{
    return QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
                          "<Entries Version=\"%1\" LogFile=\"%2\" Date=\"%3\">")
        .arg(QLatin1String(version), path, QLatin1String(date))
        .toUtf8();
}

inline QByteArray element(QString const& text)
{
    return QStringLiteral("<Entry ID=\"ExpD\" User=\"%1\" Text=\"%2\"/>").arg(user, text).toUtf8();
}

inline QByteArray const endTag = QByteArrayLiteral("\n</Entries>\n");

inline QString textOf(qv::LogEntry const* entry)
{
    qv::LogValue const* const value = entry ? entry->logValue(qv::FourChars("Text")) : nullptr;
    return value ? value->toString() : QString();
}

/// In memory where the machine has such a place.
inline QString place()
{
    QString const memory = QStringLiteral("/dev/shm");
    return (QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) + QStringLiteral("/ActionLog-XXXXXX");
}

class Scene {
public:
    explicit Scene(QString const& password = {})
        : m_password(password)
    {
        qputenv("XDG_STATE_HOME", QFile::encodeName(m_folder.path() + QStringLiteral("/state")));
        qputenv("USERNAME", "tester");
        qv::FileEncryptTesting::setScryptCost(4, 1, 1);
        qv::ActionLogTesting::setClock([this] { return now; });
        begin();
    }
    ~Scene()
    {
        qv::ActionLog::deleteActionLog();
        qv::ActionLogTesting::setClock({});
    }
    Scene(Scene const&) = delete;
    Scene& operator=(Scene const&) = delete;

    /// A fresh log, as a new process has it; what the old one told is forgotten.
    void begin()
    {
        qv::ActionLog::deleteActionLog();
        log().setFileInfo(QFileInfo(path()));
        log().setFileUserPassword({}, m_password);
        told.clear();
        listen();
    }

    qv::ActionLog& log() const { return *qv::ActionLog::getInstance(); }
    void logText(QString const& text) const
    {
        ExportDoneLogEntry entry;
        entry.text.setValue(text);
        log().log(entry);
    }
    QStringList listed() const
    {
        QStringList texts;
        for (qv::LogEntry const* const entry : log().entries())
            texts.append(textOf(entry));
        return texts;
    }

    QString path(QString const& name = QStringLiteral("Trail.qvl")) const { return m_folder.filePath(name); }
    QStringList files() const { return QDir(m_folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }
    QByteArray bytes(QString const& name = QStringLiteral("Trail.qvl")) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void hold(QByteArray const& content, QString const& name = QStringLiteral("Trail.qvl")) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(file.fileName()));
    }
    qv::LogFileContent content(QString const& name = QStringLiteral("Trail.qvl")) const
    {
        qv::FileEncrypt file(path(name));
        file.setFileUserPassword({}, m_password);
        return file.open(QIODevice::ReadOnly) ? qv::readLogFile(file) : qv::LogFileContent();
    }
    /// The texts of the entries in a file, and "damaged" where that is so.
    QStringList texts(QString const& name = QStringLiteral("Trail.qvl")) const
    {
        qv::LogFileContent const found = content(name);
        QStringList texts;
        for (auto const& entry : found.entries)
            texts.append(textOf(entry.get()));
        return found.isDamaged ? texts << QStringLiteral("damaged") : texts;
    }

    QDateTime now = QDateTime(QDate(2026, 11, 21), QTime(10, 11, 12));
    /// "adding 0 0 of 0": signal, arguments, and the length of the list when it was emitted.
    QStringList told;

private:
    void listen()
    {
        using Log = qv::ActionLog;
        Log* const log = Log::getInstance();
        auto const rows = [this, log](char const* what) {
            return [this, log, what](int first, int last) {
                told << QStringLiteral("%1 %2 %3 of %4").arg(what).arg(first).arg(last).arg(log->entryCount());
            };
        };
        QObject::connect(log, &Log::addingLogEntries, rows("adding"));
        QObject::connect(log, &Log::logEntriesAdded, rows("added"));
        QObject::connect(log, &Log::removingLogEntries, rows("removing"));
        QObject::connect(log, &Log::logEntriesRemoved, rows("removed"));
        QObject::connect(log, &Log::errorFile, [this](QString const& file, int type) {
            told << QStringLiteral("errorFile %1 %2").arg(QFileInfo(file).fileName()).arg(type);
        });
        QObject::connect(log, &Log::errorXml,
            [this](QString const&, int line, int) { told << QStringLiteral("errorXml line %1").arg(line); });
        QObject::connect(log, &Log::errorLogon, [this](QString const& name, int error) {
            told << QStringLiteral("errorLogon %1 %2").arg(name).arg(error);
        });
        QObject::connect(log, &Log::switchedFileHandle,
            [this](QString const& file) { told << QStringLiteral("switched %1").arg(QFileInfo(file).fileName()); });
    }

    QTemporaryDir m_folder{place()};
    QString m_password;
};

} // namespace scene
