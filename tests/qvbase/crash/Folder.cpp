// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Folder.h"

#include <qvbase/FileEncryptTesting_p.h>

#include <QDir>
#include <QFileInfo>
#include <QTest>

namespace crash {

namespace {

    QString place()
    {
        QString const memory = QStringLiteral("/dev/shm");
        QString const parent = QFileInfo(memory).isWritable() ? memory : QDir::tempPath();
        return QFileInfo(parent).canonicalFilePath() + QStringLiteral("/tst_crash_XXXXXX");
    }

    QStringList namesIn(QString const& path)
    {
        return QDir(path).entryList(QDir::Files | QDir::Hidden);
    }

    QByteArray bytesOf(QString const& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

} // namespace

void prepare(qv::FileEncrypt& device, Mode mode)
{
    qv::FileEncryptTesting::setScryptCost(4, 1, 1);
    if (mode == Mode::Encrypted)
        device.setFileUserPassword(QStringLiteral("operator"), QStringLiteral("correct horse"));
}

void modes()
{
    QTest::addColumn<Mode>("mode");
    QTest::newRow("plain") << Mode::Plain;
    QTest::newRow("encrypted") << Mode::Encrypted;
}

bool hasError(qv::FileEncrypt const& device)
{
    // What QIODevice says where no text was set; derived classes can set a text, not QFileDevice::error().
    return device.errorString() != QLatin1String("Unknown error");
}

Folder::Folder()
    : m_folder(place())
{
    Q_ASSERT(m_folder.isValid());
}

void Folder::hold(Files const& files) const
{
    for (QString const& name : namesIn(path()))
        QFile::remove(path(name));
    for (auto file = files.begin(); file != files.end(); ++file) {
        QFile made(path(QString::fromUtf8(file.key())));
        if (!made.open(QIODevice::WriteOnly) || made.write(file.value()) != file.value().size())
            qFatal("cannot write into %s", qPrintable(path()));
    }
}

Files Folder::files() const
{
    Files files;
    for (QString const& name : namesIn(path()))
        files.insert(name.toUtf8(), bytesOf(path(name)));
    return files;
}

QByteArray contentOf(QString const& path, Mode mode, QString* error)
{
    qv::FileEncrypt device(path);
    prepare(device, mode);
    bool const opened = device.open(QIODevice::ReadOnly);
    QByteArray const content = opened ? device.readAll() : QByteArray();
    if (error && (!opened || hasError(device)))
        *error = device.errorString();
    return content;
}

QString faultOf(QString const& path, Mode mode)
{
    qv::FileEncrypt device(path);
    prepare(device, mode);
    if (mode == Mode::Plain)
        return {};
    qv::FileEncrypt::VerifyResult const found = device.verify();
    return found.result == qv::FileEncrypt::VerifyResult::Intact
        ? QString()
        : QStringLiteral("record %1 at %2: %3").arg(found.record).arg(found.offset).arg(found.text);
}

} // namespace crash
