// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Failures.h"

#include <terminal/Text.h>

#include <QTextStream>

void printError(QString const& message)
{
    QTextStream(stderr) << "qvlog: " << printable(message.simplified()) << Qt::endl;
}
