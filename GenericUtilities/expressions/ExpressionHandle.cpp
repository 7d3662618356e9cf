// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/ExpressionHandle.h>

#include <GenericUtilities/expressions/Expression.h>
#include <GenericUtilities/expressions/PatternBounds_p.h>

#include <QTextStream>

#include <pthread.h>

#include <vector>

namespace qvgen {

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define GENERICUTILITIES_IS_INSTRUMENTED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define GENERICUTILITIES_IS_INSTRUMENTED
#endif
#endif

    // What one level of a tree takes of the stack while it is walked, measured and rounded up generously. Unoptimised
    // and instrumented builds have larger frames.
#if defined(__OPTIMIZE__) && !defined(GENERICUTILITIES_IS_INSTRUMENTED)
    constexpr std::size_t stackBytesPerLevel = 1024;
#else
    constexpr std::size_t stackBytesPerLevel = 8192;
#endif

    struct Stack {
        char const* low = nullptr;
        char const* high = nullptr;
    };

    Stack stackOfThread()
    {
        Stack stack;
        pthread_attr_t attributes;
        if (pthread_getattr_np(pthread_self(), &attributes) != 0)
            return stack;
        void* low = nullptr;
        std::size_t size = 0;
        if (pthread_attr_getstack(&attributes, &low, &size) == 0)
            stack = {static_cast<char const*>(low), static_cast<char const*>(low) + size};
        pthread_attr_destroy(&attributes);
        return stack;
    }

    // Nodes below this many nested destructors are queued and deleted by the outermost one.
    constexpr int maxNestedDestructors = 64;

    // Trivially destructible: handles with static storage may die after the thread's other variables.
    struct Destruction {
        int nesting;
        std::vector<Expression*>* queue;
    };
    thread_local Destruction t_destruction = {0, nullptr};

} // namespace

Expression::~Expression() = default;

Expression& Expression::operator=(Expression const& other)
{
    m_depth = other.m_depth;
    return *this;
}

void Expression::collectPlaceholders(QList<QVariant>&) const { }

QString Expression::toString(PrintStyle style) const
{
    // Functions that print their value are evaluated.
    Evaluation const evaluation;
    QString text;
    QTextStream stream(&text, QIODevice::ReadWrite);
    print(stream, style);
    stream.flush();
    return text;
}

Expression::operator QString() const
{
    return toString(StyleSql);
}

QList<QVariant> Expression::collectPlaceholders() const
{
    Evaluation const evaluation;
    QList<QVariant> values;
    collectPlaceholders(values);
    return values;
}

bool Expression::equals(Expression const* a, Expression const* b)
{
    if (a == b)
        return true;
    return a && b && a->equals(b);
}

void Expression::countOperand(ExpressionHandle const& operand)
{
    m_depth = qMax(m_depth, operand.constData()->depth() + 1);
}

bool Expression::exceedsStack() const
{
    thread_local Stack const stack = stackOfThread();
    auto const* const here = static_cast<char const*>(__builtin_frame_address(0));
    bool const isKnown = stack.low < here && here <= stack.high;
    return !isKnown || static_cast<std::size_t>(here - stack.low) / stackBytesPerLevel < std::size_t(m_depth);
}

ExpressionHandle::ExpressionHandle()
    : ExpressionHandle(ExpressionList::empty())
{
}

ExpressionHandle::ExpressionHandle(Expression const& expression)
    : m_node(expression.clone())
{
    m_node->ref.ref();
}

void ExpressionHandle::detach()
{
    if (m_node->ref.loadRelaxed() != 1)
        ExpressionHandle(static_cast<Expression const&>(*m_node)).swap(*this);
}

/// Deletes a node that no handle refers to. Its operands go with it, each through its own handle: recursion is cut
/// short by a queue, so that a tree of any depth fits the stack.
void ExpressionHandle::destroy(Expression* node)
{
    if (t_destruction.nesting >= maxNestedDestructors) {
        t_destruction.queue->push_back(node);
        return;
    }
    std::vector<Expression*> queue;
    auto* const outerQueue = t_destruction.queue;
    if (!outerQueue)
        t_destruction.queue = &queue;
    ++t_destruction.nesting;
    delete node;
    while (!queue.empty()) {
        Expression* const next = queue.back();
        queue.pop_back();
        delete next;
    }
    --t_destruction.nesting;
    t_destruction.queue = outerQueue;
}

QTextStream& operator<<(QTextStream& out, ExpressionHandle expression)
{
    Evaluation const evaluation;
    expression.data()->print(out, Expression::StyleSql);
    return out;
}

} // namespace qvgen
