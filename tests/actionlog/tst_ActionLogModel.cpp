// SPDX-License-Identifier: LGPL-2.1-or-later
#include "LogScene.h"
#include "OtherEntry.h"

#include <GenericUtilities/actionlog/ActionLogModel.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

#include <thread>
#include <vector>

using qv::ActionLogModel;
using scene::Scene;

namespace {

QStringList texts(ActionLogModel const& model)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts << model.index(row, ActionLogModel::DescriptionColumn).data().toString();
    return texts;
}

/// A model that is watched for what no model may do.
struct Watched {
    ActionLogModel model;
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::QtTest};
};

void handleEvents()
{
    QCoreApplication::sendPostedEvents();
}

int copies = 0;
qv::LogEntryFactoryRegistrar const counted(
    "Othr",
    [] {
        ++copies;
        return OtherEntry::create();
    },
    "Other");

} // namespace

class tst_ActionLogModel : public QObject {
    Q_OBJECT

private slots:
    void columns();
    void roles();
    void noSuchCell_data();
    void noSuchCell();
    void beginsWithWhatIsThere();
    void followsWhenItsThreadHandlesEvents();
    void followsSplitsSwitchesAndReading();
    void followsOtherThreads();
    void costsNothingOnceDestroyed_data();
    void costsNothingOnceDestroyed();
    void isDestroyedWhileOthersLog();
    void outlivesTheLog();
    void madeByAReceiver();
};

void tst_ActionLogModel::columns()
{
    Scene scene;
    scene.logText(QStringLiteral("three clips"));
    Watched const watched;
    ActionLogModel const& model = watched.model;
    QDateTime const time = scene.log().entry(0)->time().value();
    QVariantList const cells
        = {time, scene::user, QStringLiteral("Export"), QStringLiteral("Export done"), QStringLiteral("three clips")};
    QStringList const headers = {QStringLiteral("Time"), QStringLiteral("User"), QStringLiteral("Category"),
        QStringLiteral("Action"), QStringLiteral("Description")};
    QCOMPARE(model.columnCount(), 5);
    for (int column = 0; column < 5; ++column) {
        QCOMPARE(model.index(0, column).data(), cells.at(column));
        QCOMPARE(model.headerData(column, Qt::Horizontal).toString(), headers.at(column));
    }
}

void tst_ActionLogModel::roles()
{
    Scene scene;
    scene.logText(QStringLiteral("three clips"));
    Watched const watched;
    QModelIndex const index = watched.model.index(0, ActionLogModel::ActionColumn);
    QCOMPARE(index.data(ActionLogModel::TimeRole).toDateTime(), scene.log().entry(0)->time().value());
    QCOMPARE(index.data(ActionLogModel::UserRole).toString(), scene::user);
    QCOMPARE(index.data(ActionLogModel::CategoryRole).toUInt(), 0x45787074U);
    QCOMPARE(index.data(ActionLogModel::IdRole).toString(), QStringLiteral("ExpD"));
    QCOMPARE(index.data(ActionLogModel::DescriptionRole).toString(), QStringLiteral("three clips"));
    QVERIFY(!index.data(Qt::DecorationRole).isValid());
    QCOMPARE(watched.model.roleNames().value(ActionLogModel::IdRole), QByteArray("id"));
    QCOMPARE(scene::textOf(watched.model.entry(0).data()), QStringLiteral("three clips"));
}

void tst_ActionLogModel::noSuchCell_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("column");
    QTest::newRow("before the first row") << -1 << 0;
    QTest::newRow("behind the last row") << 1 << 0;
    QTest::newRow("before the first column") << 0 << -1;
    QTest::newRow("behind the last column") << 0 << 5;
}

void tst_ActionLogModel::noSuchCell()
{
    QFETCH(int, row);
    QFETCH(int, column);
    Scene scene;
    scene.logText(QStringLiteral("one"));
    Watched const watched;
    QVERIFY(!watched.model.index(row, column).isValid());
    QVERIFY(!watched.model.data(watched.model.index(row, column)).isValid());
    QCOMPARE(watched.model.headerData(column, Qt::Horizontal).isValid(), column == 0);
    QCOMPARE(watched.model.entry(row).isNull(), row != 0);
}

void tst_ActionLogModel::beginsWithWhatIsThere()
{
    Scene scene;
    scene.logText(QStringLiteral("one"));
    scene.logText(QStringLiteral("two"));
    Watched const watched;
    QCOMPARE(texts(watched.model), scene.listed());
}

void tst_ActionLogModel::followsWhenItsThreadHandlesEvents()
{
    Scene scene;
    Watched const watched;
    scene.logText(QStringLiteral("one"));
    scene.logText(QStringLiteral("two"));
    QCOMPARE(texts(watched.model), QStringList());
    handleEvents();
    QCOMPARE(texts(watched.model), scene.listed());
    QList<qv::LogEntry*> first = {scene.log().entry(0)};
    scene.log().deleteEntries(first);
    scene.log().removeAllLogEntries();
    scene.logText(QStringLiteral("three"));
    QCOMPARE(texts(watched.model).size(), 2);
    handleEvents();
    QCOMPARE(texts(watched.model), QStringList({QStringLiteral("three")}));
}

void tst_ActionLogModel::followsSplitsSwitchesAndReading()
{
    Scene scene;
    Watched const watched;
    scene.log().setSplitPolicy(qv::SplitBySize, 700);
    for (int i = 0; i < 20; ++i) {
        scene.logText(QStringLiteral("entry %1").arg(i));
        if (i % 7 == 6)
            scene.log().switchFileHandle(scene.path(QString::number(i)));
        if (i % 5 == 4)
            scene.log().readLog();
        if (i % 3 == 2)
            handleEvents();
    }
    handleEvents();
    QCOMPARE(watched.model.rowCount(), scene.log().entryCount());
    for (int row = 0; row < watched.model.rowCount(); ++row)
        QCOMPARE(scene::textOf(watched.model.entry(row).data()), scene::textOf(scene.log().entry(row)));
}

void tst_ActionLogModel::followsOtherThreads()
{
    Scene scene;
    Watched const watched;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&scene, i] {
            for (int entry = 0; entry < 25; ++entry)
                scene.logText(QStringLiteral("%1 %2").arg(i).arg(entry));
        });
    }
    while (watched.model.rowCount() < 50)
        handleEvents();
    for (std::thread& thread : threads)
        thread.join();
    handleEvents();
    QCOMPARE(texts(watched.model), scene.listed());
}

void tst_ActionLogModel::costsNothingOnceDestroyed_data()
{
    QTest::addColumn<int>("alive");
    QTest::addColumn<int>("destroyed");
    QTest::newRow("no model ever") << 0 << 0;
    QTest::newRow("two models") << 2 << 0;
    QTest::newRow("only those that are gone") << 0 << 3;
    QTest::newRow("one, and three that are gone") << 1 << 3;
}

void tst_ActionLogModel::costsNothingOnceDestroyed()
{
    QFETCH(int, alive);
    QFETCH(int, destroyed);
    Scene scene;
    std::vector<std::unique_ptr<Watched>> models;
    for (int i = 0; i < alive + destroyed; ++i)
        models.push_back(std::make_unique<Watched>());
    models.resize(static_cast<std::size_t>(alive));
    copies = 0;
    scene.log().log(OtherEntry(QStringLiteral("%1")).with("valA", QStringLiteral("one")));
    QCOMPARE(copies, 1 + alive);
}

void tst_ActionLogModel::isDestroyedWhileOthersLog()
{
    Scene scene;
    std::thread other([&scene] {
        for (int entry = 0; entry < 60; ++entry)
            scene.logText(QString::number(entry));
    });
    for (int i = 0; i < 30; ++i)
        Watched const watched;
    other.join();
    QCOMPARE(scene.log().entryCount(), 60);
}

void tst_ActionLogModel::outlivesTheLog()
{
    Scene scene;
    Watched const watched;
    scene.logText(QStringLiteral("one"));
    qv::ActionLog::deleteActionLog();
    handleEvents();
    QCOMPARE(texts(watched.model), QStringList({QStringLiteral("one")}));
}

void tst_ActionLogModel::madeByAReceiver()
{
    Scene scene;
    scene.logText(QStringLiteral("one"));
    std::unique_ptr<Watched> before;
    std::unique_ptr<Watched> after;
    QObject::connect(&scene.log(), &qv::ActionLog::addingLogEntries,
        [&] { before = before ? std::move(before) : std::make_unique<Watched>(); });
    QObject::connect(&scene.log(), &qv::ActionLog::logEntriesAdded,
        [&] { after = after ? std::move(after) : std::make_unique<Watched>(); });
    scene.logText(QStringLiteral("two"));
    scene.logText(QStringLiteral("three"));
    handleEvents();
    QCOMPARE(texts(before->model), scene.listed());
    QCOMPARE(texts(after->model), scene.listed());
}

QTEST_GUILESS_MAIN(tst_ActionLogModel)
#include "tst_ActionLogModel.moc"
