// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/LogFileHeader.h>

namespace qv {

QString LogFileHeader::currentVersion()
{
    return QStringLiteral("v0.1");
}

} // namespace qv
