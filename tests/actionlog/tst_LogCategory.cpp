// SPDX-License-Identifier: LGPL-2.1-or-later
#include "ReversingTranslator.h"

#include <GenericUtilities/actionlog/LogCategory.h>

#include <QCoreApplication>
#include <QTest>

using namespace qv;

namespace {

struct Row {
    ELogCategory category;
    char const* code;
    quint32 value;
    char const* name;
};

constexpr Row Rows[] = {
    {LogCategoryNone, "    ", 0x20202020, "None"},
    {LogCategoryAccess, "Aces", 0x41636573, "Access"},
    {LogCategoryLogonLogoff, "Logn", 0x4C6F676E, "Logon & Logoff"},
    {LogCategoryUserGroups, "UsGr", 0x55734772, "User & Groups"},
    {LogCategoryAuthorize, "Auth", 0x41757468, "Authorize"},
    {LogCategorySoftwareUpdates, "SoUp", 0x536F5570, "Software updates"},
    {LogCategoryCameraSettings, "cSet", 0x63536574, "Camera Settings"},
    {LogCategoryWebBrowser, "cWeB", 0x63576542, "Web browser"},
    {LogCategoryNetworkMessages, "NMsg", 0x4E4D7367, "Network messages"},
    {LogCategorySoftbuttons, "SofB", 0x536F6642, "Softbuttons"},
    {LogCategoryConfiguration, "appC", 0x61707043, "Orvane configuration"},
    {LogCategoryQuit, "aQit", 0x61516974, "Quit"},
    {LogCategoryLayoutManager, "lMgr", 0x6C4D6772, "Layout Manager"},
    {LogCategoryDisplayScaling, "DspS", 0x44737053, "Display scaling"},
    {LogCategoryContextMenus, "cMen", 0x634D656E, "Context menus"},
    {LogCategoryActionLogging, "aLog", 0x614C6F67, "Action log"},
    {LogCategoryEventSearch, "Srch", 0x53726368, "Event Search"},
    {LogCategoryExport, "Expt", 0x45787074, "Export"},
    {LogCategoryLocalArchive, "LoAr", 0x4C6F4172, "Local archive"},
    {LogCategoryVideoSearch, "SrVi", 0x53725669, "Video search"},
    {LogCategoryPlay, "Play", 0x506C6179, "Play"},
    {LogCategoryViewing, "View", 0x56696577, "Viewing"},
    {LogCategoryAlarm, "Alrm", 0x416C726D, "Alarm"},
    {LogCategorySequencer, "Sequ", 0x53657175, "Sequencer"},
    {LogCategoryLayout, "Layo", 0x4C61796F, "Layout"},
    {LogCategoryAudio, "Audi", 0x41756469, "Audio"},
    {LogCategoryPTZ, "lPTZ", 0x6C50545A, "PTZ"},
    {LogCategoryPTZPost, "pPTZ", 0x7050545A, "PTZ post"},
    {LogCategoryPTZConfig, "lPtC", 0x6C507443, "PTZ config"},
    {LogCategoryPTZPostConfig, "pPtC", 0x70507443, "PTZ post config"},
    {LogCategorySignalOuts, "cSgO", 0x6353674F, "Signal outs"},
    {LogCategoryError, "Eror", 0x45726F72, "Error"},
    {LogCategoryRemoteControl, "Cont", 0x436F6E74, "Remote control"},
    {LogCategoryDevices, "Devi", 0x44657669, "Devices"},
    {LogCategorySystem, "Syst", 0x53797374, "System"},
};

} // namespace

class TestLogCategory : public QObject {
    Q_OBJECT

private slots:
    void each_data();
    void each();
    void unknownCodeIsCalledNone();
    void namesAreSorted();
    void namesAreTranslatedWhenAskedFor();
    void namesAreSortedAsTranslated();
};

void TestLogCategory::each_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < static_cast<int>(std::size(Rows)); ++i)
        QTest::newRow(Rows[i].name) << i;
}

void TestLogCategory::each()
{
    QFETCH(int, index);
    Row const& row = Rows[index];
    QCOMPARE(static_cast<quint32>(row.category), row.value);
    QCOMPARE(FourChars(row.category).toString(), QLatin1String(row.code));
    LogCategory const category(row.category);
    QCOMPARE(category.code(), row.category);
    QCOMPARE(category.name(), QLatin1String(row.name));
}

void TestLogCategory::unknownCodeIsCalledNone()
{
    auto const unknown = static_cast<ELogCategory>(FourChars("zzzz").value());
    QCOMPARE(LogCategory(unknown).name(), QStringLiteral("None"));
    QCOMPARE(LogCategory(unknown).code(), unknown);
    QCOMPARE(LogCategory(static_cast<ELogCategory>(0)).name(), QStringLiteral("None"));
}

void TestLogCategory::namesAreSorted()
{
    QStringList const names = LogCategory::categoryNames();
    QStringList const expected = {"Access", "Action log", "Alarm", "Audio", "Authorize", "Camera Settings",
        "Context menus", "Devices", "Display scaling", "Error", "Event Search", "Export", "Layout", "Layout Manager",
        "Local archive", "Logon & Logoff", "Network messages", "None", "Orvane configuration", "PTZ", "PTZ config",
        "PTZ post", "PTZ post config", "Play", "Quit", "Remote control", "Sequencer", "Signal outs", "Softbuttons",
        "Software updates", "System", "User & Groups", "Video search", "Viewing", "Web browser"};
    QCOMPARE(expected.size(), 35);
    QCOMPARE(names, expected);
}

void TestLogCategory::namesAreTranslatedWhenAskedFor()
{
    ReversingTranslator translator;
    LogCategory const before(LogCategoryExport);
    QCoreApplication::installTranslator(&translator);
    QCOMPARE(before.name(), QStringLiteral("Export"));
    QCOMPARE(LogCategory(LogCategoryExport).name(), QStringLiteral("tropxE"));
    QCOMPARE(LogCategory(static_cast<ELogCategory>(1)).name(), QStringLiteral("enoN"));
}

void TestLogCategory::namesAreSortedAsTranslated()
{
    ReversingTranslator translator;
    QCoreApplication::installTranslator(&translator);
    QStringList const names = LogCategory::categoryNames();
    QCOMPARE(names.size(), 35);
    QCOMPARE(names.mid(0, 3), (QStringList{"ZTP", "enoN", "evihcra lacoL"}));
    QCOMPARE(names.last(), QStringLiteral("yalP"));
}

QTEST_GUILESS_MAIN(TestLogCategory)
#include "tst_LogCategory.moc"
