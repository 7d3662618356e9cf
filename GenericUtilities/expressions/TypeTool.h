// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>

#include <QDate>
#include <QList>
#include <QString>
#include <QTime>
#include <QVariant>

namespace qvgen {

/// The rules by which two values of possibly different types are combined: arithmetic, dates, ordering, equality.
///
/// A tool serves one operation: it is made with what is known of the operands, asked for the operation, and then asked
/// whether that succeeded:
/// \code
/// TypeTool tool(leftConstant, rightConstant);
/// int order = tool.compare(left, right);
/// if (!tool.wasOK()) ... // the two cannot be ordered
/// \endcode
/// A constant operand may change its type to suit the other one; that is what the two flags are for.
///
/// Time is reduced to one scale, microseconds as a signed 64-bit count. In the arithmetic of dates a plain number has a
/// fixed unit: Int and UInt count milliseconds, LongLong and ULongLong microseconds, Double days.
///
/// Failure is told by wasOK(); only throwOK() throws. Texts, bytes and containers so large that joining or converting
/// them takes too long (docs/expressions.md) fail, too. Reentrant; a tool belongs to one thread.
class GENERICUTILITIES_EXPORT TypeTool {
public:
    /// An invalid variant.
    static QVariant const INVALID;
    /// 1970-01-01.
    static QDate const EPOCH;
    /// 00:00:00.000.
    static QTime const MIDNIGHT;

    TypeTool(bool leftConstant, bool rightConstant)
        : m_leftConstant(leftConstant)
        , m_rightConstant(rightConstant)
    {
    }

    /// Whether the last operation succeeded.
    bool wasOK() const { return m_ok; }
    /// @p value where the last operation succeeded, else INVALID. Good as long as @p value.
    QVariant const& returnOK(QVariant const& value) const { return m_ok ? value : INVALID; }
    /// True where the last operation succeeded, else throws qv::IllegalArgumentException ("can't compare values").
    bool throwOK() const;

    /// Int, UInt, LongLong, ULongLong or Double.
    static bool isNumeric(QVariant::Type type) { return type >= QVariant::Int && type <= QVariant::Double; }
    /// Date, Time or DateTime.
    static bool isDate(QVariant::Type type) { return type >= QVariant::Date && type <= QVariant::DateTime; }
    /// List or StringList.
    static bool isList(QVariant::Type type) { return type == QVariant::List || type == QVariant::StringList; }

    /// The common type of two numbers; Invalid where they are not to be combined, or are no numbers.
    QVariant::Type coerceNumericTypes(QVariant const& a, QVariant const& b) const;
    /// The common type of two values of other types; Invalid where there is none.
    QVariant::Type coerceOtherTypes(QVariant const& a, QVariant const& b) const;

    /// Arithmetic in the common type. Integers wrap around on overflow; a failure gives an invalid variant.
    ///@{
    /// Also moves a date by a number or a date, and concatenates what can be converted to text.
    QVariant do_add(QVariant const& a, QVariant const& b);
    /// Also moves a date back. An unsigned difference that is not positive becomes LongLong (of UInt) or Double (of
    /// ULongLong).
    QVariant do_subtract(QVariant const& a, QVariant const& b);
    QVariant do_multiply(QVariant const& a, QVariant const& b);
    /// Fails where b is zero.
    QVariant do_divide(QVariant const& a, QVariant const& b);
    /// The remainder, with the sign of a. Fails where b is zero, and for doubles.
    QVariant do_modulo(QVariant const& a, QVariant const& b);
    /// The bit operations never clear wasOK(): operands that are no integers just give an invalid variant.
    QVariant do_bitand(QVariant const& a, QVariant const& b);
    QVariant do_bitor(QVariant const& a, QVariant const& b);
    QVariant do_bitxor(QVariant const& a, QVariant const& b);
    ///@}

    /// @p value on the scale of microseconds (for moments: since 1970-01-01 00:00 UTC, dates being midnights there).
    /// What converts to text is read as a moment in Qt::TextDate. A moment that is invalid, or outside of 1970 to 2106,
    /// counts as 2^32 - 1 seconds; what is neither date, number nor text counts as 0. A Double beyond 64 bits of
    /// microseconds is taken as the nearest that fits, NaN as the lowest.
    static qint64 dateMicroSeconds(QVariant const& value);
    /// The same in seconds.
    static double dateSeconds(QVariant const& value);
    /// @p value moved by @p micros microseconds. A date moved by a part of a day and a time moved past midnight become
    /// a date with time, in whole seconds; so do both where they come to lie before 1970. Dates and moments are in UTC
    /// and wrap into the 2^32 seconds from 1970 on, sums into 64 bits. A Double stays in days; an integer becomes an
    /// Int of milliseconds, but 64 bits that are no whole milliseconds a ULongLong of microseconds.
    QVariant dateAdd(QVariant const& value, qint64 micros) const;
    /// Conversion between dates and numbers in the units above, where QVariant has none; invalid for any other pair of
    /// types. Int and UInt take the low 32 bits of a date's microseconds only, both 64-bit types give a ULongLong. A
    /// number is read unsigned, as a moment in UTC that wraps as dateAdd() has it; negative days and NaN are 0.
    static QVariant castDate(QVariant const& value, QVariant::Type target);

    /// A text that sorts in the reverse order of @p text by code units; applied twice, it gives @p text again (unless
    /// that holds the code units 0x0000 or 0xFFFF).
    static QString invertString(QString const& text);

    /// Negative where a sorts before b, positive where after, 0 where neither. Doubles that differ by less than 1 have
    /// the same place; NaN and a number give a negative result in either order, so a sort has to leave NaN out.
    int compare(QVariant const& a, QVariant const& b);
    /// The order of the first elements that differ; a list sorts after every shorter one that it begins with.
    int compareList(QList<QVariant> const& left, QList<QVariant> const& right);
    /// Whether compare() gives 0; for values that have no order, whether both or neither convert to a common type.
    bool equals(QVariant const& a, QVariant const& b);
    /// Whether any element of @p list equals @p value.
    bool contains(QList<QVariant> const& list, QVariant const& value);

private:
    template <class Operation> QVariant calculate(QVariant const& a, QVariant const& b, Operation const& operation);
    template <class Operation> QVariant combineBits(QVariant const& a, QVariant const& b, Operation const& operation);
    QVariant addOthers(QVariant const& a, QVariant const& b);
    QVariant subtractOthers(QVariant const& a, QVariant const& b);
    QVariant fail();

    bool m_leftConstant;
    bool m_rightConstant;
    bool m_ok = true;
};

} // namespace qvgen
