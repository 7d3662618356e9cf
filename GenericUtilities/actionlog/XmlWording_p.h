// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/actionlog/FourChars.h>

#include <QString>

/// How codes and texts, which may hold anything, are worded in XML, which may not.
namespace qv::xml {

/// The name by which a value is found: its code without the characters that no XML name can hold, and without blanks.
/// The colon is one of these: it would name a namespace. May be empty.
GENERICUTILITIES_EXPORT QString reducedName(FourChars code);
/// The attribute's name as written: reducedName() and the trailing blanks of the code, which stored files have.
GENERICUTILITIES_EXPORT QString writtenName(FourChars code);
/// @p text with U+FFFD for each code unit that XML cannot hold.
GENERICUTILITIES_EXPORT QString writtenText(QString const& text);

} // namespace qv::xml
