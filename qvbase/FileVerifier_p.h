// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/FileCipher_p.h>

namespace qv::encrypted {

/// Reads all of @p fd. Throws Failure where the header is refused or the system cannot read.
FileEncrypt::VerifyResult verifyFile(int fd, Credentials const& credentials, QByteArray const& anchor);

} // namespace qv::encrypted
