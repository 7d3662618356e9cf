// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>

#include <QList>
#include <QMap>
#include <QSharedData>
#include <QString>
#include <QVariant>

QT_BEGIN_NAMESPACE
class QDataStream;
class QTextStream;
QT_END_NAMESPACE

namespace qvgen {

class ExpressionHandle;
class PropertySet;

/// Expression::writeExpression().
GENERICUTILITIES_EXPORT QDataStream& operator<<(QDataStream& out, ExpressionHandle expression);

/// A node of an expression tree: a value that can be computed against a property set, printed and stored.
///
/// Nodes are shared by handles (ExpressionHandle) and immutable once shared. The library's node classes and those of
/// clients derive from this one or from Operator.
///
/// Evaluating never throws: what has no value is an invalid variant.
///
/// Depth: a tree of up to MaxDepth nested nodes is evaluated, printed, compared and collected on any stack of 1 MiB; a
/// deeper one as long as the stack of the calling thread has room for it (some 1 KiB a level, see
/// docs/architecture.md), else the result as a whole is invalid or empty. Trees of any depth are destroyed safely.
///
/// Threads: handles to one node may be copied and released in several threads at once, and a shared tree may be
/// evaluated and printed in several threads at once.
class GENERICUTILITIES_EXPORT Expression : public QSharedData {
public:
    /// How a tree is printed: a set of flags, passed down the tree. Without StyleCode and StyleSql it is the plain
    /// form: SQL's operators, but texts in double quotes and dates as text, both without any escaping.
    enum PrintStyle : int {
        StyleCode = 0x1, ///< C-like code.
        StyleSql = 0x2, ///< SQL, with dates as integers (microseconds since 1970-01-01 00:00 UTC).
        StylePlaceholders = 0x4, ///< Placeholder constants as "?"; their values: collectPlaceholders().
        StyleOrderTerm = 0x8, ///< A sort term: a unary minus becomes " DESC".
        StyleDistinct = 0x10, ///< For print functions of functions: the call has its DISTINCT flag set.
        StyleNested = 0x800 ///< For nodes: printed as an operand of an enclosing operator.
    };

    /// The deepest tree that can be stored in a stream, and that is sure to be evaluated and printed.
    static constexpr int MaxDepth = 1000;

    virtual ~Expression();
    /// The value against @p properties; invalid where there is none. @p isConstant, unless null, receives whether the
    /// value is independent of the properties, by the rule of the node class.
    virtual QVariant evaluate(PropertySet const& properties, bool* isConstant) const = 0;
    /// A copy of this node on the heap, which the caller owns. Operands are shared with the original.
    virtual Expression* clone() const = 0;
    /// Whether @p other is a node of the same class with equal fields and operands; false for null.
    virtual bool equals(Expression const* other) const = 0;
    virtual void print(QTextStream& out, PrintStyle style) const = 0;
    /// Appends the values of the placeholder constants. The base class has none.
    virtual void collectPlaceholders(QList<QVariant>& values) const;
    virtual bool isEmpty() const = 0;
    /// Writes the fields, without the class key that writeExpression() puts before them.
    virtual void write(QDataStream& out) const = 0;
    /// Replaces all fields by those that write() wrote.
    virtual void read(QDataStream& in) = 0;

    QString toString(PrintStyle style) const;
    /// The SQL text. Explicit, so that `node == 5` is never a comparison of texts.
    explicit operator QString() const;
    /// The values of the placeholder constants in the order of the "?" of `StyleSql | StylePlaceholders`, one to one
    /// (but for SwitchCase, whose order is its own, and stored nodes with more operands than they print). Dates and
    /// times come as qlonglong microseconds, as SQL has them.
    QList<QVariant> collectPlaceholders() const;
    /// Whether both are the same node or equal nodes; false where just one is null.
    static bool equals(Expression const* a, Expression const* b);

    /// The number of nodes on the longest way down the tree, this one included.
    int depth() const { return m_depth; }

    /// The prototypes of all classes that readExpression() knows, by class key.
    static QMap<QString, ExpressionHandle>& expressionClassMap();
    /// Makes the class of @p prototype known to readExpression(). Returns false, and changes nothing, where its key is
    /// taken. For load time: the registry is not locked.
    static bool registerExpressionClass(ExpressionHandle prototype);
    /// Writes the record of a node: its class key, then its fields. A tree deeper than MaxDepth is not written at all:
    /// the stream gets QDataStream::WriteFailed. So does it where a constant is written that is not read back, as
    /// docs/formats.md tells.
    static void writeExpression(QDataStream& out, ExpressionHandle node);
    /// Reads a record. An unknown class key gives the empty handle and leaves the rest of the record unread. A tree
    /// that is nested too deeply, or holds a constant of a type that docs/formats.md does not list, gives the empty
    /// handle and QDataStream::ReadCorruptData; bytes of any origin do no harm.
    static ExpressionHandle readExpression(QDataStream& in);

protected:
    Expression() = default;
    /// Copies do not copy the reference count.
    Expression(Expression const& other) = default;
    Expression& operator=(Expression const& other);

    /// Counts @p operand into depth(). For a class that holds handles of its own: call it for each.
    void countOperand(ExpressionHandle const& operand);
    /// Makes depth() that of a node without operands.
    void resetDepth() { m_depth = 1; }
    /// Whether the stack cannot carry a walk down this tree. Asked on entry by each walk of a class with operands.
    bool isTooDeep() const { return m_depth > MaxDepth && exceedsStack(); }

private:
    friend QDataStream& operator<<(QDataStream& out, ExpressionHandle expression);

    bool exceedsStack() const;
    static void writeRecord(QDataStream& out, Expression const& node);

    int m_depth = 1;
};

constexpr Expression::PrintStyle operator|(Expression::PrintStyle a, Expression::PrintStyle b)
{
    return static_cast<Expression::PrintStyle>(static_cast<int>(a) | static_cast<int>(b));
}
constexpr Expression::PrintStyle operator&(Expression::PrintStyle a, Expression::PrintStyle b)
{
    return static_cast<Expression::PrintStyle>(static_cast<int>(a) & static_cast<int>(b));
}
constexpr Expression::PrintStyle operator^(Expression::PrintStyle a, Expression::PrintStyle b)
{
    return static_cast<Expression::PrintStyle>(static_cast<int>(a) ^ static_cast<int>(b));
}
constexpr Expression::PrintStyle operator~(Expression::PrintStyle style)
{
    return static_cast<Expression::PrintStyle>(~static_cast<int>(style));
}
constexpr Expression::PrintStyle& operator|=(Expression::PrintStyle& a, Expression::PrintStyle b)
{
    return a = a | b;
}
constexpr Expression::PrintStyle& operator&=(Expression::PrintStyle& a, Expression::PrintStyle b)
{
    return a = a & b;
}
constexpr Expression::PrintStyle& operator^=(Expression::PrintStyle& a, Expression::PrintStyle b)
{
    return a = a ^ b;
}

/// A copy-on-write pointer to a node; never null. Copies share the node, and the last one to go deletes it.
///
/// Every non-const access detaches: where the node is shared, the handle gets a clone of its own first. Reading through
/// a const handle, constData() or the forwarded operations never clones.
class GENERICUTILITIES_EXPORT ExpressionHandle {
public:
    /// Shares the one empty ExpressionList of the process.
    ExpressionHandle();
    /// Holds a clone of @p expression.
    ExpressionHandle(Expression const& expression);
    ExpressionHandle(ExpressionHandle const& other) noexcept
        : m_node(other.m_node)
    {
        m_node->ref.ref();
    }
    ~ExpressionHandle()
    {
        if (!m_node->ref.deref())
            destroy(m_node);
    }
    ExpressionHandle& operator=(ExpressionHandle const& other) noexcept
    {
        ExpressionHandle(other).swap(*this);
        return *this;
    }
    void swap(ExpressionHandle& other) noexcept { qSwap(m_node, other.m_node); }

    Expression const* operator->() const { return constData(); }
    Expression const& operator*() const { return *m_node; }
    Expression const* constData() const
    {
        Q_ASSUME(m_node != nullptr);
        return m_node;
    }
    Expression* operator->() { return data(); }
    Expression& operator*() { return *data(); }
    Expression* data()
    {
        detach();
        return m_node;
    }
    /// Makes this the only handle of its node, by a clone where it is not.
    void detach();

    bool isEmpty() const { return m_node->isEmpty(); }
    bool equals(ExpressionHandle other) const { return Expression::equals(m_node, other.m_node); }
    QVariant evaluate(PropertySet const& properties, bool* isConstant = nullptr) const
    {
        return m_node->evaluate(properties, isConstant);
    }
    QString toString(Expression::PrintStyle style) const { return m_node->toString(style); }
    QList<QVariant> collectPlaceholders() const { return m_node->collectPlaceholders(); }

private:
    static void destroy(Expression* node);

    Expression* m_node;
};

/// Prints the node in SQL. The handle detaches before.
GENERICUTILITIES_EXPORT QTextStream& operator<<(QTextStream& out, ExpressionHandle expression);
} // namespace qvgen

Q_DECLARE_TYPEINFO(qvgen::ExpressionHandle, Q_MOVABLE_TYPE);
