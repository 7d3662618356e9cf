// SPDX-License-Identifier: LGPL-2.1-or-later
#include "LogScene.h"
#include "MarkingTranslator.h"
#include "ReversingTranslator.h"

#include <GenericUtilities/actionlog/ExportActionLogMessageHandler.h>

#include <QLocale>
#include <QTest>
#include <QTranslator>

using qv::ExportActionLog;
using scene::Scene;

Q_DECLARE_METATYPE(ExportActionLog::EState)

namespace {

/// 2026-11-21 10:11:12 UTC and an hour later, in microseconds.
constexpr quint64 begin = 1795255872000000;
constexpr quint64 end = begin + 3600000000;

QString shortText(quint64 micros)
{
    QDateTime const time = QDateTime::fromSecsSinceEpoch(qint64(micros / 1000000));
    return QLocale::system().toString(time, QLocale::ShortFormat);
}

/// A language that has names for the formats.
class FormatTranslator : public QTranslator {
public:
    bool isEmpty() const override { return false; }
    QString translate(char const* context, char const*, char const*, int) const override
    {
        return qstrcmp(context, "ExportFormats") == 0 ? QStringLiteral("translated") : QString();
    }
};

} // namespace

class tst_ExportActionLog : public QObject {
    Q_OBJECT

private slots:
    void formats_data();
    void formats();
    void states_data();
    void states();
    void seriesOfExports_data();
    void seriesOfExports();
    void rename();
    void renameIsDescribedByBothPaths();
    void exports_data();
    void exports();
    void templates_data();
    void templates();
    void templateIsTranslatedFormatIsNot();
    void renameIsTranslated();
    void timesAreLocalAndCutToSeconds();
    void withoutTimesTheFirstSecondIsKept();
    void timesWrapAround();
};

void tst_ExportActionLog::formats_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("name");
    QTest::newRow("0") << 0 << 0 << "Bitmap";
    QTest::newRow("1") << 1 << 1 << "JPEG";
    QTest::newRow("2") << 2 << 2 << "Kalvid clip";
    QTest::newRow("3") << 3 << 3 << "AVI";
    QTest::newRow("4") << 4 << 4 << "MP4";
    QTest::newRow("5") << 5 << 5 << "MOV";
    QTest::newRow("6") << 6 << 6 << "WebM";
    QTest::newRow("7") << 7 << 7 << "Matroska";
    QTest::newRow("8") << 8 << 8 << "Quorvel file server storage";
    QTest::newRow("9") << 9 << 9 << "Printer";
    QTest::newRow("10") << 10 << 10 << "unknown";
    QTest::newRow("11 is read as 10") << 11 << 10 << "unknown";
    QTest::newRow("42 is read as 10") << 42 << 10 << "unknown";
    QTest::newRow("so is a negative one") << -1 << 10 << "unknown";
}

void tst_ExportActionLog::formats()
{
    QFETCH(int, number);
    QTEST(int(ExportActionLog::formatsData(number).value), "value");
    QTEST(QString::fromLatin1(ExportActionLog::formatsData(number).name), "name");
}

void tst_ExportActionLog::states_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("name");
    QTest::newRow("0") << 0 << 0 << "Start";
    QTest::newRow("1") << 1 << 1 << "Finished";
    QTest::newRow("2") << 2 << 2 << "Abort";
    QTest::newRow("3") << 3 << 3 << "Error";
    QTest::newRow("4") << 4 << 4 << "";
    QTest::newRow("5 is read as 4") << 5 << 4 << "";
    QTest::newRow("so is a large one") << 1000000 << 4 << "";
}

void tst_ExportActionLog::states()
{
    QFETCH(int, number);
    QTEST(int(ExportActionLog::stateData(number).value), "value");
    QTEST(QString::fromLatin1(ExportActionLog::stateData(number).name), "name");
}

void tst_ExportActionLog::seriesOfExports_data()
{
    QTest::addColumn<ExportActionLog::EState>("state");
    QTest::addColumn<QString>("id");
    QTest::newRow("start") << ExportActionLog::Start << "";
    QTest::newRow("finished") << ExportActionLog::Finished << "ExpD";
    QTest::newRow("abort") << ExportActionLog::Abort << "ExpA";
    QTest::newRow("error") << ExportActionLog::Error << "ExpE";
    QTest::newRow("no state") << ExportActionLog::NoState << "";
}

void tst_ExportActionLog::seriesOfExports()
{
    QFETCH(ExportActionLog::EState, state);
    QFETCH(QString, id);
    Scene scene;
    ExportActionLog::send(QStringLiteral("three clips"), state);
    QCOMPARE(scene.log().entryCount(), id.isEmpty() ? 0 : 1);
    if (id.isEmpty())
        return;
    QCOMPARE(scene.log().entry(0)->id().toString(), id);
    QCOMPARE(scene.listed(), QStringList({QStringLiteral("three clips")}));
}

void tst_ExportActionLog::rename()
{
    Scene scene;
    ExportActionLog::send(QStringLiteral("/clips/"), QStringLiteral("%3.avi"), QStringLiteral("b.avi"));
    qv::LogEntry const* const entry = scene.log().entry(0);
    QCOMPARE(entry->id().toString(), QStringLiteral("ExpR"));
    QCOMPARE(scene::textOf(entry), QStringLiteral("'/clips/%3.avi' to '/clips/b.avi'."));
    QCOMPARE(entry->logValue(qv::FourChars("path"))->toString(), QStringLiteral("/clips/"));
    QCOMPARE(entry->logValue(qv::FourChars(0x00737263))->toString(), QStringLiteral("%3.avi"));
    QCOMPARE(entry->logValue(qv::FourChars("dest"))->toString(), QStringLiteral("b.avi"));
}

void tst_ExportActionLog::renameIsDescribedByBothPaths()
{
    Scene scene;
    ExportActionLog::send(QStringLiteral("/clips/"), QStringLiteral("a.avi"), QStringLiteral("b.avi"));
    QCOMPARE(scene.log().entry(0)->description(), QStringLiteral("'/clips/a.avi' to '/clips/b.avi'."));
}

void tst_ExportActionLog::exports_data()
{
    QTest::addColumn<ExportActionLog::EState>("state");
    QTest::addColumn<QString>("id");
    QTest::newRow("start") << ExportActionLog::Start << "ExpS";
    QTest::newRow("finished") << ExportActionLog::Finished << "ExpW";
    QTest::newRow("abort") << ExportActionLog::Abort << "";
    QTest::newRow("error") << ExportActionLog::Error << "";
    QTest::newRow("no state") << ExportActionLog::NoState << "";
}

void tst_ExportActionLog::exports()
{
    QFETCH(ExportActionLog::EState, state);
    QFETCH(QString, id);
    Scene scene;
    ExportActionLog::send(ExportActionLog::MP4, QStringLiteral("Lobby"), QStringLiteral("/a.mp4"), begin, end, state);
    QCOMPARE(scene.log().entryCount(), id.isEmpty() ? 0 : 1);
    if (id.isEmpty())
        return;
    qv::LogEntry const* const entry = scene.log().entry(0);
    QCOMPARE(entry->id().toString(), id);
    QCOMPARE(entry->logValue(qv::FourChars("Form"))->toString(), QStringLiteral("MP4"));
    QCOMPARE(entry->logValue(qv::FourChars("srcP"))->toString(), QStringLiteral("Lobby"));
    QCOMPARE(entry->logValue(qv::FourChars("dstP"))->toString(), QStringLiteral("/a.mp4"));
    QCOMPARE(entry->logValue(qv::FourChars("from"))->toString(), shortText(begin));
    QCOMPARE(entry->logValue(qv::FourChars("to  "))->toString(), shortText(end));
}

void tst_ExportActionLog::templates_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<quint64>("from");
    QTest::addColumn<quint64>("to");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("description");
    QString const t1 = shortText(begin);
    QString const t2 = shortText(end);
    QTest::newRow("no time") << "" << quint64(0) << quint64(0) << "Format='%1'; Source='%2'."
                             << "Format='AVI'; Source='Lobby'.";
    QTest::newRow("no time, though an end") << "" << quint64(0) << end << "Format='%1'; Source='%2'."
                                            << "Format='AVI'; Source='Lobby'.";
    QTest::newRow("no time, a target") << "a.avi" << quint64(0) << quint64(0)
                                       << "Format='%1'; Source='%2'; Target='%3'."
                                       << "Format='AVI'; Source='Lobby'; Target='a.avi'.";
    QTest::newRow("a moment") << "" << begin << quint64(0) << "Format='%1'; Source='%2'; Timestamp='%4'.%3"
                              << "Format='AVI'; Source='Lobby'; Timestamp='" + t1 + "'.";
    QTest::newRow("a moment, a target") << "a.avi" << begin << quint64(0)
                                        << "Format='%1'; Source='%2'; Timestamp='%4'; Target='%3'."
                                        << "Format='AVI'; Source='Lobby'; Timestamp='" + t1 + "'; Target='a.avi'.";
    QTest::newRow("a period: no equals sign behind the second")
        << "" << begin << end << "Format='%1'; Source='%2'; Date and time from='%4'; Date and time to '%5'.%3"
        << "Format='AVI'; Source='Lobby'; Date and time from='" + t1 + "'; Date and time to '" + t2 + "'.";
    QTest::newRow("a period, a target")
        << "a.avi" << begin << end
        << "Format='%1'; Source='%2'; Date and time from='%4'; Date and time to '%5'; Target='%3'."
        << "Format='AVI'; Source='Lobby'; Date and time from='" + t1 + "'; Date and time to '" + t2
            + "'; Target='a.avi'.";
}

void tst_ExportActionLog::templates()
{
    QFETCH(QString, target);
    QFETCH(quint64, from);
    QFETCH(quint64, to);
    Scene scene;
    ExportActionLog::send(ExportActionLog::AVI, QStringLiteral("Lobby"), target, from, to, ExportActionLog::Finished);
    QTEST(scene::textOf(scene.log().entry(0)), "text");
    QTEST(scene.log().entry(0)->description(), "description");
}

void tst_ExportActionLog::templateIsTranslatedFormatIsNot()
{
    ReversingTranslator reversing;
    FormatTranslator formats;
    QCoreApplication::installTranslator(&reversing);
    QCoreApplication::installTranslator(&formats);
    Scene scene;
    ExportActionLog::send(ExportActionLog::Printer, QStringLiteral("Lobby"), {}, 0, 0, ExportActionLog::Start);
    QCOMPARE(scene.listed(), QStringList({QStringLiteral(".'2%'=ecruoS ;'1%'=tamroF")}));
    QCOMPARE(scene.log().entry(0)->logValue(qv::FourChars("Form"))->toString(), QStringLiteral("Printer"));
}

void tst_ExportActionLog::renameIsTranslated()
{
    MarkingTranslator marking;
    QCoreApplication::installTranslator(&marking);
    Scene scene;
    ExportActionLog::send(QStringLiteral("/clips/"), QStringLiteral("a.avi"), QStringLiteral("b.avi"));
    QCOMPARE(scene.listed(), QStringList({QStringLiteral("~'/clips/a.avi' to '/clips/b.avi'.")}));
}

void tst_ExportActionLog::timesAreLocalAndCutToSeconds()
{
    Scene scene;
    ExportActionLog::send(ExportActionLog::AVI, {}, {}, begin + 999999, end + 500000, ExportActionLog::Start);
    auto const timeOf = [&](char const(&code)[5]) {
        return dynamic_cast<qv::TLogValue<QDateTime> const&>(*scene.log().entry(0)->logValue(code)).value();
    };
    QCOMPARE(timeOf("from").toMSecsSinceEpoch(), qint64(begin / 1000));
    QCOMPARE(timeOf("to  ").toMSecsSinceEpoch(), qint64(end / 1000));
    QCOMPARE(timeOf("from").timeSpec(), Qt::LocalTime);
    QCOMPARE(timeOf("to  ").timeSpec(), Qt::LocalTime);
}

void tst_ExportActionLog::withoutTimesTheFirstSecondIsKept()
{
    Scene scene;
    ExportActionLog::send(ExportActionLog::AVI, {}, {}, 0, 0, ExportActionLog::Start);
    QCOMPARE(scene.log().entry(0)->logValue(qv::FourChars("from"))->toString(), shortText(0));
    QCOMPARE(scene.log().entry(0)->logValue(qv::FourChars("to  "))->toString(), shortText(0));
}

void tst_ExportActionLog::timesWrapAround()
{
    Scene scene;
    quint64 const beyond = (quint64(1) << 32) * 1000000 + begin;
    ExportActionLog::send(ExportActionLog::AVI, {}, {}, beyond, 0, ExportActionLog::Start);
    QCOMPARE(scene.log().entry(0)->logValue(qv::FourChars("from"))->toString(), shortText(begin));
}

QTEST_GUILESS_MAIN(tst_ExportActionLog)
#include "tst_ExportActionLog.moc"
