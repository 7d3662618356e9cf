// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/FileEncrypt.h>
#include <qvbase/FileEncryptTesting_p.h>

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>
#include <QVector>
#include <QtEndian>

#include <memory>

/// What tests of encrypted files share.
namespace encrypted {

constexpr int HeaderLength = 128;

inline void useCheapKeys()
{
    qv::FileEncryptTesting::setScryptCost(4, 1, 1);
}

/// A folder of its own, in memory where the machine has such a place.
inline std::unique_ptr<QTemporaryDir> folder()
{
    QString const memory = QStringLiteral("/dev/shm");
    bool const hasMemory = QFileInfo(memory).isWritable();
    return std::make_unique<QTemporaryDir>(
        (hasMemory ? memory : QDir::tempPath()) + QStringLiteral("/FileEncrypt-XXXXXX"));
}

inline std::unique_ptr<qv::FileEncrypt> device(QString const& name, QString const& password = QStringLiteral("secret"),
    QString const& user = QStringLiteral("alice"))
{
    auto file = std::make_unique<qv::FileEncrypt>(name);
    file->setFileUserPassword(user, password);
    return file;
}

inline QByteArray rawBytes(QString const& name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline void setRawBytes(QString const& name, QByteArray const& bytes)
{
    QFile file(name);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

/// Adds one record for each text, in one session.
inline void appendAll(QString const& name, QList<QByteArray> const& texts)
{
    auto const file = device(name);
    QVERIFY2(file->open(QIODevice::Append), qPrintable(file->errorString()));
    for (QByteArray const& text : texts)
        QCOMPARE(file->write(text), qint64(text.size()));
}

struct ReadBack {
    QByteArray text;
    bool hasFailed;
};

/// Reads to the end or the first fault.
inline ReadBack readBack(QString const& name)
{
    auto const file = device(name);
    if (!file->open(QIODevice::ReadOnly))
        return {{}, true};
    QByteArray text;
    QByteArray piece(4096, '\0');
    qint64 count = 0;
    while ((count = file->read(piece.data(), piece.size())) > 0)
        text.append(piece.constData(), int(count));
    return {text, count < 0};
}

inline qv::FileEncrypt::VerifyResult verified(QString const& name, QByteArray const& anchor = {})
{
    return device(name)->verify(anchor);
}

/// The records of a file that is not damaged, each as its bytes.
inline QVector<QByteArray> recordsOf(QByteArray const& file)
{
    QVector<QByteArray> records;
    for (int offset = HeaderLength; offset < file.size(); offset += records.last().size())
        records.append(file.mid(offset, int(qFromLittleEndian<quint32>(file.constData() + offset))));
    return records;
}

inline QByteArray joined(QByteArray const& file, QVector<QByteArray> const& records)
{
    QByteArray result = file.left(HeaderLength);
    for (QByteArray const& record : records)
        result += record;
    return result;
}

} // namespace encrypted
