// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

namespace qv::xml {

/// Tells bytes that are UTF-8 (RFC 3629, table in section 4) from bytes that are not, one after the other.
class Utf8Scanner {
public:
    /// False where @p byte cannot stand here; what is scanned behind it means nothing.
    bool scan(char byte)
    {
        auto const value = static_cast<unsigned char>(byte);
        return m_missing > 0 ? follow(value) : begin(value);
    }

private:
    bool begin(unsigned char lead)
    {
        if (lead < 0x80)
            return true;
        m_missing = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
        // Neither longer than need be, nor half a surrogate pair, nor beyond U+10FFFF.
        m_lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
        m_highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
        return lead >= 0xC2 && lead <= 0xF4;
    }

    bool follow(unsigned char value)
    {
        bool const fits = value >= m_lowest && value <= m_highest;
        --m_missing;
        m_lowest = 0x80;
        m_highest = 0xBF;
        return fits;
    }

    int m_missing = 0; // bytes of the character that has begun
    unsigned char m_lowest = 0x80; // bounds of the next one of these
    unsigned char m_highest = 0xBF;
};

} // namespace qv::xml
