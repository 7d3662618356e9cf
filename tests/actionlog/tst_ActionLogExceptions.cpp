// SPDX-License-Identifier: LGPL-2.1-or-later
#include "MarkingTranslator.h"

#include <GenericUtilities/actionlog/LogFile_p.h>

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <type_traits>

using qv::ActionLogException;
using qv::ActionLogFileException;
using qv::ActionLogImpersonateException;
using qv::ActionLogXmlException;

static_assert(std::is_base_of_v<qv::ExceptionQt, ActionLogException>);
static_assert(std::is_base_of_v<ActionLogException, ActionLogFileException>);
static_assert(std::is_base_of_v<ActionLogException, ActionLogXmlException>);
static_assert(std::is_base_of_v<ActionLogException, ActionLogImpersonateException>);
static_assert(ActionLogFileException::CouldNotOpen == 1 && ActionLogFileException::InvalidHeader == 4);

/// What the exceptions say, and the messages of those that a file gives.
class tst_ActionLogExceptions : public QObject {
    Q_OBJECT

private slots:
    void tellWhatTheyAreMadeOf();
    void files_data();
    void files();
    void messagesAreTranslated_data();
    void messagesAreTranslated();
};

void tst_ActionLogExceptions::tellWhatTheyAreMadeOf()
{
    QString const message = QStringLiteral(u"Größe");
    ActionLogFileException const file(message, QStringLiteral("a.qvl"), ActionLogFileException::InvalidHeader);
    QCOMPARE(file.message(), message);
    QCOMPARE(QByteArray(file.what()),
        QByteArray("Gr\xC3\xB6\xC3\x9F"
                   "e"));
    QCOMPARE(file.file(), QStringLiteral("a.qvl"));
    QCOMPARE(file.type(), ActionLogFileException::InvalidHeader);
    ActionLogXmlException const xml(message, QStringLiteral("unexpected"), 3, 17);
    QCOMPARE(xml.message(), message);
    QCOMPARE(xml.error(), QStringLiteral("unexpected"));
    QCOMPARE(xml.line(), 3);
    QCOMPARE(xml.colum(), 17);
    ActionLogImpersonateException const logon(QStringLiteral("ann"), QStringLiteral("unknown"), ENOENT);
    QCOMPARE(logon.user(), QStringLiteral("ann"));
    QCOMPARE(logon.error(), QStringLiteral("unknown"));
    QCOMPARE(logon.message(), QStringLiteral("unknown"));
    QCOMPARE(logon.number(), ENOENT);
    QCOMPARE(ActionLogException(message).message(), message);
}

void tst_ActionLogExceptions::files_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("type");
    QTest::newRow("no such folder") << "missing/a.qvl" << QByteArray() << "Could not open file '%1'" << 1;
    QTest::newRow("header of another version")
        << "a.qvl" << QByteArray("<?xml version=\"1.0\"?><Entries Version=\"v0.2\">")
        << "Action log '%1' invalid header version." << 4;
    QTest::newRow("header that the device rejects")
        << "a.qvl" << QByteArray::fromHex("89414c450d0a1a0a") + QByteArray(120, 'x')
        << "Action log '%1' invalid header version." << 4;
    QTest::newRow("what looks like a placeholder in the path")
        << "%1/%2.qvl" << QByteArray() << "Could not open file '%1'" << 1;
}

void tst_ActionLogExceptions::files()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(QString, message);
    QTemporaryDir const folder;
    QString const path = folder.filePath(name);
    if (!content.isEmpty()) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    qv::LogFile log;
    log.setPath(path);
    try {
        log.takeTurn();
        QFAIL("nothing is thrown");
    } catch (ActionLogFileException const& failure) {
        QCOMPARE(failure.message(), message.replace(QStringLiteral("%1"), path));
        QCOMPARE(failure.file(), path);
        QTEST(int(failure.type()), "type");
    }
}

void tst_ActionLogExceptions::messagesAreTranslated_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("message");
    QTest::newRow("no such file") << QByteArray() << "~Could not open file '%1'";
    QTest::newRow("header of another version") << QByteArray("<?xml version=\"1.0\"?><Entries Version=\"v0.2\">")
                                               << "~Action log '%1' invalid header version.";
    QTest::newRow("damaged") << QByteArray("text") << "~Error reading log file '%1'; Line '1'; Column '1'";
}

void tst_ActionLogExceptions::messagesAreTranslated()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, message);
    MarkingTranslator translator;
    QCoreApplication::installTranslator(&translator);
    QTemporaryDir const folder;
    qv::LogFile log;
    log.setPath(folder.filePath(QStringLiteral("a.qvl")));
    QFile file(log.path());
    if (!content.isEmpty()) {
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
    }
    try {
        log.requireSound(log.read());
        QFAIL("nothing is thrown");
    } catch (ActionLogException const& failure) {
        QCOMPARE(failure.message(), message.replace(QStringLiteral("%1"), log.path()));
    }
}

QTEST_GUILESS_MAIN(tst_ActionLogExceptions)
#include "tst_ActionLogExceptions.moc"
