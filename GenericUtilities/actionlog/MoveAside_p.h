// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/actionlog/FileIdentity_p.h>

#include <QString>

namespace qv {

/// What a file that is moved aside is to be called: what stands before and in the whole suffix. Where that name is
/// taken, " (2)", " (3)" … is put between the two.
struct GENERICUTILITIES_EXPORT AsideName {
    QString stem;
    QString suffix; ///< with its dot

    /// The name for an attempt, counted from 1, without a folder: what no name can hold is replaced in the stem, what
    /// is too long for one cut off from it.
    QString fileName(int attempt) const;
};

/// Whether the file is a regular one, and it and its folder may be written.
GENERICUTILITIES_EXPORT bool canMoveAside(QString const& path);

/// Gives the file another name in its folder, by one rename that never takes the name of another file, and brings that
/// to the disk. Returns the new path; a null text where the file stays where it is.
GENERICUTILITIES_EXPORT QString moveAside(QString const& path, AsideName const& name);

/// The same under the file's lock, which the caller does not hold, and for that very file: true as well where the path
/// names another one by now, or none.
bool moveAsideLocked(QString const& path, FileIdentity const& identity, AsideName const& name);

} // namespace qv
