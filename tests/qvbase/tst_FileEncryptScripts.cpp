// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/EncryptedFiles.h>

#include <QMap>
#include <QTextStream>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <functional>

namespace {

QIODevice::OpenMode modeOf(QString const& letters)
{
    static QMap<QChar, QIODevice::OpenModeFlag> const flags = {{'r', QIODevice::ReadOnly}, {'w', QIODevice::WriteOnly},
        {'a', QIODevice::Append}, {'t', QIODevice::Truncate}, {'x', QIODevice::Text}, {'u', QIODevice::Unbuffered},
        {'n', QIODevice::NewOnly}, {'e', QIODevice::ExistingOnly}};
    QIODevice::OpenMode mode = QIODevice::NotOpen;
    for (QChar const letter : letters)
        mode |= flags.value(letter);
    return mode;
}

/// "\n" and "\r" in a script stand for themselves.
QByteArray textOf(QString const& argument)
{
    return argument.toUtf8().replace("\\n", "\n").replace("\\r", "\r").replace("_", " ");
}

QString shown(QByteArray const& bytes)
{
    return QString::fromLatin1(bytes.toPercentEncoding());
}

QString shown(qint64 value)
{
    return QString::number(value);
}

using Command = std::function<QString(QFile& file, QString const& argument)>;

QString readInto(QFile& file, QString const& argument)
{
    QByteArray bytes(argument.toInt(), '\0');
    qint64 const count = file.read(bytes.data(), bytes.size());
    return shown(count) + ':' + shown(bytes.left(int(qMax(count, qint64(0)))));
}

QString readLineInto(QFile& file, QString const& argument)
{
    QByteArray bytes(argument.toInt(), '\0');
    qint64 const count = file.readLine(bytes.data(), bytes.size());
    return shown(count) + ':' + shown(bytes.left(int(qMax(count, qint64(0)))));
}

QString many(QFile& file, QString const& argument)
{
    QByteArray const line = "0123456789abcdef 0123456789abcdef 0123456789abcdef\n";
    return shown(file.write(line.repeated(argument.toInt())));
}

/// The words of the scripts below.
QMap<QString, Command> const& commands()
{
    // clang-format off
    static QMap<QString, Command> const table = {
        {"open", [](QFile& file, QString const& a) { return shown(file.open(modeOf(a))); }},
        {"close", [](QFile& file, QString const&) { file.close(); return QString(); }},
        {"write", [](QFile& file, QString const& a) { return shown(file.write(textOf(a))); }},
        {"many", many},
        {"put", [](QFile& file, QString const& a) { return shown(file.putChar(textOf(a).at(0))); }},
        {"read", [](QFile& file, QString const& a) { return shown(file.read(a.toInt())); }},
        {"into", readInto},
        {"all", [](QFile& file, QString const&) { return shown(file.readAll()); }},
        {"line", [](QFile& file, QString const& a) { return shown(file.readLine(a.toInt())); }},
        {"lineInto", readLineInto},
        {"canLine", [](QFile& file, QString const&) { return shown(file.canReadLine()); }},
        {"peek", [](QFile& file, QString const& a) { return shown(file.peek(a.toInt())); }},
        {"get", [](QFile& file, QString const&) { char c = '?'; bool const ok = file.getChar(&c); return shown(ok) + c; }},
        {"unget", [](QFile& file, QString const& a) { file.ungetChar(textOf(a).at(0)); return QString(); }},
        {"skip", [](QFile& file, QString const& a) { return shown(file.skip(a.toInt())); }},
        {"seek", [](QFile& file, QString const& a) { return shown(file.seek(a.toInt())); }},
        {"reset", [](QFile& file, QString const&) { return shown(file.reset()); }},
        {"resize", [](QFile& file, QString const& a) { return shown(file.resize(a.toInt())); }},
        {"flush", [](QFile& file, QString const&) { return shown(file.flush()); }},
        {"begin", [](QFile& file, QString const&) { file.startTransaction(); return shown(file.isTransactionStarted()); }},
        {"commit", [](QFile& file, QString const&) { file.commitTransaction(); return QString(); }},
        {"rollback", [](QFile& file, QString const&) { file.rollbackTransaction(); return QString(); }},
        {"textMode", [](QFile& file, QString const& a) { file.setTextModeEnabled(a == QLatin1String("1")); return QString(); }},
        {"mode", [](QFile& file, QString const&) { return shown(int(file.openMode() & ~int(QIODevice::Unbuffered))); }},
        {"sequential", [](QFile& file, QString const&) { return shown(file.isSequential()); }},
        {"available", [](QFile& file, QString const&) { return shown(file.bytesAvailable()); }},
        {"exists", [](QFile& file, QString const&) { return shown(file.exists()); }},
        {"remove", [](QFile& file, QString const&) { return shown(file.remove()); }},
    };
    // clang-format on
    return table;
}

/// One line for each step: the step, its result, then where the device stands.
QStringList transcript(QFile& file, QString const& script)
{
    QStringList lines;
    for (QString const& step : script.split(QStringLiteral("; "))) {
        QString const word = step.section(' ', 0, 0);
        if (!commands().contains(word))
            return {QStringLiteral("no such word: ") + word};
        QString const result = commands()[word](file, step.section(' ', 1));
        lines << QStringLiteral("%1 -> %2, pos %3, size %4, end %5, open %6")
                     .arg(step, result)
                     .arg(file.pos())
                     .arg(file.size())
                     .arg(file.atEnd())
                     .arg(file.isOpen());
    }
    return lines;
}

} // namespace

/// What a device does is what QFile does, step by step.
class tst_FileEncryptScripts : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { encrypted::useCheapKeys(); }
    void plainIsQFile_data() { scripts(true); }
    void plainIsQFile();
    void encryptedIsQFile_data() { scripts(false); }
    void encryptedIsQFile();
    void overwritingIsRefused_data();
    void overwritingIsRefused();
    void textStream();
    void xmlStream();

private:
    static void scripts(bool withOverwriting);
};

void tst_FileEncryptScripts::scripts(bool withOverwriting)
{
    QTest::addColumn<QString>("script");
    auto const row
        = [](char const* meaning, char const* script) { QTest::newRow(meaning) << QString::fromLatin1(script); };
    // clang-format off
    row("write, then read", "open w; write abc; write def; close; open r; all; close");
    row("empty file", "open w; close; open r; all; read 1; into 5; line 0; get; close");
    row("file that is not there", "open r; exists; read 1; write x");
    row("file that must be there", "open we; exists; open re; exists");
    row("new file", "open wn; write abc; close; open wn; mode; open rn; open r; all");
    row("new and existing at once", "open wne; exists");
    row("neither read nor written", "open t; open x; mode");
    row("opened twice", "open w; open r; mode; write abc; close; open r; open w; all");
    row("open modes show themselves", "open w; mode; close; open a; mode; close; open rwx; mode; close; open ru; mode; sequential; close; mode");
    row("writing only truncates", "open w; write abcdef; close; open w; write x; close; open r; all");
    row("reading and writing keeps", "open w; write abcdef; close; open rw; all; write x; seek 0; all");
    row("truncating on open", "open w; write abcdef; close; open rwt; all; write x; seek 0; all");
    row("truncating, read only", "open w; write abcdef; close; open rt; all; close; open r; all");
    row("existing, written only", "open w; write abcdef; close; open we; write x; close; open r; all");
    row("appending", "open a; write abc; write def; close; open a; write ghi; close; open r; all");
    row("appending and reading", "open ra; write abc; seek 0; read 2; write def; read 1; seek 1; all; write x; close; open r; all");
    row("appending and truncating", "open w; write abc; close; open at; write x; close; open r; all");
    row("appending wherever the position", "open ra; write abcdef; seek 2; write X; read 1; seek 0; all");
    row("reading from what is write only", "open w; write abc; seek 0; read 1; all; get; into 3");
    row("writing to what is read only", "open w; write abc; close; open r; write x; put y; resize 1; all");
    row("reading on a closed device", "read 1; all; line 0; get; write x; seek 0; flush");
    row("read in pieces", "open rw; write abcdefghij; seek 0; read 3; read 0; read 4; into 2; into 9; into 9; read 9");
    row("seek", "open rw; write abcdefghij; seek 4; read 2; seek 0; read 1; seek 9; read 5; seek 10; read 1");
    row("seek beyond the end", "open rw; write abc; seek 7; read 1; all; into 4; seek 1; all");
    row("seek to a negative place", "open rw; write abc; seek -1; read 1; seek 0; all");
    row("seek while much is read ahead", "open w; many 1000; close; open r; read 5; seek 20000; read 7; seek 3; line 0; seek 50990; all; seek 16383; into 3");
    row("reset and skip", "open rw; write abcdefghij; reset; skip 3; read 2; skip 100; read 1; reset; read 1");
    row("lines", "open rw; write one\\ntwo\\n\\nfour; seek 0; line 0; canLine; line 0; line 0; canLine; line 0; line 0");
    row("lines into a buffer", "open rw; write one\\ntwo\\n\\nfour; seek 0; lineInto 3; lineInto 100; lineInto 4; lineInto 4; lineInto 10; lineInto 10; lineInto 10");
    row("lines over several writes", "open rw; write on; write e\\nt; write wo; seek 0; line 0; line 0; line 0");
    row("lines, unbuffered", "open rwu; write one\\ntwo; seek 0; line 0; canLine; line 2; line 0; line 0");
    row("many lines", "open w; many 2000; close; open r; line 0; seek 51000; line 0; seek 101999; line 0; line 0");
    row("peek", "open rw; write abcdef; seek 0; peek 3; read 2; peek 10; read 10; peek 1; seek 1; peek 2; get");
    row("peek, unbuffered", "open rwu; write abcdef; seek 0; peek 3; read 2; peek 10; read 10; peek 1");
    row("characters", "open rw; put a; put b; put \\n; seek 0; get; get; get; get");
    row("characters, then text", "open a; put a; write bc; put d; flush; put e; close; open r; all");
    row("a character where it is read only", "open w; close; open r; put a");
    row("ungetChar", "open rw; write abc; seek 0; get; unget X; available; read 2; unget Y; unget Z; all; seek 1; all");
    row("ungetChar, unbuffered", "open rwu; write abc; seek 0; get; unget X; read 2; all");
    row("transaction committed", "open rw; write abcdef; seek 0; begin; read 2; read 1; commit; read 1; all");
    row("transaction rolled back", "open rw; write abcdef; seek 0; begin; read 2; read 1; rollback; read 1; all");
    row("transaction at the end", "open rw; write abc; begin; read 1; rollback; seek 1; begin; all; rollback; all");
    row("text mode", "open wx; write a\\nb\\r\\nc; close; open rx; all; close; open r; all");
    row("text mode by lines", "open w; write a\\r\\nb\\r\\n; close; open rx; line 0; line 0; line 0");
    row("text mode switched", "open w; write a\\r\\nb\\r\\nc; close; open r; read 3; textMode 1; all; seek 0; textMode 0; all");
    row("text mode, positions", "open rwx; write a\\r\\nbc\\r\\nd; seek 0; read 2; read 2; seek 3; get; peek 9; all");
    row("write after reading to the end", "open w; write abc; close; open rw; all; write def; seek 0; all");
    row("write nothing", "open rw; write ; write abc; write ; seek 0; all");
    row("resize to less, between two writes", "open rw; write abc; write def; write ghi; resize 6; seek 0; all; seek 6; write X; seek 0; all");
    row("resize to less, within a write", "open rw; write abcdef; write ghi; resize 4; all; seek 0; all; seek 4; write X; seek 0; all; close; open r; all");
    row("resize to nothing", "open rw; write abc; resize 0; all; write de; seek 0; all");
    row("resize to the same", "open rw; write abc; resize 3; seek 0; all");
    row("resize to more", "open rw; write abc; resize 8; seek 0; all; seek 8; write x; seek 0; all");
    row("resize keeps the position before it", "open rw; write abcdef; seek 2; resize 4; all; resize 1; read 1");
    row("resize when closed", "open w; write abc; write def; close; resize 4; open r; all; close; resize 9; resize 3; open r; all");
    row("resize of what is not there", "resize 3; exists");
    row("resize to a negative size", "open rw; write abc; resize -1; seek 0; all");
    row("flush", "open w; write abc; flush; close; flush; open r; flush; all");
    row("size when closed", "open w; write abc; close; exists; remove; exists");
    row("removed while open", "open w; write abc; remove; exists");
    row("large writes", "open w; many 30000; close; open r; seek 1048570; line 0; seek 1529990; all; seek 0; line 0");
    row("large write, small ones around", "open w; write abc; many 25000; write def; close; open r; read 5; seek 1275000; all; seek 1048575; read 9");
    // clang-format on
    if (withOverwriting) {
        row("overwriting", "open rw; write abcdef; seek 2; write XY; seek 0; all");
        row("overwriting while read ahead", "open rw; write abcdef; seek 0; read 2; write XY; all; seek 0; all");
        row("writing behind the end", "open rw; write abc; seek 5; write x; seek 0; all");
    }
}

void tst_FileEncryptScripts::plainIsQFile()
{
    QFETCH(QString, script);
    QTemporaryDir const folder;
    QFile reference(folder.filePath(QStringLiteral("reference")));
    qv::FileEncrypt plain(folder.filePath(QStringLiteral("plain")));
    QCOMPARE(transcript(plain, script), transcript(reference, script));
    plain.close();
    reference.close();
    QCOMPARE(encrypted::rawBytes(plain.fileName()), encrypted::rawBytes(reference.fileName()));
}

void tst_FileEncryptScripts::encryptedIsQFile()
{
    QFETCH(QString, script);
    QTemporaryDir const folder;
    QFile reference(folder.filePath(QStringLiteral("reference")));
    auto const file = encrypted::device(folder.filePath(QStringLiteral("encrypted")));
    QCOMPARE(transcript(*file, script), transcript(reference, script));
}

void tst_FileEncryptScripts::overwritingIsRefused_data()
{
    QTest::addColumn<QString>("script");
    QTest::newRow("at the start") << "seek 0";
    QTest::newRow("within a record") << "seek 2";
    QTest::newRow("between two records") << "seek 3";
    QTest::newRow("before the last byte") << "seek 5";
    QTest::newRow("behind the end") << "seek 7";
    QTest::newRow("while read ahead") << "seek 0; read 2";
}

void tst_FileEncryptScripts::overwritingIsRefused()
{
    QFETCH(QString, script);
    QTemporaryDir const folder;
    auto const file = encrypted::device(folder.filePath(QStringLiteral("log")));
    transcript(*file, QStringLiteral("open rw; write abc; write def; ") + script);
    QCOMPARE(file->write("X"), qint64(-1));
    QVERIFY(!file->errorString().isEmpty());
    QVERIFY(file->seek(6));
    QCOMPARE(file->write("X"), qint64(1));
    QCOMPARE(encrypted::readBack(file->fileName()).text, QByteArray("abcdefX"));
}

void tst_FileEncryptScripts::textStream()
{
    QTemporaryDir const folder;
    auto const file = encrypted::device(folder.filePath(QStringLiteral("log")));
    QVERIFY(file->open(QIODevice::ReadWrite | QIODevice::Text));
    QTextStream stream(file.get());
    stream << "one 1\n" << QString(20000, QLatin1Char('x')) << Qt::endl;
    stream.seek(0);
    QCOMPARE(stream.readLine(), QStringLiteral("one 1"));
    QCOMPARE(stream.readLine().size(), 20000);
    QVERIFY(stream.atEnd());
    stream << "written as the device closes";
    file->close();
    QVERIFY(encrypted::readBack(file->fileName()).text.endsWith("xx\nwritten as the device closes"));
}

void tst_FileEncryptScripts::xmlStream()
{
    QTemporaryDir const folder;
    auto const file = encrypted::device(folder.filePath(QStringLiteral("log")));
    QVERIFY(file->open(QIODevice::ReadWrite));
    QXmlStreamWriter writer(file.get());
    writer.writeStartDocument();
    writer.writeTextElement(QStringLiteral("Entry"), QStringLiteral("<text>"));
    writer.writeEndDocument();
    QVERIFY(file->seek(0));
    QXmlStreamReader reader(file.get());
    QVERIFY(reader.readNextStartElement());
    QCOMPARE(reader.readElementText(), QStringLiteral("<text>"));
    QVERIFY(!reader.hasError());
}

QTEST_GUILESS_MAIN(tst_FileEncryptScripts)
#include "tst_FileEncryptScripts.moc"
