// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/TypeTool.h>

#include <GenericUtilities/util/Clamp.h>
#include <GenericUtilities/util/TimeConversions.h>
#include <qvbase/Exceptions.h>

#include <QDateTime>
#include <QStringList>

#include <algorithm>
#include <limits>
#include <type_traits>

namespace qvgen {

namespace {

    constexpr qint64 microsPerMilli = 1000;
    constexpr double microsPerSecond = 1000000;
    constexpr qint64 microsPerDay = qv::CTimeTranscoder::MICROSECONDS_PER_DAY;

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

    bool isDateWithPartner(QVariant::Type date, QVariant::Type partner)
    {
        return TypeTool::isDate(date) && (TypeTool::isDate(partner) || TypeTool::isNumeric(partner));
    }

    bool isText(QVariant const& value)
    {
        return value.type() == QVariant::String || value.canConvert(QVariant::String);
    }

    // Integer arithmetic that wraps around: in the unsigned type overflow is defined.
    template <class Integer, class Operation> QVariant wrapped(Integer a, Integer b, Operation const& operation)
    {
        using Unsigned = std::make_unsigned_t<Integer>;
        return static_cast<Integer>(operation(static_cast<Unsigned>(a), static_cast<Unsigned>(b)));
    }

    qint64 wrappedProduct(qint64 a, qint64 b)
    {
        return static_cast<qint64>(static_cast<quint64>(a) * static_cast<quint64>(b));
    }

    qint64 wrappedSum(qint64 a, qint64 b)
    {
        return static_cast<qint64>(static_cast<quint64>(a) + static_cast<quint64>(b));
    }

    // The sign and, within 32 bits, the size of a - b, which itself may not fit into 64 bits.
    int difference(qint64 a, qint64 b)
    {
        qint64 exact = 0;
        if (__builtin_sub_overflow(a, b, &exact))
            return a < b ? sortsBefore : sortsAfter;
        return static_cast<int>(std::clamp<qint64>(exact, sortsBefore, sortsAfter));
    }

    // The operations by type. Each has a call for integers and one for doubles; none gives an invalid variant for types
    // (or divisors) that it does not serve.

    struct Add {
        template <class Integer> QVariant operator()(Integer a, Integer b) const
        {
            return wrapped(a, b, [](auto x, auto y) { return x + y; });
        }
        QVariant operator()(double a, double b) const { return a + b; }
    };

    struct Subtract {
        QVariant operator()(uint a, uint b) const { return a > b ? QVariant(a - b) : QVariant(qlonglong(a) - b); }
        QVariant operator()(qulonglong a, qulonglong b) const
        {
            return a > b ? QVariant(a - b) : QVariant(static_cast<double>(a) - static_cast<double>(b));
        }
        template <class Integer> QVariant operator()(Integer a, Integer b) const
        {
            return wrapped(a, b, [](auto x, auto y) { return x - y; });
        }
        QVariant operator()(double a, double b) const { return a - b; }
    };

    struct Multiply {
        template <class Integer> QVariant operator()(Integer a, Integer b) const
        {
            return wrapped(a, b, [](auto x, auto y) { return x * y; });
        }
        QVariant operator()(double a, double b) const { return a * b; }
    };

    // The one quotient that overflows: the lowest integer by -1.
    template <class Integer> bool isNegation(Integer divisor)
    {
        return std::is_signed_v<Integer> && divisor == static_cast<Integer>(-1);
    }

    struct Divide {
        template <class Integer> QVariant operator()(Integer a, Integer b) const
        {
            if (b == 0)
                return {};
            return isNegation(b) ? wrapped(Integer(0), a, [](auto x, auto y) { return x - y; }) : QVariant(a / b);
        }
        QVariant operator()(double a, double b) const { return b == 0.0 ? QVariant() : QVariant(a / b); }
    };

    struct Modulo {
        template <class Integer> QVariant operator()(Integer a, Integer b) const
        {
            if (b == 0)
                return {};
            return isNegation(b) ? Integer(0) : a % b;
        }
        QVariant operator()(double, double) const { return {}; }
    };

    struct BitAnd {
        template <class Integer> QVariant operator()(Integer a, Integer b) const { return a & b; }
        QVariant operator()(double, double) const { return {}; }
    };

    struct BitOr {
        template <class Integer> QVariant operator()(Integer a, Integer b) const { return a | b; }
        QVariant operator()(double, double) const { return {}; }
    };

    struct BitXor {
        template <class Integer> QVariant operator()(Integer a, Integer b) const { return a ^ b; }
        QVariant operator()(double, double) const { return {}; }
    };

    template <class Operation>
    QVariant inType(QVariant::Type type, QVariant const& a, QVariant const& b, Operation const& operation)
    {
        switch (type) {
        case QVariant::Int:
            return operation(a.toInt(), b.toInt());
        case QVariant::UInt:
            return operation(a.toUInt(), b.toUInt());
        case QVariant::LongLong:
            return operation(a.toLongLong(), b.toLongLong());
        case QVariant::ULongLong:
            return operation(a.toULongLong(), b.toULongLong());
        case QVariant::Double:
            return operation(a.toDouble(), b.toDouble());
        default:
            return {};
        }
    }

    // A date as a number of type `target`, at `micros` microseconds.
    QVariant numberOfDate(qint64 micros, QVariant::Type target)
    {
        auto const unsignedMicros = static_cast<quint64>(micros);
        // Cut to 32 bits before the division: SQL that clients stored was made with these numbers.
        auto const low = static_cast<quint32>(unsignedMicros);
        switch (target) {
        case QVariant::Int:
            return static_cast<int>(low) / int(microsPerMilli);
        case QVariant::UInt:
            return low / uint(microsPerMilli);
        case QVariant::Double:
            return static_cast<double>(unsignedMicros) / static_cast<double>(microsPerDay);
        default:
            return unsignedMicros;
        }
    }

    quint64 frameTimeOfNumber(QVariant const& number)
    {
        if (number.type() == QVariant::Double)
            return qv::clampTo<quint64>(number.toDouble() * static_cast<double>(microsPerDay));
        return static_cast<quint64>(TypeTool::dateMicroSeconds(number));
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

QVariant TypeTool::fail()
{
    m_ok = false;
    return {};
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

// The operation in the common type of two numbers; fails where they have none, or the operation has no result.
template <class Operation>
QVariant TypeTool::calculate(QVariant const& a, QVariant const& b, Operation const& operation)
{
    QVariant result = inType(coerceNumericTypes(a, b), a, b, operation);
    m_ok = result.isValid();
    return result;
}

template <class Operation>
QVariant TypeTool::combineBits(QVariant const& a, QVariant const& b, Operation const& operation)
{
    // Never a failure, unlike the other operations: chains of bit tests carry the invalid value on.
    m_ok = true;
    return inType(coerceNumericTypes(a, b), a, b, operation);
}

QVariant TypeTool::do_add(QVariant const& a, QVariant const& b)
{
    QVariant sum = calculate(a, b, Add());
    if (!m_ok)
        sum = addOthers(a, b);
    return sum;
}

QVariant TypeTool::addOthers(QVariant const& a, QVariant const& b)
{
    m_ok = true;
    if (isDateWithPartner(a.type(), b.type()))
        return dateAdd(a, dateMicroSeconds(b));
    if (isDateWithPartner(b.type(), a.type()))
        return dateAdd(b, dateMicroSeconds(a));
    if (isText(a) && isText(b))
        return QString(a.toString() + b.toString());
    return fail();
}

QVariant TypeTool::do_subtract(QVariant const& a, QVariant const& b)
{
    QVariant remainder = calculate(a, b, Subtract());
    if (!m_ok)
        remainder = subtractOthers(a, b);
    return remainder;
}

QVariant TypeTool::subtractOthers(QVariant const& a, QVariant const& b)
{
    if (!isDateWithPartner(a.type(), b.type()))
        return fail();
    m_ok = true;
    return dateAdd(a, wrappedProduct(-1, dateMicroSeconds(b)));
}

QVariant TypeTool::do_multiply(QVariant const& a, QVariant const& b)
{
    return calculate(a, b, Multiply());
}

QVariant TypeTool::do_divide(QVariant const& a, QVariant const& b)
{
    return calculate(a, b, Divide());
}

QVariant TypeTool::do_modulo(QVariant const& a, QVariant const& b)
{
    return calculate(a, b, Modulo());
}

QVariant TypeTool::do_bitand(QVariant const& a, QVariant const& b)
{
    return combineBits(a, b, BitAnd());
}

QVariant TypeTool::do_bitor(QVariant const& a, QVariant const& b)
{
    return combineBits(a, b, BitOr());
}

QVariant TypeTool::do_bitxor(QVariant const& a, QVariant const& b)
{
    return combineBits(a, b, BitXor());
}

qint64 TypeTool::dateMicroSeconds(QVariant const& value)
{
    switch (value.type()) {
    case QVariant::Int:
        return value.toInt() * microsPerMilli;
    case QVariant::UInt:
        return value.toUInt() * microsPerMilli;
    case QVariant::LongLong:
        return value.toLongLong();
    case QVariant::ULongLong:
        return static_cast<qint64>(value.toULongLong());
    case QVariant::Double:
        return qv::clampTo<qint64>(value.toDouble() * static_cast<double>(microsPerDay));
    case QVariant::Date:
        return wrappedProduct(EPOCH.daysTo(value.toDate()), microsPerDay);
    case QVariant::Time:
        return MIDNIGHT.msecsTo(value.toTime()) * microsPerMilli;
    case QVariant::DateTime:
        return qv::toMicroSeconds(value.toDateTime());
    default:
        return isText(value) ? qv::toMicroSeconds(QDateTime::fromString(value.toString(), Qt::TextDate)) : 0;
    }
}

double TypeTool::dateSeconds(QVariant const& value)
{
    return static_cast<double>(dateMicroSeconds(value)) / microsPerSecond;
}

QVariant TypeTool::dateAdd(QVariant const& value, qint64 micros) const
{
    qint64 const moved = wrappedSum(dateMicroSeconds(value), micros);
    auto const unsignedMoved = static_cast<quint64>(moved);
    QDateTime const moment = qv::fromMicroSeconds(moved);
    switch (value.type()) {
    case QVariant::Int:
    case QVariant::UInt:
        return static_cast<int>(unsignedMoved / microsPerMilli);
    case QVariant::LongLong:
    case QVariant::ULongLong:
        return moved % microsPerMilli == 0 ? QVariant(static_cast<int>(moved / microsPerMilli))
                                           : QVariant(unsignedMoved);
    case QVariant::Double:
        return static_cast<double>(unsignedMoved) / static_cast<double>(microsPerDay);
    case QVariant::Date:
        return unsignedMoved % microsPerDay == 0 ? QVariant(moment.date()) : QVariant(moment);
    case QVariant::Time:
        return unsignedMoved < microsPerDay ? QVariant(moment.time()) : QVariant(moment);
    default:
        return moment;
    }
}

QVariant TypeTool::castDate(QVariant const& value, QVariant::Type target)
{
    if (isDate(value.type()) && isNumeric(target))
        return numberOfDate(dateMicroSeconds(value), target);
    if (!isDate(target) || !isNumeric(value.type()))
        return {};
    QDateTime const moment = qv::fromFrameTime(frameTimeOfNumber(value));
    switch (target) {
    case QVariant::Date:
        return moment.date();
    case QVariant::Time:
        return moment.time();
    default:
        return moment;
    }
}

QString TypeTool::invertString(QString const& text)
{
    // The terminator sorts a text after every longer one that begins with it.
    constexpr ushort terminator = 0xFFFF;
    QString inverted;
    inverted.reserve(text.size() + 1);
    for (QChar const unit : text) {
        if (unit.unicode() != terminator)
            inverted += QChar(static_cast<ushort>(~unit.unicode()));
    }
    bool const wasInverted = inverted.size() != text.size();
    return wasInverted ? inverted : inverted + QChar(terminator);
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
        return compareList(a.toList(), b.toList());
    if (isText(a) && isText(b))
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
    m_ok = common != QVariant::Invalid;
    if (!m_ok)
        return false;
    // The outcomes are compared, not the values: values without an order count as equal where both are of one kind.
    QVariant left = a;
    QVariant right = b;
    return left.convert(static_cast<int>(common)) == right.convert(static_cast<int>(common));
}

bool TypeTool::contains(QList<QVariant> const& list, QVariant const& value)
{
    return std::any_of(list.begin(), list.end(), [&](QVariant const& element) { return equals(element, value); });
}

} // namespace qvgen
