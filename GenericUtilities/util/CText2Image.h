// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>

#include <QByteArray>

namespace qv {

/// Draws the characters of times and numbers into small images, to be stamped onto video frames.
///
/// An image has 20 rows of 16 pixels, the bottom row first, and three bytes a pixel: blue, green, red. The glyphs come
/// from the resource ":/Text2Image/digits.bmp", which is read once, by the constructor. Drawing is reentrant.
class GENERICUTILITIES_EXPORT CText2Image {
public:
    /// Signs that are no characters.
    enum eGraphicSymbol : int {
        SymbolRecord = 0, // a filled dot: this is being recorded
    };

    /// Without the resource, as after Q_CLEANUP_RESOURCE(GenericUtilities), nothing will be drawn.
    CText2Image();

    /// In pixels.
    static constexpr int getWidth() { return 16; }
    static constexpr int getHeight() { return 20; }
    /// In bytes: 960.
    static constexpr int sizeOfCharImage() { return getWidth() * getHeight() * 3; }

    /// A black image of sizeOfCharImage() bytes, which the caller gives back to freeCharImage_RGB().
    static unsigned char* allocCharImage_RGB();
    /// Null is allowed.
    static void freeCharImage_RGB(unsigned char* image);

    /// Draws a digit, ":", ".", "-" or a blank into @p image, sizeOfCharImage() bytes. Any other character takes the
    /// glyph as far from "0" as it is itself, or none where the strip has no such glyph.
    void digit2Image(unsigned char* image, char c) const;
    /// Draws a symbol likewise; nothing for a symbol that is not there.
    void symbol2Image(unsigned char* image, eGraphicSymbol symbol) const;

private:
    void copyGlyph(unsigned char* image, int glyph) const;

    QByteArray m_header; // of the bitmap
    QByteArray m_pixels; // glyphs side by side
    int m_glyphCount;
};

} // namespace qv
