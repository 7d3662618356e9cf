// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/Log.h>

#include "MatrixScene.h"

#include <support/Random.h>
#include <support/VirtualSlots.h>

#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>

#include <algorithm>

namespace {

constexpr int error = 3;

/// The same packing, told another way: the text of the bits, cut at 32, each piece read from its end as a binary
/// number.
QByteArray packedOf(QByteArray const& cells)
{
    QByteArray text;
    for (int begin = 0; begin < cells.size(); begin += 32) {
        QByteArray piece = cells.mid(begin, 32);
        std::reverse(piece.begin(), piece.end());
        text += QByteArray::number(piece.toUInt(nullptr, 2)) + '+';
    }
    return text;
}

} // namespace

/// Saving and loading.
class tst_FeatureMatrixStore : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void cellsAreSaved_data();
    void cellsAreSaved();
    void keysAndTypes();
    void everyShapeComesBack();
    void settingsFileComesBack();
    void settingsFileReadsSo();
    void savingEndsModification();
    void modificationAfterLoading_data();
    void modificationAfterLoading();
    void damagedText_data();
    void damagedText();
    void damagedTextOf40Cells_data();
    void damagedTextOf40Cells();
    void hugeTextIsRead_data();
    void hugeTextIsRead();
    void randomTextIsRead();
    void otherSizeIsRefused_data();
    void otherSizeIsRefused();
    void refusalNeedsStreamAndLevel_data();
    void refusalNeedsStreamAndLevel();
    void groupsCountWhereCellsDoNot();
    void operationsKeepTheirSlots();

private:
    QString m_log;
    QTextStream m_logStream{&m_log};
};

void tst_FeatureMatrixStore::init()
{
    m_log.clear();
    qv::LogQt::instance()->setStream(error, &m_logStream);
}

void tst_FeatureMatrixStore::cleanup()
{
    qv::LogQt::instance()->setStream(error, nullptr);
    qv::LogQt::instance()->setLogLevel(2);
}

void tst_FeatureMatrixStore::cellsAreSaved_data()
{
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("columns");
    QTest::addColumn<QByteArray>("cells");
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("2 by 3, all allowed") << 2 << 3 << QByteArray("111111") << QByteArray("63+");
    QTest::newRow("2 by 3, cell (0, 1) not allowed") << 2 << 3 << QByteArray("101111") << QByteArray("61+");
    QTest::newRow("bits go on at the end of a row") << 2 << 3 << QByteArray("000100") << QByteArray("8+");
    QTest::newRow("nothing allowed") << 2 << 3 << QByteArray("000000") << QByteArray("0+");
    QTest::newRow("one cell") << 1 << 1 << QByteArray("1") << QByteArray("1+");
    QTest::newRow("31 cells") << 1 << 31 << QByteArray(31, '1') << QByteArray("2147483647+");
    QTest::newRow("32 cells fill one word") << 4 << 8 << QByteArray(32, '1') << QByteArray("4294967295+");
    QTest::newRow("33 cells") << 33 << 1 << QByteArray(33, '1') << QByteArray("4294967295+1+");
    QTest::newRow("40 cells") << 5 << 8 << QByteArray(40, '1') << QByteArray("4294967295+255+");
    QTest::newRow("64 cells") << 8 << 8 << QByteArray(64, '1') << QByteArray("4294967295+4294967295+");
    QTest::newRow("no rows") << 0 << 3 << QByteArray() << QByteArray();
    QTest::newRow("no columns") << 3 << 0 << QByteArray() << QByteArray();
}

void tst_FeatureMatrixStore::cellsAreSaved()
{
    QFETCH(int, rows);
    QFETCH(int, columns);
    QFETCH(QByteArray, cells);
    WholeMatrix matrix(rows, columns);
    matrix.setCells(cells);
    MemoryDestination destination;
    matrix.save(&destination);
    QTEST(destination.stored("FeatureMatrix/Matrix").toByteArray(), "text");
    QCOMPARE(destination.stored("FeatureMatrix/Rows"), QVariant(rows));
    QCOMPARE(destination.stored("FeatureMatrix/Columns"), QVariant(columns));
}

void tst_FeatureMatrixStore::keysAndTypes()
{
    MemoryDestination destination;
    WholeMatrix(2, 3).save(&destination);
    QCOMPARE(destination.order(), (QStringList{"FeatureMatrix/Rows", "FeatureMatrix/Columns", "FeatureMatrix/Matrix"}));
    QCOMPARE(destination.stored("FeatureMatrix/Rows").type(), QVariant::Int);
    QCOMPARE(destination.stored("FeatureMatrix/Columns").type(), QVariant::Int);
    QCOMPARE(destination.stored("FeatureMatrix/Matrix").type(), QVariant::ByteArray);
    QCOMPARE(destination.group(), QString());
    WholeMatrix(2, 3).load(&destination);
    QCOMPARE(destination.group(), QString());
    QCOMPARE(destination.defaults(), QVariantList({QVariant(), QVariant(), QVariant()}));
}

void tst_FeatureMatrixStore::everyShapeComesBack()
{
    QRandomGenerator random = support::generator();
    for (int rows = 1; rows <= 100; ++rows) {
        for (int columns = 1; rows * columns <= 100; ++columns) {
            QByteArray cells(rows * columns, '0');
            for (char& cell : cells)
                cell = random.bounded(2) ? '1' : '0';
            WholeMatrix saved(rows, columns);
            saved.setCells(cells);
            MemoryDestination destination;
            saved.save(&destination);
            QCOMPARE(destination.stored("FeatureMatrix/Matrix").toByteArray(), packedOf(cells));
            WholeMatrix loaded(rows, columns);
            loaded.load(&destination);
            QCOMPARE(loaded.cells(), cells);
        }
    }
    QVERIFY(m_log.isEmpty());
}

void tst_FeatureMatrixStore::settingsFileComesBack()
{
    QTemporaryDir folder;
    QString const file = folder.filePath("rights.ini");
    QByteArray const cells = "1011001110001111000011111000001111110000";
    {
        WholeMatrix saved(5, 8);
        saved.setCells(cells);
        qv::Settings destination(file, QSettings::IniFormat);
        saved.save(&destination);
    }
    qv::Settings destination(file, QSettings::IniFormat);
    WholeMatrix loaded(5, 8);
    loaded.load(&destination);
    QCOMPARE(loaded.cells(), cells);
}

/// docs/formats.md, "The rights matrix"
void tst_FeatureMatrixStore::settingsFileReadsSo()
{
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("rights.ini")));
    {
        WholeMatrix saved(2, 3);
        saved.setAllowed(0, 1, false);
        qv::Settings destination(file.fileName(), QSettings::IniFormat);
        saved.save(&destination);
    }
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("[FeatureMatrix]\nColumns=3\nMatrix=@ByteArray(61+)\nRows=2\n"));
}

void tst_FeatureMatrixStore::savingEndsModification()
{
    WholeMatrix matrix(2, 3);
    matrix.setAllowed(0, 0, false);
    QVERIFY(matrix.isModified());
    MemoryDestination destination;
    matrix.save(&destination);
    QVERIFY(!matrix.isModified());
}

void tst_FeatureMatrixStore::modificationAfterLoading_data()
{
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("columns");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("wasModified");
    QTest::addColumn<bool>("isModified");

    QTest::newRow("complete, cells changed") << 2 << 3 << QByteArray("61+") << false << false;
    QTest::newRow("complete, modified before") << 2 << 3 << QByteArray("61+") << true << false;
    QTest::newRow("nothing to read, modified before") << 2 << 3 << QByteArray() << true << true;
    QTest::newRow("too short, cells changed") << 5 << 8 << QByteArray("61+") << false << true;
    QTest::newRow("too short, no cell changed") << 5 << 8 << QByteArray("4294967295+") << false << false;
    // After the last of 32 cells one word more is looked for: the load does not count as complete.
    QTest::newRow("32 cells, changed") << 4 << 8 << QByteArray("61+") << false << true;
    QTest::newRow("32 cells, none changed") << 4 << 8 << QByteArray("4294967295+") << false << false;
    QTest::newRow("32 cells, none changed, modified before") << 4 << 8 << QByteArray("4294967295+") << true << true;
    QTest::newRow("64 cells, changed") << 8 << 8 << QByteArray("61+61+") << false << true;
    QTest::newRow("32 cells and one word more") << 4 << 8 << QByteArray("61+0+") << false << false;
    QTest::newRow("40 cells, changed") << 5 << 8 << QByteArray("61+61+") << false << false;
}

void tst_FeatureMatrixStore::modificationAfterLoading()
{
    QFETCH(int, rows);
    QFETCH(int, columns);
    QFETCH(QByteArray, text);
    QFETCH(bool, wasModified);
    WholeMatrix matrix(rows, columns);
    if (wasModified) {
        matrix.setAllowed(0, 0, false);
        matrix.setAllowed(0, 0, true);
    }
    MemoryDestination destination;
    destination.store(rows, columns, text);
    matrix.load(&destination);
    QTEST(matrix.isModified(), "isModified");
}

void tst_FeatureMatrixStore::damagedText_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("cells"); // of 2 by 3, before: 101101

    QTest::newRow("nothing") << QByteArray() << QByteArray("101101");
    QTest::newRow("no plus") << QByteArray("63") << QByteArray("101101");
    QTest::newRow("a plus alone") << QByteArray("+") << QByteArray("000000");
    QTest::newRow("letters") << QByteArray("abc+") << QByteArray("000000");
    QTest::newRow("a number and letters") << QByteArray("63a+") << QByteArray("000000");
    QTest::newRow("a fraction") << QByteArray("63.0+") << QByteArray("000000");
    QTest::newRow("hexadecimal") << QByteArray("0x3f+") << QByteArray("000000");
    QTest::newRow("below zero") << QByteArray("-1+") << QByteArray("000000");
    QTest::newRow("32 bits") << QByteArray("4294967295+") << QByteArray("111111");
    QTest::newRow("beyond 32 bits") << QByteArray("4294967296+") << QByteArray("000000");
    QTest::newRow("beyond 64 bits") << QByteArray("18446744073709551679+") << QByteArray("000000");
    QTest::newRow("bits that no cell wants") << QByteArray("4294967232+") << QByteArray("000000");
    QTest::newRow("more words than cells") << QByteArray("61+1+2+3+") << QByteArray("101111");
    QTest::newRow("letters behind the words") << QByteArray("61+abc") << QByteArray("101111");
    QTest::newRow("leading zeros") << QByteArray("00061+") << QByteArray("101111");
}

void tst_FeatureMatrixStore::damagedText()
{
    QFETCH(QByteArray, text);
    WholeMatrix matrix(2, 3);
    matrix.setCells("101101");
    MemoryDestination destination;
    destination.store(2, 3, text);
    matrix.load(&destination);
    QTEST(matrix.cells(), "cells");
    QVERIFY(m_log.isEmpty());
}

void tst_FeatureMatrixStore::damagedTextOf40Cells_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("cells"); // before: all allowed

    QByteArray const none(40, '0');
    QTest::newRow("two words") << QByteArray("0+0+") << none;
    QTest::newRow("one word") << QByteArray("0+") << QByteArray(32, '0') + "11111111";
    QTest::newRow("second word without a plus") << QByteArray("0+0") << QByteArray(32, '0') + "11111111";
    QTest::newRow("second word empty") << QByteArray("4294967295++") << QByteArray(32, '1') + "00000000";
    QTest::newRow("first word letters") << QByteArray("x+255+") << QByteArray(32, '0') + "11111111";
    QTest::newRow("no word") << QByteArray("0") << QByteArray(40, '1');
}

void tst_FeatureMatrixStore::damagedTextOf40Cells()
{
    QFETCH(QByteArray, text);
    WholeMatrix matrix(5, 8);
    MemoryDestination destination;
    destination.store(5, 8, text);
    matrix.load(&destination);
    QTEST(matrix.cells(), "cells");
}

void tst_FeatureMatrixStore::hugeTextIsRead_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("cells"); // before: all allowed

    constexpr int megabytes = 20000000;
    QTest::newRow("digits without end") << QByteArray(megabytes, '9') << QByteArray("111111");
    QTest::newRow("digits and a plus") << QByteArray(megabytes, '9') + '+' << QByteArray("000000");
    QTest::newRow("letters and a plus") << QByteArray(megabytes, 'x') + '+' << QByteArray("000000");
    QTest::newRow("pluses") << QByteArray(megabytes, '+') << QByteArray("000000");
    QTest::newRow("words") << QByteArray("61+").repeated(megabytes / 3) << QByteArray("101111");
}

void tst_FeatureMatrixStore::hugeTextIsRead()
{
    QFETCH(QByteArray, text);
    WholeMatrix matrix(2, 3);
    MemoryDestination destination;
    destination.store(2, 3, text);
    matrix.load(&destination);
    QTEST(matrix.cells(), "cells");
}

void tst_FeatureMatrixStore::randomTextIsRead()
{
    QRandomGenerator random = support::generator();
    QByteArray const characters = "0123456789++++-. x";
    for (int i = 0; i < support::rounds(20000); ++i) {
        QByteArray text(random.bounded(60), '\0');
        for (char& character : text)
            character = characters[random.bounded(characters.size())];
        MemoryDestination destination;
        destination.store(5, 8, text);
        WholeMatrix matrix(5, 8);
        matrix.load(&destination);
        // All or nothing of each word: what has no plus leaves its cells as they are.
        int const words = qMin(text.count('+'), 2);
        bool const isUntouched = matrix.cells().mid(words * 32) == QByteArray(qMax(40 - words * 32, 0), '1');
        QVERIFY2(isUntouched, qPrintable(support::seedNote(i)));
    }
}

void tst_FeatureMatrixStore::otherSizeIsRefused_data()
{
    QTest::addColumn<QVariant>("rows");
    QTest::addColumn<QVariant>("columns");

    QTest::newRow("a user group more in the matrix") << QVariant(2) << QVariant(2);
    QTest::newRow("a user group more in the file") << QVariant(2) << QVariant(4);
    QTest::newRow("a feature group more in the matrix") << QVariant(1) << QVariant(3);
    QTest::newRow("a feature group more in the file") << QVariant(3) << QVariant(3);
    QTest::newRow("turned by a quarter") << QVariant(3) << QVariant(2);
    QTest::newRow("no numbers") << QVariant("two") << QVariant("three");
    QTest::newRow("missing") << QVariant() << QVariant();
    QTest::newRow("huge") << QVariant(2147483647) << QVariant(2147483647);
}

void tst_FeatureMatrixStore::otherSizeIsRefused()
{
    QFETCH(QVariant, rows);
    QFETCH(QVariant, columns);
    MemoryDestination destination;
    destination.setValue("FeatureMatrix/Rows", rows);
    destination.setValue("FeatureMatrix/Columns", columns);
    destination.setValue("FeatureMatrix/Matrix", QByteArray("0+"));
    WholeMatrix matrix(2, 3);
    matrix.setAllowed(0, 1, false);
    matrix.load(&destination);
    QCOMPARE(matrix.cells(), QByteArray("101111"));
    QVERIFY(matrix.isModified());
    QCOMPARE(m_log, QString("ERROR: Saved matrix not compatible with current matrix.\n"));
    QCOMPARE(destination.group(), QString());
}

void tst_FeatureMatrixStore::refusalNeedsStreamAndLevel_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<bool>("hasStream");
    QTest::addColumn<bool>("isWritten");

    QTest::newRow("debug") << 0 << true << true;
    QTest::newRow("errors") << 3 << true << true;
    QTest::newRow("beyond errors") << 4 << true << false;
    QTest::newRow("silenced") << 0 << false << false;
}

void tst_FeatureMatrixStore::refusalNeedsStreamAndLevel()
{
    QFETCH(int, level);
    QFETCH(bool, hasStream);
    qv::LogQt::instance()->setLogLevel(level);
    qv::LogQt::instance()->setStream(error, hasStream ? &m_logStream : nullptr);
    MemoryDestination destination;
    WholeMatrix(2, 3).load(&destination);
    QTEST(!m_log.isEmpty(), "isWritten");
}

/// Cells and groups are paired by the client; where he errs, nothing is read or written out of bounds.
void tst_FeatureMatrixStore::groupsCountWhereCellsDoNot()
{
    qv::FeatureMatrix fewCells(1, 1);
    addGroups(fewCells, 2, 2);
    MemoryDestination destination;
    fewCells.save(&destination);
    QCOMPARE(destination.stored("FeatureMatrix/Matrix").toByteArray(), QByteArray("1+"));
    destination.store(2, 2, QByteArray("15+"));
    fewCells.load(&destination);
    QVERIFY(fewCells.isAllowed(0, 0) && !fewCells.isAllowed(1, 1));

    qv::FeatureMatrix manyCells(3, 3);
    addGroups(manyCells, 1, 2);
    manyCells.save(&destination);
    QCOMPARE(destination.stored("FeatureMatrix/Matrix").toByteArray(), QByteArray("3+"));
}

void tst_FeatureMatrixStore::operationsKeepTheirSlots()
{
    QCOMPARE(support::slotOf(&qv::FeatureMatrix::save), 2);
    QCOMPARE(support::slotOf(&qv::FeatureMatrix::load), 3);
}

QTEST_APPLESS_MAIN(tst_FeatureMatrixStore)
#include "tst_FeatureMatrixStore.moc"
