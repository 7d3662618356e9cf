// SPDX-License-Identifier: LGPL-2.1-or-later
#include "QvlogScene.h"

/// The command line of the tool.
class QvlogOptionsTest : public QObject {
    Q_OBJECT

private slots:
    void refusal_data();
    void refusal();
    void help_data();
    void help();
    void passwordIsAskedForWithoutEcho();
    void passwordIsAskedForOnce();
};

void QvlogOptionsTest::refusal_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");

    auto const row = [](char const* name, QStringList const& arguments, char const* message) {
        QTest::newRow(name) << arguments << QString::fromUtf8(message);
    };
    row("nothing", {}, "no command was given");
    row("no command", {"a.qvl"}, "there is no command 'a.qvl'");
    row("option before the command", {"--since", "2024-05-31", "show", "a.qvl"}, "there is no command '--since'");
    row("no file", {"show"}, "no file was given");
    row("file without a name", {"show", ""}, "no file was given");
    row("unknown option", {"show", "--shred", "a.qvl"}, "Unknown option 'shred'.");
    row("option of another command", {"verify", "--since", "2024-05-31", "a.qvl"}, "Unknown option 'since'.");
    row("password on the command line", {"show", "--password", "x", "a.qvl"}, "Unknown option 'password'.");
    row("option without its value", {"show", "a.qvl", "--user"}, "Missing value after '--user'.");
    row("since that is no time", {"show", "--since", "yesterday", "a.qvl"},
        "--since takes a time such as 2024-05-31 or 2024-05-31T18:30, not 'yesterday'");
    row("until that is no time", {"show", "--until", "", "a.qvl"},
        "--until takes a time such as 2024-05-31 or 2024-05-31T18:30, not ''");
    row("empty text", {"show", "--contains", "", "a.qvl"}, "--contains takes a text");
    row("unknown format", {"show", "--format", "yaml", "a.qvl"}, "--format takes text, csv, json or xml, not 'yaml'");
    row("unknown language", {"show", "--language", "it", "a.qvl"}, "--language takes de, fr or en, not 'it'");
    row("unknown locale", {"show", "--log-locale", "Klingon", "a.qvl"},
        "--log-locale takes a locale such as de_DE or C, not 'Klingon'");
    row("password file without a name", {"show", "--password-file", "", "a.qvl"}, "--password-file takes a path");
    row("anchors without a name", {"verify", "--anchors", "", "a.qvl"}, "--anchors takes a path");
    row("new anchors without a name", {"verify", "--new-anchors", "", "a.qvl"}, "--new-anchors takes a path");
    row("two files to follow", {"follow", "a.qvl", "b.qvl"}, "unexpected argument 'b.qvl'");
    row("nothing to convert into", {"convert", "--to", "csv", "a.qvl"},
        "convert takes a log and the file to be made of it");
    row("three files to convert", {"convert", "--to", "csv", "a.qvl", "b", "c"}, "unexpected argument 'c'");
    row("no form to convert to", {"convert", "a.qvl", "b"}, "--to takes csv, jsonl, xml, plain or encrypted, not ''");
    row("unknown form to convert to", {"convert", "--to", "pdf", "a.qvl", "b"},
        "--to takes csv, jsonl, xml, plain or encrypted, not 'pdf'");
    row("part of a log to encrypt", {"convert", "--to", "encrypted", "--since", "2024-05-31", "a.qvl", "b"},
        "a log is copied as a whole: conditions are for reports");
    row("part of a log to decrypt", {"convert", "--to", "plain", "--user", "ann", "a.qvl", "b"},
        "a log is copied as a whole: conditions are for reports");
}

void QvlogOptionsTest::refusal()
{
    QvlogScene scene;
    scene.write("a.qvl", scene.header());
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    QvlogResult const result = scene.run(arguments);
    QCOMPARE(result.error, "qvlog: " + message + " (see --help)\n");
    QCOMPARE(result.output, QByteArray());
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(QDir().entryList(QDir::Files), QStringList{"a.qvl"});
}

void QvlogOptionsTest::help_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("expected");

    auto const row = [](QStringList const& arguments, char const* expected) {
        QTest::newRow(expected) << arguments << QByteArray(expected);
    };
    row({"--help"}, "Usage: qvlog COMMAND");
    row({"-h"}, "QVLOG_PASSWORD");
    row({"--help"}, "Exit status: 0 on success");
    row({"--version"}, "qvlog 1.0.0\n");
    row({"show", "--help"}, "Usage: ");
    row({"show", "--help"}, "--log-locale <LOCALE>");
    row({"follow", "--help"}, "--all");
    row({"verify", "--help"}, "authenticated record by record");
    row({"verify", "--help"}, "--new-anchors <PATH>");
    row({"stats", "-h"}, "--until <TIME>");
    row({"convert", "--help"}, "csv, jsonl, xml, plain or encrypted");
}

void QvlogOptionsTest::help()
{
    QvlogScene scene;
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, expected);
    QvlogResult const result = scene.run(arguments);
    QVERIFY2(result.output.contains(expected), result.output);
    QCOMPARE(result.error, QString());
    QCOMPARE(result.exitCode, 0);
}

void QvlogOptionsTest::passwordIsAskedForWithoutEcho()
{
    QvlogScene scene;
    scene.appendEncrypted("a.qvl", {scene.header(), scene.done("x")});
    Terminal terminal;
    TerminalProcess process(terminal.name());
    process.setProcessEnvironment(scene.environment({}));
    process.start(QVLOG_PROGRAM, {"show", "a.qvl"});
    QTRY_COMPARE(terminal.shown(), QByteArray("Password of the log: "));
    QVERIFY(!terminal.echoes());
    terminal.type("secret\n");
    QvlogResult const result = scene.resultOf(process);
    QCOMPARE(result.error, QString());
    QCOMPARE(result.output.count('\n'), 1);
    QCOMPARE(terminal.shown(), QByteArray("Password of the log: \n"));
}

void QvlogOptionsTest::passwordIsAskedForOnce()
{
    QvlogScene scene;
    scene.write("plain.qvl", scene.header() + scene.done("x"));
    scene.appendEncrypted("a.qvl", {scene.header(), scene.done("y")});
    scene.appendEncrypted("b.qvl", {scene.header(), scene.done("z")});
    Terminal terminal;
    TerminalProcess process(terminal.name());
    process.setProcessEnvironment(scene.environment({}));
    process.start(QVLOG_PROGRAM, {"verify", "."});
    QTRY_COMPARE(terminal.shown(), QByteArray("Password of the log: "));
    terminal.type("secret\n");
    QCOMPARE(scene.resultOf(process).output.count("intact"), 3);
    QCOMPARE(terminal.shown(), QByteArray("Password of the log: \n"));
}

QTEST_GUILESS_MAIN(QvlogOptionsTest)
#include "tst_QvlogOptions.moc"
