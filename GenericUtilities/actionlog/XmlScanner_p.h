// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>

#include <QByteArray>
#include <QtGlobal>

namespace qv::xml {

/// Follows the bytes of a log file as far as to know where markup begins and ends, and how much an element asks of a
/// reader. It judges neither names nor order.
class GENERICUTILITIES_EXPORT XmlScanner {
public:
    /// Of a tag, an instruction, a comment, or a text between these.
    static constexpr qint64 MaxPieceBytes = qint64{16} * 1024 * 1024;
    /// Of one element. Qt's reader takes a time that grows with the square of their number.
    static constexpr int MaxAttributes = 1000;

    /// What a byte completed.
    enum Markup { Nothing, StartTag, EmptyTag, EndTag, OtherMarkup };
    enum Fault {
        Sound,
        NotWellFormed, ///< "<" within a tag: the one before it was cut
        DocumentType, ///< no log file has one, and one could define what is then to be read
        TooLarge,
        TooManyAttributes
    };

    /// Whether a byte is a control character that no XML file holds. Readers drop these before they scan.
    static constexpr bool isDropped(char byte)
    {
        auto const character = static_cast<unsigned char>(byte);
        return character < 0x20 && byte != '\t' && byte != '\n' && byte != '\r';
    }

    Markup scan(char byte)
    {
        // Nearly all bytes of a log stand within values.
        bool const isWithinValue = m_state == Quoted && byte != m_quote && byte != '<';
        return ++m_length <= MaxPieceBytes && isWithinValue ? Nothing : scanState(byte);
    }
    /// A fault stays; what is scanned behind it means nothing.
    Fault fault() const { return m_fault; }
    /// Whether the bytes so far end between two pieces of markup.
    bool isInText() const { return m_state == Text; }
    /// Of the last tag that began, cut after 16 bytes.
    QByteArray const& tagName() const { return m_name; }

private:
    enum State { Text, Opened, Name, Tag, Quoted, Declaration, Comment, Data, Instruction };

    Markup scanState(char byte);
    Markup open(char byte);
    Markup scanName(char byte);
    Markup scanTag(char byte);
    Markup scanQuoted(char byte);
    Markup scanDeclaration(char byte);
    /// Up to @p count times @p mark and ">".
    Markup scanUpTo(char mark, int count, char byte);
    Markup enter(State state);
    Markup complete(Markup markup);
    Markup refuse(Fault fault);

    State m_state = Text;
    Fault m_fault = Sound;
    qint64 m_length = 0; // of the piece so far
    int m_attributes = 0;
    int m_run = 0; // how often the byte that may end the piece stands right before the present one
    char m_quote = 0;
    bool m_isEndTag = false;
    QByteArray m_name; // of the tag, or what follows "<!"
};

} // namespace qv::xml
