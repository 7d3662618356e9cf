// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QImage>

/// Stamps a frame time (microseconds since 1970 UTC) in local time, and the record dot before it, into the lower left
/// corner of @p frame.
void stampTime(QImage& frame, quint64 frameTime);
