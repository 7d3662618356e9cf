// SPDX-License-Identifier: LGPL-2.1-or-later
#include "LogScene.h"

#include <GenericUtilities/settings/Settings.h>
#include <qvbase/FileUtils.h>

#include <QPair>
#include <QTest>
#include <QTextCodec>
#include <QVariant>

using scene::Scene;

namespace {

using Values = QList<QPair<QString, QVariant>>;

/// Keeps what is saved in its order, and gives it back by its key.
class Record : public qv::IPersistDestination {
public:
    explicit Record(Values const& stored = {})
        : values(stored)
    {
    }

    void beginGroup(QString const& prefix) override { m_group += prefix + QLatin1Char('/'); }
    void endGroup() override { m_group.clear(); }
    void beginWriteArray(QString const&, int) override { }
    int beginReadArray(QString const&) override { return 0; }
    void endArray() override { }
    void setArrayIndex(int) override { }
    void setValue(QString const& key, QVariant const& value) override { values.append({m_group + key, value}); }
    QVariant value(QString const& key, QVariant const& defaultValue) const override
    {
        for (auto const& stored : values) {
            if (stored.first == m_group + key)
                return stored.second;
        }
        return defaultValue;
    }
    void remove(QString const&) override { }
    bool contains(QString const&) const override { return false; }
    void sync() override { }

    Values values;

private:
    QString m_group;
};

// As a text: two QFileInfo of files that do not exist are equal whatever they are called.
QString loggedTo(Scene const& scene)
{
    return scene.log().fileInfo().filePath();
}

QString key(char const* name)
{
    return QStringLiteral("ActionLog/") + QLatin1String(name);
}

} // namespace

Q_DECLARE_METATYPE(Values)

/// The stored configuration.
class tst_ActionLogConfiguration : public QObject {
    Q_OBJECT

private slots:
    void savesInOrder();
    void savesTheDefaultPathByItsPlaceholder();
    void paths_data();
    void paths();
    void passwords_data();
    void passwords();
    void passwordIsInTheSystemsEncoding_data();
    void passwordIsInTheSystemsEncoding();
    void loads();
    void loadsTheDefaultPath();
    void pathAloneCounts();
    void loadsThroughSettings();
    void whatIsNotStoredStays();
    void whatIsNoNumberChangesNothing_data();
    void whatIsNoNumberChangesNothing();
    void numbersWithoutMeaning_data();
    void numbersWithoutMeaning();
};

void tst_ActionLogConfiguration::savesInOrder()
{
    Scene scene;
    scene.log().setSplitPolicy(qv::SplitBySize, 1048576);
    scene.log().setFileUserPassword(QStringLiteral("ann"), QStringLiteral("secret"));
    scene.log().setDurability(qv::DurabilityData);
    Record record;
    scene.log().save(&record);
    QCOMPARE(record.values,
        Values({{key("SplitState"), 8}, {key("SplitSize"), 1048576}, {key("ActionLogUser"), QStringLiteral("ann")},
            {key("ActionLogPassword"), QByteArray("c2VjcmV0")}, {key("isDefaultLogPath"), false},
            {key("ActionLogPath"), scene.path()}, {key("Durability"), 2}}));
    QList<QVariant::Type> types;
    for (auto const& value : record.values)
        types.append(value.second.type());
    QCOMPARE(types,
        QList<QVariant::Type>({QVariant::Int, QVariant::Int, QVariant::String, QVariant::ByteArray, QVariant::Bool,
            QVariant::String, QVariant::Int}));
}

void tst_ActionLogConfiguration::savesTheDefaultPathByItsPlaceholder()
{
    Scene scene;
    scene.log().setFileInfo(qv::ActionLog::defaultFileInfo());
    Record record;
    scene.log().save(&record);
    QCOMPARE(record.values.at(4), qMakePair(key("isDefaultLogPath"), QVariant(true)));
    QCOMPARE(record.values.at(5).second.type(), QVariant::String);
    QCOMPARE(record.values.at(5).second.toString(),
        QStringLiteral("%LOCALAPPDATA%") + qv::FileUtils::userLogDir().mid(qv::FileUtils::userDataDir().size())
            + QStringLiteral("/ActionLog.qvl"));
}

void tst_ActionLogConfiguration::paths_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("stored");
    QTest::newRow("in the data folder") << "state/Trail.qvl"
                                        << "%LOCALAPPDATA%/Trail.qvl";
    QTest::newRow("below the data folder") << "state/a/b/Trail.qvl"
                                           << "%LOCALAPPDATA%/a/b/Trail.qvl";
    QTest::newRow("in a folder whose name begins so") << "state2/Trail.qvl"
                                                      << "";
    QTest::newRow("elsewhere") << "Trail.qvl"
                               << "";
}

void tst_ActionLogConfiguration::paths()
{
    QFETCH(QString, path);
    QFETCH(QString, stored);
    Scene scene;
    QFileInfo const file(scene.path(path));
    scene.log().setFileInfo(file);
    Record record;
    scene.log().save(&record);
    QCOMPARE(record.values.at(5).second.toString(), stored.isEmpty() ? file.filePath() : stored);
    scene.log().setFileInfo(QFileInfo(scene.path(QStringLiteral("Other.qvl"))));
    scene.log().load(&record);
    QCOMPARE(loggedTo(scene), file.filePath());
}

void tst_ActionLogConfiguration::passwords_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<QString>("loaded");
    QTest::newRow("none") << "" << QByteArray("") << "";
    QTest::newRow("plain") << "secret" << QByteArray("c2VjcmV0") << "secret";
    QTest::newRow("up to the first zero")
        << QString(QStringLiteral("sec") + QChar(QChar::Null) + QStringLiteral("ret")) << QByteArray("c2Vj") << "sec";
}

void tst_ActionLogConfiguration::passwords()
{
    QFETCH(QString, password);
    QFETCH(QByteArray, stored);
    QFETCH(QString, loaded);
    Record record;
    {
        Scene scene(password);
        scene.log().save(&record);
        QCOMPARE(record.values.at(3), qMakePair(key("ActionLogPassword"), QVariant(stored)));
    }
    Scene scene;
    scene.log().load(&record);
    Record again;
    scene.log().save(&again);
    QCOMPARE(again.values.at(3).second.toByteArray(), QByteArray(loaded.toLocal8Bit().toBase64()));
}

void tst_ActionLogConfiguration::passwordIsInTheSystemsEncoding_data()
{
    QTest::addColumn<QByteArray>("encoding");
    QTest::addColumn<QByteArray>("stored");
    QTest::newRow("UTF-8") << QByteArray("UTF-8") << QByteArray("dHLDpHVt");
    QTest::newRow("Latin-1") << QByteArray("ISO-8859-1") << QByteArray("dHLkdW0=");
}

void tst_ActionLogConfiguration::passwordIsInTheSystemsEncoding()
{
    QFETCH(QByteArray, encoding);
    QFETCH(QByteArray, stored);
    Scene scene(QStringLiteral(u"tr\u00E4um"));
    scene.logText(QStringLiteral("one"));
    Record record;
    QTextCodec::setCodecForLocale(QTextCodec::codecForName(encoding));
    scene.log().save(&record);
    qv::ActionLog::deleteActionLog();
    scene.log().load(&record);
    QTextCodec::setCodecForLocale(nullptr);
    QCOMPARE(record.values.at(3).second.toByteArray(), stored);
    scene.logText(QStringLiteral("two"));
    QCOMPARE(scene.texts(), QStringList({QStringLiteral("one"), QStringLiteral("two")}));
}

void tst_ActionLogConfiguration::loads()
{
    Scene scene;
    QString const path = qv::FileUtils::userDataDir() + QStringLiteral("/logs/Trail.qvl");
    Record record({{key("SplitState"), 2}, {key("SplitSize"), 77}, {key("ActionLogUser"), QStringLiteral("ann")},
        {key("isDefaultLogPath"), false}, {key("ActionLogPath"), QStringLiteral("%LOCALAPPDATA%/logs/Trail.qvl")},
        {key("Durability"), 0}});
    scene.log().load(&record);
    QCOMPARE(scene.log().splitPolicy(), qv::SplitWeekly);
    QCOMPARE(scene.log().splitSize(), 77);
    QCOMPARE(loggedTo(scene), path);
    QCOMPARE(scene.log().durability(), qv::DurabilityNone);
    // The group is left: what is saved next has the same keys.
    record.values.clear();
    scene.log().save(&record);
    QCOMPARE(record.values.at(2), qMakePair(key("ActionLogUser"), QVariant(QStringLiteral("ann"))));
}

void tst_ActionLogConfiguration::loadsTheDefaultPath()
{
    Scene scene;
    Record record({{key("isDefaultLogPath"), true}, {key("ActionLogPath"), scene.path(QStringLiteral("Old.qvl"))}});
    scene.log().load(&record);
    QCOMPARE(loggedTo(scene), qv::ActionLog::defaultFileInfo().filePath());
}

void tst_ActionLogConfiguration::pathAloneCounts()
{
    Scene scene;
    Record record({{key("ActionLogPath"), scene.path()}});
    scene.log().setFileInfo(qv::ActionLog::defaultFileInfo());
    scene.log().load(&record);
    QCOMPARE(loggedTo(scene), scene.path());
}

void tst_ActionLogConfiguration::loadsThroughSettings()
{
    Scene scene(QStringLiteral("correct horse"));
    scene.log().setSplitPolicy(qv::SplitMonthly, 5);
    {
        qv::Settings settings(scene.path(QStringLiteral("settings.ini")), QSettings::IniFormat);
        scene.log().save(&settings);
    }
    scene.logText(QStringLiteral("one"));
    qv::ActionLog::deleteActionLog();
    qv::Settings settings(scene.path(QStringLiteral("settings.ini")), QSettings::IniFormat);
    scene.log().load(&settings);
    QCOMPARE(scene.log().splitPolicy(), qv::SplitMonthly);
    QCOMPARE(scene.log().splitSize(), 5);
    scene.logText(QStringLiteral("two"));
    QCOMPARE(scene.texts(), QStringList({QStringLiteral("one"), QStringLiteral("two")}));
}

void tst_ActionLogConfiguration::whatIsNotStoredStays()
{
    Scene scene(QStringLiteral("correct horse"));
    scene.log().setSplitPolicy(qv::SplitMonthly, 5);
    scene.log().setDurability(qv::DurabilityData);
    scene.logText(QStringLiteral("one"));
    Record empty;
    scene.log().load(&empty);
    QCOMPARE(scene.log().splitPolicy(), qv::SplitMonthly);
    QCOMPARE(scene.log().splitSize(), 5);
    QCOMPARE(scene.log().durability(), qv::DurabilityData);
    QCOMPARE(loggedTo(scene), scene.path());
    scene.logText(QStringLiteral("two"));
    QCOMPARE(scene.texts(), QStringList({QStringLiteral("one"), QStringLiteral("two")}));
}

void tst_ActionLogConfiguration::whatIsNoNumberChangesNothing_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::newRow("text") << QVariant(QStringLiteral("monthly"));
    QTest::newRow("empty text") << QVariant(QString());
    QTest::newRow("number beyond 32 bits") << QVariant(QStringLiteral("4294967296"));
    QTest::newRow("list") << QVariant(QStringList{QStringLiteral("1"), QStringLiteral("2")});
    QTest::newRow("no value") << QVariant();
}

void tst_ActionLogConfiguration::whatIsNoNumberChangesNothing()
{
    QFETCH(QVariant, stored);
    Scene scene;
    scene.log().setSplitPolicy(qv::SplitBySize, 5000);
    scene.log().setDurability(qv::DurabilityData);
    Record record({{key("SplitState"), stored}, {key("SplitSize"), stored}, {key("Durability"), stored}});
    scene.log().load(&record);
    QCOMPARE(scene.log().splitPolicy(), qv::SplitBySize);
    QCOMPARE(scene.log().splitSize(), 5000);
    QCOMPARE(scene.log().durability(), qv::DurabilityData);
}

void tst_ActionLogConfiguration::numbersWithoutMeaning_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::newRow("unknown") << QVariant(77);
    QTest::newRow("negative") << QVariant(-1);
    QTest::newRow("two policies at a time") << QVariant(3);
}

void tst_ActionLogConfiguration::numbersWithoutMeaning()
{
    QFETCH(QVariant, stored);
    Scene scene;
    scene.log().setSplitPolicy(qv::SplitMonthly, 5);
    Record record({{key("SplitState"), stored}, {key("Durability"), QVariant(9)}});
    scene.log().load(&record);
    QCOMPARE(scene.log().splitPolicy(), qv::SplitNone);
    QCOMPARE(scene.log().durability(), qv::DurabilityFlush);
}

QTEST_GUILESS_MAIN(tst_ActionLogConfiguration)
#include "tst_ActionLogConfiguration.moc"
