// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/actionlog/SplitPolicy.h>

#include <QDateTime>
#include <QString>

/// The rules by which log files are split, as functions of what they depend on.
namespace qv::split {

/// What a number stands for; SplitNone for one that stands for nothing.
GENERICUTILITIES_EXPORT ESplitPolicy policyFrom(int number);

/// Whether a file begun at @p logDate that now holds @p plainSize bytes is to be split. @p splitSize is in bytes.
GENERICUTILITIES_EXPORT bool isDue(
    ESplitPolicy policy, int splitSize, QDateTime const& logDate, QDateTime const& now, qint64 plainSize);

/// What the file that is moved aside is called, without a suffix: the calendar policies name it after the day it was
/// begun and its own base name, the size policy after the moment and the application.
GENERICUTILITIES_EXPORT QString movedAsideName(ESplitPolicy policy, QDateTime const& logDate, QDateTime const& now,
    QString const& baseName, QString const& applicationName);

/// The moment as names of files carry it.
GENERICUTILITIES_EXPORT QString momentName(QDateTime const& moment);

} // namespace qv::split
