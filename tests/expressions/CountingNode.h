// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/Expression.h>

#include <QDataStream>
#include <QTextStream>

/// What was done to a CountingNode and its copies.
struct Counts {
    int clones = 0;
    int evaluations = 0;
    int flagRequests = 0; ///< evaluations that ask whether the value is constant
    int prints = 0;
    int writes = 0;
    int alive = 0;
};

/// A node class as a client may write it: a value that counts what is done to it.
class CountingNode : public qvgen::Expression {
public:
    using Expression::collectPlaceholders;
    using Expression::equals;

    explicit CountingNode(Counts& counts, QVariant const& value = true, bool isConstant = true)
        : m_counts(counts)
        , m_value(value)
        , m_isConstant(isConstant)
    {
        ++m_counts.alive;
    }
    CountingNode(CountingNode const& other)
        : Expression(other)
        , m_counts(other.m_counts)
        , m_value(other.m_value)
        , m_isConstant(other.m_isConstant)
    {
        ++m_counts.alive;
    }
    CountingNode& operator=(CountingNode const&) = delete;
    ~CountingNode() override { --m_counts.alive; }

    QVariant evaluate(qvgen::PropertySet const&, bool* isConstant) const override
    {
        ++m_counts.evaluations;
        if (isConstant) {
            ++m_counts.flagRequests;
            *isConstant = m_isConstant;
        }
        return m_value;
    }
    CountingNode* clone() const override
    {
        ++m_counts.clones;
        return new CountingNode(*this);
    }
    bool equals(Expression const* other) const override
    {
        auto const* const node = dynamic_cast<CountingNode const*>(other);
        return node && node->m_value == m_value;
    }
    void print(QTextStream& out, PrintStyle) const override
    {
        ++m_counts.prints;
        out << "counted";
    }
    bool isEmpty() const override { return !m_value.isValid(); }
    void write(QDataStream& out) const override
    {
        ++m_counts.writes;
        out << m_value;
    }
    void read(QDataStream& in) override { in >> m_value; }

private:
    Counts& m_counts;
    QVariant m_value;
    bool m_isConstant;
};

/// The only handle of a counting node; the clone that made it is not counted.
inline qvgen::ExpressionHandle counted(Counts& counts, QVariant const& value = true, bool isConstant = true)
{
    qvgen::ExpressionHandle handle = CountingNode(counts, value, isConstant);
    counts.clones = 0;
    return handle;
}
