// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/MoveAside_p.h>

#include <qvbase/crash/Folder.h>
#include <qvbase/crash/SystemCalls.h>

#include <QTest>
#include <QTextCodec>

#include <cerrno>

using qv::AsideName;

namespace {

AsideName const corrupt = {QStringLiteral("2026 log"), QStringLiteral(".qvl.corrupt")};

} // namespace

class tst_MoveAside : public QObject {
    Q_OBJECT

private slots:
    // Names are counted in the bytes of the file system, whatever the locale of the tests.
    void initTestCase() { QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8")); }
    void names_data();
    void names();
    void movesWithinTheFolder();
    void overwritesNothing();
    void overwritesNothingWhereTheFileSystemCannotRefuse();
    void staysWhereItCannotBeMoved_data();
    void staysWhereItCannotBeMoved();
};

void tst_MoveAside::names_data()
{
    QTest::addColumn<QString>("stem");
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<int>("attempt");
    QTest::addColumn<QString>("fileName");
    QTest::newRow("first") << "log"
                           << ".qvl" << 1 << "log.qvl";
    QTest::newRow("second") << "log"
                            << ".qvl" << 2 << "log (2).qvl";
    QTest::newRow("before the whole suffix") << "log"
                                             << ".qvl.corrupt" << 3 << "log (3).qvl.corrupt";
    QTest::newRow("dots in the stem") << "my.log"
                                      << ".qvl" << 2 << "my.log (2).qvl";
    QTest::newRow("no other folder") << "../a/b"
                                     << ".qvl" << 1 << ".._a_b.qvl";
    QTest::newRow("no end of the name") << QString(QStringLiteral("a") + QChar(QChar::Null) + 'b') << ".qvl" << 1
                                        << "a_b.qvl";
    QTest::newRow("as long as can be") << QString(251, 'x') << ".qvl" << 1 << QString(251, 'x') + ".qvl";
    QTest::newRow("too long") << QString(300, 'x') << ".qvl" << 2 << QString(247, 'x') + " (2).qvl";
    QTest::newRow("too long in bytes") << QString(200, QChar(0xe4)) << ".qvl" << 1
                                       << QString(125, QChar(0xe4)) + ".qvl";
    QTest::newRow("no half characters") << QString::fromUtf8("\xF0\x9F\x93\xB7").repeated(70) << ".qvl" << 1
                                        << QString::fromUtf8("\xF0\x9F\x93\xB7").repeated(62) + ".qvl";
}

void tst_MoveAside::names()
{
    QFETCH(QString, stem);
    QFETCH(QString, suffix);
    QFETCH(int, attempt);
    QTEST((AsideName{stem, suffix}.fileName(attempt)), "fileName");
}

void tst_MoveAside::movesWithinTheFolder()
{
    crash::Folder const folder;
    folder.hold({{"log.qvl", "text"}});
    QCOMPARE(qv::moveAside(folder.path(QStringLiteral("log.qvl")), corrupt),
        folder.path(QStringLiteral("2026 log.qvl.corrupt")));
    QCOMPARE(folder.files(), (crash::Files{{"2026 log.qvl.corrupt", "text"}}));
}

void tst_MoveAside::overwritesNothing()
{
    crash::Folder const folder;
    folder.hold({{"log.qvl", "new"}, {"2026 log.qvl.corrupt", "one"}, {"2026 log (2).qvl.corrupt", "two"}});
    QVERIFY(!qv::moveAside(folder.path(QStringLiteral("log.qvl")), corrupt).isNull());
    QCOMPARE(folder.files(),
        (crash::Files{{"2026 log.qvl.corrupt", "one"}, {"2026 log (2).qvl.corrupt", "two"},
            {"2026 log (3).qvl.corrupt", "new"}}));
}

void tst_MoveAside::overwritesNothingWhereTheFileSystemCannotRefuse()
{
    crash::Folder const folder;
    folder.hold({{"log.qvl", "new"}, {"2026 log.qvl.corrupt", "one"}});
    calls::watch(folder.path().toStdString());
    calls::inject({calls::Fault::Changing, EINVAL, 0, 2});
    QString const target = qv::moveAside(folder.path(QStringLiteral("log.qvl")), corrupt);
    calls::heal();
    calls::stopWatching();
    QCOMPARE(target, folder.path(QStringLiteral("2026 log (2).qvl.corrupt")));
    QCOMPARE(folder.files(), (crash::Files{{"2026 log.qvl.corrupt", "one"}, {"2026 log (2).qvl.corrupt", "new"}}));
}

void tst_MoveAside::staysWhereItCannotBeMoved_data()
{
    QTest::addColumn<int>("error");
    QTest::newRow("the disk") << EIO;
    QTest::newRow("no permission") << EPERM;
    QTest::newRow("a read-only file system") << EROFS;
}

void tst_MoveAside::staysWhereItCannotBeMoved()
{
    QFETCH(int, error);
    crash::Folder const folder;
    folder.hold({{"log.qvl", "text"}});
    calls::watch(folder.path().toStdString());
    calls::inject({calls::Fault::Changing, error, 0, 1});
    QString const target = qv::moveAside(folder.path(QStringLiteral("log.qvl")), corrupt);
    calls::heal();
    calls::stopWatching();
    QVERIFY(target.isNull());
    QCOMPARE(folder.files(), (crash::Files{{"log.qvl", "text"}}));
    QVERIFY(qv::moveAside(folder.path(QStringLiteral("missing.qvl")), corrupt).isNull());
    QVERIFY(qv::moveAside(folder.path(), corrupt).isNull());
}

QTEST_GUILESS_MAIN(tst_MoveAside)
#include "tst_MoveAside.moc"
