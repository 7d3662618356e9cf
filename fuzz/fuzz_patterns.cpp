// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Input.h"

#include <GenericUtilities/expressions/Functions.h>

#include <QRegExp>
#include <QVector>

using namespace qvgen;

/// Matches a subject against a pattern, both from the input: `like` against a matcher of a few lines, `regexp` for what
/// it does to the process.
namespace {

struct Input {
    quint8 kind;
    QString escape;
    QString pattern;
    QString subject;
};

// The kind, the length of the escape, the length of the pattern, then the texts in UTF-8.
Input inputOf(uint8_t const* data, int size)
{
    auto const* const texts = reinterpret_cast<char const*>(data) + 3;
    int const length = size - 3;
    int const escapeLength = qMin<int>(data[1] % 4, length);
    int const patternLength = qMin<int>(data[2], length - escapeLength);
    char const* const subject = texts + escapeLength + patternLength;
    return {data[0], QString::fromUtf8(texts, escapeLength), QString::fromUtf8(texts + escapeLength, patternLength),
        QString::fromUtf8(subject, length - escapeLength - patternLength)};
}

struct Token {
    enum Kind { One, Any, AnyRun } kind;
    QChar unit;
};

// False for a pattern that ends in an escape: it matches nothing.
bool tokens(QVector<Token>& result, QString pattern, QString const& escape)
{
    while (!pattern.isEmpty()) {
        bool const isEscaped = !escape.isEmpty() && pattern.startsWith(escape);
        pattern.remove(0, isEscaped ? escape.size() : 0);
        if (pattern.isEmpty())
            return false;
        QChar const unit = pattern.at(0);
        Token::Kind const kind = isEscaped ? Token::One
            : unit == QLatin1Char('%')     ? Token::AnyRun
            : unit == QLatin1Char('_')     ? Token::Any
                                           : Token::One;
        result.append({kind, unit});
        pattern.remove(0, 1);
    }
    return true;
}

// Row by row: which beginnings of the subject the tokens so far match.
bool isLike(Input const& input)
{
    QVector<Token> pattern;
    if (!tokens(pattern, input.pattern, input.escape))
        return false;
    int const size = input.subject.size();
    QVector<bool> matched(size + 1, false);
    matched[0] = true;
    for (Token const& token : pattern) {
        QVector<bool> next(size + 1, false);
        for (int i = 0; i <= size; ++i) {
            if (token.kind == Token::AnyRun)
                next[i] = matched[i] || (i > 0 && next[i - 1]);
            else if (i > 0)
                next[i] = matched[i - 1] && (token.kind == Token::Any || token.unit == input.subject.at(i - 1));
        }
        matched = next;
    }
    return matched[size];
}

void checkLike(Input const& input)
{
    QVariant const value = FunctionExpression::like({input.subject, input.pattern, input.escape});
    constexpr int smallProduct = 100000;
    bool const isSmall = input.pattern.size() * (input.subject.size() + 1) < smallProduct;
    fuzz::require(value.isValid() || !isSmall, "small patterns and subjects are matched");
    fuzz::require(!value.isValid() || value == QVariant(isLike(input)), "like matches as its rules say");
}

void checkTruth(QVariant const& value)
{
    fuzz::require(!value.isValid() || value.type() == QVariant::Bool, "regexp gives a truth value or none");
}

// A copy of an expression compiles its pattern, whatever its bounds: there must be none on the way into the list.
void setExpression(QVariant& value, Input const& input)
{
    value = QRegExp();
    auto& expression = *static_cast<QRegExp*>(value.data());
    expression.setPattern(input.pattern);
    expression.setPatternSyntax(static_cast<QRegExp::PatternSyntax>((input.kind >> 1) % 6));
    expression.setMinimal(input.kind & 16);
}

void checkRegExp(Input const& input)
{
    QVariantList values = {input.subject, input.pattern};
    checkTruth(FunctionExpression::regexp(values));
    setExpression(values[1], input);
    checkTruth(FunctionExpression::regexp(values));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    if (size < 3)
        return 0;
    Input const input = inputOf(data, static_cast<int>(size));
    if (input.kind & 1)
        checkRegExp(input);
    else
        checkLike(input);
    return 0;
}
