// SPDX-License-Identifier: LGPL-2.1-or-later
#include "LogScene.h"

#include <QTest>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using scene::Scene;

/// How the log begins, extends and ends its file, and what it does about one that it cannot extend.
class tst_ActionLogFiles : public QObject {
    Q_OBJECT

private slots:
    void beginsAndEndsAFile();
    void headerTellsVersions();
    void extends_data();
    void extends();
    void keepsTornTextBesideTheFile_data();
    void keepsTornTextBesideTheFile();
    void keepsTornTextEncrypted();
    void movesAside_data();
    void movesAside();
    void movesAsideByTheBaseName();
    void movesNothing_data();
    void movesNothing();
    void refusesWhatCannotBeReadBack();
    void refusedEntryMovesNoFile_data();
    void refusedEntryMovesNoFile();
    void credentials_data();
    void credentials();
    void sameCredentialsEndNoFile();
    void tampering_data();
    void tampering();
    void endTagIsWrittenOnlyByWhoWrote();
    void fileThatOthersMovedIsNotBegunAgain_data();
    void fileThatOthersMovedIsNotBegunAgain();
    void unfinishedFileIsReadAsItIs();
    void onlyFilesAreRead_data();
    void onlyFilesAreRead();
    void durabilityNoneCollects();
    void forkedChildWritesItsOwn_data();
    void forkedChildWritesItsOwn();
};

void tst_ActionLogFiles::beginsAndEndsAFile()
{
    Scene scene;
    scene.logText(QStringLiteral("one"));
    QByteArray const expected = scene::header(scene.path()) + qv::xml::toXml(*scene.log().entry(0));
    QCOMPARE(scene.bytes(), expected);
    qv::ActionLog::deleteActionLog();
    QCOMPARE(scene.bytes(), expected + scene::endTag);
}

void tst_ActionLogFiles::headerTellsVersions()
{
    Scene scene;
    scene.log().setApplicationVersion(QStringLiteral("3.1"));
    scene.log().setLanguageVersion(QStringLiteral("de-2"));
    scene.logText(QStringLiteral("one"));
    QVERIFY(scene.bytes().startsWith(
        scene::header(scene.path()).chopped(1) + " ApplicationVersion=\"3.1\" LanguageVersion=\"de-2\"><Entry "));
}

void tst_ActionLogFiles::extends_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("kept");
    QTest::addColumn<QByteArray>("torn");
    QTest::addColumn<QStringList>("listed");
    QByteArray const header = scene::header(QStringLiteral("/elsewhere/Trail.qvl"), "2026-11-20T00:00:00");
    QByteArray const one = scene::element(QStringLiteral("one"));
    QByteArray const two = scene::element(QStringLiteral("two"));
    QStringList const first = {QStringLiteral("one")};
    QStringList const both = {QStringLiteral("one"), QStringLiteral("two")};
    QTest::newRow("without an end tag") << header + one + two << header + one + two << QByteArray() << both;
    QTest::newRow("with an end tag") << header + one + two + scene::endTag << header + one + two << QByteArray()
                                     << both;
    QTest::newRow("with an end tag on the same line")
        << header + one + two + "</Entries>" << header + one + two << QByteArray() << both;
    QTest::newRow("header only") << header << header << QByteArray() << QStringList();
    QTest::newRow("header and end tag") << header + scene::endTag << header << QByteArray() << QStringList();
    QTest::newRow("half an entry") << header + one + two.chopped(3) << header + one << two.chopped(3) << first;
    QTest::newRow("a byte of an entry") << header + one + "<" << header + one << QByteArray("<") << first;
    QTest::newRow("half an end tag") << header + one + "\n</Entr" << header + one << QByteArray("\n</Entr") << first;
    QTest::newRow("zeros behind the last entry")
        << header + one + QByteArray(600, '\0') << header + one << QByteArray(600, '\0') << first;
}

void tst_ActionLogFiles::extends()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, kept);
    QFETCH(QByteArray, torn);
    QFETCH(QStringList, listed);
    Scene scene;
    scene.hold(before);
    scene.logText(QStringLiteral("new"));
    QCOMPARE(scene.listed(), QStringList(listed) << QStringLiteral("new"));
    QByteArray const added = qv::xml::toXml(*scene.log().entries().last());
    QCOMPARE(scene.bytes(), kept + added);
    qv::ActionLog::deleteActionLog();
    QCOMPARE(scene.bytes(), kept + added + scene::endTag);
    QCOMPARE(scene.bytes(QStringLiteral("Trail.qvl.torn")), torn);
    QCOMPARE(scene.files().size(), torn.isEmpty() ? 1 : 2);
}

void tst_ActionLogFiles::keepsTornTextBesideTheFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("torn");
    QTest::newRow("one suffix") << "Trail.qvl"
                                << "Trail.qvl.torn";
    QTest::newRow("dots in its name") << "Trail.north.qvl"
                                      << "Trail.north.qvl.torn";
    QTest::newRow("no suffix") << "Trail"
                               << "Trail.torn";
}

void tst_ActionLogFiles::keepsTornTextBesideTheFile()
{
    QFETCH(QString, name);
    QFETCH(QString, torn);
    Scene scene;
    scene.hold(scene::header(scene.path(name)) + "<Entry", name);
    scene.log().setFileInfo(QFileInfo(scene.path(name)));
    scene.logText(QStringLiteral("new"));
    QCOMPARE(scene.bytes(torn), QByteArray("<Entry"));
    QCOMPARE(scene.texts(name), QStringList({QStringLiteral("new")}));
    QCOMPARE(scene.files(), QStringList({name, torn}));
}

void tst_ActionLogFiles::keepsTornTextEncrypted()
{
    QString const torn = QStringLiteral("Trail.qvl.torn");
    QString const password = QStringLiteral("correct horse");
    Scene scene(password);
    {
        qv::FileEncrypt file(scene.path());
        file.setFileUserPassword({}, password);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(scene::header(scene.path()) + "<Entry");
    }
    scene.logText(QStringLiteral("new"));
    QCOMPARE(scene.texts(), QStringList({QStringLiteral("new")}));
    QVERIFY(!scene.bytes(torn).contains("<Entry"));
    qv::FileEncrypt file(scene.path(torn));
    file.setFileUserPassword({}, password);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("<Entry"));
}

void tst_ActionLogFiles::movesAside_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QString>("error");
    QByteArray const header = scene::header(QStringLiteral("/elsewhere/Trail.qvl"));
    QByteArray const one = scene::element(QStringLiteral("one"));
    QTest::newRow("half an entry before a whole one") << header + one.chopped(9) + one << ".qvl.corrupt"
                                                      << "errorXml line 1";
    QTest::newRow("damage many entries before the end")
        << header + "\n\n" + one.chopped(9) + one.repeated(200) << ".qvl.corrupt"
        << "errorXml line 3";
    QTest::newRow("a value twice") << header + "<Entry ID=\"ExpD\" Text=\"a\" Text=\"b\"/>" + one + one
                                   << ".qvl.corrupt"
                                   << "errorXml line 1";
    QTest::newRow("something behind the end tag") << header + one + scene::endTag + one << ".qvl.corrupt"
                                                  << "errorXml line 3";
    QTest::newRow("no log file") << QByteArray("<?xml version=\"1.0\"?><Cameras><Camera/></Cameras>") << ".qvl.corrupt"
                                 << "errorXml line 0";
    QTest::newRow("no XML") << QByteArray("text\n") << ".qvl.corrupt"
                            << "errorXml line 1";
    QTest::newRow("a later version") << scene::header(QStringLiteral("/elsewhere"), "2026-11-21T10:11:12", "v0.2") + one
                                     << ".qvl.invalidHeader"
                                     << "errorFile Trail.qvl 4";
    QTest::newRow("no version") << QByteArray("<?xml version=\"1.0\"?><Entries>") + one << ".qvl.invalidHeader"
                                << "errorFile Trail.qvl 4";
    QTest::newRow("encrypted") << QByteArray::fromHex("89414c450d0a1a0a") + QByteArray(120, 'x') << ".qvl.invalidHeader"
                               << "errorFile Trail.qvl 4";
}

void tst_ActionLogFiles::movesAside()
{
    QFETCH(QByteArray, before);
    QFETCH(QString, suffix);
    QFETCH(QString, error);
    Scene scene;
    scene.hold(before);
    scene.logText(QStringLiteral("new"));
    scene.logText(QStringLiteral("next"));
    QCOMPARE(scene.told,
        QStringList({error, QStringLiteral("adding 0 0 of 0"), QStringLiteral("added 0 0 of 1"),
            QStringLiteral("adding 1 1 of 1"), QStringLiteral("added 1 1 of 2")}));
    QString const aside = QStringLiteral("2026-11-21 10-11-12 Trail") + suffix;
    QCOMPARE(scene.files(), QStringList({aside, QStringLiteral("Trail.qvl")}));
    QCOMPARE(scene.bytes(aside), before);
    QCOMPARE(scene.texts(), QStringList({QStringLiteral("new"), QStringLiteral("next")}));
}

void tst_ActionLogFiles::movesAsideByTheBaseName()
{
    Scene scene;
    QString const name = QStringLiteral("Trail.north.qvl");
    scene.hold("text\n", name);
    scene.log().setFileInfo(QFileInfo(scene.path(name)));
    scene.logText(QStringLiteral("new"));
    QCOMPARE(scene.files(), QStringList({QStringLiteral("2026-11-21 10-11-12 Trail.qvl.corrupt"), name}));
}

void tst_ActionLogFiles::movesNothing_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("missing folder") << "missing/Trail.qvl";
    QTest::newRow("a directory in its place") << "Folder";
    QTest::newRow("a directory within a file") << "Text/Trail.qvl";
    QTest::newRow("a pipe that nobody reads") << "Pipe";
    QTest::newRow("a name too long for any file") << QString(300, 'x');
}

void tst_ActionLogFiles::movesNothing()
{
    QFETCH(QString, path);
    Scene scene;
    QDir(scene.path({})).mkdir(QStringLiteral("Folder"));
    scene.hold("text", QStringLiteral("Text"));
    QCOMPARE(::mkfifo(QFile::encodeName(scene.path(QStringLiteral("Pipe"))).constData(), 0600), 0);
    QStringList const files = QDir(scene.path({})).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    scene.log().setFileInfo(QFileInfo(scene.path(path)));
    scene.logText(QStringLiteral("lost"));
    scene.logText(QStringLiteral("lost, too"));
    QString const error = QStringLiteral("errorFile %1 1").arg(QFileInfo(path).fileName());
    QCOMPARE(scene.told, QStringList({error, error}));
    QCOMPARE(QDir(scene.path({})).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot), files);

    scene.log().setFileInfo(QFileInfo(scene.path()));
    scene.logText(QStringLiteral("new"));
    QCOMPARE(scene.texts(), QStringList({QStringLiteral("new")}));
}

void tst_ActionLogFiles::refusesWhatCannotBeReadBack()
{
    Scene scene;
    scene.logText(QStringLiteral("one"));
    QByteArray const before = scene.bytes();
    scene.told.clear();
    scene.logText(QString(17 * 1024 * 1024, 'x'));
    QCOMPARE(scene.told, QStringList({QStringLiteral("errorXml line 0")}));
    QCOMPARE(scene.bytes(), before);
    scene.logText(QStringLiteral("two"));
    QCOMPARE(scene.texts(), QStringList({QStringLiteral("one"), QStringLiteral("two")}));
}

void tst_ActionLogFiles::refusedEntryMovesNoFile_data()
{
    QTest::addColumn<QByteArray>("bad");
    QTest::newRow("another version") << scene::header(QStringLiteral("/Trail.qvl"), "2026-11-21T10:11:12", "v9");
    QTest::newRow("damaged") << scene::header(QStringLiteral("/Trail.qvl")) + "</Other>";
}

/// Although the file was found bad when it was read last.
void tst_ActionLogFiles::refusedEntryMovesNoFile()
{
    QFETCH(QByteArray, bad);
    Scene scene;
    scene.hold(bad);
    scene.log().readLog();
    scene.told.clear();
    scene.logText(QString(17 * 1024 * 1024, 'x'));
    QCOMPARE(scene.told, QStringList({QStringLiteral("errorXml line 0")}));
    QCOMPARE(scene.files(), QStringList({QStringLiteral("Trail.qvl")}));
}

void tst_ActionLogFiles::credentials_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("newPassword");
    QTest::newRow("wrong password") << "correct horse"
                                    << "wrong horse";
    QTest::newRow("encrypted file without password") << "correct horse"
                                                     << "";
    QTest::newRow("plain file with password") << ""
                                              << "correct horse";
}

void tst_ActionLogFiles::credentials()
{
    QFETCH(QString, password);
    QFETCH(QString, newPassword);
    Scene scene(password);
    scene.logText(QStringLiteral("kept"));
    scene.told.clear();
    scene.log().setFileUserPassword({}, newPassword);
    QByteArray const before = scene.bytes();
    scene.logText(QStringLiteral("new"));
    QCOMPARE(scene.told.first(), QStringLiteral("errorFile Trail.qvl 4"));
    QString const aside = QStringLiteral("2026-11-21 10-11-12 Trail.qvl.invalidHeader");
    QCOMPARE(scene.bytes(aside), before);
    QCOMPARE(scene.texts(aside), QStringList({QStringLiteral("kept")}));
    QCOMPARE(scene.listed(), QStringList({QStringLiteral("new")}));
}

void tst_ActionLogFiles::sameCredentialsEndNoFile()
{
    Scene scene;
    scene.log().setFileUserPassword({}, QStringLiteral(""));
    scene.logText(QStringLiteral("one"));
    QByteArray const before = scene.bytes();
    scene.log().setFileUserPassword({}, {});
    QCOMPARE(scene.bytes(), before);
}

void tst_ActionLogFiles::tampering_data()
{
    QTest::addColumn<int>("entries");
    QTest::addColumn<int>("offset");
    QTest::newRow("within what is looked at to extend the file") << 30 << 2000;
    QTest::newRow("far before") << 300 << 2000;
}

void tst_ActionLogFiles::tampering()
{
    QFETCH(int, entries);
    QFETCH(int, offset);
    Scene scene(QStringLiteral("correct horse"));
    for (int i = 0; i < entries; ++i)
        scene.logText(QString::number(i));
    qv::ActionLog::deleteActionLog();
    QByteArray bytes = scene.bytes();
    bytes[offset] = char(bytes.at(offset) ^ 1);
    scene.hold(bytes);
    scene.begin();
    scene.logText(QStringLiteral("new"));
    QCOMPARE(scene.told,
        QStringList(
            {QStringLiteral("errorXml line 1"), QStringLiteral("adding 0 0 of 0"), QStringLiteral("added 0 0 of 1")}));
    QCOMPARE(scene.bytes(QStringLiteral("2026-11-21 10-11-12 Trail.qvl.corrupt")), bytes);
    QCOMPARE(scene.texts(), QStringList({QStringLiteral("new")}));
}

void tst_ActionLogFiles::endTagIsWrittenOnlyByWhoWrote()
{
    Scene scene;
    QByteArray const before = scene::header(scene.path()) + scene::element(QStringLiteral("one"));
    scene.hold(before);
    scene.log().readLog();
    qv::ActionLog::deleteActionLog();
    QCOMPARE(scene.bytes(), before);
}

void tst_ActionLogFiles::fileThatOthersMovedIsNotBegunAgain_data()
{
    QTest::addColumn<int>("durability");
    QTest::addColumn<QStringList>("files");
    QTest::newRow("all is written") << int(qv::DurabilityFlush) << QStringList{"Moved.qvl"};
    QTest::newRow("unless an entry waits") << int(qv::DurabilityNone) << QStringList{"Moved.qvl", "Trail.qvl"};
}

/// When the log ends.
void tst_ActionLogFiles::fileThatOthersMovedIsNotBegunAgain()
{
    QFETCH(int, durability);
    Scene scene;
    scene.log().setDurability(qv::EDurability(durability));
    scene.logText(QStringLiteral("one"));
    QVERIFY(QFile::rename(scene.path(), scene.path(QStringLiteral("Moved.qvl"))));
    qv::ActionLog::deleteActionLog();
    QTEST(scene.files(), "files");
    QCOMPARE(scene.texts() + scene.texts(QStringLiteral("Moved.qvl")), QStringList({QStringLiteral("one")}));
}

void tst_ActionLogFiles::unfinishedFileIsReadAsItIs()
{
    Scene scene;
    QByteArray const one = scene::element(QStringLiteral("one"));
    QByteArray const before = scene::header(scene.path()) + one + one.chopped(5);
    scene.hold(before);
    scene.log().readLog();
    QCOMPARE(scene.listed(), QStringList({QStringLiteral("one")}));
    QCOMPARE(scene.told, QStringList({QStringLiteral("adding 0 0 of 0"), QStringLiteral("added 0 0 of 1")}));
    QCOMPARE(scene.bytes(), before);
}

void tst_ActionLogFiles::onlyFilesAreRead_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("a directory") << "Folder";
    QTest::newRow("a pipe that nobody writes") << "Pipe";
    QTest::newRow("a device without an end") << "/dev/full";
}

void tst_ActionLogFiles::onlyFilesAreRead()
{
    QFETCH(QString, path);
    Scene scene;
    QDir(scene.path({})).mkdir(QStringLiteral("Folder"));
    QCOMPARE(::mkfifo(QFile::encodeName(scene.path(QStringLiteral("Pipe"))).constData(), 0600), 0);
    scene.log().setFileInfo(QFileInfo(QDir(scene.path({})), path));
    QVERIFY(!scene.log().readEntries(QIODevice::ReadOnly));
    scene.log().readLog();
    QCOMPARE(scene.told, QStringList({QStringLiteral("errorFile %1 1").arg(QFileInfo(path).fileName())}));
}

void tst_ActionLogFiles::durabilityNoneCollects()
{
    Scene scene;
    scene.log().setDurability(qv::DurabilityNone);
    scene.logText(QStringLiteral("one"));
    scene.logText(QStringLiteral("two"));
    QCOMPARE(scene.texts(), QStringList());
    scene.log().readLog();
    QStringList const both = {QStringLiteral("one"), QStringLiteral("two")};
    QCOMPARE(scene.listed(), both);
    QCOMPARE(scene.texts(), both);
    scene.logText(QString(70000, 'x'));
    QCOMPARE(scene.texts().size(), 3);
    scene.logText(QStringLiteral("last"));
    qv::ActionLog::deleteActionLog();
    QCOMPARE(scene.texts(), QStringList(both) << QString(70000, 'x') << QStringLiteral("last"));
    QVERIFY(scene.bytes().endsWith(scene::endTag));
}

void tst_ActionLogFiles::forkedChildWritesItsOwn_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QStringList>("byChild");
    for (auto const& [kind, password] : {std::pair("plain", ""), std::pair("encrypted", "correct horse")}) {
        auto const row
            = [kind = kind, password = password](char const* name, QStringList const& before,
                  QStringList const& byChild) { QTest::addRow("%s, %s", kind, name) << password << before << byChild; };
        row("child logs nothing", {}, {});
        row("child logs", {}, {QStringLiteral("three"), QStringLiteral("four")});
        row("child logs what is written at once", {}, {QString(70000, 'x')});
        row("child goes on in a file", {QStringLiteral("zero")}, {QStringLiteral("three")});
    }
}

/// What waits in the parent when it forks is the parent's to write.
void tst_ActionLogFiles::forkedChildWritesItsOwn()
{
    QFETCH(QString, password);
    QFETCH(QStringList, before);
    QFETCH(QStringList, byChild);
    Scene scene(password);
    for (QString const& text : qAsConst(before))
        scene.logText(text);
    scene.log().setDurability(qv::DurabilityNone);
    scene.logText(QStringLiteral("one"));
    scene.logText(QStringLiteral("two"));
    pid_t const child = ::fork();
    if (child == 0) {
        for (QString const& text : qAsConst(byChild))
            scene.logText(text);
        qv::ActionLog::deleteActionLog();
        ::_exit(0);
    }
    int status = -1;
    QCOMPARE(::waitpid(child, &status, 0), child);
    QCOMPARE(status, 0);
    QCOMPARE(scene.texts(), before + byChild);
    scene.logText(QStringLiteral("five"));
    qv::ActionLog::deleteActionLog();
    QStringList const byParent = {QStringLiteral("one"), QStringLiteral("two"), QStringLiteral("five")};
    QCOMPARE(scene.texts(), before + byChild + byParent);
}

QTEST_GUILESS_MAIN(tst_ActionLogFiles)
#include "tst_ActionLogFiles.moc"
