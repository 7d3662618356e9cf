// SPDX-License-Identifier: LGPL-2.1-or-later
// Logs entries and reports on standard output: a byte before the first, then a byte for each that log() returned from.
//
//     logger FILE plain|encrypted WRITER FIRST COUNT SPLITSIZE

#include "Entries.h"

#include <GenericUtilities/actionlog/ActionLog.h>

#include <QCoreApplication>
#include <QTextStream>

#include <unistd.h>

namespace {

bool report(char byte)
{
    return write(STDOUT_FILENO, &byte, 1) == 1;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication const application(argc, argv);
    QStringList const words = QCoreApplication::arguments();
    if (words.size() != 7)
        return 2;
    entries::keepStateIn(words.at(1) + QStringLiteral(".state"));
    auto const mode = words.at(2) == QLatin1String("plain") ? crash::Mode::Plain : crash::Mode::Encrypted;
    qv::ActionLog& log = entries::openLog(words.at(1), mode, words.at(6).toInt());
    bool hasFailed = false;
    auto const complain = [&hasFailed](QString const& text) {
        hasFailed = true;
        QTextStream(stderr) << "logger: " << text << '\n';
    };
    QObject::connect(&log, &qv::ActionLog::errorFile, complain);
    QObject::connect(&log, &qv::ActionLog::errorXml, complain);
    int const first = words.at(4).toInt();
    int const count = words.at(5).toInt();
    report('o');
    for (int i = first; i - first < count && !hasFailed; ++i) {
        entries::log(words.at(3).toInt(), i);
        if (!hasFailed && !report('l'))
            return 1;
    }
    qv::ActionLog::deleteActionLog();
    return hasFailed ? 1 : 0;
}
