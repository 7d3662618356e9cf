// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/TypeToolRules_p.h>

#include <GenericUtilities/expressions/ValueCost_p.h>
#include <GenericUtilities/util/Clamp.h>
#include <qvbase/Exceptions.h>

#include <algorithm>
#include <limits>
#include <type_traits>

namespace qvgen {

namespace {

    constexpr int sortsBefore = std::numeric_limits<int>::min();
    constexpr int sortsAfter = std::numeric_limits<int>::max();

    // How the common type of two integers is found.
    enum Rule { Int, UInt, Long, ULong, IntUInt, UIntInt, IntULong, LongULong, ULongInt, ULongLong };

    // clang-format off
    constexpr Rule rules[4][4] = {
        //  right: Int        UInt      LongLong   ULongLong        left:
        {          Int,       IntUInt,  Long,      IntULong  },  // Int
        {          UIntInt,   UInt,     Long,      ULong     },  // UInt
        {          Long,      Long,     Long,      LongULong },  // LongLong
        {          ULongInt,  ULong,    ULongLong, ULong     },  // ULongLong
    };
    // clang-format on
    static_assert(sizeof rules / sizeof rules[0] == QVariant::ULongLong - QVariant::Int + 1);

    // Strictly below the highest Signed: conditions stored by clients rely on the type that a constant at the limit
    // gets.
    template <class Signed, class Unsigned> bool fits(Unsigned value)
    {
        return value < static_cast<std::make_unsigned_t<Signed>>(std::numeric_limits<Signed>::max());
    }

    // Int (here in any place) with UInt.
    QVariant::Type mixInts(int signedValue, bool signedConstant, uint unsignedValue, bool unsignedConstant)
    {
        if (unsignedConstant && fits<int>(unsignedValue))
            return QVariant::Int;
        return !signedConstant || signedValue < 0 ? QVariant::LongLong : QVariant::UInt;
    }

    // A signed left with ULongLong.
    template <class Signed> QVariant::Type mixLeft(
        QVariant::Type type, Signed signedValue, bool signedConstant, quint64 unsignedValue, bool unsignedConstant)
    {
        if (unsignedConstant && fits<Signed>(unsignedValue))
            return type;
        return signedConstant && signedValue >= 0 ? QVariant::ULongLong : QVariant::Invalid;
    }

    // ULongLong with a signed right: here the right one is asked first.
    template <class Signed> QVariant::Type mixRight(
        quint64 unsignedValue, bool unsignedConstant, QVariant::Type type, Signed signedValue, bool signedConstant)
    {
        if (signedConstant && signedValue >= 0)
            return QVariant::ULongLong;
        return unsignedConstant && fits<Signed>(unsignedValue) ? type : QVariant::Invalid;
    }

    Rule ruleOf(QVariant::Type left, QVariant::Type right)
    {
        return rules[left - QVariant::Int][right - QVariant::Int];
    }

    // The sign and, within 32 bits, the size of a - b, which itself may not fit into 64 bits.
    int difference(qint64 a, qint64 b)
    {
        qint64 exact = 0;
        if (__builtin_sub_overflow(a, b, &exact))
            return a < b ? sortsBefore : sortsAfter;
        return static_cast<int>(std::clamp<qint64>(exact, sortsBefore, sortsAfter));
    }

    int elementCount(QVariant const& list)
    {
        return static_cast<int>(
            list.type() == QVariant::StringList ? sizeOf<QStringList>(list) : sizeOf<QVariantList>(list));
    }

    // The elements of a list that matter beside one of @p count; one more tells which is longer.
    QVariantList leading(QVariant const& list, int count)
    {
        if (list.type() == QVariant::List)
            return list.toList();
        return QVariant(QStringList(static_cast<QStringList const*>(list.constData())->mid(0, count + 1))).toList();
    }

} // namespace

QVariant const TypeTool::INVALID;
QDate const TypeTool::EPOCH(1970, 1, 1);
QTime const TypeTool::MIDNIGHT(0, 0);

bool TypeTool::throwOK() const
{
    if (!m_ok)
        throw qv::IllegalArgumentException(QStringLiteral("can't compare values"), QString());
    return true;
}

QVariant::Type TypeTool::coerceNumericTypes(QVariant const& a, QVariant const& b) const
{
    QVariant::Type const left = a.type();
    QVariant::Type const right = b.type();
    if (!isNumeric(left) || !isNumeric(right))
        return QVariant::Invalid;
    if (left == right)
        return left;
    if (left == QVariant::Double || right == QVariant::Double)
        return QVariant::Double;

    switch (ruleOf(left, right)) {
    case Int:
        return QVariant::Int;
    case UInt:
        return QVariant::UInt;
    case Long:
        return QVariant::LongLong;
    case ULong:
        return QVariant::ULongLong;
    case IntUInt:
        return mixInts(a.toInt(), m_leftConstant, b.toUInt(), m_rightConstant);
    case UIntInt:
        return mixInts(b.toInt(), m_rightConstant, a.toUInt(), m_leftConstant);
    case IntULong:
        return mixLeft(QVariant::Int, a.toInt(), m_leftConstant, b.toULongLong(), m_rightConstant);
    case LongULong:
        return mixLeft(QVariant::LongLong, a.toLongLong(), m_leftConstant, b.toULongLong(), m_rightConstant);
    case ULongInt:
        return mixRight(a.toULongLong(), m_leftConstant, QVariant::Int, b.toInt(), m_rightConstant);
    case ULongLong:
        return mixRight(a.toULongLong(), m_leftConstant, QVariant::LongLong, b.toLongLong(), m_rightConstant);
    }
    return QVariant::Invalid;
}

QVariant::Type TypeTool::coerceOtherTypes(QVariant const& a, QVariant const& b) const
{
    if (b.canConvert(a.userType()))
        return static_cast<QVariant::Type>(a.userType());
    if (a.canConvert(b.userType()))
        return static_cast<QVariant::Type>(b.userType());
    return isText(a) && isText(b) ? QVariant::String : QVariant::Invalid;
}

QString TypeTool::invertString(QString const& text)
{
    // The terminator sorts a text after every longer one that begins with it.
    constexpr QChar terminator(0xFFFF);
    QString inverted = text;
    inverted.remove(terminator);
    bool const wasInverted = inverted.size() != text.size();
    for (QChar& unit : inverted)
        unit = QChar(static_cast<ushort>(~unit.unicode()));
    if (!wasInverted)
        inverted += terminator;
    return inverted;
}

int TypeTool::compare(QVariant const& a, QVariant const& b)
{
    m_ok = true;
    switch (coerceNumericTypes(a, b)) {
    case QVariant::Int:
    case QVariant::UInt:
    case QVariant::LongLong:
        return difference(a.toLongLong(), b.toLongLong());
    case QVariant::ULongLong:
    case QVariant::Double:
        // Truncated on purpose: conditions on measured values count less than one unit as equal.
        return qv::clampTo<int>(a.toDouble() - b.toDouble());
    default:
        break;
    }
    if (isDateWithPartner(a.type(), b.type()) || isDateWithPartner(b.type(), a.type()))
        return difference(dateMicroSeconds(a), dateMicroSeconds(b));
    if (isList(a.type()) && isList(b.type()))
        return compareList(leading(a, elementCount(b)), leading(b, elementCount(a)));
    bool const areStrings = a.type() == QVariant::String && b.type() == QVariant::String;
    if (areStrings || (isText(a) && isText(b) && mayConvert(a) && mayConvert(b)))
        return QString::compare(a.toString(), b.toString(), Qt::CaseSensitive);
    m_ok = false;
    return 0;
}

int TypeTool::compareList(QList<QVariant> const& left, QList<QVariant> const& right)
{
    m_ok = true;
    int const common = std::min(left.size(), right.size());
    for (int i = 0; i < common; ++i) {
        int const order = compare(left.at(i), right.at(i));
        if (order != 0 || !m_ok)
            return order;
    }
    if (left.size() == right.size())
        return 0;
    return left.size() < right.size() ? sortsBefore : sortsAfter;
}

bool TypeTool::equals(QVariant const& a, QVariant const& b)
{
    int const order = compare(a, b);
    if (m_ok)
        return order == 0;
    QVariant::Type const common = coerceOtherTypes(a, b);
    m_ok = common != QVariant::Invalid && mayConvert(a) && mayConvert(b);
    if (!m_ok)
        return false;
    // The outcomes are compared, not the values: values without an order count as equal where both are of one kind.
    QVariant left = a;
    QVariant right = b;
    return left.convert(static_cast<int>(common)) == right.convert(static_cast<int>(common));
}

bool TypeTool::contains(QList<QVariant> const& list, QVariant const& value)
{
    m_ok = true;
    return std::any_of(list.begin(), list.end(), [&](QVariant const& element) { return equals(element, value); });
}

} // namespace qvgen
