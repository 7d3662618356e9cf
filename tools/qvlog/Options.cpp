// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Options.h"

#include "Failures.h"
#include "Moments.h"

#include <QCommandLineParser>

#include <algorithm>
#include <iterator>

namespace {

char const overview[] = R"(Usage: qvlog COMMAND [options] FILE...
Reads the action logs of clients: plain and encrypted files, whole folders of
files that were split.

Commands:
  show      Print entries, the newest last.
  follow    Print new entries as they come, wherever the log goes on.
  verify    Tell whether files are damaged, and where.
  stats     Count entries by user, category and day.
  convert   Make a report of a log, encrypt it or decrypt it.

  qvlog COMMAND --help tells the options of a command.

Of a folder its files *.qvl are read, in the order of the dates in their
headers. Times and days are local ones.

The password of encrypted files is asked for on the terminal, unless
--password-file names a file or the environment variable QVLOG_PASSWORD holds
it. It cannot be given on the command line, which every user can read.

Exit status: 0 on success, 1 if a file is damaged, 2 if the command line makes
no sense, 3 if a file cannot be read or written.
)";

struct CommandRow {
    char const* name;
    Command command;
    char const* positional;
    char const* description;
};

constexpr CommandRow commands[] = {
    {"show", Command::Show, "FILE...", "Prints the entries of log files and of folders of them, the newest last."},
    {"follow", Command::Follow, "FILE",
        "Prints the entries that are added to a log, until it is interrupted (Ctrl-C). It goes on where the log does: "
        "in a fresh file after a split, in another file of the same folder after a switch."},
    {"verify", Command::Verify, "FILE...",
        "Reads files from the first byte to the last and tells whether they are well-formed logs; encrypted ones are "
        "authenticated record by record. A plain file cannot show a careful forgery. A file that is still written has "
        "no end tag, which is no damage."},
    {"stats", Command::Stats, "FILE...", "Counts entries by user, category and day."},
    {"convert", Command::Convert, "FILE TARGET",
        "Makes a new file of a log: a report in csv, jsonl (an object of JSON in each line) or xml; or the log itself, "
        "byte by byte, plain or encrypted. A file that exists is never overwritten."},
};

constexpr unsigned only(Command command)
{
    return 1U << static_cast<unsigned>(command);
}
constexpr unsigned All = ~0U;
constexpr unsigned Reading = All & ~only(Command::Verify);

struct OptionRow {
    unsigned commands;
    char const* name;
    char const* value; ///< Null for a switch.
    char const* text;
};

constexpr OptionRow optionRows[] = {
    {Reading, "since", "TIME", "No entries before this: 2024-05-31, 2024-05-31T18:30, 2024-05-31T18:30:15+02:00."},
    {Reading, "until", "TIME", "No entries after this; the day, minute or second that is given is included."},
    {Reading, "user", "NAME",
        "Entries of this user, as shown or without what is in parentheses. As all conditions "
        "that name what is wanted, it may be given several times: one must fit."},
    {Reading, "category", "CATEGORY", "Entries of this category: Expt or Export."},
    {Reading, "id", "ID", "Entries of this type, four characters: ExpS."},
    {Reading, "contains", "TEXT",
        "Entries that hold this in user, action or description, in any case. Of several "
        "texts all must be there."},
    {Reading, "language", "LANGUAGE", "de, fr or en (default: that of the environment)."},
    {Reading, "log-locale", "LOCALE",
        "The locale under which the log was written, such as de_DE: times stand in its "
        "format (default: that of the environment)."},
    {only(Command::Show) | only(Command::Follow), "format", "FORMAT", "text, csv, json or xml (default: text)."},
    {only(Command::Follow), "all", nullptr, "Begin with the entries that are there."},
    {only(Command::Convert), "to", "FORM", "csv, jsonl, xml, plain or encrypted."},
    {only(Command::Convert), "new-password-file", "PATH",
        "Take the password of the new file from the first line of "
        "this file (else: QVLOG_NEW_PASSWORD, or asked for)."},
    {only(Command::Verify), "anchors", "PATH",
        "Compare encrypted files with what they held when this file of anchors was made: tells of entries that were "
        "cut off, of older copies and of files that are gone."},
    {only(Command::Verify), "new-anchors", "PATH",
        "Make a file of anchors of what encrypted files hold now, if all files are intact. Keep it where nobody can "
        "change it who can change the logs."},
    {All, "file-user", "NAME", "The user that encrypted files are kept for (default: none)."},
    {All, "password-file", "PATH", "Take the password from the first line of this file."},
};

[[noreturn]] void refuse(QString const& message)
{
    throw UsageException(message + QStringLiteral(" (see --help)"));
}

/// A value by the name that a user gives it.
template <typename Value> struct Named {
    char const* name;
    Value value;
};

constexpr Named<Format> formats[]
    = {{"text", Format::Text}, {"csv", Format::Csv}, {"json", Format::JsonLines}, {"xml", Format::Xml}};
constexpr Named<Target> targets[] = {{"csv", Target::Csv}, {"jsonl", Target::JsonLines}, {"xml", Target::Xml},
    {"plain", Target::Plain}, {"encrypted", Target::Encrypted}};

class Reader {
public:
    explicit Reader(CommandRow const& row);

    Options options(QStringList const& arguments);

private:
    bool has(char const* name) const { return m_names.contains(QLatin1String(name)); }
    bool hasCondition() const;
    QString text(char const* name) const { return m_parser.value(QLatin1String(name)); }
    QStringList texts(char const* name) const;
    QString path(char const* name) const;
    Moments moments(char const* name) const;
    template <typename Value, std::size_t Count>
    Value named(char const* name, Named<Value> const (&values)[Count], char const* wanted) const;
    void readConditions(Options& options) const;
    void readPlaces(Options& options) const;

    CommandRow const& m_row;
    QCommandLineParser m_parser;
    QCommandLineOption m_help;
    QStringList m_names; ///< Of the options that were given.
};

Reader::Reader(CommandRow const& row)
    : m_row(row)
    , m_help(m_parser.addHelpOption())
{
    m_parser.setApplicationDescription(QLatin1String("\n") + QLatin1String(row.description));
    for (OptionRow const& option : optionRows) {
        if (option.commands & only(row.command))
            m_parser.addOption({QLatin1String(option.name), QLatin1String(option.text), QLatin1String(option.value)});
    }
    m_parser.addPositionalArgument(QLatin1String(row.name), QString(), QLatin1String(row.name));
    m_parser.addPositionalArgument(QLatin1String("FILE"), QString(), QLatin1String(row.positional));
}

bool Reader::hasCondition() const
{
    constexpr char const* conditions[] = {"since", "until", "user", "category", "id", "contains"};
    return std::any_of(std::begin(conditions), std::end(conditions), [&](char const* name) { return has(name); });
}

QStringList Reader::texts(char const* name) const
{
    QStringList values = has(name) ? m_parser.values(QLatin1String(name)) : QStringList();
    if (values.contains(QString()))
        refuse(QStringLiteral("--%1 takes a text").arg(QLatin1String(name)));
    return values;
}

QString Reader::path(char const* name) const
{
    if (has(name) && text(name).isEmpty())
        refuse(QStringLiteral("--%1 takes a path").arg(QLatin1String(name)));
    return has(name) ? text(name) : QString();
}

Moments Reader::moments(char const* name) const
{
    if (!has(name))
        return {};
    Moments moments = momentsOf(text(name));
    if (moments.first.isNull())
        refuse(QStringLiteral("--%1 takes a time such as 2024-05-31 or 2024-05-31T18:30, not '%2'")
                   .arg(QLatin1String(name), text(name)));
    return moments;
}

template <typename Value, std::size_t Count>
Value Reader::named(char const* name, Named<Value> const (&values)[Count], char const* wanted) const
{
    QString const given = text(name);
    auto const isIt = [&](Named<Value> const& value) { return given == QLatin1String(value.name); };
    auto const* const found = std::find_if(std::begin(values), std::end(values), isIt);
    if (found == std::end(values))
        refuse(QStringLiteral("--%1 takes %2, not '%3'").arg(QLatin1String(name), QLatin1String(wanted), given));
    return found->value;
}

void Reader::readConditions(Options& options) const
{
    options.wanted.since = moments("since").first;
    options.wanted.until = moments("until").last;
    options.wanted.users = texts("user");
    options.wanted.categories = texts("category");
    options.wanted.ids = texts("id");
    options.wanted.texts = texts("contains");
    options.language = has("language") ? text("language") : QString();
    if (has("language") && !QStringList{"de", "fr", "en"}.contains(options.language))
        refuse(QStringLiteral("--language takes de, fr or en, not '%1'").arg(options.language));
    if (has("log-locale")) {
        options.logLocale = QLocale(text("log-locale"));
        // Of a name that it does not know, Qt makes C.
        if (options.logLocale->language() == QLocale::C && text("log-locale") != QLatin1String("C"))
            refuse(QStringLiteral("--log-locale takes a locale such as de_DE or C, not '%1'").arg(text("log-locale")));
    }
}

void Reader::readPlaces(Options& options) const
{
    QStringList const given = m_parser.positionalArguments().mid(1);
    int const wanted = m_row.command == Command::Convert ? 2 : 1;
    bool const takesMore = m_row.command != Command::Convert && m_row.command != Command::Follow;
    if (given.size() < wanted || given.contains(QString()))
        refuse(m_row.command == Command::Convert ? QStringLiteral("convert takes a log and the file to be made of it")
                                                 : QStringLiteral("no file was given"));
    if (given.size() > wanted && !takesMore)
        refuse(QStringLiteral("unexpected argument '%1'").arg(given.at(wanted)));
    options.sources = given.mid(0, takesMore ? -1 : 1);
    options.targetFile = m_row.command == Command::Convert ? given.at(1) : QString();
}

Options Reader::options(QStringList const& arguments)
{
    if (!m_parser.parse(arguments))
        refuse(m_parser.errorText());
    m_names = m_parser.optionNames();
    if (m_parser.isSet(m_help))
        m_parser.showHelp();
    Options options;
    options.command = m_row.command;
    readPlaces(options);
    readConditions(options);
    options.fileUser = has("file-user") ? text("file-user") : QString();
    options.passwordFile = path("password-file");
    options.newPasswordFile = path("new-password-file");
    options.anchorsFile = path("anchors");
    options.newAnchorsFile = path("new-anchors");
    options.all = has("all");
    if (has("format"))
        options.format = named("format", formats, "text, csv, json or xml");
    if (m_row.command == Command::Convert)
        options.target = named("to", targets, "csv, jsonl, xml, plain or encrypted");
    bool const isCopy = options.target == Target::Plain || options.target == Target::Encrypted;
    if (isCopy && hasCondition())
        refuse(QStringLiteral("a log is copied as a whole: conditions are for reports"));
    return options;
}

} // namespace

Options readOptions(QStringList const& arguments)
{
    QString const first = arguments.value(1);
    QCommandLineParser general;
    if (first == QLatin1String("--help") || first == QLatin1String("-h")) {
        fputs(overview, stdout);
        exit(0);
    }
    general.addVersionOption();
    if (first == QLatin1String("--version") || first == QLatin1String("-v"))
        general.showVersion();
    auto const isIt = [&](CommandRow const& row) { return first == QLatin1String(row.name); };
    auto const* const row = std::find_if(std::begin(commands), std::end(commands), isIt);
    if (row == std::end(commands))
        refuse(first.isEmpty() ? QStringLiteral("no command was given")
                               : QStringLiteral("there is no command '%1'").arg(first));
    return Reader(*row).options(arguments);
}
