// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/Functions.h>

#include <GenericUtilities/expressions/PatternBounds_p.h>
#include <qvbase/Mutex.h>

#include <optional>

/// The functions `like` and `regexp`: patterns compiled once, kept in caches, and matched within bounds.
namespace qvgen {

QCache<QString, QRegExp> FunctionExpression::gLikeCache;
QCache<QString, QRegExp> FunctionExpression::gRegExpCache;

namespace {

    // Guards both caches.
    qv::Mutex& cacheMutex()
    {
        static auto* const mutex = new qv::Mutex;
        return *mutex;
    }

    // The caches drop by number alone. So that they stay small whatever the patterns are, both are emptied where those
    // put into them since may have grown to this.
    constexpr double maxCachedBytes = 8e6;
    double cachedBytes = 0;

    void makeRoom(double bytes)
    {
        cachedBytes += bytes;
        if (cachedBytes <= maxCachedBytes)
            return;
        FunctionExpression::gLikeCache.clear();
        FunctionExpression::gRegExpCache.clear();
        cachedBytes = bytes;
    }

    // One of the caches, with the shapes of the patterns that were asked for lately.
    struct Patterns {
        QCache<QString, QRegExp>& compiled;
        QCache<QString, PatternShape> shapes = QCache<QString, PatternShape>();
    };

    Patterns likePatterns = {FunctionExpression::gLikeCache};
    Patterns regExpPatterns = {FunctionExpression::gRegExpCache};

    // A copy, good while the lock is held and after.
    template <class Judge> PatternShape shapeFor(Patterns& patterns, QString const& key, Judge const& judge)
    {
        if (PatternShape const* const known = patterns.shapes.object(key))
            return *known;
        PatternShape const shape = judge();
        patterns.shapes.insert(key, new PatternShape(shape));
        return shape;
    }

    // A copy of the pattern of that key, which `compile` makes where there is none; nothing where its match with that
    // subject may not run in the evaluation at hand. Copies share what was compiled, but match independently of one
    // another.
    template <class Judge, class Compile> std::optional<QRegExp> affordable(Patterns& patterns, QString const& key,
        int subjectLength, Qt::CaseSensitivity sensitivity, Judge const& judge, Compile const& compile)
    {
        qv::MutexLocker const locker(cacheMutex());
        PatternShape const shape = shapeFor(patterns, key, judge);
        if (!shape.isBounded() || !Evaluation::allows(shape.matchNanoseconds(subjectLength, sensitivity)))
            return std::nullopt;
        if (QRegExp const* const found = patterns.compiled.object(key))
            return *found;
        if (!Evaluation::allows(shape.compileNanoseconds()))
            return std::nullopt;
        makeRoom(shape.bytes());
        auto* const compiled = new QRegExp(compile());
        QRegExp copy = *compiled;
        patterns.compiled.insert(key, compiled, 1);
        return copy;
    }

    QVariant match(std::optional<QRegExp> const& pattern, QString const& subject)
    {
        return pattern ? QVariant(pattern->exactMatch(subject)) : QVariant();
    }

    // A LIKE pattern as a regular expression.
    QString expressionOfLike(QString const& pattern, QString const& escape)
    {
        QLatin1String const anyRun(".*");
        QString expression;
        for (int i = 0; i < pattern.size(); ++i) {
            bool const isEscape = !escape.isEmpty() && pattern.midRef(i, escape.size()) == escape;
            if (isEscape)
                i += escape.size();
            // An escape with nothing behind it: no text matches, as in SQLite.
            if (i >= pattern.size())
                return QStringLiteral("(?!)");
            QChar const unit = pattern.at(i);
            if (isEscape || (unit != QLatin1Char('%') && unit != QLatin1Char('_')))
                expression += QRegExp::escape(unit);
            else if (unit == QLatin1Char('_'))
                expression += QLatin1Char('.');
            else if (!expression.endsWith(anyRun))
                expression += anyRun;
        }
        return expression;
    }

    // The length of an escape, which is not above that of a bounded pattern, tells where the pattern begins.
    QString likeKey(QString const& pattern, QString const& escape)
    {
        QString key;
        key.reserve(1 + escape.size() + pattern.size());
        key += QChar(static_cast<ushort>(escape.size()));
        key += escape;
        key += pattern;
        return key;
    }

    QRegExp const* regExpOf(QVariant const& value)
    {
        // Not toRegExp(): the copy that it makes compiles the pattern, in the value that threads share.
        return value.type() == QVariant::RegExp ? static_cast<QRegExp const*>(value.constData()) : nullptr;
    }

    // A key of its own for all that makes two expressions differ; texts of patterns are keys as they stand.
    QString regExpKey(
        QString const& pattern, QRegExp::PatternSyntax syntax, Qt::CaseSensitivity sensitivity, bool isMinimal)
    {
        int const kind = syntax * 4 + (isMinimal ? 2 : 0) + (sensitivity == Qt::CaseSensitive ? 1 : 0);
        return QChar(QChar::Null) + QString::number(kind) + QLatin1Char(':') + pattern;
    }

    QString regExpKey(QString const& pattern)
    {
        bool const isKeyOfAnother = pattern.startsWith(QChar(QChar::Null));
        return isKeyOfAnother ? regExpKey(pattern, QRegExp::RegExp, Qt::CaseSensitive, false) : pattern;
    }

    // Compiled on its first match, unlike a copy, which would compile the pattern in `expression`, too.
    QRegExp uncompiled(QRegExp const& expression)
    {
        QRegExp result;
        result.setPattern(expression.pattern());
        result.setCaseSensitivity(expression.caseSensitivity());
        result.setPatternSyntax(expression.patternSyntax());
        result.setMinimal(expression.isMinimal());
        return result;
    }

    QVariant matchRegExp(QString const& subject, QRegExp const& expression)
    {
        QString const pattern = expression.pattern();
        if (pattern.size() > PatternShape::MaxLength)
            return {};
        QRegExp::PatternSyntax const syntax = expression.patternSyntax();
        Qt::CaseSensitivity const sensitivity = expression.caseSensitivity();
        QString const key = regExpKey(pattern, syntax, sensitivity, expression.isMinimal());
        auto const judge = [&] { return shapeOf(pattern, syntax); };
        auto const compile = [&] { return uncompiled(expression); };
        return match(affordable(regExpPatterns, key, subject.size(), sensitivity, judge, compile), subject);
    }

    QVariant matchRegExp(QString const& subject, QString const& pattern)
    {
        if (pattern.size() > PatternShape::MaxLength)
            return {};
        auto const judge = [&] { return shapeOf(pattern, QRegExp::RegExp); };
        auto const compile = [&] { return QRegExp(pattern, Qt::CaseSensitive, QRegExp::RegExp); };
        QString const key = regExpKey(pattern);
        return match(affordable(regExpPatterns, key, subject.size(), Qt::CaseSensitive, judge, compile), subject);
    }

} // namespace

QVariant FunctionExpression::like(QList<QVariant> const& values)
{
    if (values.size() < 2)
        return {};
    QString const subject = values.at(0).toString();
    QString const pattern = values.at(1).toString();
    if (pattern.size() > PatternShape::MaxLength)
        return {};
    QString const givenEscape = values.value(2).toString();
    // One that is longer stands nowhere in the pattern; in the key it would only take room.
    QString const escape = givenEscape.size() <= pattern.size() ? givenEscape : QString();
    auto const judge = [&] { return shapeOfLike(pattern); };
    auto const compile = [&] { return QRegExp(expressionOfLike(pattern, escape), Qt::CaseSensitive, QRegExp::RegExp); };
    QString const key = likeKey(pattern, escape);
    return match(affordable(likePatterns, key, subject.size(), Qt::CaseSensitive, judge, compile), subject);
}

QVariant FunctionExpression::regexp(QList<QVariant> const& values)
{
    if (values.size() < 2)
        return {};
    QString const subject = values.at(0).toString();
    QRegExp const* const expression = regExpOf(values.at(1));
    return expression ? matchRegExp(subject, *expression) : matchRegExp(subject, values.at(1).toString());
}

} // namespace qvgen
