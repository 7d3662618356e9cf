// SPDX-License-Identifier: LGPL-2.1-or-later
#include "VaultScene.h"

#include <csignal>

/// The question for the password.
class VaultTerminalTest : public QObject {
    Q_OBJECT

private slots:
    void passwordIsAskedForWithoutEcho();
    void newFileTakesThePasswordTwice();
    void differentPasswordsMakeNoFile();
    void emptyPasswordIsRefused();
    void endOfInputIsRefused();
    void interruptionLeavesTheTerminalAsItWas_data();
    void interruptionLeavesTheTerminalAsItWas();

private:
    static void start(QProcess& process, QStringList const& arguments);
};

// Standard input carries the lines, not the answers.
void VaultTerminalTest::start(QProcess& process, QStringList const& arguments)
{
    process.setProcessEnvironment(VaultScene::environment({}));
    process.start(VAULT_PROGRAM, arguments);
    process.write("one\n");
    process.closeWriteChannel();
}

void VaultTerminalTest::passwordIsAskedForWithoutEcho()
{
    VaultScene scene;
    scene.create({"one\n"});
    Terminal terminal;
    TerminalProcess process(terminal.name());
    start(process, {"--print", scene.file()});
    QTRY_COMPARE(terminal.shown(), QByteArray("Password: "));
    QVERIFY(!terminal.echoes());
    terminal.type("secret\n");
    VaultResult const result = scene.resultOf(process);
    QCOMPARE(result.error, QString());
    QCOMPARE(result.output, QByteArray("one\n"));
    QCOMPARE(terminal.shown(), QByteArray("Password: \n"));
    QVERIFY(terminal.echoes());
}

void VaultTerminalTest::newFileTakesThePasswordTwice()
{
    VaultScene scene;
    Terminal terminal;
    TerminalProcess process(terminal.name());
    start(process, {scene.file()});
    QTRY_COMPARE(terminal.shown(), QByteArray("Password: "));
    terminal.type("secret\n");
    QTRY_COMPARE(terminal.shown(), QByteArray("Password: \nThe same again: "));
    terminal.type("secret\n");
    QCOMPARE(scene.resultOf(process).exitCode, 0);
    QCOMPARE(scene.run({"--print", scene.file()}).output, QByteArray("one\n"));
}

void VaultTerminalTest::differentPasswordsMakeNoFile()
{
    VaultScene scene;
    Terminal terminal;
    TerminalProcess process(terminal.name());
    start(process, {scene.file()});
    QTRY_COMPARE(terminal.shown(), QByteArray("Password: "));
    terminal.type("secret\n");
    QTRY_COMPARE(terminal.shown(), QByteArray("Password: \nThe same again: "));
    terminal.type("Secret\n");
    VaultResult const result = scene.resultOf(process);
    QCOMPARE(result.error, QString("vault: those were two different passwords\n"));
    QCOMPARE(result.exitCode, 2);
    QVERIFY(!QFile::exists(scene.file()));
}

void VaultTerminalTest::emptyPasswordIsRefused()
{
    VaultScene scene;
    Terminal terminal;
    TerminalProcess process(terminal.name());
    start(process, {scene.file()});
    QTRY_COMPARE(terminal.shown(), QByteArray("Password: "));
    terminal.type("\n");
    QCOMPARE(scene.resultOf(process).exitCode, 2);
    QVERIFY(!QFile::exists(scene.file()));
}

void VaultTerminalTest::endOfInputIsRefused()
{
    VaultScene scene;
    scene.create({"one\n"});
    Terminal terminal;
    TerminalProcess process(terminal.name());
    start(process, {"--print", scene.file()});
    QTRY_COMPARE(terminal.shown(), QByteArray("Password: "));
    terminal.type("\x04");
    VaultResult const result = scene.resultOf(process);
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(result.output, QByteArray());
    QVERIFY(terminal.echoes());
}

void VaultTerminalTest::interruptionLeavesTheTerminalAsItWas_data()
{
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<int>("signal");

    QTest::newRow("Ctrl-C") << QByteArray("\x03") << SIGINT;
    QTest::newRow("Ctrl-C behind some letters") << QByteArray("sec\x03") << SIGINT;
    QTest::newRow("Ctrl-backslash") << QByteArray("\x1c") << SIGQUIT;
}

void VaultTerminalTest::interruptionLeavesTheTerminalAsItWas()
{
    VaultScene scene;
    Terminal terminal;
    TerminalProcess process(terminal.name());
    start(process, {scene.file()});
    QTRY_COMPARE(terminal.shown(), QByteArray("Password: "));
    QFETCH(QByteArray, keys);
    terminal.type(keys);
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::CrashExit);
    QTEST(process.exitCode(), "signal");
    QVERIFY(terminal.echoes());
    QVERIFY(!QFile::exists(scene.file()));
}

QTEST_GUILESS_MAIN(VaultTerminalTest)
#include "tst_VaultTerminal.moc"
