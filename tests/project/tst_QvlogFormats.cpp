// SPDX-License-Identifier: LGPL-2.1-or-later
#include "QvlogScene.h"

#include <QJsonDocument>
#include <QJsonObject>

/// Entries for other programs.
class QvlogFormatsTest : public QObject {
    Q_OBJECT

private slots:
    void csv();
    void csvOnATerminal();
    void json();
    void xml();
};

void QvlogFormatsTest::csv()
{
    QvlogScene scene;
    scene.write("a.qvl",
        scene.header() + scene.done("plain") + scene.done("comma, \xc3\xa4")
            + scene.done("&quot;quoted&quot;&#10;lines &#9;\x7f", "31 May 2024 18:30:00", "") + scene.end());
    QvlogResult const result = scene.run({"show", "--format", "csv", "a.qvl"});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.output,
        QByteArray("time,user,category,category_name,id,action,description,file\r\n"
                   "2024-05-31T18:30:00,ann (System),Expt,Export,ExpD,Export done,plain,a.qvl\r\n"
                   "2024-05-31T18:30:00,ann (System),Expt,Export,ExpD,Export done,\"comma, \xc3\xa4\",a.qvl\r\n"
                   "2024-05-31T18:30:00,,Expt,Export,ExpD,Export done,\"\"\"quoted\"\"\nlines \t\x7f\",a.qvl\r\n"));
}

void QvlogFormatsTest::csvOnATerminal()
{
    QvlogScene scene;
    scene.write("a.qvl",
        scene.header()
            + scene.done("a\x7f\xc2\x9b"
                         "b")
            + scene.end());
    Terminal terminal;
    TerminalProcess process;
    process.setProcessEnvironment(scene.environment({}));
    process.setStandardOutputFile(terminal.name());
    process.start(QVLOG_PROGRAM, {"show", "--format", "csv", "a.qvl"});
    QCOMPARE(scene.resultOf(process).exitCode, 0);
    QTRY_VERIFY(terminal.shown().endsWith("a.qvl\n"));
    QVERIFY(terminal.shown().contains("Export done,a\\x7f\\x9bb,a.qvl"));
}

void QvlogFormatsTest::json()
{
    QvlogScene scene;
    scene.write("a.qvl",
        scene.header()
            + "<Entry ID=\"ExpR\" Time=\"31 May 2024 18:30:00\" User=\"ann\" Text=\"'%1%2'&#10;\" path=\"/p/\" "
              "src=\"\xc3\xa4\" dest=\"b\"/>"
            + "<Entry ID=\"Zoom\" Time=\"later\"/>" + scene.end());
    QByteArrayList const lines = scene.run({"show", "--format", "json", "a.qvl"}).output.split('\n');
    QCOMPARE(lines.size(), 3);
    QJsonObject const values{{"Text", "'%1%2'\n"}, {"path", "/p/"}, {"src", "\u00e4"}, {"dest", "b"}};
    QJsonObject const first{{"time", "2024-05-31T18:30:00"}, {"user", "ann"}, {"category", "Expt"},
        {"categoryName", "Export"}, {"id", "ExpR"}, {"action", "Export rename"}, {"description", "'/p/\u00e4'\n"},
        {"values", values}, {"file", "a.qvl"}};
    QCOMPARE(QJsonDocument::fromJson(lines.at(0)).object(), first);
    QJsonObject const second{{"time", "later"}, {"user", ""}, {"category", ""}, {"categoryName", ""}, {"id", "Zoom"},
        {"action", "[Zoom]"}, {"description", ""}, {"values", QJsonObject()}, {"file", "a.qvl"}};
    QCOMPARE(QJsonDocument::fromJson(lines.at(1)).object(), second);
}

void QvlogFormatsTest::xml()
{
    QvlogScene scene;
    scene.write("a.qvl", scene.header() + scene.done("&lt;&amp;&quot; \xc3\xa4&#13;&#10;&#9;") + scene.end());
    QCOMPARE(scene.run({"show", "--format", "xml", "a.qvl"}).output,
        QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                   "<log>\n"
                   "  <entry id=\"ExpD\" time=\"2024-05-31T18:30:00\" user=\"ann (System)\" category=\"Expt\" "
                   "categoryName=\"Export\" action=\"Export done\" "
                   "description=\"&lt;&amp;&quot; \xc3\xa4&#13;&#10;&#9;\" file=\"a.qvl\">\n"
                   "    <value name=\"Text\" text=\"&lt;&amp;&quot; \xc3\xa4&#13;&#10;&#9;\"/>\n"
                   "  </entry>\n"
                   "</log>\n"));
}

QTEST_GUILESS_MAIN(QvlogFormatsTest)
#include "tst_QvlogFormats.moc"
