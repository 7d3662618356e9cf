// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QTranslator>

/// A language in which each text of the action log begins with a "~" and keeps its places, and in which no other text
/// exists.
class MarkingTranslator : public QTranslator {
public:
    bool isEmpty() const override { return false; }
    QString translate(char const* context, char const* text, char const*, int) const override
    {
        return qstrcmp(context, "ActionLog") == 0 ? QLatin1Char('~') + QString::fromUtf8(text) : QString();
    }
};
