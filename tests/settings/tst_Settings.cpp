// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/settings/Settings.h>

#include <support/VirtualSlots.h>

#include <QPointer>
#include <QTemporaryDir>
#include <QtTest>

#include <type_traits>

static_assert(std::is_base_of_v<qv::IInterface, qv::IPersistDestination>);
static_assert(std::is_abstract_v<qv::IPersistDestination>);
static_assert(!std::is_copy_constructible_v<qv::Settings>);

class tst_Settings : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void interfaceById_data();
    void interfaceById();
    void constInterfaceGoesThroughTheOther();
    void operationsKeepTheirSlots_data();
    void operationsKeepTheirSlots();
    void fileNameIsThatOfQSettings();
    void applicationSettings();
    void callersSettingsStayAlive();
    void everyOperationIsThatOfQSettings();
    void syncWritesTheFile();
    void ownSettingsAreWrittenInTheEnd();
    void arraysReadBack();
    void arrayHasItsGivenSize();
    void absentArrayHasNoElements();
    void valuesOutlastTheObject();
    void damagedFileReadsAsEmpty();

private:
    QString file(QString const& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

void tst_Settings::initTestCase()
{
    QVERIFY(m_folder.isValid());
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_folder.path());
    QCoreApplication::setOrganizationName(QStringLiteral("Organisation"));
    QCoreApplication::setApplicationName(QStringLiteral("Application"));
}

void tst_Settings::interfaceById_data()
{
    QTest::addColumn<QByteArray>("id");
    QTest::addColumn<bool>("isFound");
    QTest::newRow("its own") << QByteArray("qv::IInterface") << true;
    QTest::newRow("empty") << QByteArray() << false;
    QTest::newRow("shorter") << QByteArray("qv::IInterfac") << false;
    QTest::newRow("longer") << QByteArray("qv::IInterface2") << false;
    QTest::newRow("longer by a zero byte") << QByteArray("qv::IInterface\0", 15) << false;
    QTest::newRow("other case") << QByteArray("qv::iinterface") << false;
}

void tst_Settings::interfaceById()
{
    QFETCH(QByteArray, id);
    QFETCH(bool, isFound);
    qv::IInterface root;
    qv::Settings settings(file(QStringLiteral("id.ini")), QSettings::IniFormat);
    QCOMPARE(root.getInterface(id.toStdString()), isFound ? &root : nullptr);
    QCOMPARE(settings.getInterface(id.toStdString()), isFound ? &settings : nullptr);
}

void tst_Settings::constInterfaceGoesThroughTheOther()
{
    class Other : public qv::IInterface {
    public:
        using IInterface::getInterface;
        IInterface* getInterface(std::string const& id) override { return id == "other" ? this : nullptr; }
    };
    Other const other;
    qv::IInterface const& root = other;
    QCOMPARE(root.getInterface("other"), &root);
    QVERIFY(!root.getInterface(qv::IInterface::ID));
    QCOMPARE(QByteArray::fromStdString(qv::IInterface::ID), QByteArray("qv::IInterface"));
}

void tst_Settings::operationsKeepTheirSlots_data()
{
    using support::slotOf;
    using Get = qv::IInterface* (qv::IInterface::*)(std::string const&);
    using ConstGet = qv::IInterface const* (qv::IInterface::*)(std::string const&) const;
    using Destination = qv::IPersistDestination;

    QTest::addColumn<int>("slot");
    QTest::addColumn<int>("expected");
    QTest::newRow("getInterface") << slotOf(static_cast<Get>(&qv::IInterface::getInterface)) << 2;
    QTest::newRow("getInterface, const") << slotOf(static_cast<ConstGet>(&qv::IInterface::getInterface)) << 3;
    QTest::newRow("beginGroup") << slotOf(&Destination::beginGroup) << 4;
    QTest::newRow("endGroup") << slotOf(&Destination::endGroup) << 5;
    QTest::newRow("beginWriteArray") << slotOf(&Destination::beginWriteArray) << 6;
    QTest::newRow("beginReadArray") << slotOf(&Destination::beginReadArray) << 7;
    QTest::newRow("endArray") << slotOf(&Destination::endArray) << 8;
    QTest::newRow("setArrayIndex") << slotOf(&Destination::setArrayIndex) << 9;
    QTest::newRow("setValue") << slotOf(&Destination::setValue) << 10;
    QTest::newRow("value") << slotOf(&Destination::value) << 11;
    QTest::newRow("remove") << slotOf(&Destination::remove) << 12;
    QTest::newRow("contains") << slotOf(&Destination::contains) << 13;
    QTest::newRow("sync") << slotOf(&Destination::sync) << 14;
    QTest::newRow("fileName is not virtual") << slotOf(&qv::Settings::fileName) << -1;
}

void tst_Settings::operationsKeepTheirSlots()
{
    QFETCH(int, slot);
    QTEST(slot, "expected");
}

void tst_Settings::fileNameIsThatOfQSettings()
{
    qv::Settings const settings(file(QStringLiteral("name.ini")), QSettings::IniFormat);
    QCOMPARE(settings.fileName(), file(QStringLiteral("name.ini")));
}

void tst_Settings::applicationSettings()
{
    qv::Settings settings;
    QCOMPARE(settings.fileName(), file(QStringLiteral("Organisation/Application.conf")));
    settings.setValue(QStringLiteral("key"), 5);
    settings.sync();
    QCOMPARE(QSettings().value(QStringLiteral("key")).toInt(), 5);
}

void tst_Settings::callersSettingsStayAlive()
{
    QPointer<QSettings> const settings = new QSettings(file(QStringLiteral("caller.ini")), QSettings::IniFormat);
    {
        qv::Settings const wrapped(settings);
    }
    QVERIFY(settings);
    delete settings;
}

void tst_Settings::everyOperationIsThatOfQSettings()
{
    QSettings backing(file(QStringLiteral("all.ini")), QSettings::IniFormat);
    qv::Settings settings(&backing);
    settings.beginGroup(QStringLiteral("Group"));
    QCOMPARE(backing.group(), QStringLiteral("Group"));
    settings.setValue(QStringLiteral("key"), QStringLiteral("value"));
    QVERIFY(settings.contains(QStringLiteral("key")));
    QCOMPARE(settings.value(QStringLiteral("key"), {}), QVariant(QStringLiteral("value")));
    QCOMPARE(settings.value(QStringLiteral("absent"), 9), QVariant(9));
    settings.endGroup();
    QCOMPARE(backing.value(QStringLiteral("Group/key")), QVariant(QStringLiteral("value")));
    settings.remove(QStringLiteral("Group"));
    QVERIFY(!settings.contains(QStringLiteral("Group/key")));
}

void tst_Settings::syncWritesTheFile()
{
    qv::Settings settings(file(QStringLiteral("sync.ini")), QSettings::IniFormat);
    settings.setValue(QStringLiteral("key"), 5);
    QVERIFY(!QFile::exists(settings.fileName()));
    settings.sync();
    QFile written(settings.fileName());
    QVERIFY(written.open(QIODevice::ReadOnly));
    QCOMPARE(written.readAll(), QByteArray("[General]\nkey=5\n"));
}

void tst_Settings::ownSettingsAreWrittenInTheEnd()
{
    QString const name = file(QStringLiteral("own.ini"));
    {
        qv::Settings settings(name, QSettings::IniFormat);
        settings.setValue(QStringLiteral("key"), 5);
    }
    QVERIFY(QFile::exists(name));
}

void tst_Settings::arraysReadBack()
{
    qv::Settings settings(file(QStringLiteral("array.ini")), QSettings::IniFormat);
    settings.beginWriteArray(QStringLiteral("Rows"), 3);
    for (int i = 0; i < 3; ++i) {
        settings.setArrayIndex(i);
        settings.setValue(QStringLiteral("cell"), i * 10);
    }
    settings.endArray();
    QCOMPARE(settings.beginReadArray(QStringLiteral("Rows")), 3);
    settings.setArrayIndex(2);
    QCOMPARE(settings.value(QStringLiteral("cell"), -1), QVariant(20));
    settings.endArray();
}

void tst_Settings::arrayHasItsGivenSize()
{
    qv::Settings settings(file(QStringLiteral("size.ini")), QSettings::IniFormat);
    settings.beginWriteArray(QStringLiteral("Rows"), 5);
    settings.endArray();
    QCOMPARE(settings.beginReadArray(QStringLiteral("Rows")), 5);
    settings.endArray();
    QVERIFY(settings.contains(QStringLiteral("Rows/size")));
}

void tst_Settings::absentArrayHasNoElements()
{
    qv::Settings settings(file(QStringLiteral("absent.ini")), QSettings::IniFormat);
    QCOMPARE(settings.beginReadArray(QStringLiteral("Rows")), 0);
    settings.endArray();
}

void tst_Settings::valuesOutlastTheObject()
{
    QString const name = file(QStringLiteral("lasting.ini"));
    qv::Settings(name, QSettings::IniFormat).setValue(QStringLiteral("key"), QStringLiteral("ü;=\"\\"));
    qv::Settings const again(name, QSettings::IniFormat);
    QCOMPARE(again.value(QStringLiteral("key"), {}), QVariant(QStringLiteral("ü;=\"\\")));
}

void tst_Settings::damagedFileReadsAsEmpty()
{
    QFile damaged(file(QStringLiteral("damaged.ini")));
    QVERIFY(damaged.open(QIODevice::WriteOnly));
    damaged.write(QByteArray("\0\xff[[[key=@Variant(\0\0", 20));
    damaged.close();
    qv::Settings const settings(damaged.fileName(), QSettings::IniFormat);
    QCOMPARE(settings.value(QStringLiteral("key"), 3), QVariant(3));
}

QTEST_GUILESS_MAIN(tst_Settings)
#include "tst_Settings.moc"
