// SPDX-License-Identifier: LGPL-2.1-or-later
#include "VaultScene.h"

/// Runs the example: what goes in comes out, and what it refuses.
class VaultTest : public QObject {
    Q_OBJECT

private slots:
    void linesComeBack_data();
    void linesComeBack();
    void newFileIsMade();
    void linesAreAdded();
    void nothingPlainIsInTheFile();
    void lineIsKeptAsSoonAsItWasRead();
    void severalVaultsAppend();
    void userIsPartOfTheKey();
    void passwordFile_data();
    void passwordFile();
    void passwordFileWinsOverTheEnvironment();
    void refusal_data();
    void refusal();
    void refusalOfTheContent_data();
    void refusalOfTheContent();
    void refusedFileIsLeftAsItIs();
    void fullDiskIsTold();
    void helpAndVersion_data();
    void helpAndVersion();
};

void VaultTest::linesComeBack_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QByteArray>("output");

    QByteArray many;
    for (int i = 0; i < 1000; ++i)
        many += "line " + QByteArray::number(i) + '\n';
    QByteArray const full(1048576, 'x');
    auto const row = [](char const* name, QByteArray const& input, QByteArray const& output) {
        QTest::newRow(name) << input << output;
    };
    row("nothing", "", "");
    row("one line", "gate 3 opened\n", "gate 3 opened\n");
    row("last line without a break gets one", "one\ntwo", "one\ntwo\n");
    row("empty lines", "\n\n\n", "\n\n\n");
    row("carriage returns are text", "one\r\ntwo\r\n", "one\r\ntwo\r\n");
    row("NUL within a line", QByteArray("a\0b\n\0\n", 6), QByteArray("a\0b\n\0\n", 6));
    row("bytes that are no UTF-8", "\xff\xfe\n\xc3\n", "\xff\xfe\n\xc3\n");
    row("a thousand lines", many, many);
    row("line of 1 MiB", full + '\n', full + '\n');
    row("line of 1 MiB without a break", full, full + '\n');
    row("line longer than 1 MiB", full + "yz", full + "yz\n");
}

void VaultTest::linesComeBack()
{
    VaultScene scene;
    scene.create({});
    QFETCH(QByteArray, input);
    QFETCH(QByteArray, output);
    VaultResult const appended = scene.run({scene.file()}, input);
    QCOMPARE(appended.error, QString());
    QCOMPARE(appended.output, QByteArray());
    QCOMPARE(appended.exitCode, 0);
    VaultResult const printed = scene.run({"--print", scene.file()});
    QCOMPARE(printed.error, QString());
    QVERIFY(printed.output == output);
    QCOMPARE(printed.exitCode, 0);
}

void VaultTest::newFileIsMade()
{
    VaultScene scene;
    QCOMPARE(scene.run({"a file with blanks"}, "one\n").exitCode, 0);
    QCOMPARE(QDir().entryList(QDir::Files), QStringList{"a file with blanks"});
    QCOMPARE(scene.run({"--print", "a file with blanks"}).output, QByteArray("one\n"));
}

void VaultTest::linesAreAdded()
{
    VaultScene scene;
    scene.create({"one\n"});
    QCOMPARE(scene.run({scene.file()}, "two\n").exitCode, 0);
    QCOMPARE(scene.run({scene.file()}, "").exitCode, 0);
    QCOMPARE(scene.run({scene.file()}, "three\n").exitCode, 0);
    QCOMPARE(scene.run({scene.file(), "--print"}).output, QByteArray("one\ntwo\nthree\n"));
}

void VaultTest::nothingPlainIsInTheFile()
{
    VaultScene scene;
    QByteArray const line = "the quick brown fox jumps over the lazy dog\n";
    QCOMPARE(scene.run({"--user", "operator", scene.file()}, line, "open sesame").exitCode, 0);
    QByteArray const bytes = scene.read(scene.file());
    QVERIFY(bytes.size() > line.size());
    for (char const* plain : {"quick", "lazy", "operator", "sesame"})
        QVERIFY2(!bytes.contains(plain), plain);
}

void VaultTest::lineIsKeptAsSoonAsItWasRead()
{
    VaultScene scene;
    scene.create({});
    TerminalProcess process;
    process.setProcessEnvironment(scene.environment("secret"));
    process.start(VAULT_PROGRAM, {scene.file()});
    process.write("one\ntwo\nhalf a li");
    // Header, session record, two records of one line each.
    QTRY_COMPARE(QFileInfo(scene.file()).size(), qint64{128 + 96 + 68 + 68});
    process.kill();
    QVERIFY(process.waitForFinished());
    QCOMPARE(scene.run({"--print", scene.file()}).output, QByteArray("one\ntwo\n"));
    QCOMPARE(scene.run({"--verify", scene.file()}).exitCode, 0);
}

void VaultTest::severalVaultsAppend()
{
    VaultScene scene;
    scene.create({});
    constexpr int lines = 300;
    TerminalProcess processes[3];
    for (int writer = 0; writer < 3; ++writer) {
        processes[writer].setProcessEnvironment(scene.environment("secret"));
        processes[writer].start(VAULT_PROGRAM, {scene.file()});
        for (int i = 0; i < lines; ++i)
            processes[writer].write(QByteArray::number(writer) + " line " + QByteArray::number(i) + '\n');
        processes[writer].closeWriteChannel();
    }
    for (TerminalProcess& process : processes)
        QCOMPARE(scene.resultOf(process).exitCode, 0);
    QMap<int, int> next;
    for (QByteArray const& line : scene.run({"--print", scene.file()}).output.split('\n')) {
        int const writer = line.left(1).toInt();
        if (!line.isEmpty())
            QCOMPARE(line, QByteArray::number(writer) + " line " + QByteArray::number(next[writer]++));
    }
    QCOMPARE(next, (QMap<int, int>{{0, lines}, {1, lines}, {2, lines}}));
}

void VaultTest::userIsPartOfTheKey()
{
    VaultScene scene;
    QCOMPARE(scene.run({"--user", "ann", scene.file()}, "one\n").exitCode, 0);
    QCOMPARE(scene.run({"--user", "ann", "--print", scene.file()}).output, QByteArray("one\n"));
    VaultResult const other = scene.run({"--user", "bob", "--print", scene.file()});
    QCOMPARE(other.exitCode, 2);
    QCOMPARE(other.error, QString("vault: 'events.vault' has another user or password\n"));
}

void VaultTest::passwordFile_data()
{
    QTest::addColumn<QByteArray>("content");

    QTest::newRow("without a line break") << QByteArray("secret");
    QTest::newRow("with a line break") << QByteArray("secret\n");
    QTest::newRow("with carriage return and line break") << QByteArray("secret\r\n");
    QTest::newRow("with further lines") << QByteArray("secret\nanother\n");
}

void VaultTest::passwordFile()
{
    VaultScene scene;
    scene.create({"one\n"});
    QFETCH(QByteArray, content);
    scene.write("password", content);
    VaultResult const result = scene.run({"--password-file", "password", "--print", scene.file()}, {}, {});
    QCOMPARE(result.error, QString());
    QCOMPARE(result.output, QByteArray("one\n"));
}

void VaultTest::passwordFileWinsOverTheEnvironment()
{
    VaultScene scene;
    scene.create({"one\n"});
    scene.write("password", "secret\n");
    QCOMPARE(scene.run({"--password-file", "password", "--print", scene.file()}, {}, "wrong").exitCode, 0);
    scene.write("password", "wrong\n");
    QCOMPARE(scene.run({"--password-file", "password", "--print", scene.file()}, {}, "secret").exitCode, 2);
}

void VaultTest::refusal_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("password");
    QTest::addColumn<QString>("message");

    auto const row
        = [](char const* name, QStringList const& arguments, QByteArray const& password, char const* message) {
              QTest::newRow(name) << arguments << password << QString::fromUtf8(message);
          };
    row("no file", {}, "secret", "no file was given (see --help)");
    row("file without a name", {""}, "secret", "no file was given (see --help)");
    row("two files", {"a", "b"}, "secret", "unexpected argument 'b' (see --help)");
    row("two tasks", {"--print", "--verify", "a"}, "secret",
        "--print and --verify are two tasks: give one (see --help)");
    row("unknown option", {"--shred", "a"}, "secret", "Unknown option 'shred'. (see --help)");
    row("password on the command line", {"--password", "secret", "a"}, {}, "Unknown option 'password'. (see --help)");
    row("password file without a name", {"--password-file", "", "a"}, "secret",
        "--password-file takes a path (see --help)");
    row("missing password file", {"--password-file", "nowhere", "a"}, "secret",
        "the password file 'nowhere' cannot be read: No such file or directory");
    row("empty password file", {"--password-file", "empty", "a"}, "secret",
        "the password is empty: the file would not be encrypted");
    row("empty first line of the password file", {"--password-file", "late", "a"}, "secret",
        "the password is empty: the file would not be encrypted");
    row("password file without an end", {"--password-file", "/dev/zero", "a"}, "secret",
        "the first line of the password file '/dev/zero' is longer than 4096 bytes");
    row("longest line of the password file", {"--password-file", "longest", "--print", "nowhere"}, "secret",
        "'nowhere' cannot be opened: No such file or directory");
    row("password file with a line too long", {"--password-file", "long", "a"}, "secret",
        "the first line of the password file 'long' is longer than 4096 bytes");
    row("empty password in the environment", {"a"}, "", "the password is empty: the file would not be encrypted");
    row("password that is no text", {"--password-file", "bytes", "a"}, "secret", "the password is not a text in UTF-8");
    row("nobody to ask", {"a"}, {},
        "there is no terminal to ask for the password: use --password-file or VAULT_PASSWORD");
    row("missing file to print", {"--print", "nowhere"}, "secret",
        "'nowhere' cannot be opened: No such file or directory");
    row("missing file to verify", {"--verify", "nowhere"}, "secret",
        "'nowhere' cannot be opened: No such file or directory");
    row("missing folder", {"nowhere/a"}, "secret", "'nowhere/a' cannot be opened: No such file or directory");
}

void VaultTest::refusal()
{
    VaultScene scene;
    scene.write("empty", "");
    scene.write("late", "\nsecret\n");
    scene.write("bytes", "\xff\n");
    scene.write("longest", QByteArray(4095, 'x') + '\n');
    scene.write("long", QByteArray(4096, 'x') + '\n');
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, password);
    QFETCH(QString, message);
    VaultResult const result = scene.run(arguments, "line\n", password);
    QCOMPARE(result.error, "vault: " + message + '\n');
    QCOMPARE(result.output, QByteArray());
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(QDir().entryList(QDir::Files), (QStringList{"bytes", "empty", "late", "long", "longest"}));
}

void VaultTest::refusalOfTheContent_data()
{
    QTest::addColumn<QStringList>("task");

    QTest::newRow("append") << QStringList();
    QTest::newRow("print") << QStringList{"--print"};
    QTest::newRow("verify") << QStringList{"--verify"};
}

void VaultTest::refusalOfTheContent()
{
    VaultScene scene;
    scene.create({"one\n"});
    scene.write("text", "no vault at all\n");
    QFETCH(QStringList, task);
    VaultResult const wrong = scene.run(task + QStringList{scene.file()}, "two\n", "Secret");
    QCOMPARE(wrong.error, QString("vault: 'events.vault' has another user or password\n"));
    QCOMPARE(wrong.exitCode, 2);
    VaultResult const text = scene.run(task + QStringList{"text"}, "two\n");
    QCOMPARE(text.error, QString("vault: 'text' is not a vault\n"));
    QCOMPARE(text.exitCode, 2);
}

void VaultTest::refusedFileIsLeftAsItIs()
{
    VaultScene scene;
    scene.create({"one\n"});
    QByteArray const bytes = scene.read(scene.file());
    QCOMPARE(scene.run({scene.file()}, "two\n", "Secret").exitCode, 2);
    QVERIFY(scene.read(scene.file()) == bytes);
    QCOMPARE(QDir().entryList(QDir::Files), QStringList{scene.file()});
}

void VaultTest::fullDiskIsTold()
{
    VaultScene scene;
    scene.create({"one\n"});
    TerminalProcess process;
    process.setProcessEnvironment(scene.environment("secret"));
    process.setStandardOutputFile("/dev/full");
    process.start(VAULT_PROGRAM, {"--print", scene.file()});
    VaultResult const result = scene.resultOf(process);
    QCOMPARE(result.error, QString("vault: standard output cannot be written: No space left on device\n"));
    QCOMPARE(result.exitCode, 2);
}

void VaultTest::helpAndVersion_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("usage") << "--help" << QByteArray("Usage: ");
    QTest::newRow("sources of the password") << "--help" << QByteArray("VAULT_PASSWORD");
    QTest::newRow("what cannot be found") << "--help" << QByteArray("an older copy put in place");
    QTest::newRow("example") << "--help" << QByteArray("vault --verify events.vault");
    QTest::newRow("exit status") << "--help" << QByteArray("Exit status: 0");
    QTest::newRow("version") << "--version" << QByteArray("vault 1.0.0");
}

void VaultTest::helpAndVersion()
{
    VaultScene scene;
    QFETCH(QString, option);
    QFETCH(QByteArray, expected);
    VaultResult const result = scene.run({option}, {}, {});
    QCOMPARE(result.exitCode, 0);
    QVERIFY2(result.output.contains(expected), result.output);
}

QTEST_GUILESS_MAIN(VaultTest)
#include "tst_Vault.moc"
