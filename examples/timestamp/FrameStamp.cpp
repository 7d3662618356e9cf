// SPDX-License-Identifier: LGPL-2.1-or-later
#include "FrameStamp.h"

#include <GenericUtilities/util/CText2Image.h>
#include <GenericUtilities/util/TimeConversions.h>

#include <QPainter>

#include <array>
#include <string>

namespace {

using qv::CText2Image;

constexpr int margin = 8; // pixels

/// Puts what was drawn, the bottom row first, beside what was put there before.
class Stamp {
public:
    explicit Stamp(QImage& frame)
        : m_painter(&frame)
        , m_place(margin, frame.height() - margin - CText2Image::getHeight())
    {
    }

    void add(char character)
    {
        m_images.digit2Image(m_image.data(), character);
        put();
    }
    void add(CText2Image::eGraphicSymbol symbol)
    {
        m_images.symbol2Image(m_image.data(), symbol);
        put();
    }

private:
    void put()
    {
        QImage const image(m_image.data(), CText2Image::getWidth(), CText2Image::getHeight(),
            CText2Image::getWidth() * 3, QImage::Format_BGR888);
        m_painter.drawImage(m_place, image.mirrored());
        m_place.rx() += CText2Image::getWidth();
    }

    CText2Image m_images;
    std::array<unsigned char, CText2Image::sizeOfCharImage()> m_image = {};
    QPainter m_painter;
    QPoint m_place;
};

} // namespace

void stampTime(QImage& frame, quint64 frameTime)
{
    Stamp stamp(frame);
    stamp.add(CText2Image::SymbolRecord);
    std::string text = qv::CTimeTranscoder(frameTime).toString();
    text[text.find_first_of('-')] = ' '; // between date and time
    for (char const character : text)
        stamp.add(character);
}
