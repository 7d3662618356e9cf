// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/Functions.h>

#include <GenericUtilities/expressions/PatternBounds_p.h>
#include <qvbase/Mutex.h>

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

    // A copy of the cached pattern of that key, made by `compile` where there is none. Copies share what was compiled,
    // but match independently of one another.
    template <class Compile>
    QRegExp cached(QCache<QString, QRegExp>& cache, QString const& key, double bytes, Compile const& compile)
    {
        qv::MutexLocker const locker(cacheMutex());
        if (QRegExp const* const found = cache.object(key))
            return *found;
        makeRoom(bytes);
        auto* const compiled = new QRegExp(compile());
        QRegExp copy = *compiled;
        cache.insert(key, compiled, 1);
        return copy;
    }

    bool isCached(QCache<QString, QRegExp> const& cache, QString const& key)
    {
        qv::MutexLocker const locker(cacheMutex());
        return cache.contains(key);
    }

    // Whether a match of this cost may run in the evaluation at hand.
    bool isAffordable(PatternShape const& shape, Qt::CaseSensitivity sensitivity, int subjectLength,
        QCache<QString, QRegExp> const& cache, QString const& key)
    {
        return shape.isBounded() && Evaluation::allows(shape.matchNanoseconds(subjectLength, sensitivity))
            && (isCached(cache, key) || Evaluation::allows(shape.compileNanoseconds()));
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

    QString likeKey(QString const& pattern, QString const& escape)
    {
        return QString::number(escape.size()) + QLatin1Char(':') + escape + pattern;
    }

    QRegExp const* regExpOf(QVariant const& value)
    {
        // Not toRegExp(): the copy that it makes compiles the pattern, in the value that threads share.
        return value.type() == QVariant::RegExp ? static_cast<QRegExp const*>(value.constData()) : nullptr;
    }

    // A key of its own for all that makes two expressions differ; texts of patterns are keys as they stand.
    QString regExpKey(QRegExp const& expression)
    {
        int const kind = expression.patternSyntax() * 4 + (expression.isMinimal() ? 2 : 0)
            + (expression.caseSensitivity() == Qt::CaseSensitive ? 1 : 0);
        return QChar(QChar::Null) + QString::number(kind) + QLatin1Char(':') + expression.pattern();
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

    QVariant matchRegExp(QString const& subject, QString const& key, QRegExp const& expression)
    {
        PatternShape const shape = shapeOf(expression.pattern(), expression.patternSyntax());
        QCache<QString, QRegExp>& cache = FunctionExpression::gRegExpCache;
        if (!isAffordable(shape, expression.caseSensitivity(), subject.size(), cache, key))
            return {};
        return cached(cache, key, shape.bytes(), [&] { return uncompiled(expression); }).exactMatch(subject);
    }

} // namespace

QVariant FunctionExpression::like(QList<QVariant> const& values)
{
    if (values.size() < 2)
        return {};
    QString const subject = values.at(0).toString();
    QString const pattern = values.at(1).toString();
    QString const givenEscape = values.value(2).toString();
    // One that is longer stands nowhere in the pattern; in the key it would only take room.
    QString const escape = givenEscape.size() <= pattern.size() ? givenEscape : QString();
    QString const key = likeKey(pattern, escape);
    PatternShape const shape = shapeOfLike(pattern);
    if (!isAffordable(shape, Qt::CaseSensitive, subject.size(), gLikeCache, key))
        return {};
    auto const compile = [&] { return QRegExp(expressionOfLike(pattern, escape), Qt::CaseSensitive, QRegExp::RegExp); };
    return cached(gLikeCache, key, shape.bytes(), compile).exactMatch(subject);
}

QVariant FunctionExpression::regexp(QList<QVariant> const& values)
{
    if (values.size() < 2)
        return {};
    QString const subject = values.at(0).toString();
    if (QRegExp const* const expression = regExpOf(values.at(1)))
        return matchRegExp(subject, regExpKey(*expression), *expression);
    QString const pattern = values.at(1).toString();
    QRegExp expression;
    expression.setPattern(pattern);
    bool const isKeyOfItsOwn = pattern.startsWith(QChar(QChar::Null));
    return matchRegExp(subject, isKeyOfItsOwn ? regExpKey(expression) : pattern, expression);
}

} // namespace qvgen
