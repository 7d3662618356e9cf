// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/PatternBounds_p.h>

#include <QVector>

#include <algorithm>
#include <cmath>

namespace qvgen {

namespace {

    // Stated in docs/expressions.md.
    constexpr int maxLength = 1024;
    constexpr int maxNesting = 64;
    constexpr int maxItems = 1024;
    constexpr int maxOptional = 256;
    constexpr int maxRepeated = 64;
    constexpr double maxMatchNanoseconds = 100e6;
    constexpr double maxEvaluationNanoseconds = 400e6;

    // Keeps sums and products of damaged counts small.
    constexpr qint64 countless = 1000000;

    // Walks a regular expression once; knows its grammar as far as its size depends on it.
    class ShapeReader {
    public:
        explicit ShapeReader(QString const& pattern)
            : m_pattern(pattern)
        {
            m_shape.length = pattern.size();
            m_groups.append(0);
        }

        PatternShape read()
        {
            while (m_position < m_pattern.size())
                readNext();
            while (m_groups.size() > 1)
                closeGroup();
            m_shape.items = m_groups.last();
            return m_shape;
        }

    private:
        void readNext()
        {
            switch (next()) {
            case '\\':
                next();
                return addAtom(1);
            case '[':
                skipClass();
                return addAtom(1);
            case '(':
                return openGroup();
            case ')':
                return closeGroup();
            case '?':
            case '*':
            case '+':
                return repeat(1);
            case '{':
                return repeat(readCount());
            default:
                return addAtom(1);
            }
        }

        ushort next() { return m_position < m_pattern.size() ? m_pattern.at(m_position++).unicode() : ushort(0); }

        bool isNext(char const* text) const
        {
            QLatin1String const expected(text);
            return m_pattern.midRef(m_position, expected.size()) == expected;
        }

        void skipClass()
        {
            if (isNext("^"))
                next();
            // A bracket in the first place stands for itself.
            bool isFirst = true;
            while (m_position < m_pattern.size()) {
                ushort const unit = next();
                if (unit == ']' && !isFirst)
                    return;
                if (unit == '\\')
                    next();
                isFirst = false;
            }
        }

        // The highest number before the closing brace.
        qint64 readCount()
        {
            qint64 highest = 1;
            qint64 number = 0;
            for (ushort unit = next(); unit != 0 && unit != '}'; unit = next()) {
                bool const isDigit = unit >= '0' && unit <= '9';
                number = isDigit ? std::min(countless, number * 10 + unit - '0') : 0;
                highest = std::max(highest, number);
            }
            return highest;
        }

        void addAtom(qint64 size)
        {
            m_groups.last() = std::min(countless, m_groups.last() + size);
            m_atom = size;
            m_isGroup = false;
        }

        void openGroup()
        {
            if (isNext("?=") || isNext("?!"))
                ++m_shape.lookaheads;
            if (isNext("?"))
                m_position += 2;
            m_groups.append(0);
            m_shape.nesting = std::max(m_shape.nesting, m_groups.size() - 1);
        }

        void closeGroup()
        {
            if (m_groups.size() < 2)
                return;
            qint64 const size = m_groups.takeLast();
            addAtom(size);
            m_isGroup = true;
        }

        void repeat(qint64 count)
        {
            qint64 const size = std::min(countless, m_atom * count);
            m_groups.last() = std::min(countless, m_groups.last() - m_atom + size);
            qint64& affected = m_isGroup ? m_shape.repeated : m_shape.optional;
            affected = std::min(countless, affected + size);
            m_atom = size;
        }

        QString const& m_pattern;
        int m_position = 0;
        QVector<qint64> m_groups; // items of each group that is open
        qint64 m_atom = 0; // items of the last atom
        bool m_isGroup = false; // whether that was a group
        PatternShape m_shape;
    };

    bool isRegularExpression(QRegExp::PatternSyntax syntax)
    {
        return syntax == QRegExp::RegExp || syntax == QRegExp::RegExp2 || syntax == QRegExp::W3CXmlSchema11;
    }

} // namespace

bool PatternShape::isBounded() const
{
    return length <= maxLength && nesting <= maxNesting && items <= maxItems && optional <= maxOptional
        && repeated <= maxRepeated;
}

double PatternShape::compileNanoseconds() const
{
    // By the memory that a compiled pattern takes, so that one evaluation cannot fill the caches with large ones.
    auto const squared = [](qint64 count) { return static_cast<double>(count * count); };
    double const bytes = 200.0 * static_cast<double>(items) + 4 * squared(optional) + 55 * squared(repeated);
    constexpr double nanosecondsPerByte = 20;
    return bytes * nanosecondsPerByte;
}

double PatternShape::matchNanoseconds(int subjectLength) const
{
    auto const counted = [](qint64 count) { return static_cast<double>(count); };
    double const perUnit
        = 20 * counted(items) + 2 * std::pow(counted(optional), 2) + 4 * std::pow(counted(repeated), 3);
    return perUnit * std::pow(subjectLength + 1.0, 1 + lookaheads);
}

PatternShape shapeOf(QString const& pattern, QRegExp::PatternSyntax syntax)
{
    // No way through the reader for what is refused by its length alone.
    if (isRegularExpression(syntax) && pattern.size() <= maxLength)
        return ShapeReader(pattern).read();
    PatternShape shape;
    shape.length = pattern.size();
    shape.items = pattern.size();
    shape.optional = syntax == QRegExp::FixedString ? 0 : pattern.count(QLatin1Char('*'));
    return shape;
}

thread_local Evaluation::State Evaluation::s_state = {0, 0};

Evaluation::Evaluation()
{
    if (s_state.nesting++ == 0)
        s_state.spentNanoseconds = 0;
}

Evaluation::~Evaluation()
{
    --s_state.nesting;
}

bool Evaluation::allows(double nanoseconds)
{
    if (nanoseconds > maxMatchNanoseconds)
        return false;
    if (s_state.nesting == 0)
        return true;
    s_state.spentNanoseconds += nanoseconds;
    return s_state.spentNanoseconds <= maxEvaluationNanoseconds;
}

} // namespace qvgen
