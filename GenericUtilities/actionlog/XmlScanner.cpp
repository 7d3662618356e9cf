// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/XmlScanner_p.h>

#include <algorithm>
#include <iterator>

namespace qv::xml {

namespace {

    constexpr int MaxNameBytes = 16;

    bool endsName(char byte)
    {
        constexpr char ends[] = " \t\n\r/><=\"'";
        return std::find(std::begin(ends), std::end(ends) - 1, byte) != std::end(ends) - 1;
    }

} // namespace

XmlScanner::Markup XmlScanner::scanState(char byte)
{
    if (m_length > MaxPieceBytes)
        return refuse(TooLarge);
    switch (m_state) {
    case Text:
        return byte == '<' ? enter(Opened) : Nothing;
    case Opened:
        return open(byte);
    case Name:
        return scanName(byte);
    case Tag:
        return scanTag(byte);
    case Quoted:
        return scanQuoted(byte);
    case Declaration:
        return scanDeclaration(byte);
    case Comment:
        return scanUpTo('-', 2, byte);
    case Data:
        return scanUpTo(']', 2, byte);
    case Instruction:
        return scanUpTo('?', 1, byte);
    }
    return Nothing;
}

XmlScanner::Markup XmlScanner::open(char byte)
{
    m_name.clear();
    m_attributes = 0;
    m_isEndTag = byte == '/';
    if (byte == '!')
        return enter(Declaration);
    if (byte == '?')
        return enter(Instruction);
    enter(Name);
    return m_isEndTag ? Nothing : scanName(byte);
}

XmlScanner::Markup XmlScanner::scanName(char byte)
{
    if (endsName(byte)) {
        enter(Tag);
        return scanTag(byte);
    }
    if (m_name.size() < MaxNameBytes)
        m_name += byte;
    return Nothing;
}

XmlScanner::Markup XmlScanner::scanTag(char byte)
{
    if (byte == '<')
        return refuse(NotWellFormed);
    if (byte == '>')
        return complete(m_isEndTag ? EndTag : m_run > 0 ? EmptyTag : StartTag);
    m_run = byte == '/' ? 1 : 0;
    if (byte != '"' && byte != '\'')
        return Nothing;
    m_quote = byte;
    return ++m_attributes > MaxAttributes ? refuse(TooManyAttributes) : enter(Quoted);
}

XmlScanner::Markup XmlScanner::scanQuoted(char byte)
{
    if (byte == '<')
        return refuse(NotWellFormed);
    return byte == m_quote ? enter(Tag) : Nothing;
}

XmlScanner::Markup XmlScanner::scanDeclaration(char byte)
{
    m_name += byte;
    if (m_name == "--")
        return enter(Comment);
    if (m_name == "[CDATA[")
        return enter(Data);
    return m_name == "-" || QByteArray("[CDATA[").startsWith(m_name) ? Nothing : refuse(DocumentType);
}

XmlScanner::Markup XmlScanner::scanUpTo(char mark, int count, char byte)
{
    if (byte == '>' && m_run >= count)
        return complete(OtherMarkup);
    m_run = byte == mark ? m_run + 1 : 0;
    return Nothing;
}

XmlScanner::Markup XmlScanner::enter(State state)
{
    if (state == Opened)
        m_length = 1;
    m_state = state;
    m_run = 0;
    return Nothing;
}

XmlScanner::Markup XmlScanner::complete(Markup markup)
{
    m_state = Text;
    m_length = 0;
    return markup;
}

XmlScanner::Markup XmlScanner::refuse(Fault fault)
{
    if (m_fault == Sound)
        m_fault = fault;
    return Nothing;
}

} // namespace qv::xml
