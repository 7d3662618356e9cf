// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Options.h"

#include <qvbase/Exceptions.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QRegularExpression>

#include <limits>

namespace {

char const programDescription[] = R"(
Catalogues the files beneath a folder as recordings, in memory and in a SQLite
database, and answers searches in both. Each condition is built once; it is
evaluated in memory and printed as SQL, and both must find the same rows.

A set of ready-made searches is always answered. Yours, made of the conditions
below, follows as the last one. A name, suffix, folder or owner may be given
several times: one of them must fit. A search file adds the condition it holds,
and its order where --sort gives none.

  TERMS  columns to sort by, the first one first; -size sorts downwards. Texts
         are in the order of their UTF-8 bytes, as in SQLite.
  BYTES  a number of bytes, or of units of 1024: 500, 10k, 5M, 1G, 2T
  DATE   2024-05-31 or 2024-05-31T18:30, in UTC; 2024-05-31T18:30+02:00 as well

Symbolic links are not followed, folders that cannot be read are skipped.

Examples:
  recordings --suffix png,svg --larger-than 100k
  recordings --folder ~/Videos --modified-after 2024-01-01 --rows 20
  recordings --any --name README --name LICENSE
  recordings --not --owner root
  recordings --suffix png --sort -size,name --save-search pictures.search
  recordings --search pictures.search --larger-than 1M

What you do is logged: start, searches, exports, quit. qvlog shows the log.

Exit status: 0 on success, 1 if database and memory ever disagree, 2 if the
command line or a file that it names is of no use, 130 if interrupted.)";

QCommandLineOption valued(char const* name, char const* valueName, char const* text)
{
    return {QString::fromLatin1(name), QString::fromLatin1(text), QString::fromLatin1(valueName)};
}

void addOptions(QCommandLineParser& parser)
{
    parser.addOptions({
        valued("folder", "DIR", "The folder to catalogue (default: /usr/share)."),
        valued("database", "FILE", "The SQLite file to (re)create (default: recordings.sqlite beside this program)."),
        valued("rows", "N", "How many rows of each search to show (default: 5)."),
        valued("name", "TEXT", "Condition: the exact file name."),
        valued("suffix", "A,B,...", "Condition: one of these suffixes, in any case; '' for files without one."),
        valued("larger-than", "BYTES", "Condition: more bytes than this."),
        valued("smaller-than", "BYTES", "Condition: fewer bytes than this."),
        valued("modified-after", "DATE", "Condition: modified later than this; a day alone means its midnight."),
        valued("modified-before", "DATE", "Condition: modified earlier than this."),
        valued("in-folder", "DIR", "Condition: stands in this very folder, not deeper."),
        valued("owner", "NAME", "Condition: belongs to this user."),
        valued("sort", "TERMS", "Sort your search: -size,name is by size, the largest first, then by name."),
        valued("search", "FILE", "Condition: the one that --save-search has stored here."),
        valued("save-search", "FILE", "Store your search, its order included; only another search is overwritten."),
        valued("export", "FILE", "Write the paths that your search finds, or all, to this new file."),
        valued("log", "FILE",
            "The action log to tell what you do (default: recordings/ActionLog.qvl in the state "
            "folder of the user)."),
        {QStringLiteral("any"), QStringLiteral("Join the conditions by OR instead of AND.")},
        {QStringLiteral("not"), QStringLiteral("Negate the joined conditions.")},
    });
}

[[noreturn]] void refuse(char const* option, QString const& value, char const* wanted)
{
    throw qv::IllegalArgumentException(
        QStringLiteral("--%1 takes %2, not '%3'").arg(QLatin1String(option), QLatin1String(wanted), value), value);
}

/// One option by name; as there are few, the value is read where it is used.
class Reader {
public:
    explicit Reader(QCommandLineParser const& parser)
        : m_parser(parser)
    {
    }

    bool has(char const* option) const { return m_parser.isSet(QLatin1String(option)); }
    QStringList texts(char const* option) const { return m_parser.values(QLatin1String(option)); }

    QString path(char const* option, QString const& otherwise) const
    {
        return has(option) ? absolute(option, m_parser.value(QLatin1String(option))) : otherwise;
    }
    QStringList paths(char const* option) const
    {
        QStringList result;
        for (QString const& path : texts(option))
            result += absolute(option, path);
        return result;
    }
    int count(char const* option, int otherwise) const
    {
        QString const text = m_parser.value(QLatin1String(option));
        bool ok = true;
        int const number = has(option) ? text.toInt(&ok) : otherwise;
        if (!ok || number < 0)
            refuse(option, text, "a number from 0 on");
        return number;
    }
    std::optional<qulonglong> bytes(char const* option) const;
    std::optional<QDateTime> moment(char const* option) const;

private:
    static QString absolute(char const* option, QString const& path)
    {
        if (path.isEmpty())
            refuse(option, path, "a path");
        return QDir::cleanPath(QDir().absoluteFilePath(path));
    }

    QCommandLineParser const& m_parser;
};

std::optional<qulonglong> Reader::bytes(char const* option) const
{
    if (!has(option))
        return {};
    QString const text = m_parser.value(QLatin1String(option));
    auto const match = QRegularExpression(QStringLiteral("\\A([0-9]+)([kMGT]?)\\z")).match(text);
    if (!match.hasMatch())
        refuse(option, text, "a number of bytes such as 500, 10k, 5M, 1G");
    bool ok = false;
    qulonglong const number = match.captured(1).toULongLong(&ok);
    int const shift = match.captured(2).isEmpty() ? 0 : 10 * (1 + QStringLiteral("kMGT").indexOf(match.captured(2)));
    if (!ok || number > (static_cast<qulonglong>(std::numeric_limits<qint64>::max()) >> shift))
        refuse(option, text, "at most 9223372036854775807 bytes");
    return number << shift;
}

std::optional<QDateTime> Reader::moment(char const* option) const
{
    if (!has(option))
        return {};
    QString const text = m_parser.value(QLatin1String(option));
    QDateTime moment = QDateTime::fromString(text, Qt::ISODate);
    if (moment.timeSpec() == Qt::LocalTime)
        moment.setTimeSpec(Qt::UTC);
    if (!moment.isValid())
        refuse(option, text, "a date such as 2024-05-31 or 2024-05-31T18:30");
    // The library counts seconds in 32 bits: what lies outside would be taken for the last moment of 2106.
    qint64 const seconds = moment.toSecsSinceEpoch();
    if (seconds < 0 || seconds >= std::numeric_limits<quint32>::max())
        refuse(option, text, "a date from 1970-01-01 to 2106-02-07");
    return moment.toUTC();
}

QStringList suffixes(QStringList const& lists)
{
    QStringList result;
    for (QString const& list : lists) {
        QStringList const parts = list.isEmpty() ? QStringList(list) : list.split(QLatin1Char(','), Qt::SkipEmptyParts);
        for (QString const& part : parts)
            result += (part.startsWith(QLatin1Char('.')) ? part.mid(1) : part).toLower();
    }
    return result;
}

} // namespace

Options readOptions(QStringList const& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QString::fromLatin1(programDescription));
    QCommandLineOption const help = parser.addHelpOption();
    QCommandLineOption const version = parser.addVersionOption();
    addOptions(parser);
    if (!parser.parse(arguments))
        throw qv::IllegalArgumentException(parser.errorText());
    if (parser.isSet(help))
        parser.showHelp();
    if (parser.isSet(version))
        parser.showVersion();
    if (!parser.positionalArguments().isEmpty())
        throw qv::IllegalArgumentException(
            QStringLiteral("unexpected argument '%1' (see --help)").arg(parser.positionalArguments().constFirst()));

    Reader const reader(parser);
    Options options;
    options.folder = reader.path("folder", QStringLiteral("/usr/share"));
    options.database = reader.path(
        "database", QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("recordings.sqlite")));
    options.shownRows = reader.count("rows", options.shownRows);
    options.names = reader.texts("name");
    options.suffixes = suffixes(reader.texts("suffix"));
    options.folders = reader.paths("in-folder");
    options.owners = reader.texts("owner");
    options.largerThan = reader.bytes("larger-than");
    options.smallerThan = reader.bytes("smaller-than");
    options.modifiedAfter = reader.moment("modified-after");
    options.modifiedBefore = reader.moment("modified-before");
    options.sortTerms = reader.texts("sort");
    options.searchFile = reader.path("search", QString());
    options.saveFile = reader.path("save-search", QString());
    options.exportFile = reader.path("export", QString());
    options.log = reader.path("log", QString());
    options.any = reader.has("any");
    options.negated = reader.has("not");
    return options;
}
