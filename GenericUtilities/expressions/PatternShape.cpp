// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/PatternBounds_p.h>
#include <GenericUtilities/expressions/PatternPart_p.h>

#include <algorithm>
#include <vector>

/// How the shape of a pattern is read.
namespace qvgen {

namespace {

    // Walks a regular expression once; knows QRegExp's grammar as far as the automaton depends on it, errors included:
    // behind an error, QRegExp goes on compiling.
    class ShapeReader {
    public:
        ShapeReader(QString const& pattern, QRegExp::PatternSyntax syntax)
            : m_pattern(pattern)
            , m_isXml(syntax == QRegExp::W3CXmlSchema11)
            , m_isGreedy(m_isXml || syntax == QRegExp::RegExp2)
        {
            m_shape.length = pattern.size();
            m_groups.emplace_back();
        }

        PatternShape read()
        {
            while (m_position < m_pattern.size() && PatternShape::isWithinBounds(m_shape.items, m_shape.transitions))
                readNext();
            while (m_groups.size() > 1)
                closeGroup();
            endAlternative();
            PatternPart const whole = PatternPart::sequence(
                PatternPart::sequence(PatternPart::state(1), m_groups.back().alternatives), PatternPart::state(1));
            m_shape.items = std::max(m_shape.items, whole.items);
            m_shape.transitions = std::max(m_shape.transitions, whole.transitions);
            m_shape.lookaheads = std::max(m_shape.lookaheads, whole.lookaheads);
            if (m_shape.lookaheads > 0)
                m_shape.items *= m_groupCounts;
            if (m_isGreedy)
                m_shape.captures
                    = std::max(m_shape.captures, static_cast<int>(std::min(m_shape.items, PatternShape::MaxItems)));
            return m_shape;
        }

    private:
        struct Group {
            PatternPart alternatives; // those that have ended
            PatternPart sequence; // before the last item
            PatternPart item;
            bool hasAlternatives = false;
            bool isCapturing = false;
            bool isLookahead = false;
            bool isGroup = false; // whether the last item is one
            bool isCapture = false; // whether it captures
            int detours = 0;
        };

        void readNext()
        {
            constexpr int endless = -1;
            switch (next()) {
            case '\\':
                return readEscape();
            case '[':
                return readClass();
            case '(':
                return openGroup();
            case ')':
                return closeGroup();
            case '|':
                return endAlternative();
            case '^':
            case '$':
                return add(PatternPart::anchor());
            case '?':
                return repeat(0, 1);
            case '*':
                return repeat(0, endless);
            case '+':
                return repeat(1, endless);
            case '{':
                return readCounts();
            case '.':
                return add(PatternPart::state(weightOfClass));
            default:
                return add(PatternPart::state(1));
            }
        }

        ushort peek() const { return m_position < m_pattern.size() ? m_pattern.at(m_position).unicode() : ushort(0); }

        ushort next()
        {
            ushort const unit = peek();
            ++m_position;
            return unit;
        }

        void readEscape()
        {
            // A class of names in XML has some two hundred ranges.
            constexpr double weightOfXmlClass = 50;
            ushort const unit = next();
            if (unit == 'b' || unit == 'B')
                add(PatternPart::anchor());
            else if (unit >= '1' && unit <= '9')
                addBackReference(unit - '0');
            else
                add(PatternPart::state(m_isXml ? weightOfXmlClass : weightOfClass));
        }

        void readClass()
        {
            int const begin = m_position;
            if (peek() == '^')
                next();
            // A bracket in the first place stands for itself.
            do {
                if (next() == '\\')
                    next();
            } while (m_position < m_pattern.size() && peek() != ']');
            next();
            // Its characters are looked through one by one.
            constexpr double weightPerUnit = 0.5;
            add(PatternPart::state(weightOfClass + weightPerUnit * (m_position - begin)));
        }

        int readCount(int otherwise)
        {
            constexpr int maxCount = 1024; // QRegExp's
            bool isNumber = false;
            int count = 0;
            for (; peek() >= '0' && peek() <= '9'; isNumber = true)
                count = std::min(maxCount, count * 10 + next() - '0');
            return isNumber ? count : otherwise;
        }

        void readCounts()
        {
            constexpr int endless = -1;
            int const fewest = readCount(0);
            int most = fewest;
            if (peek() == ',') {
                next();
                most = readCount(endless);
            }
            // The brace, or what is not one and just ignored.
            next();
            repeat(fewest, most);
        }

        void openGroup()
        {
            Group group;
            if (peek() == '?') {
                next();
                // Whatever stands there names the kind of group: a bracket begins no class.
                ushort const kind = next();
                group.isLookahead = kind == '=' || kind == '!';
            } else {
                group.isCapturing = true;
                ++m_shape.captures;
            }
            m_shape.nesting = std::max(m_shape.nesting, static_cast<int>(m_groups.size()));
            m_groups.push_back(group);
        }

        void closeGroup()
        {
            if (m_groups.size() < 2)
                return;
            endAlternative();
            Group const group = m_groups.back();
            m_groups.pop_back();
            if (group.isLookahead)
                addLookahead(group);
            else
                addGroup(group);
        }

        void addGroup(Group const& group)
        {
            PatternPart part = group.alternatives;
            ++part.items;
            m_groups.back().detours = std::max(m_groups.back().detours, group.detours);
            add(part);
            m_groups.back().isGroup = true;
            m_groups.back().isCapture = group.isCapturing || m_isGreedy;
        }

        void addLookahead(Group const& group)
        {
            // An automaton of its own, run wherever the anchor is tested. Where it is malformed, QRegExp compiles its
            // content as part of the whole, too.
            PatternPart const content = group.alternatives;
            PatternPart const own
                = PatternPart::sequence(PatternPart::sequence(PatternPart::state(1), content), PatternPart::state(1));
            PatternPart part = PatternPart::sequence(PatternPart::anchor(), content);
            constexpr double itemsOfAutomaton = 2;
            part.items += own.items + itemsOfAutomaton;
            part.transitions += own.transitions;
            ++part.lookaheads;
            addDetours(group.detours + 1);
            part.isNullable = true;
            part.anchorsOfEmpty = std::max(1.0, part.anchorsOfEmpty);
            add(part);
            m_groups.back().isGroup = true;
        }

        // QRegExp keeps as many captures as the highest number, whether the pattern has them or not.
        void addBackReference(int number)
        {
            constexpr int countless = 1000000;
            for (; peek() >= '0' && peek() <= '9'; next())
                number = std::min(countless, number * 10 + peek() - '0');
            m_shape.captures = std::max(m_shape.captures, number);
            PatternPart part = PatternPart::anchor();
            part.first = weightOfClass;
            part.last = 1;
            part.anchorsBefore = 0;
            addDetours(1);
            add(part);
        }

        void addDetours(int detours)
        {
            m_groups.back().detours = std::max(m_groups.back().detours, detours);
            m_shape.detours = std::max(m_shape.detours, detours);
        }

        void add(PatternPart const& item)
        {
            Group& group = m_groups.back();
            group.sequence = PatternPart::sequence(group.sequence, group.item);
            group.item = item;
            group.isGroup = false;
            group.isCapture = m_isGreedy;
            watch();
        }

        void endAlternative()
        {
            Group& group = m_groups.back();
            add(PatternPart());
            group.alternatives = group.hasAlternatives ? PatternPart::alternatives(group.alternatives, group.sequence)
                                                       : group.sequence;
            group.hasAlternatives = true;
            group.sequence = PatternPart();
            watch();
        }

        // As QRegExp does it: x{2,4} as x(x(xx?)?), a last endless copy in a loop.
        void repeat(int fewest, int most)
        {
            constexpr double weightOfCapture = 8;
            Group& group = m_groups.back();
            bool const isEndless = most < 0;
            PatternPart copy = group.item;
            if (isEndless)
                copy = PatternPart::looped(copy, group.isCapture ? weightOfCapture : 1);
            if (fewest == 0)
                copy = PatternPart::optional(copy);
            int const mandatory = std::max(0, fewest - 1);
            int const optionals = isEndless ? 0 : std::max(0, most - mandatory - 1);
            PatternPart tail;
            for (int i = 0; i < optionals && PatternShape::isWithinBounds(tail.items, tail.transitions); ++i)
                tail = PatternPart::optional(PatternPart::sequence(group.item, tail));
            for (int i = 0; i < mandatory && PatternShape::isWithinBounds(tail.items, tail.transitions); ++i)
                tail = PatternPart::sequence(group.item, tail);
            group.item = PatternPart::sequence(copy, tail);
            // Behind a malformed lookahead, so much as the count of its first item is that of the lookahead itself.
            if (group.isGroup || (group.isLookahead && group.sequence.items == 0))
                m_groupCounts = std::min(PatternShape::MaxItems, m_groupCounts * std::max({1, fewest, most}));
            watch();
        }

        // Ends the reading where the innermost group alone exceeds the bounds.
        void watch()
        {
            Group const& group = m_groups.back();
            m_shape.items = std::max(m_shape.items, group.sequence.items + group.item.items);
            m_shape.transitions = std::max(m_shape.transitions, group.sequence.transitions + group.item.transitions);
        }

        static constexpr double weightOfClass = 2;

        QString const& m_pattern;
        bool m_isXml;
        bool m_isGreedy; // whatever is repeated captures
        int m_position = 0;
        std::vector<Group> m_groups; // those that are open
        double m_groupCounts = 1; // the counts of groups, multiplied
        PatternShape m_shape;
    };

    // Patterns of other kinds as regular expressions that cost no less. Which brackets and backslashes of a wildcard
    // pattern are meant as such is left open; so is what an escape does in a LIKE pattern.
    QString expressionOfWildcard(QString const& pattern)
    {
        bool const hasClasses = pattern.contains(QLatin1Char('['));
        QString const other = hasClasses
            ? QLatin1Char('[') + QString(pattern.size(), QLatin1Char('a')) + QLatin1Char(']')
            : QStringLiteral("a");
        QString expression;
        for (QChar const unit : pattern) {
            if (unit == QLatin1Char('*'))
                expression += QLatin1String(".*");
            else
                expression += unit == QLatin1Char('?') ? QStringLiteral(".") : other;
        }
        return expression;
    }

    QString expressionOfLike(QString const& pattern)
    {
        QString expression;
        QChar previous;
        for (QChar const unit : pattern) {
            if (unit != QLatin1Char('%'))
                expression += QLatin1Char(unit == QLatin1Char('_') ? '.' : 'a');
            else if (previous != unit)
                expression += QLatin1String(".*");
            previous = unit;
        }
        return expression;
    }

    QString expressionOf(QString const& pattern, QRegExp::PatternSyntax syntax)
    {
        switch (syntax) {
        case QRegExp::Wildcard:
        case QRegExp::WildcardUnix:
            return expressionOfWildcard(pattern);
        case QRegExp::FixedString:
            return QString(pattern.size(), QLatin1Char('a'));
        default:
            return pattern;
        }
    }

    PatternShape shapeOfExpression(QString const& expression, QRegExp::PatternSyntax syntax, int length)
    {
        PatternShape shape = ShapeReader(expression, syntax).read();
        shape.length = length;
        return shape;
    }

    // What is refused by its length alone is not read.
    PatternShape tooLong(QString const& pattern)
    {
        PatternShape shape;
        shape.length = pattern.size();
        return shape;
    }

} // namespace

PatternShape shapeOf(QString const& pattern, QRegExp::PatternSyntax syntax)
{
    if (pattern.size() > PatternShape::MaxLength)
        return tooLong(pattern);
    return shapeOfExpression(expressionOf(pattern, syntax), syntax, pattern.size());
}

PatternShape shapeOfLike(QString const& pattern)
{
    if (pattern.size() > PatternShape::MaxLength)
        return tooLong(pattern);
    return shapeOfExpression(expressionOfLike(pattern), QRegExp::RegExp, pattern.size());
}

} // namespace qvgen
