// SPDX-License-Identifier: LGPL-2.1-or-later
#include "LogScene.h"

#include <qvbase/FileUserLogon.h>

#include <QMetaMethod>
#include <QTest>

#include <cerrno>
#include <functional>

using qv::ActionLog;
using scene::Scene;

namespace {

/// A type that no factory knows.
class UnknownEntry : public qv::LogEntry {
public:
    qv::FourChars id() const override { return "Unkn"; }
    qv::ELogCategory category() const override { return qv::LogCategoryNone; }
    QString descriptionText() const override { return {}; }
    QString action() const override { return {}; }
};

/// Restores the built-in logon of file users.
struct Logon {
    explicit Logon(qv::FileUserLogon::Provider provider) { qv::FileUserLogon::setProvider(std::move(provider)); }
    ~Logon() { qv::FileUserLogon::setProvider({}); }
    Logon(Logon const&) = delete;
    Logon& operator=(Logon const&) = delete;
};

qv::FileUserLogon::Provider knowing(QString const& first, QString const& second)
{
    return [first, second](QString const&, QString const&, QString*, int*) {
        return std::make_unique<qv::FileUserLogon>(first, second);
    };
}

std::unique_ptr<qv::FileUserLogon> knowNobody(QString const&, QString const&, QString* text, int* error)
{
    *text = QStringLiteral("nobody is known");
    *error = ENOENT;
    return nullptr;
}

/// Where relative paths begin, until the end of its scope.
struct CurrentFolder {
    explicit CurrentFolder(QString const& folder) { QDir::setCurrent(folder); }
    ~CurrentFolder() { QDir::setCurrent(before); }
    CurrentFolder(CurrentFolder const&) = delete;
    CurrentFolder& operator=(CurrentFolder const&) = delete;

    QString const before = QDir::currentPath();
};

using Operation = std::function<void(Scene&)>;

QStringList added(int row)
{
    return {QStringLiteral("adding %1 %1 of %1").arg(row), QStringLiteral("added %1 %1 of %2").arg(row).arg(row + 1)};
}

} // namespace

Q_DECLARE_METATYPE(Operation)

/// The instance, the list with its signals, and who is logging.
class tst_ActionLog : public QObject {
    Q_OBJECT

private slots:
    void metaObject();
    void oneInstance();
    void activity();
    void listsACopy();
    void ignoresWhatItCannotCopy();
    void readingListsOnce();
    void readEntries_data();
    void readEntries();
    void readsNothingWhereThereIsNoFile();
    void listsNothingOfAFileThatIsGone();
    void damageIsListedAndTold();
    void damageIsListedWhereTheFileIsToBeExtended();
    void damageIsToldWhileEntriesWait();
    void damageIsThrownByNothingElse_data();
    void damageIsThrownByNothingElse();
    void deletesRuns();
    void removesAll();
    void backsUp();
    void backupOverwritesNothing();
    void backupIsKeptAsTheLogIs();
    void backupIsWholeOrNotThere();
    void backupOfManyEntries();
    void snapshotOutlivesTheList();
    void switches();
    void switchesToARelativePath();
    void switchesWithoutAnEntryWhileInactive();
    void switchesToNoOtherFile_data();
    void switchesToNoOtherFile();
    void anotherFileEmptiesTheList();
    void fileThatOthersMovedEmptiesTheList();
    void receiverThatLogs();
    void receiverThatChangesTheList();
    void receiverThatDeletesTheLog();
    void receiverThatLogsErrors();
    void errorsTellTheirPlace();
    void userName_data();
    void userName();
    void userNameIsThatOfOneVariable();
    void userNameIsThatOfTheLatestFileUser();
    void unknownFileUserIsRefused();
};

void tst_ActionLog::metaObject()
{
    QMetaObject const& meta = ActionLog::staticMetaObject;
    QCOMPARE(meta.className(), "qv::ActionLog");
    QStringList methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        methods << QString::fromLatin1(meta.method(i).methodSignature());
    QCOMPARE(methods,
        QStringList({QStringLiteral("addingLogEntries(int,int)"), QStringLiteral("logEntriesAdded(int,int)"),
            QStringLiteral("removingLogEntries(int,int)"), QStringLiteral("logEntriesRemoved(int,int)"),
            QStringLiteral("errorLogon(QString,int)"), QStringLiteral("errorFile(QString,int)"),
            QStringLiteral("errorXml(QString,int,int)"), QStringLiteral("switchedFileHandle(QString)"),
            QStringLiteral("incompatibleHeader()")}));
    QCOMPARE(meta.method(meta.methodCount() - 1).methodType(), QMetaMethod::Slot);
    auto const parameters
        = [&meta](char const* signature) { return meta.method(meta.indexOfMethod(signature)).parameterNames(); };
    QCOMPARE(parameters("errorLogon(QString,int)"), QList<QByteArray>({"user", "error"}));
    QCOMPARE(parameters("errorFile(QString,int)"), QList<QByteArray>({"file", "type"}));
    QCOMPARE(parameters("errorXml(QString,int,int)"), QList<QByteArray>({"error", "line", "colum"}));
    QCOMPARE(parameters("switchedFileHandle(QString)"), QList<QByteArray>({"fileName"}));
}

void tst_ActionLog::oneInstance()
{
    Scene scene;
    QCOMPARE(ActionLog::getInstance(), ActionLog::getInstance());
    scene.logText(QStringLiteral("one"));
    ActionLog::deleteActionLog();
    ActionLog::deleteActionLog();
    QCOMPARE(ActionLog::getInstance()->entryCount(), 0);
    QCOMPARE(ActionLog::getInstance()->fileInfo().filePath(), ActionLog::defaultFileInfo().filePath());
    QCOMPARE(ActionLog::defaultFileInfo().fileName(), QStringLiteral("ActionLog.qvl"));
}

void tst_ActionLog::activity()
{
    QVERIFY(ActionLog::defaultActive());
    ActionLog::setDefaultActive(false);
    Scene scene;
    ActionLog::setDefaultActive(true);
    QVERIFY(!scene.log().isActive());
    scene.logText(QStringLiteral("ignored"));
    QCOMPARE(scene.told, QStringList());
    QCOMPARE(scene.files(), QStringList());
    scene.log().activate();
    QVERIFY(scene.log().isActive());
    scene.log().activate();
    QVERIFY(scene.log().isActive());
    scene.logText(QStringLiteral("one"));
    QCOMPARE(scene.texts(), QStringList({QStringLiteral("one")}));
}

void tst_ActionLog::listsACopy()
{
    Scene scene;
    ExportDoneLogEntry entry;
    entry.text.setValue(QStringLiteral("one"));
    entry.user().setValue(QStringLiteral("somebody"));
    scene.log().log(entry);
    QCOMPARE(scene.told, added(0));
    QCOMPARE(entry.user().value(), QStringLiteral("somebody"));
    qv::LogEntry const* const copy = scene.log().entry(0);
    QVERIFY(copy != &entry);
    QCOMPARE(copy->user().value(), scene::user);
    QCOMPARE(copy->time().value(), entry.time().value());
    QCOMPARE(scene::textOf(copy), QStringLiteral("one"));
    QCOMPARE(scene.log().entry(-1), nullptr);
    QCOMPARE(scene.log().entry(1), nullptr);
}

void tst_ActionLog::ignoresWhatItCannotCopy()
{
    Scene scene;
    scene.log().log(UnknownEntry());
    QCOMPARE(scene.told, QStringList({QStringLiteral("errorXml line 0")}));
    QCOMPARE(scene.log().entryCount(), 0);
}

void tst_ActionLog::readingListsOnce()
{
    Scene scene;
    scene.hold(scene::header(scene.path()) + scene::element(QStringLiteral("one")));
    scene.log().readLog();
    scene.log().readLog();
    QCOMPARE(scene.listed(), QStringList({QStringLiteral("one")}));
    QCOMPARE(scene.told,
        added(0) + QStringList({QStringLiteral("removing 0 0 of 1"), QStringLiteral("removed 0 0 of 0")}) + added(0));
    scene.logText(QStringLiteral("two"));
    QStringList const both = {QStringLiteral("one"), QStringLiteral("two")};
    QCOMPARE(scene.listed(), both);
    scene.log().readLog();
    QCOMPARE(scene.listed(), both);
}

void tst_ActionLog::readEntries_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("isOpened");
    QTest::addColumn<QStringList>("listed");
    QByteArray const whole
        = scene::header(QStringLiteral("/Trail.qvl")) + scene::element(QStringLiteral("one")) + scene::endTag;
    QStringList const one = {QStringLiteral("one")};
    QTest::newRow("empty file") << QByteArray() << int(QIODevice::ReadOnly) << true << QStringList();
    QTest::newRow("empty file, to be extended") << QByteArray() << int(QIODevice::ReadWrite) << true << QStringList();
    QTest::newRow("ended file") << whole << int(QIODevice::ReadOnly) << true << one;
    QTest::newRow("ended file, to be extended") << whole << int(QIODevice::ReadWrite) << true << one;
    QTest::newRow("not to be opened") << whole << int(QIODevice::NotOpen) << false << QStringList();
    QTest::newRow("only to be written") << whole << int(QIODevice::WriteOnly) << false << QStringList();
    QTest::newRow("file without its end tag") << whole.chopped(12) << int(QIODevice::ReadOnly) << true << one;
    QTest::newRow("unknown entries are left out")
        << scene::header(QStringLiteral("/Trail.qvl")) + "<Entry ID=\"Unkn\"/>" + scene::element(QStringLiteral("one"))
        << int(QIODevice::ReadOnly) << true << one;
    QTest::newRow("another version") << scene::header(QStringLiteral("/Trail.qvl"), "2026-11-21T10:11:12", "v9")
                                     << int(QIODevice::ReadOnly) << false << QStringList();
}

void tst_ActionLog::readEntries()
{
    QFETCH(QByteArray, content);
    QFETCH(int, mode);
    Scene scene;
    scene.hold(content);
    QTEST(scene.log().readEntries(QIODevice::OpenMode(mode)), "isOpened");
    QTEST(scene.listed(), "listed");
    QCOMPARE(scene.bytes(), content);
}

void tst_ActionLog::damageIsListedAndTold()
{
    Scene scene;
    QByteArray const one = scene::element(QStringLiteral("one"));
    QByteArray const damaged = scene::header(scene.path()) + one + "\n" + one.chopped(4) + one;
    scene.hold(damaged);
    scene.log().readLog();
    QCOMPARE(scene.told, added(0) + added(1) + QStringList({QStringLiteral("errorXml line 2")}));
    QCOMPARE(scene.listed(), QStringList({QStringLiteral("one"), QString()}));
    QCOMPARE(scene.log().entry(1)->id(), qv::FourChars("XmlP"));
    QCOMPARE(scene.files(), QStringList({QStringLiteral("Trail.qvl")}));
    try {
        scene.log().readEntries(QIODevice::ReadOnly);
        QFAIL("damage is not thrown");
    } catch (qv::ActionLogXmlException const& damage) {
        QCOMPARE(damage.line(), 2);
        QCOMPARE(damage.message(),
            QStringLiteral("Error reading log file '%1'; Line '2'; Column '%2'")
                .arg(scene.path(), QString::number(damage.colum())));
    }
    QCOMPARE(scene.bytes(), damaged);
    scene.logText(QStringLiteral("new"));
    QCOMPARE(scene.bytes(QStringLiteral("2026-11-21 10-11-12 Trail.qvl.corrupt")), damaged);
    QCOMPARE(scene.listed(), QStringList({QStringLiteral("new")}));
}

void tst_ActionLog::readsNothingWhereThereIsNoFile()
{
    Scene scene;
    scene.log().readLog();
    QVERIFY(!scene.log().readEntries(QIODevice::ReadOnly));
    QCOMPARE(scene.files(), QStringList());
    QVERIFY(scene.log().readEntries(QIODevice::ReadWrite));
    QCOMPARE(scene.bytes(), QByteArray());
    QCOMPARE(scene.told, QStringList());
    scene.logText(QStringLiteral("one"));
    QCOMPARE(scene.texts(), QStringList({QStringLiteral("one")}));
}

void tst_ActionLog::listsNothingOfAFileThatIsGone()
{
    Scene scene;
    scene.logText(QStringLiteral("one"));
    QVERIFY(QFile::remove(scene.path()));
    scene.told.clear();
    scene.log().readLog();
    QCOMPARE(scene.told, QStringList({QStringLiteral("removing 0 0 of 1"), QStringLiteral("removed 0 0 of 0")}));
}

void tst_ActionLog::damageIsListedWhereTheFileIsToBeExtended()
{
    Scene scene;
    QByteArray const one = scene::element(QStringLiteral("one"));
    scene.hold(scene::header(scene.path()) + one + one.chopped(4) + one + one.chopped(4));
    QVERIFY_EXCEPTION_THROWN(scene.log().readEntries(QIODevice::ReadWrite), qv::ActionLogXmlException);
    QCOMPARE(scene.listed(), QStringList({QStringLiteral("one"), QString()}));
    QCOMPARE(scene.told, added(0) + added(1));
}

void tst_ActionLog::damageIsToldWhileEntriesWait()
{
    Scene scene;
    scene.log().setDurability(qv::DurabilityNone);
    scene.logText(QStringLiteral("waiting"));
    scene.told.clear();
    scene.hold(scene::header(scene.path()) + scene::element(QStringLiteral("one")) + "<Entry </Entries>");
    scene.log().readLog();
    QCOMPARE(scene.told.last(), QStringLiteral("errorXml line 1"));
    QCOMPARE(scene.listed(), QStringList({QStringLiteral("one"), QString()}));
    scene.log().setDurability(qv::DurabilityFlush);
    scene.logText(QStringLiteral("new"));
    QCOMPARE(scene.texts(), QStringList({QStringLiteral("waiting"), QStringLiteral("new")}));
}

void tst_ActionLog::damageIsThrownByNothingElse_data()
{
    QTest::addColumn<Operation>("operation");
    auto const row = [](char const* name, Operation const& operation) { QTest::newRow(name) << operation; };
    row("log", [](Scene& scene) { scene.logText(QStringLiteral("new")); });
    row("readLog", [](Scene& scene) { scene.log().readLog(); });
    row("removeAllLogEntries", [](Scene& scene) { scene.log().removeAllLogEntries(); });
    row("backupEntries", [](Scene& scene) {
        QList<qv::LogEntry*> entries = scene.log().entries();
        scene.log().backupEntries(entries, scene.path(QStringLiteral("Backup.qvl")));
    });
    row("switchFileHandle",
        [](Scene& scene) { scene.log().switchFileHandle(scene.path(QStringLiteral("Other.qvl"))); });
    row("setFileInfo", [](Scene& scene) { scene.log().setFileInfo(ActionLog::defaultFileInfo()); });
    row("setFileUserPassword", [](Scene& scene) { scene.log().setFileUserPassword({}, QStringLiteral("horse")); });
    row("setDurability", [](Scene& scene) { scene.log().setDurability(qv::DurabilityData); });
    row("deleteActionLog", [](Scene&) { ActionLog::deleteActionLog(); });
}

/// Whether the file was damaged while entries waited to be written or not.
void tst_ActionLog::damageIsThrownByNothingElse()
{
    QFETCH(Operation, operation);
    for (qv::EDurability const durability : {qv::DurabilityNone, qv::DurabilityFlush}) {
        Scene scene;
        scene.log().setDurability(durability);
        scene.logText(QStringLiteral("one"));
        scene.hold(scene::header(scene.path()) + "<Entry </Entries>");
        operation(scene);
        ActionLog::deleteActionLog();
        bool const isKept = scene.files().filter(QStringLiteral(".corrupt")).size() == 1
            || scene.bytes().contains("<Entry </Entries>");
        QVERIFY(isKept);
    }
}

void tst_ActionLog::deletesRuns()
{
    Scene scene;
    for (char letter = 'a'; letter <= 'f'; ++letter)
        scene.logText(QChar::fromLatin1(letter));
    QByteArray const before = scene.bytes();
    scene.told.clear();
    ExportDoneLogEntry stranger;
    QList<qv::LogEntry*> const all = scene.log().entries();
    QList<qv::LogEntry*> entries = {all[4], &stranger, all[1], all[2], all[1]};
    scene.log().deleteEntries(entries);
    QCOMPARE(scene.told,
        QStringList({QStringLiteral("removing 4 4 of 6"), QStringLiteral("removed 4 4 of 5"),
            QStringLiteral("removing 1 2 of 5"), QStringLiteral("removed 1 2 of 3")}));
    QCOMPARE(scene.listed(), QStringList({QStringLiteral("a"), QStringLiteral("d"), QStringLiteral("f")}));
    QCOMPARE(entries, QList<qv::LogEntry*>({&stranger}));
    QCOMPARE(scene.bytes(), before);
}

void tst_ActionLog::removesAll()
{
    Scene scene;
    scene.log().removeAllLogEntries();
    QCOMPARE(scene.told, QStringList());
    scene.logText(QStringLiteral("one"));
    scene.logText(QStringLiteral("two"));
    scene.told.clear();
    scene.log().removeAllLogEntries();
    QCOMPARE(scene.told, QStringList({QStringLiteral("removing 0 1 of 2"), QStringLiteral("removed 0 1 of 0")}));
    QCOMPARE(scene.texts().size(), 2);
}

void tst_ActionLog::backsUp()
{
    Scene scene;
    for (char const* text : {"one", "two", "three"})
        scene.logText(QLatin1String(text));
    QByteArray const kept = qv::xml::toXml(*scene.log().entry(0)) + qv::xml::toXml(*scene.log().entry(2));
    QList<qv::LogEntry*> entries = {scene.log().entry(2), scene.log().entry(0)};
    scene.told.clear();
    QVERIFY(scene.log().backupEntries(entries, scene.path(QStringLiteral("Backup.qvl"))));
    QCOMPARE(scene.bytes(QStringLiteral("Backup.qvl")),
        scene::header(scene.path(QStringLiteral("Backup.qvl"))) + kept + scene::endTag);
    QCOMPARE(scene.listed(), QStringList({QStringLiteral("two")}));
    QCOMPARE(scene.told.size(), 4);
    QVERIFY(entries.isEmpty());
}

void tst_ActionLog::backupOverwritesNothing()
{
    Scene scene;
    scene.logText(QStringLiteral("one"));
    scene.hold("kept", QStringLiteral("Backup.qvl"));
    scene.told.clear();
    QList<qv::LogEntry*> entries = scene.log().entries();
    QVERIFY(!scene.log().backupEntries(entries, scene.path(QStringLiteral("Backup.qvl"))));
    QCOMPARE(scene.told, QStringList({QStringLiteral("errorFile Backup.qvl 1")}));
    QCOMPARE(scene.bytes(QStringLiteral("Backup.qvl")), QByteArray("kept"));
    QCOMPARE(entries, scene.log().entries());
    QCOMPARE(scene.listed(), QStringList({QStringLiteral("one")}));
}

void tst_ActionLog::backupIsKeptAsTheLogIs()
{
    Scene scene(QStringLiteral("correct horse"));
    CurrentFolder const folder(scene.path({}));
    scene.logText(QStringLiteral("one"));
    QList<qv::LogEntry*> entries = scene.log().entries();
    QVERIFY(scene.log().backupEntries(entries, QStringLiteral("Backup.qvl")));
    QVERIFY(!scene.bytes(QStringLiteral("Backup.qvl")).contains("Entries"));
    QCOMPARE(scene.texts(QStringLiteral("Backup.qvl")), QStringList({QStringLiteral("one")}));
    QVERIFY(QFileInfo(scene.content(QStringLiteral("Backup.qvl")).header->logFile).isAbsolute());
}

void tst_ActionLog::backupIsWholeOrNotThere()
{
    Scene scene;
    scene.logText(QStringLiteral("one"));
    scene.logText(QStringLiteral("two"));
    scene.log().entry(1)->logValue(qv::FourChars("Text"))->setValue(QString(17 * 1024 * 1024, 'x'));
    QList<qv::LogEntry*> entries = scene.log().entries();
    scene.told.clear();
    QVERIFY(!scene.log().backupEntries(entries, scene.path(QStringLiteral("Backup.qvl"))));
    QCOMPARE(scene.told, QStringList({QStringLiteral("errorFile Backup.qvl 1")}));
    QCOMPARE(scene.files(), QStringList({QStringLiteral("Trail.qvl")}));
    QCOMPARE(entries.size(), 2);
}

/// More than are written at a time.
void tst_ActionLog::backupOfManyEntries()
{
    Scene scene;
    QStringList const texts = {QString(50000, 'a'), QString(50000, 'b'), QString(50000, 'c')};
    for (QString const& text : texts)
        scene.logText(text);
    QList<qv::LogEntry*> entries = scene.log().entries();
    QVERIFY(scene.log().backupEntries(entries, scene.path(QStringLiteral("Backup.qvl"))));
    QCOMPARE(scene.texts(QStringLiteral("Backup.qvl")), texts);
}

void tst_ActionLog::snapshotOutlivesTheList()
{
    Scene scene;
    scene.logText(QStringLiteral("one"));
    auto const snapshot = scene.log().snapshot();
    scene.log().removeAllLogEntries();
    QCOMPARE(snapshot.size(), 1);
    QCOMPARE(scene::textOf(snapshot.first().data()), QStringLiteral("one"));
}

void tst_ActionLog::switches()
{
    Scene scene;
    scene.logText(QStringLiteral("one"));
    scene.told.clear();
    QString const other = scene.path(QStringLiteral("Other.qvl"));
    scene.log().switchFileHandle(scene.path());
    QCOMPARE(scene.told, QStringList());
    scene.log().switchFileHandle(other);
    QCOMPARE(scene.told,
        QStringList({QStringLiteral("removing 0 0 of 1"), QStringLiteral("removed 0 0 of 0")}) + added(0)
            << QStringLiteral("switched Other.qvl"));
    QVERIFY(scene.bytes().endsWith(scene::endTag));
    qv::LogEntry const* const entry = scene.log().entry(0);
    QCOMPARE(entry->id(), qv::FourChars("ALog"));
    QCOMPARE(entry->logValue(qv::FourChars("filO"))->toString(), scene.path());
    QCOMPARE(entry->logValue(qv::FourChars("filN"))->toString(), other);
    QCOMPARE(scene.log().fileInfo().filePath(), other);
    QCOMPARE(scene.content(QStringLiteral("Other.qvl")).entries.size(), size_t(1));
}

/// The path is told as it was given; the file is that of the folder of then, and its header tells where it is.
void tst_ActionLog::switchesToARelativePath()
{
    Scene scene;
    QString const other = QStringLiteral("Other.qvl");
    QString told;
    QObject::connect(&scene.log(), &ActionLog::switchedFileHandle, [&](QString const& file) { told = file; });
    {
        CurrentFolder const folder(scene.path({}));
        scene.log().switchFileHandle(other);
    }
    QCOMPARE(told, other);
    QCOMPARE(scene.log().entry(0)->logValue(qv::FourChars("filN"))->toString(), other);
    QVERIFY(QFileInfo(scene.content(other).header->logFile).isAbsolute());
    scene.logText(QStringLiteral("one"));
    scene.log().readLog();
    QCOMPARE(scene.listed(), QStringList({QString(), QStringLiteral("one")}));
    scene.log().switchFileHandle(scene.path());
    QCOMPARE(scene.log().entry(0)->logValue(qv::FourChars("filO"))->toString(), other);
}

void tst_ActionLog::switchesWithoutAnEntryWhileInactive()
{
    ActionLog::setDefaultActive(false);
    Scene scene;
    ActionLog::setDefaultActive(true);
    scene.log().switchFileHandle(scene.path(QStringLiteral("Other.qvl")));
    QCOMPARE(scene.told, QStringList({QStringLiteral("switched Other.qvl")}));
    QCOMPARE(scene.files(), QStringList());
    scene.log().activate();
    scene.logText(QStringLiteral("one"));
    QCOMPARE(scene.texts(QStringLiteral("Other.qvl")), QStringList({QStringLiteral("one")}));
}

void tst_ActionLog::switchesToNoOtherFile_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("its own") << "/Trail.qvl";
    QTest::newRow("its own, spelled another way") << "/state/../Trail.qvl";
    QTest::newRow("none") << QString();
}

void tst_ActionLog::switchesToNoOtherFile()
{
    QFETCH(QString, path);
    Scene scene;
    scene.logText(QStringLiteral("one"));
    scene.told.clear();
    scene.log().switchFileHandle(path.isEmpty() ? path : QFileInfo(scene.path()).absolutePath() + path);
    QCOMPARE(scene.told, QStringList());
    scene.logText(QStringLiteral("two"));
    QCOMPARE(scene.texts(), QStringList({QStringLiteral("one"), QStringLiteral("two")}));
}

void tst_ActionLog::anotherFileEmptiesTheList()
{
    Scene scene;
    scene.logText(QStringLiteral("one"));
    scene.log().setFileInfo(QFileInfo(scene.path(QStringLiteral("Other.qvl"))));
    QCOMPARE(scene.listed(), QStringList());
    QVERIFY(scene.bytes().endsWith(scene::endTag));
    scene.logText(QStringLiteral("two"));
    QCOMPARE(scene.texts(QStringLiteral("Other.qvl")), QStringList({QStringLiteral("two")}));
}

void tst_ActionLog::fileThatOthersMovedEmptiesTheList()
{
    Scene scene;
    scene.logText(QStringLiteral("one"));
    QVERIFY(QFile::rename(scene.path(), scene.path(QStringLiteral("Moved.qvl"))));
    scene.told.clear();
    scene.logText(QStringLiteral("two"));
    QCOMPARE(
        scene.told, QStringList({QStringLiteral("removing 0 0 of 1"), QStringLiteral("removed 0 0 of 0")}) + added(0));
    QCOMPARE(scene.texts(), QStringList({QStringLiteral("two")}));
}

void tst_ActionLog::receiverThatLogs()
{
    Scene scene;
    int written = 0;
    auto const answer = [&] {
        if (scene.log().entryCount() > 2)
            return;
        scene.logText(QStringLiteral("answer %1").arg(++written));
        // It is in the file at once, and not in the list before the outer entry was announced.
        QCOMPARE(scene.texts().size(), 1 + written);
    };
    QObject::connect(&scene.log(), &ActionLog::addingLogEntries, [&](int row, int) { row == 0 ? answer() : void(); });
    QObject::connect(&scene.log(), &ActionLog::logEntriesAdded, [&](int row, int) { row == 0 ? answer() : void(); });
    scene.logText(QStringLiteral("one"));
    QStringList const all = {QStringLiteral("one"), QStringLiteral("answer 1"), QStringLiteral("answer 2")};
    QCOMPARE(scene.told, added(0) + added(1) + added(2));
    QCOMPARE(scene.listed(), all);
    QCOMPARE(scene.texts(), all);
}

void tst_ActionLog::receiverThatChangesTheList()
{
    Scene scene;
    QObject::connect(&scene.log(), &ActionLog::addingLogEntries, [&](int row, int) {
        if (row != 1)
            return;
        QList<qv::LogEntry*> first = {scene.log().entry(0)};
        scene.log().deleteEntries(first);
        QVERIFY(first.isEmpty());
        scene.log().switchFileHandle(scene.path(QStringLiteral("Other.qvl")));
    });
    scene.logText(QStringLiteral("one"));
    scene.logText(QStringLiteral("two"));
    QCOMPARE(scene.told,
        added(0) + added(1)
            + QStringList({QStringLiteral("removing 0 0 of 2"), QStringLiteral("removed 0 0 of 1"),
                QStringLiteral("removing 0 0 of 1"), QStringLiteral("removed 0 0 of 0")})
            + added(0) + QStringList({QStringLiteral("switched Other.qvl")}));
    QCOMPARE(scene.texts(), QStringList({QStringLiteral("one"), QStringLiteral("two")}));
}

void tst_ActionLog::receiverThatDeletesTheLog()
{
    Scene scene;
    ActionLog const* const log = &scene.log();
    bool isDestroyed = false;
    QObject::connect(log, &QObject::destroyed, [&] { isDestroyed = true; });
    QObject::connect(log, &ActionLog::addingLogEntries, [&] {
        ActionLog::deleteActionLog();
        QVERIFY(!isDestroyed);
    });
    scene.logText(QStringLiteral("one"));
    QVERIFY(isDestroyed);
    QVERIFY(ActionLog::getInstance()->entryCount() == 0);
    QVERIFY(scene.bytes().endsWith(scene::endTag));
}

void tst_ActionLog::receiverThatLogsErrors()
{
    Scene scene;
    scene.log().setFileInfo(QFileInfo(scene.path(QStringLiteral("missing/Trail.qvl"))));
    QObject::connect(&scene.log(), &ActionLog::errorFile, [&] { scene.logText(QStringLiteral("an error")); });
    scene.logText(QStringLiteral("one"));
    QCOMPARE(scene.told, QStringList({QStringLiteral("errorFile Trail.qvl 1")}));
}

void tst_ActionLog::errorsTellTheirPlace()
{
    Scene scene;
    QVariantList told;
    QObject::connect(&scene.log(), &ActionLog::errorFile, [&](QString const& file, int type) { told << file << type; });
    QObject::connect(&scene.log(), &ActionLog::errorXml,
        [&](QString const& error, int line, int column) { told << error << line << column; });
    QObject::connect(&scene.log(), &ActionLog::switchedFileHandle, [&](QString const& file) { told << file; });

    QString const missing = scene.path(QStringLiteral("missing/Trail.qvl"));
    scene.log().switchFileHandle(missing);
    QCOMPARE(told, QVariantList({missing, 1, missing}));

    scene.log().setFileInfo(QFileInfo(scene.path()));
    scene.hold(scene::header(scene.path()) + "\n</Other>");
    told.clear();
    scene.log().readLog();
    qv::LogEntry* const failure = scene.log().entry(0);
    QCOMPARE(failure->id(), qv::FourChars("XmlP"));
    QCOMPARE(told,
        QVariantList({failure->logValue(qv::FourChars("srcP"))->toString(), 2,
            failure->logValue(qv::FourChars("errC"))->toString().toInt()}));
    QCOMPARE(failure->logValue(qv::FourChars("errT"))->toString(), scene.path());
}

void tst_ActionLog::userName_data()
{
    QTest::addColumn<bool>("hasFileUser");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<QByteArray>("environment");
    QTest::addColumn<QString>("name");
    QTest::newRow("both names") << true << "ann"
                                << "Ann Smith" << QByteArray("env") << "ann (Ann Smith)";
    QTest::newRow("no full name") << true << "ann"
                                  << "" << QByteArray("env") << "ann";
    QTest::newRow("no names: the environment") << true << ""
                                               << "" << QByteArray("env") << "env (System)";
    QTest::newRow("a full name alone") << true << ""
                                       << "Ann Smith" << QByteArray("env") << " (Ann Smith)";
    QTest::newRow("no file user") << false << ""
                                  << "" << QByteArray("env") << "env (System)";
    QTest::newRow("an empty name") << false << ""
                                   << "" << QByteArray("") << " (System)";
    QTest::newRow("all that follows the first equals sign") << false << ""
                                                            << "" << QByteArray(" a=b ") << " a=b  (System)";
    QTest::newRow("no name") << false << ""
                             << "" << QByteArray() << "";
    QTest::newRow("what looks like a placeholder") << true << "%2"
                                                   << "x" << QByteArray() << "%2 (x)";
}

void tst_ActionLog::userName()
{
    QFETCH(bool, hasFileUser);
    QFETCH(QString, first);
    QFETCH(QString, second);
    QFETCH(QByteArray, environment);
    Logon const logon(knowing(first, second));
    Scene scene;
    environment.isNull() ? qunsetenv("USERNAME") : qputenv("USERNAME", environment);
    scene.log().setFileUserPassword(hasFileUser ? QStringLiteral("ann") : QString(), {});
    scene.logText(QStringLiteral("one"));
    QTEST(scene.log().userName(), "name");
    QTEST(scene.log().entry(0)->user().value(), "name");
}

void tst_ActionLog::userNameIsThatOfOneVariable()
{
    Scene scene;
    qunsetenv("USERNAME");
    for (char const* other : {"username", "USERNAME2", "MYUSERNAME"})
        qputenv(other, "somebody");
    QString const name = scene.log().userName();
    for (char const* other : {"username", "USERNAME2", "MYUSERNAME"})
        qunsetenv(other);
    QCOMPARE(name, QString());
}

void tst_ActionLog::userNameIsThatOfTheLatestFileUser()
{
    Logon const logon([](QString const& user, QString const&, QString*, int*) {
        return std::make_unique<qv::FileUserLogon>(user, QString());
    });
    Scene scene;
    QStringList names;
    for (char const* user : {"ann", "bob", ""}) {
        scene.log().setFileUserPassword(QLatin1String(user), {});
        scene.logText(QStringLiteral("one"));
        names << scene.log().entries().last()->user().value();
    }
    QCOMPARE(names, QStringList({QStringLiteral("ann"), QStringLiteral("bob"), scene::user}));
}

void tst_ActionLog::unknownFileUserIsRefused()
{
    Scene scene;
    {
        Logon const logon(knowNobody);
        scene.log().setFileUserPassword(QStringLiteral("ann"), {});
        scene.logText(QStringLiteral("refused"));
        QCOMPARE(scene.told, QStringList({QStringLiteral("errorLogon ann %1").arg(ENOENT)}));
        QCOMPARE(scene.files(), QStringList());
    }
    Logon const logon(knowing(QStringLiteral("ann"), {}));
    scene.logText(QStringLiteral("one"));
    QCOMPARE(scene.texts(), QStringList({QStringLiteral("one")}));
}

QTEST_GUILESS_MAIN(tst_ActionLog)
#include "tst_ActionLog.moc"
