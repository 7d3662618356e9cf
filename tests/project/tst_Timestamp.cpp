// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/util/CText2Image.h>

#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using qv::CText2Image;

/// Runs the example and reads the times from the frames that it wrote.
class tst_Timestamp : public QObject {
    Q_OBJECT

private slots:
    void framesBearTheirTimes_data();
    void framesBearTheirTimes();
    void nowIsStamped();
    void refusals_data();
    void refusals();

private:
    int run(QStringList const& arguments);
    QString path(QString const& name) const { return m_folder.filePath(name); }
    QString timeIn(QImage const& frame) const;

    QTemporaryDir m_folder;
    QByteArray m_complaint;
};

int tst_Timestamp::run(QStringList const& arguments)
{
    QProcess process;
    process.start(TIMESTAMP_PROGRAM, arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return -1;
    m_complaint = process.readAllStandardError();
    return process.exitCode();
}

/// The characters of the stamp, each found by comparing with all glyphs; "*" is the record dot, "#" no glyph.
QString tst_Timestamp::timeIn(QImage const& frame) const
{
    CText2Image const images;
    auto const characterAt = [&](QPoint const& place) -> QChar {
        QImage const cell = frame.copy(QRect(place, QSize(16, 20))).convertToFormat(QImage::Format_BGR888);
        for (char const c : QByteArray("0123456789.:- >")) {
            QByteArray glyph(960, '\0');
            images.digit2Image(reinterpret_cast<unsigned char*>(glyph.data()), c);
            QImage const drawn(reinterpret_cast<uchar const*>(glyph.constData()), 16, 20, 48, QImage::Format_BGR888);
            if (drawn.mirrored() == cell)
                return c == '>' ? '*' : c;
        }
        return '#';
    };
    QString text;
    for (int i = 0; i < 24; ++i)
        text += characterAt({8 + 16 * i, frame.height() - 28});
    return text;
}

void tst_Timestamp::framesBearTheirTimes_data()
{
    QTest::addColumn<QPoint>("place");
    QTest::addColumn<QString>("time");

    QTest::newRow("first") << QPoint(0, 0) << "*29.02.2020 12:34:56.000";
    QTest::newRow("second") << QPoint(416, 0) << "*29.02.2020 12:34:56.250";
    QTest::newRow("third") << QPoint(0, 234) << "*29.02.2020 12:34:56.500";
    QTest::newRow("fourth") << QPoint(416, 234) << "*29.02.2020 12:34:56.750";
}

void tst_Timestamp::framesBearTheirTimes()
{
    QFETCH(QPoint, place);
    QCOMPARE(run({"--begin", "1582979696000000", path("frames.png")}), 0);
    QImage const sheet(path("frames.png"));
    QCOMPARE(sheet.size(), QSize(832, 468));
    QTEST(timeIn(sheet.copy(QRect(place, QSize(416, 234)))), "time");
}

void tst_Timestamp::nowIsStamped()
{
    QDateTime const before = QDateTime::currentDateTimeUtc();
    QCOMPARE(run({path("now.png")}), 0);
    QDateTime const after = QDateTime::currentDateTimeUtc();
    QString const text = timeIn(QImage(path("now.png")).copy(0, 0, 416, 234));
    QDateTime stamped = QDateTime::fromString(text, "*dd.MM.yyyy hh:mm:ss.zzz");
    stamped.setTimeSpec(Qt::UTC);
    QVERIFY2(before <= stamped && stamped <= after, qPrintable(text));
}

void tst_Timestamp::refusals_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("complaint");

    QTest::newRow("no file") << QStringList() << QByteArray("timestamp: name one file to be written\n");
    QTest::newRow("two files") << QStringList{"a.png", "b.png"}
                               << QByteArray("timestamp: name one file to be written\n");
    QTest::newRow("no number") << QStringList{"--begin", "noon", "a.png"}
                               << QByteArray("timestamp: --begin is a number of microseconds\n");
    QTest::newRow("no such folder") << QStringList{"/dev/null/a.png"}
                                    << QByteArray("timestamp: '/dev/null/a.png' cannot be written\n");
}

void tst_Timestamp::refusals()
{
    QFETCH(QStringList, arguments);
    QCOMPARE(run(arguments), 2);
    QTEST(m_complaint, "complaint");
}

QTEST_APPLESS_MAIN(tst_Timestamp)
#include "tst_Timestamp.moc"
