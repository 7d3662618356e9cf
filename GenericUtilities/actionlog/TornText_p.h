// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/FileEncrypt.h>

#include <QString>

#include <functional>
#include <memory>

namespace qv {

/// A device for a path, with the credentials of the log.
using DeviceMaker = std::function<std::unique_ptr<FileEncrypt>(QString const& path)>;

/// Copies what @p file, open for reading, holds from @p offset on into a new file beside it, "<base>.<suffix>.torn",
/// and brings that to the disk. False where it could not; nothing is left of it then.
bool keepTornText(FileEncrypt& file, qint64 offset, DeviceMaker const& newDevice);

} // namespace qv
