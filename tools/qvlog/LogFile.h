// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "Access.h"

#include <qvbase/FileEncrypt.h>

/// A log file, plain or encrypted as it turns out, open for reading.
class LogFile {
public:
    /// Throws RefusalException where the file cannot be read, DamageException where its first bytes are damaged.
    LogFile(QString const& path, Access& access);

    QString const& path() const { return m_path; }
    bool isEncrypted() const { return m_isEncrypted; }
    qv::FileEncrypt& device() { return m_device; }

    /// Throws where the bytes of the file are not those that were written, as far as that can be told: an encrypted
    /// file vouches for its own, a plain one has only the system's errors.
    /// Nor where an encrypted file does not go on from where it was when it had the anchor, if one is given.
    void requireIntact(QByteArray const& anchor = {});

private:
    void openEncrypted(Access& access);
    [[noreturn]] void throwHeaderError() const;

    QString m_path;
    qv::FileEncrypt m_device;
    bool m_isEncrypted = false;
};
