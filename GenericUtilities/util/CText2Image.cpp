// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/util/CText2Image.h>

#include <QResource>

#include <algorithm>
#include <cstddef>

namespace qv {

namespace {

    constexpr int headerSize = 54; // bytes: 14 of the file, 40 of the picture
    constexpr std::ptrdiff_t glyphRowSize = std::ptrdiff_t{3} * CText2Image::getWidth(); // bytes

    enum Glyph { Colon = 10, Point = 11, Dash = 12, Blank = 13, Record = 14 };

    QByteArray readBitmap()
    {
        QResource const resource(QStringLiteral(":/Text2Image/digits.bmp"));
        if (!resource.isValid())
            return {};
        if (resource.compressionAlgorithm() == QResource::ZlibCompression)
            return qUncompress(resource.data(), int(resource.size()));
        return {reinterpret_cast<char const*>(resource.data()), int(resource.size())};
    }

    int glyphOf(char c)
    {
        switch (c) {
        case ':':
            return Colon;
        case '.':
            return Point;
        case '-':
            return Dash;
        case ' ':
            return Blank;
        default:
            return c - '0';
        }
    }

} // namespace

CText2Image::CText2Image()
{
    QByteArray const bitmap = readBitmap();
    m_header = bitmap.left(headerSize);
    m_pixels = bitmap.mid(headerSize);
    m_glyphCount = m_pixels.size() / sizeOfCharImage();
}

unsigned char* CText2Image::allocCharImage_RGB()
{
    return new unsigned char[sizeOfCharImage()]();
}

void CText2Image::freeCharImage_RGB(unsigned char* image)
{
    delete[] image;
}

void CText2Image::digit2Image(unsigned char* image, char c) const
{
    copyGlyph(image, glyphOf(c));
}

void CText2Image::symbol2Image(unsigned char* image, eGraphicSymbol symbol) const
{
    if (symbol == SymbolRecord)
        copyGlyph(image, Record);
}

void CText2Image::copyGlyph(unsigned char* image, int glyph) const
{
    if (glyph < 0 || glyph >= m_glyphCount)
        return;
    for (std::ptrdiff_t row = 0; row < getHeight(); ++row) {
        char const* const from = m_pixels.constData() + (row * m_glyphCount + glyph) * glyphRowSize;
        std::copy_n(from, glyphRowSize, image + row * glyphRowSize);
    }
}

} // namespace qv
