// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Comparator.h>
#include <GenericUtilities/expressions/Functions.h>
#include <GenericUtilities/expressions/NumericOperators.h>

#include <QDateTime>
#include <QRandomGenerator>
#include <QRect>
#include <QRegExp>

/// Trees of every class that can be read back, with constants of every type that can be stored.
class RandomTree {
public:
    explicit RandomTree(QRandomGenerator& random)
        : m_random(random)
    {
    }

    qvgen::ExpressionHandle tree(int maxDepth)
    {
        bool const isLeaf = maxDepth <= 1 || below(4) == 0;
        return isLeaf ? leaf() : parent(maxDepth - 1);
    }

    QVariant value(int maxContainers = 2)
    {
        bool const mayContain = maxContainers > 0;
        switch (below(mayContain ? 23 : 20)) {
        case 0:
            return {};
        case 1:
            return below(2) == 1;
        case 2:
            return static_cast<int>(m_random.generate());
        case 3:
            return m_random.generate();
        case 4:
            return static_cast<qlonglong>(m_random.generate64());
        case 5:
            return m_random.generate64();
        case 6:
            return m_random.generateDouble() * 1e6 - 5e5;
        case 7:
            return static_cast<float>(below(1000)) / 8;
        case 8:
            return QChar(static_cast<ushort>(0x20 + below(0x500)));
        case 9:
        case 10:
            return text();
        case 11:
            return texts();
        case 12:
            return text().toUtf8();
        case 13:
            return date();
        case 14:
            return time();
        case 15:
            return QDateTime(date(), time(), Qt::UTC);
        case 16:
            // No clock is turned in the afternoon.
            return QDateTime(date(), QTime(12 + below(12), below(60)), Qt::LocalTime);
        case 17:
            return regExp();
        case 18:
            return QRect(below(100), -below(100), below(2000), below(2000));
        case 19:
            return QVariant(static_cast<QVariant::Type>(1 + below(5)));
        case 20:
            return list(maxContainers - 1);
        case 21:
            return QVariantMap{{key(), value(maxContainers - 1)}, {key(), value(maxContainers - 1)}};
        default:
            return QVariantHash{{key(), value(maxContainers - 1)}};
        }
    }

private:
    int below(int end) { return static_cast<int>(m_random.bounded(end)); }

    QString text()
    {
        static QString const units = QStringLiteral("ab'\"%_\\ 09.\u00e4\u20ac\t");
        if (below(8) == 0)
            return {};
        QString text;
        for (int length = below(12); length > 0; --length)
            text += units.at(below(units.size()));
        return below(6) == 0 ? text + QString::fromUtf8("\xf0\x9f\x98\x80") : text;
    }

    QString key() { return QLatin1Char('k') + text(); }

    QStringList texts()
    {
        QStringList list;
        for (int count = below(4); count > 0; --count)
            list += text();
        return list;
    }

    QVariantList list(int maxContainers)
    {
        QVariantList list;
        for (int count = below(4); count > 0; --count)
            list += value(maxContainers);
        return list;
    }

    QDate date() { return {1900 + below(200), 1 + below(12), 1 + below(28)}; }
    QTime time() { return {below(24), below(60), below(60), below(1000)}; }

    QRegExp regExp()
    {
        static char const* const patterns[] = {"a", "a*", "[a-c]+b", "(a|b){2,3}", "*.av?", "\\d+"};
        QRegExp result(
            QString::fromLatin1(patterns[below(6)]), Qt::CaseSensitivity(below(2)), QRegExp::PatternSyntax(below(6)));
        result.setMinimal(below(2) == 1);
        return result;
    }

    QString functionName()
    {
        QStringList const names = qvgen::FunctionExpression::functionMap().keys();
        int const index = below(names.size() + 1);
        return index < names.size() ? names.at(index) : text();
    }

    qvgen::ExpressionHandle leaf()
    {
        static char const* const names[] = {"age", "rate", "camera name", "start", "none", ""};
        switch (below(5)) {
        case 0:
            return qvgen::ExpressionHandle();
        case 1:
            return qvgen::ValueExpression(QString::fromLatin1(names[below(6)]), text());
        default:
            return qvgen::ConstExpression(value(), below(2) == 1);
        }
    }

    template <class Node> Node filled(Node node, int maxDepth)
    {
        for (int count = below(4); count > 0; --count)
            node.append(tree(maxDepth));
        return node;
    }

    qvgen::ExpressionHandle parent(int maxDepth)
    {
        using namespace qvgen;
        switch (below(10)) {
        case 0:
            return CastExpression(static_cast<QVariant::Type>(below(20) - 1), tree(maxDepth));
        case 1:
            return filled(ExpressionList(), maxDepth);
        case 2:
            return Comparator(tree(maxDepth), Comparator::CompOp(below(6)), tree(maxDepth));
        case 3:
            return filled(ElementOf(), maxDepth);
        case 4:
            return filled(BooleanOperator(BooleanOperator::BoolOp(below(2))), maxDepth);
        case 5:
            return NotOperator(tree(maxDepth));
        case 6:
            return filled(NumericOperator(NumericOperator::NumOp(below(8))), maxDepth);
        case 7:
            return UnaryOperator(UnaryOperator::UnaryOp(below(2)), tree(maxDepth));
        default:
            return filled(FunctionExpression(functionName(), ExpressionList(), below(2) == 1), maxDepth);
        }
    }

    QRandomGenerator& m_random;
};
