// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/util/CText2Image.h>

#include <QFile>
#include <QMap>
#include <QResource>
#include <QTest>

#include <algorithm>
#include <memory>

using qv::CText2Image;

static_assert(CText2Image::getWidth() == 16);
static_assert(CText2Image::getHeight() == 20);
static_assert(CText2Image::sizeOfCharImage() == 960);

namespace {

/// What digits.txt says.
struct Drawing {
    QMap<char, QByteArray> colours; // blue, green, red
    QByteArrayList names;
    QList<QByteArrayList> glyphs; // rows from the top, a character for each pixel
};

Drawing readDrawing()
{
    Drawing drawing;
    QFile file(QStringLiteral(DIGITS_DRAWING));
    if (!file.open(QIODevice::ReadOnly))
        return drawing;
    while (!file.atEnd()) {
        QByteArrayList const words = file.readLine().simplified().split(' ');
        if (words[0] == "colour" && words.size() == 3) {
            QByteArray colour = QByteArray::fromHex(words[2]);
            std::reverse(colour.begin(), colour.end());
            drawing.colours[words[1][0]] = colour;
        } else if (words[0] == "glyph") {
            QByteArrayList rows;
            for (int row = 0; row < 20; ++row)
                rows += file.readLine().trimmed();
            drawing.names += words[1];
            drawing.glyphs += rows;
        }
    }
    return drawing;
}

/// As it is to be stamped: the bottom row first.
QByteArray imageOf(Drawing const& drawing, QByteArray const& name)
{
    QByteArrayList const rows = drawing.glyphs.value(drawing.names.indexOf(name));
    QByteArray image;
    for (int row = rows.size() - 1; row >= 0; --row) {
        for (char const pixel : rows[row])
            image += drawing.colours.value(pixel);
    }
    return image;
}

QByteArray const untouched(960, '\x5a');

template <class Draw> QByteArray drawn(Draw draw)
{
    QByteArray image = untouched;
    draw(reinterpret_cast<unsigned char*>(image.data()));
    return image;
}

QByteArray drawnDigit(CText2Image const& from, char c)
{
    return drawn([&](unsigned char* image) { from.digit2Image(image, c); });
}

QByteArray drawnSymbol(CText2Image const& from, int symbol)
{
    return drawn(
        [&](unsigned char* image) { from.symbol2Image(image, static_cast<CText2Image::eGraphicSymbol>(symbol)); });
}

} // namespace

class tst_CText2Image : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void bitmapHasItsHeader();
    void bitmapIsCompressedByZlib();
    void bitmapIsTheDrawing();
    void glyphsHaveTheirPlaces();
    void charactersTakeTheirGlyphs_data();
    void charactersTakeTheirGlyphs();
    void bottomRowComesFirst();
    void otherCharacters_data();
    void otherCharacters();
    void everyCharacterStaysInBounds();
    void symbols();
    void glyphsDiffer();
    void glyphsStandClearOfTheEdges();
    void nothingIsDrawnWithoutTheResource();
    void imagesAreAllocated();

private:
    Drawing m_drawing;
};

void tst_CText2Image::initTestCase()
{
    m_drawing = readDrawing();
    QCOMPARE(m_drawing.glyphs.size(), 16);
    for (QByteArrayList const& rows : m_drawing.glyphs) {
        for (QByteArray const& row : rows)
            QCOMPARE(row.size(), 16);
    }
}

void tst_CText2Image::bitmapHasItsHeader()
{
    QByteArray const bitmap = QResource(":/Text2Image/digits.bmp").uncompressedData();
    QCOMPARE(bitmap.size(), 15414);
    QCOMPARE(bitmap.left(54).toHex(' '),
        QByteArray("42 4d 36 3c 00 00 00 00 00 00 36 00 00 00 " // "BM", size, reserved, offset of the pixels
                   "28 00 00 00 00 01 00 00 14 00 00 00 01 00 18 00 " // size, 256 by 20, one plane, 24 bits
                   "00 00 00 00 00 3c 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"));
}

void tst_CText2Image::bitmapIsCompressedByZlib()
{
    QResource const resource(":/Text2Image/digits.bmp");
    QCOMPARE(resource.compressionAlgorithm(), QResource::ZlibCompression);
    QVERIFY(resource.size() < 15414);
}

void tst_CText2Image::bitmapIsTheDrawing()
{
    QByteArray const bitmap = QResource(":/Text2Image/digits.bmp").uncompressedData();
    QByteArray pixels;
    for (int row = 19; row >= 0; --row) {
        for (QByteArrayList const& rows : m_drawing.glyphs) {
            for (char const pixel : rows[row])
                pixels += m_drawing.colours.value(pixel);
        }
    }
    QVERIFY2(bitmap.mid(54) == pixels, "digits.bmp is not what digits.txt shows: run draw_digits.py");
}

void tst_CText2Image::glyphsHaveTheirPlaces()
{
    QCOMPARE(m_drawing.names.join(' '), QByteArray("0 1 2 3 4 5 6 7 8 9 : . - blank record unassigned"));
}

void tst_CText2Image::charactersTakeTheirGlyphs_data()
{
    QTest::addColumn<char>("character");
    QTest::addColumn<QByteArray>("glyph");
    for (char const digit : QByteArray("0123456789"))
        QTest::addRow("digit %c", digit) << digit << QByteArray(1, digit);
    QTest::newRow("colon") << ':' << QByteArray(":");
    QTest::newRow("point") << '.' << QByteArray(".");
    QTest::newRow("dash") << '-' << QByteArray("-");
    QTest::newRow("blank") << ' ' << QByteArray("blank");
}

void tst_CText2Image::charactersTakeTheirGlyphs()
{
    QFETCH(char, character);
    QFETCH(QByteArray, glyph);
    QByteArray const expected = imageOf(m_drawing, glyph);
    QCOMPARE(expected.size(), 960);
    QVERIFY(drawnDigit(CText2Image(), character) == expected);
}

void tst_CText2Image::bottomRowComesFirst()
{
    QByteArray const bitmap = QResource(":/Text2Image/digits.bmp").uncompressedData();
    QByteArray const image = drawnDigit(CText2Image(), '7');
    QCOMPARE(image.left(48), bitmap.mid(54 + 7 * 48, 48)); // the eighth glyph of the bottom row
    QCOMPARE(image.right(48), bitmap.mid(54 + 19 * 768 + 7 * 48, 48));
}

void tst_CText2Image::otherCharacters_data()
{
    QTest::addColumn<char>("character");
    QTest::addColumn<QByteArray>("glyph"); // none: nothing is drawn

    // As far from "0" as the character is: who draws anything but digits gets what stands there.
    QTest::newRow("semicolon") << ';' << QByteArray(".");
    QTest::newRow("greater than") << '>' << QByteArray("record");
    QTest::newRow("question mark") << '?' << QByteArray("unassigned");
    QTest::newRow("behind the strip") << '@' << QByteArray();
    QTest::newRow("before the strip") << '/' << QByteArray();
    QTest::newRow("letter") << 'a' << QByteArray();
    QTest::newRow("zero") << '\0' << QByteArray();
    QTest::newRow("beyond ASCII") << '\xe4' << QByteArray();
}

void tst_CText2Image::otherCharacters()
{
    QFETCH(char, character);
    QFETCH(QByteArray, glyph);
    QByteArray const expected = glyph.isEmpty() ? untouched : imageOf(m_drawing, glyph);
    QVERIFY(drawnDigit(CText2Image(), character) == expected);
}

void tst_CText2Image::everyCharacterStaysInBounds()
{
    CText2Image const images;
    QByteArray const guard(64, '#');
    for (int c = 0; c < 256; ++c) {
        QByteArray image = guard + untouched + guard;
        images.digit2Image(reinterpret_cast<unsigned char*>(image.data()) + guard.size(), static_cast<char>(c));
        QVERIFY(image.startsWith(guard) && image.endsWith(guard));
    }
}

void tst_CText2Image::symbols()
{
    CText2Image const images;
    QVERIFY(drawnSymbol(images, CText2Image::SymbolRecord) == imageOf(m_drawing, "record"));
    for (int const symbol : {1, -1, 14, 2147483647})
        QVERIFY(drawnSymbol(images, symbol) == untouched);
}

void tst_CText2Image::glyphsDiffer()
{
    for (int i = 0; i < 15; ++i) {
        for (int j = 0; j < i; ++j)
            QVERIFY(m_drawing.glyphs[i] != m_drawing.glyphs[j]);
    }
}

/// Stamped side by side, characters are told apart.
void tst_CText2Image::glyphsStandClearOfTheEdges()
{
    for (QByteArrayList const& rows : m_drawing.glyphs) {
        QCOMPARE(rows.first() + rows.last(), QByteArray(32, '.'));
        for (QByteArray const& row : rows)
            QVERIFY(row.startsWith("..") && row.endsWith(".."));
    }
}

void tst_CText2Image::nothingIsDrawnWithoutTheResource()
{
    CText2Image const before;
    Q_CLEANUP_RESOURCE(GenericUtilities);
    CText2Image const without;
    bool const isNothingDrawn = drawnDigit(without, '7') == untouched && drawnSymbol(without, 0) == untouched;
    bool const hasItsCopy = drawnDigit(before, '7') == imageOf(m_drawing, "7");
    Q_INIT_RESOURCE(GenericUtilities);
    QVERIFY(isNothingDrawn);
    QVERIFY(hasItsCopy);
    QVERIFY(drawnDigit(CText2Image(), '7') == imageOf(m_drawing, "7"));
}

void tst_CText2Image::imagesAreAllocated()
{
    std::unique_ptr<unsigned char, decltype(&CText2Image::freeCharImage_RGB)> const image(
        CText2Image::allocCharImage_RGB(), &CText2Image::freeCharImage_RGB);
    QCOMPARE(QByteArray(reinterpret_cast<char const*>(image.get()), 960), QByteArray(960, '\0'));
    CText2Image().digit2Image(image.get(), '7');
    QVERIFY(QByteArray(reinterpret_cast<char const*>(image.get()), 960) == imageOf(m_drawing, "7"));
    CText2Image::freeCharImage_RGB(nullptr);
}

QTEST_APPLESS_MAIN(tst_CText2Image)
#include "tst_CText2Image.moc"
