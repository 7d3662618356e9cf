// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Vault.h"

#include <QDir>

using qv::FileEncrypt;

namespace {

// What is written at once stays together, however many write.
constexpr qint64 MaxLineBytes = 1048576;
constexpr qint64 PieceBytes = 65536;

QString cannot(char const* what, QString const& name, QString const& reason)
{
    return QStringLiteral("'%1' cannot be %2: %3").arg(name, QLatin1String(what), reason);
}

} // namespace

Vault::Vault(QString const& file, QString const& user, QString const& password)
    : m_file(file)
{
    m_file.setFileUserPassword(user, password);
}

QString Vault::name() const
{
    return QDir::toNativeSeparators(m_file.fileName());
}

void Vault::open(QIODevice::OpenMode mode)
{
    if (!m_file.open(mode))
        throwRefusal();
}

void Vault::throwRefusal() const
{
    switch (m_file.headerError()) {
    case FileEncrypt::NoHeaderError:
        throw qv::ExceptionQt(cannot("opened", name(), m_file.errorString()));
    case FileEncrypt::NotOurFormat:
        throw qv::ExceptionQt(QStringLiteral("'%1' is not a vault").arg(name()));
    case FileEncrypt::UnknownVersion:
        throw qv::ExceptionQt(QStringLiteral("'%1' was written by a newer version of this program").arg(name()));
    case FileEncrypt::WrongCredentials:
        throw qv::ExceptionQt(QStringLiteral("'%1' has another user or password").arg(name()));
    case FileEncrypt::Damaged:
        throw DamageException(QStringLiteral("'%1' is damaged at its very beginning").arg(name()));
    }
    Q_UNREACHABLE();
}

void Vault::throwDamage(FileEncrypt::VerifyResult const& found) const
{
    // At once: a name may hold a "%2".
    throw DamageException(QStringLiteral("'%1' is damaged at byte %2, record %3: %4")
                              .arg(name(), QString::number(found.offset), QString::number(found.record), found.text));
}

void Vault::append(QIODevice& lines)
{
    open(QIODevice::WriteOnly | QIODevice::Append);
    for (QByteArray line = lines.readLine(MaxLineBytes); !line.isEmpty(); line = lines.readLine(MaxLineBytes)) {
        if (!line.endsWith('\n') && lines.peek(1).isEmpty())
            line += '\n';
        if (m_file.write(line) != line.size())
            throw qv::ExceptionQt(cannot("written", name(), m_file.errorString()));
    }
    if (!m_file.sync())
        throw qv::ExceptionQt(cannot("brought to the disk", name(), m_file.errorString()));
}

void Vault::print(QIODevice& out)
{
    open(QIODevice::ReadOnly);
    QByteArray piece(static_cast<int>(PieceBytes), '\0');
    qint64 length = 0;
    while ((length = m_file.read(piece.data(), PieceBytes)) > 0) {
        if (out.write(piece.constData(), length) != length)
            throw qv::ExceptionQt(QStringLiteral("standard output cannot be written: %1").arg(out.errorString()));
    }
    if (length == 0)
        return;
    QString const reason = m_file.errorString();
    verify(); // Says where the damage is; else it was no damage that kept from reading.
    throw qv::ExceptionQt(cannot("read", name(), reason));
}

QString Vault::verify()
{
    if (!m_file.isOpen())
        open(QIODevice::ReadOnly);
    FileEncrypt::VerifyResult const found = m_file.verify();
    switch (found.result) {
    case FileEncrypt::VerifyResult::Intact:
        return QStringLiteral("'%1' is intact: %2 bytes of text").arg(name(), QString::number(m_file.size()));
    case FileEncrypt::VerifyResult::HeaderRefused:
    case FileEncrypt::VerifyResult::NotReadable:
        throw qv::ExceptionQt(cannot("verified", name(), found.text));
    case FileEncrypt::VerifyResult::Torn:
    case FileEncrypt::VerifyResult::TornOrTampered:
    case FileEncrypt::VerifyResult::RecordDamaged:
        throwDamage(found);
    }
    Q_UNREACHABLE();
}
