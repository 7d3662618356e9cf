// SPDX-License-Identifier: LGPL-2.1-or-later
#include "LogFile.h"

#include "Failures.h"

#include <QFileInfo>

using qv::FileEncrypt;

namespace {

[[noreturn]] void refuseFile(QString const& reason)
{
    throw RefusalException(reason);
}

} // namespace

LogFile::LogFile(QString const& path, Access& access)
    : m_path(path)
    , m_device(path)
{
    // A pipe would wait for its writer, a device might never end.
    if (QFileInfo const info(path); info.exists() && !info.isFile())
        refuseFile(QStringLiteral("it is no regular file"));
    if (m_device.open(QIODevice::ReadOnly))
        return;
    if (m_device.headerError() != FileEncrypt::NotOurFormat)
        refuseFile(QStringLiteral("it cannot be read: %1").arg(m_device.errorString()));
    openEncrypted(access);
}

void LogFile::openEncrypted(Access& access)
{
    m_isEncrypted = true;
    m_device.setFileUserPassword(access.fileUser(), access.password());
    if (!m_device.open(QIODevice::ReadOnly))
        throwHeaderError();
}

void LogFile::throwHeaderError() const
{
    switch (m_device.headerError()) {
    case FileEncrypt::NoHeaderError:
    case FileEncrypt::NotOurFormat: // It has changed meanwhile.
        refuseFile(QStringLiteral("it cannot be read: %1").arg(m_device.errorString()));
    case FileEncrypt::UnknownVersion:
        refuseFile(QStringLiteral("it was encrypted by a later version of this program"));
    case FileEncrypt::WrongCredentials:
        refuseFile(QStringLiteral("it has another file user or password"));
    case FileEncrypt::Damaged:
        throw DamageException(QStringLiteral("byte 0: the header of the encrypted file is damaged"));
    }
    Q_UNREACHABLE();
}

void LogFile::requireIntact(QByteArray const& anchor)
{
    if (!m_isEncrypted) {
        if (m_device.error() != QFileDevice::NoError)
            refuseFile(QStringLiteral("it cannot be read: %1").arg(m_device.errorString()));
        return;
    }
    FileEncrypt::VerifyResult const found = m_device.verify(anchor);
    switch (found.result) {
    case FileEncrypt::VerifyResult::Intact:
        return;
    case FileEncrypt::VerifyResult::HeaderRefused:
    case FileEncrypt::VerifyResult::NotReadable:
        refuseFile(QStringLiteral("it cannot be verified: %1").arg(found.text));
    case FileEncrypt::VerifyResult::Torn:
    case FileEncrypt::VerifyResult::TornOrTampered:
    case FileEncrypt::VerifyResult::RecordDamaged:
        throw DamageException(
            QStringLiteral("byte %1, record %2: %3").arg(found.offset).arg(found.record).arg(found.text));
    }
}
