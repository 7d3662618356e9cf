// SPDX-License-Identifier: LGPL-2.1-or-later
// Catalogues the files beneath a folder as property sets, in memory and in SQLite, and answers searches in both ways.
// Recording.cpp describes a file by properties; Searches.cpp builds conditions over them; RecordingDatabase.cpp has
// them printed as SQL and binds their values; Answer.cpp evaluates them in memory and compares. SqliteFunctions.cpp
// fits functions to the database; SearchFile.cpp stores a search, SearchCheck.cpp judges one from outside. Run it with
// --help.

#include "Answer.h"
#include "Options.h"
#include "Recording.h"
#include "Report.h"
#include "SearchFile.h"
#include "SqliteFunctions.h"

#include <qvbase/Exceptions.h>
#include <terminal/Terminal.h>
#include <terminal/Text.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTextCodec>
#include <QTextStream>

#include <unistd.h>

namespace {

QTextStream& errorStream()
{
    static QTextStream stream(stderr);
    return stream;
}

void printError(QString const& message)
{
    errorStream() << "recordings: " << printable(message.simplified()) << Qt::endl;
}

/// A line on the terminal that counts up and vanishes at the end; nothing where standard error is no terminal.
class ProgressLine {
public:
    explicit ProgressLine(char const* verb)
        : m_verb(verb)
    {
    }
    ~ProgressLine()
    {
        if (m_terminal)
            errorStream() << "\r\x1b[K" << Qt::flush;
    }
    ProgressLine(ProgressLine const&) = delete;
    ProgressLine& operator=(ProgressLine const&) = delete;

    Progress progress() const
    {
        return [this](int done) {
            if (m_terminal && done % 1000 == 0)
                errorStream() << '\r' << m_verb << ' ' << grouped(static_cast<qulonglong>(done)) << " files"
                              << Qt::flush;
        };
    }

private:
    char const* m_verb;
    bool m_terminal = isatty(STDERR_FILENO) != 0;
};

template <class Work> double secondsFor(char const* verb, Work const& work)
{
    ProgressLine const line(verb);
    QElapsedTimer timer;
    timer.start();
    work(line.progress());
    return static_cast<double>(timer.elapsed()) / 1e3;
}

void save(std::optional<Search> const& search, QString const& file)
{
    if (!search)
        throw qv::IllegalArgumentException(
            QStringLiteral("--save-search needs a search to store, such as --suffix png --sort -size"));
    writeSearchFile(file, *search);
}

int run(Options const& options)
{
    // All files are opened before the long walk, so that a wrong name is told at once.
    addSqliteFunctions();
    Catalogue catalogue(options.folder);
    qvgen::PropertySet const prototype = RecordingMaker::prototype();
    std::optional<Search> const requested = requestedSearch(prototype, options);
    RecordingDatabase database(options.database, prototype);
    if (requested)
        database.check(*requested);
    if (!options.saveFile.isEmpty())
        save(requested, options.saveFile);

    QTextStream out(stdout);
    Report report(out, terminalWidth().value_or(100), options.shownRows);
    report.catalogue(catalogue, secondsFor("Indexing", [&](Progress const& progress) { catalogue.index(progress); }));
    report.stored(database.file(),
        secondsFor("Storing", [&](Progress const& progress) { database.store(catalogue.recordings(), progress); }));
    if (!options.saveFile.isEmpty())
        report.saved(options.saveFile);
    report.properties(catalogue.recordings().isEmpty() ? prototype : catalogue.recordings().constFirst());

    QVector<Search> searches = readyMadeSearches(prototype, QDateTime::currentDateTimeUtc().date());
    if (requested)
        searches += *requested;
    for (Search const& search : qAsConst(searches)) {
        Answer const found = answer(search, database, catalogue.recordings());
        report.search(search, found, catalogue.recordings());
        out.flush();
        if (!found.agrees())
            printError(Report::disagreement(search, found, catalogue.recordings()));
    }
    report.verdict();
    out.flush();
    if (out.status() != QTextStream::Ok)
        throw qv::ExceptionQt(QStringLiteral("standard output cannot be written"));
    return report.disagreements() == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char* argv[])
{
    // File names are UTF-8 nearly everywhere, the locale C of a bare machine notwithstanding.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("recordings"));
    QCoreApplication::setApplicationVersion(QStringLiteral(RECORDINGS_VERSION));
    try {
        return run(readOptions(QCoreApplication::arguments()));
    } catch (qv::ExceptionQt const& exception) {
        printError(exception.message());
        return 2;
    }
}
