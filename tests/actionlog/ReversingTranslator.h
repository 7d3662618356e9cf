// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QTranslator>

#include <algorithm>

/// A language in which each text of the action log is spelled backwards, and in which no other text exists.
class ReversingTranslator : public QTranslator {
public:
    bool isEmpty() const override { return false; }
    QString translate(char const* context, char const* text, char const*, int) const override
    {
        QString result = qstrcmp(context, "ActionLog") == 0 ? QString::fromUtf8(text) : QString();
        std::reverse(result.begin(), result.end());
        return result;
    }
};
