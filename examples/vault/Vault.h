// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/Exceptions.h>
#include <qvbase/FileEncrypt.h>

QT_BEGIN_NAMESPACE
class QIODevice;
QT_END_NAMESPACE

/// The content of the file is not what was written to it.
class DamageException : public qv::ExceptionQt {
public:
    using qv::ExceptionQt::ExceptionQt;
};

/// Lines of text in an encrypted file. What cannot be done throws: DamageException where the file is damaged,
/// qv::ExceptionQt for any other reason.
class Vault {
public:
    Vault(QString const& file, QString const& user, QString const& password);

    /// Adds each line as soon as it comes; a last one without a line break gets one.
    void append(QIODevice& lines);
    /// Prints what stands before a damage, too.
    void print(QIODevice& out);
    /// Says that the whole file is intact.
    QString verify();

private:
    void open(QIODevice::OpenMode mode);
    [[noreturn]] void throwRefusal() const;
    [[noreturn]] void throwDamage(qv::FileEncrypt::VerifyResult const& found) const;
    QString name() const;

    qv::FileEncrypt m_file;
};
