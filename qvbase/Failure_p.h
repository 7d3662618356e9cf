// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/FileEncrypt.h>

#include <QString>

#include <cerrno>

namespace qv::encrypted {

/// Why an operation on an encrypted file ends early; thrown within, told by the device as a value.
struct Failure {
    QString text;
    FileEncrypt::HeaderError header = FileEncrypt::NoHeaderError;
};

/// For a call of the system that left its reason in errno.
inline void require(bool succeeded)
{
    if (!succeeded)
        throw Failure{qt_error_string(errno)};
}

} // namespace qv::encrypted
