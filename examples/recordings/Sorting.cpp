// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Sorting.h"

#include "RecordingDatabase.h"

#include <GenericUtilities/expressions/NumericOperators.h>
#include <qvbase/Exceptions.h>

#include <algorithm>

using namespace qvgen;

namespace {

ExpressionHandle sortTerm(QString const& text, PropertySet const& recording)
{
    bool const isDescending = text.startsWith(QLatin1Char('-'));
    QString const name = text.mid(isDescending ? 1 : 0);
    if (!columnsOf(recording).contains(name))
        throw qv::IllegalArgumentException(
            QStringLiteral("--sort takes columns such as size or -modified, not '%1'").arg(text), text);
    BaseProperty const& property = recording[name];
    return isDescending ? ExpressionHandle(-property) : ExpressionHandle(+property);
}

/// A sort term taken apart.
///
/// The value of the minus itself would not do: by the library's rules it mirrors dates at 1970-01-01 00:00, so that
/// midnight stays where it is instead of going from the first place to the last, and makes doubles of large sizes.
struct Key {
    explicit Key(ExpressionHandle const& term)
        : expression(term)
    {
        auto const* unary = dynamic_cast<UnaryOperator const*>(term.constData());
        isDescending = unary && unary->op() == UnaryOperator::Minus;
        if (isDescending)
            expression = unary->operands().constFirst();
    }

    ExpressionHandle expression;
    bool isDescending;
};

/// The value as the column has it; a text in the encoding of the database, whose order is not that of QString where
/// characters beyond 16 bits meet those from U+E000 on.
QVariant comparable(QVariant const& value)
{
    QVariant const stored = storable(value);
    return stored.type() == QVariant::String ? QVariant(stored.toString().toUtf8()) : stored;
}

bool isLess(QVariant const& left, QVariant const& right)
{
    switch (left.type()) {
    case QVariant::ByteArray:
        return left.toByteArray() < right.toByteArray();
    case QVariant::Double:
        return left.toDouble() < right.toDouble();
    default:
        return left.toLongLong() < right.toLongLong();
    }
}

} // namespace

ExpressionList sortTerms(QStringList const& texts, PropertySet const& recording)
{
    ExpressionList terms;
    for (QString const& text : texts) {
        for (QString const& term : text.split(QLatin1Char(',')))
            terms.append(sortTerm(term, recording));
    }
    return terms;
}

void sortRows(QVector<int>& rows, ExpressionList const& order, QVector<PropertySet> const& recordings)
{
    // By the last term first: a stable sort keeps what the less important terms have arranged.
    for (int i = order.operands().size() - 1; i >= 0; --i) {
        Key const key(order.operands().at(i));
        QVector<QVariant> values(recordings.size());
        for (int const row : qAsConst(rows))
            values[row] = comparable(key.expression.evaluate(recordings.at(row)));
        std::stable_sort(rows.begin(), rows.end(), [&](int left, int right) {
            return key.isDescending ? isLess(values.at(right), values.at(left))
                                    : isLess(values.at(left), values.at(right));
        });
    }
}
