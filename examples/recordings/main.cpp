// SPDX-License-Identifier: LGPL-2.1-or-later
// Catalogues the files beneath a folder as property sets, in memory and in SQLite, and answers searches in both ways.
// Recording.cpp describes a file by properties; Searches.cpp builds conditions over them; RecordingDatabase.cpp has
// them printed as SQL and binds their values; Answer.cpp evaluates them in memory and compares. SqliteFunctions.cpp
// fits functions to the database; SearchFile.cpp stores a search, SearchCheck.cpp judges one from outside. Trail.cpp
// logs what the user does, with the kinds of entries that TrailEntries.cpp defines; Export.cpp logs exports. Run it
// with --help.

#include "Answer.h"
#include "Export.h"
#include "Interruption.h"
#include "Options.h"
#include "Recording.h"
#include "Report.h"
#include "SearchFile.h"
#include "SqliteFunctions.h"
#include "Trail.h"

#include <qvbase/Exceptions.h>
#include <terminal/Terminal.h>
#include <terminal/Text.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTextCodec>
#include <QTextStream>

#include <numeric>
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
            if (isInterrupted())
                throw Interruption();
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

QVector<int> allRows(int count)
{
    QVector<int> rows(count);
    std::iota(rows.begin(), rows.end(), 0);
    return rows;
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
    QVector<int> rows = allRows(catalogue.recordings().size());
    for (Search const& search : qAsConst(searches)) {
        Answer const found = answer(search, database, catalogue.recordings());
        Trail::searched(search, found);
        if (&search == &searches.constLast() && requested)
            rows = found.inMemory;
        report.search(search, found, catalogue.recordings());
        out.flush();
        if (!found.agrees())
            printError(Report::disagreement(search, found, catalogue.recordings()));
    }
    if (!options.exportFile.isEmpty()
        && exportRows(options.exportFile, rows, catalogue.recordings(), catalogue.folder(), isInterrupted))
        report.exported(options.exportFile, rows.size());
    report.verdict();
    out.flush();
    if (out.status() != QTextStream::Ok)
        throw qv::ExceptionQt(QStringLiteral("standard output cannot be written"));
    return isInterrupted() ? Interruption::ExitCode : report.disagreements() == 0 ? 0 : 1;
}

int runLogged(Options const& options)
{
    catchInterruptions();
    Trail trail(options, printError);
    try {
        trail.setExitCode(run(options));
    } catch (Interruption const&) {
        trail.setExitCode(Interruption::ExitCode);
    }
    return trail.exitCode();
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
        return runLogged(readOptions(QCoreApplication::arguments()));
    } catch (qv::ExceptionQt const& exception) {
        printError(exception.message());
        return 2;
    }
}
