// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/TypeToolRules_p.h>

#include <GenericUtilities/expressions/ValueCost_p.h>

#include <type_traits>

namespace qvgen {

namespace {

    // Integer arithmetic that wraps around: in the unsigned type overflow is defined.
    template <class Integer, class Operation> QVariant wrapped(Integer a, Integer b, Operation const& operation)
    {
        using Unsigned = std::make_unsigned_t<Integer>;
        return static_cast<Integer>(operation(static_cast<Unsigned>(a), static_cast<Unsigned>(b)));
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

} // namespace

QVariant TypeTool::fail()
{
    m_ok = false;
    return {};
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
    // The sum of many texts copies what it has so far with each of them.
    if (isText(a) && isText(b) && mayConvert(a) && mayConvert(b))
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

} // namespace qvgen
