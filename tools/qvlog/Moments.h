// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QDateTime>
#include <QString>

/// The moments that an ISO 8601 text may mean: "2024-05-31" is a day, "2024-05-31T18:30" a minute, with seconds it is
/// that second. Local time, unless the text names an offset. Both ends belong to the span; null where the text is none.
struct Moments {
    QDateTime first;
    QDateTime last;
};

Moments momentsOf(QString const& text);
