// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Comparator.h>
#include <GenericUtilities/expressions/Expression.h>
#include <GenericUtilities/expressions/Functions.h>
#include <GenericUtilities/expressions/NumericOperators.h>
#include <GenericUtilities/expressions/VariantStream_p.h>

#include <QDataStream>

#include <memory>
#include <typeinfo>

/// The stored form of expression trees: the registry of node classes, records, and the fields of each class.
namespace qvgen {

namespace {

    // Each class's fields begin with a number of this kind, which no reader has ever looked at.
    constexpr qint32 fieldsVersion = 1;
    constexpr qint32 namedFieldsVersion = 2;

    // Stored; the names that the C++ ABI of the platform gives the classes.
    char const* classKey(Expression const& node)
    {
        char const* const name = typeid(node).name();
        return *name == '*' ? name + 1 : name;
    }

    void skipVersion(QDataStream& in)
    {
        qint32 version = 0;
        in >> version;
    }

    template <class Enumeration> Enumeration readEnumeration(QDataStream& in)
    {
        qint32 number = 0;
        in >> number;
        return static_cast<Enumeration>(number);
    }

    QString readClassKey(QDataStream& in)
    {
        char* bytes = nullptr;
        in >> bytes;
        std::unique_ptr<char[]> const key(bytes);
        return QString::fromLatin1(key.get());
    }

} // namespace

QMap<QString, ExpressionHandle>& Expression::expressionClassMap()
{
    // Never destroyed: destructors of static objects may still read streams.
    static auto* const map = new QMap<QString, ExpressionHandle>;
    return *map;
}

bool Expression::registerExpressionClass(ExpressionHandle prototype)
{
    QString const key = QString::fromLatin1(classKey(*prototype.constData()));
    if (key.isEmpty() || expressionClassMap().contains(key))
        return false;
    expressionClassMap().insert(key, prototype);
    return true;
}

void Expression::writeRecord(QDataStream& out, Expression const& node)
{
    if (node.depth() > MaxDepth) {
        out.setStatus(QDataStream::WriteFailed);
        return;
    }
    out << classKey(node);
    node.write(out);
}

void Expression::writeExpression(QDataStream& out, ExpressionHandle node)
{
    writeRecord(out, *node.data());
}

QDataStream& operator<<(QDataStream& out, ExpressionHandle expression)
{
    Expression::writeRecord(out, *expression.data());
    return out;
}

ExpressionHandle Expression::readExpression(QDataStream& in)
{
    Reading const reading;
    if (reading.isTooDeep()) {
        in.setStatus(QDataStream::ReadCorruptData);
        return {};
    }
    QString const key = readClassKey(in);
    auto const prototype = expressionClassMap().constFind(key);
    // An unknown class is an empty list; what follows its key stays in the stream.
    if (prototype == expressionClassMap().constEnd())
        return {};
    ExpressionHandle node = prototype.value();
    node->read(in);
    return in.status() == QDataStream::ReadCorruptData ? ExpressionHandle() : node;
}

void ConstExpression::write(QDataStream& out) const
{
    out << fieldsVersion << m_placeholder << m_value;
    if (!isReadable(m_value))
        out.setStatus(QDataStream::WriteFailed);
}

void ConstExpression::read(QDataStream& in)
{
    skipVersion(in);
    in >> m_placeholder;
    m_value = readVariant(in);
}

void ValueExpression::write(QDataStream& out) const
{
    out << namedFieldsVersion << m_name << m_alias;
}

void ValueExpression::read(QDataStream& in)
{
    skipVersion(in);
    in >> m_name >> m_alias;
}

void CastExpression::write(QDataStream& out) const
{
    out << fieldsVersion << static_cast<quint32>(m_target);
    writeExpression(out, m_operand);
}

void CastExpression::read(QDataStream& in)
{
    skipVersion(in);
    m_target = readEnumeration<QVariant::Type>(in);
    m_operand = readExpression(in);
    resetDepth();
    countOperand(m_operand);
}

void Operator::write(QDataStream& out) const
{
    out << fieldsVersion << static_cast<qint32>(m_operands.size());
    for (ExpressionHandle const& each : m_operands)
        writeExpression(out, each);
}

void Operator::read(QDataStream& in)
{
    m_operands.clear();
    resetDepth();
    skipVersion(in);
    qint32 count = 0;
    in >> count;
    // The count may claim anything: nothing is reserved, and the end of the stream ends the loop.
    for (qint32 i = 0; i < count && in.status() == QDataStream::Ok; ++i)
        append(readExpression(in));
}

void Comparator::write(QDataStream& out) const
{
    out << fieldsVersion << static_cast<qint32>(m_op);
    Operator::write(out);
}

void Comparator::read(QDataStream& in)
{
    skipVersion(in);
    m_op = readEnumeration<CompOp>(in);
    Operator::read(in);
}

void BooleanOperator::write(QDataStream& out) const
{
    out << fieldsVersion << static_cast<qint32>(m_op);
    Operator::write(out);
}

void BooleanOperator::read(QDataStream& in)
{
    skipVersion(in);
    m_op = readEnumeration<BoolOp>(in);
    Operator::read(in);
}

void NumericOperator::write(QDataStream& out) const
{
    out << fieldsVersion << static_cast<qint32>(m_op);
    Operator::write(out);
}

void NumericOperator::read(QDataStream& in)
{
    skipVersion(in);
    m_op = readEnumeration<NumOp>(in);
    Operator::read(in);
}

void UnaryOperator::write(QDataStream& out) const
{
    out << fieldsVersion << static_cast<qint32>(m_op);
    Operator::write(out);
}

void UnaryOperator::read(QDataStream& in)
{
    skipVersion(in);
    m_op = readEnumeration<UnaryOp>(in);
    Operator::read(in);
}

void FunctionExpression::write(QDataStream& out) const
{
    out << namedFieldsVersion << m_name << m_distinct;
    Operator::write(out);
}

void FunctionExpression::read(QDataStream& in)
{
    skipVersion(in);
    in >> m_name >> m_distinct;
    Operator::read(in);
}

} // namespace qvgen
