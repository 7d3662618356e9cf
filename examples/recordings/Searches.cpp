// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Searches.h"

#include "SearchFile.h"
#include "Sorting.h"
#include "SqliteFunctions.h"

#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Comparator.h>
#include <GenericUtilities/expressions/Functions.h>
#include <GenericUtilities/expressions/NumericOperators.h>
#include <qvbase/Exceptions.h>

using namespace qvgen;

namespace {

constexpr qulonglong kiB = 1024;
constexpr qulonglong MiB = 1024 * kiB;

/// A truth value is a condition by itself.
ExpressionHandle isTrue(BaseProperty const& property)
{
    return ValueExpression(property, QString());
}

/// `property IN (a,b,c)`.
ExpressionHandle oneOf(BaseProperty const& property, QList<QVariant> const& values)
{
    ElementOf result(property);
    result.append(ExpressionList(values));
    return result;
}

/// `property == a || property == b || property == c`: the same, joined from a list of conditions.
ExpressionHandle anyOf(BaseProperty const& property, QList<QVariant> const& values)
{
    ExpressionList conditions;
    for (QVariant const& value : values)
        conditions.append(property == value);
    return BooleanOperator::join(conditions, BooleanOperator::Or);
}

/// A plain comparison where there is but one value.
void appendChoice(ExpressionList& conditions, BaseProperty const& property, QStringList const& values)
{
    if (values.size() == 1)
        conditions.append(property == values.constFirst());
    else if (values.size() > 1)
        conditions.append(oneOf(property, QVariant(values).toList()));
}

QVector<Search> comparisons(PropertySet const& recording, QDate const& today)
{
    auto const& age = recording["age"];
    auto const& day = recording["day"];
    auto const& modified = recording["modified"];
    auto const& name = recording["name"];
    auto const& owner = recording["owner"];
    auto const& parent = recording["parent"];
    auto const& permissions = recording["permissions"];
    auto const& section = recording["section"];
    auto const& size = recording["size"];
    auto const& stem = recording["stem"];
    auto const& suffix = recording["suffix"];
    auto const& time = recording["time"];
    ExpressionHandle const hidden = isTrue(recording["hidden"]);
    ExpressionHandle const executable = isTrue(recording["executable"]);
    ExpressionHandle const picture = oneOf(suffix, {"gif", "jpg", "png", "svg"});

    return {
        {"Large text files", suffix == "txt" && size > 100 * kiB},
        {"Programs and scripts modified within a year",
            executable && modified > QDateTime(today.addYears(-1), QTime(0, 0), Qt::UTC)},
        {"Pictures, by a list of suffixes", picture},
        {"Pictures kept outside of icons/", picture && section != "icons"},
        {"Empty files that are not hidden", size == 0 && !hidden},
        {"Modified in the year 2022", day >= QDate(2022, 1, 1) && day <= QDate(2022, 12, 31)},
        {"Modified before six in the morning, or with permissions out of the ordinary",
            time < QTime(6, 0) || !oneOf(permissions, {0644, 0755})},
        {"Large or ten years old, and neither root's documentation nor a manual page",
            (size >= MiB || age > 3650.0) && !((section == "doc" && owner == "root") || section == "man")},
        {"Named like the folder they stand in", stem == parent},
        {"Read-me files, by conditions joined from a list",
            anyOf(name, {"README", "README.md", "README.txt", "readme", "readme.txt"})},
    };
}

QVector<Search> calculations(PropertySet const& recording)
{
    auto const& age = recording["age"];
    auto const& depth = recording["depth"];
    auto const& name = recording["name"];
    auto const& size = recording["size"];
    auto const& stem = recording["stem"];
    ExpressionHandle const nameText = ValueExpression(name, QString());
    ExpressionHandle const sizeNumber = ValueExpression(size, QString());

    return {
        {"Configuration files, by a pattern", like(nameText, "%.conf"), {},
            "LIKE tells case apart here, as in memory: PRAGMA case_sensitive_like is ON"},
        // A stem whose letters are ASCII ones only in ASCII: SQLite's lower() knows no others.
        {"Read-me files in any case, the largest first", lower(ValueExpression(stem, QString())) == "readme",
            -size << name},
        {"Names of more than 40 characters", characters(nameText) > 40, {},
            "a function of this program: the library's length() counts UTF-16 code units, SQLite's characters"},
        {"Whole blocks of 512 bytes", size > 0 && remainder(sizeNumber, ConstExpression(512, true)) == 0, {},
            "a function of this program: size % 512 would print as size mod 512, which is not SQLite's"},
        {"Whole pages of 4096 bytes, told by their hexadecimal size", like(hex(sizeNumber), "%000"), {},
            "SQLite's hex(size) would give the bytes of a text: printf() takes its place by "
            "registerSqlPrintFunction()"},
        {"Ten years old to the nearest year, or one year within a week",
            round(age / 365.0) == 10.0 || abs(age - 365.0) <= 7.0},
        // Without a value at the top, where the depth is 0.
        {"A megabyte or more for each folder above", coalesce((size / depth) << size) >= MiB},
    };
}

void appendConditions(ExpressionList& conditions, PropertySet const& recording, Options const& options)
{
    appendChoice(conditions, recording["name"], options.names);
    appendChoice(conditions, recording["suffix"], options.suffixes);
    appendChoice(conditions, recording["folder"], options.folders);
    appendChoice(conditions, recording["owner"], options.owners);
    if (options.largerThan)
        conditions.append(recording["size"] > *options.largerThan);
    if (options.smallerThan)
        conditions.append(recording["size"] < *options.smallerThan);
    if (options.modifiedAfter)
        conditions.append(recording["modified"] > *options.modifiedAfter);
    if (options.modifiedBefore)
        conditions.append(recording["modified"] < *options.modifiedBefore);
}

/// The condition that @p stored has, if any, joined to those of the options.
ExpressionHandle requestedCondition(Search const& stored, PropertySet const& recording, Options const& options)
{
    ExpressionList conditions;
    if (!stored.findsAll())
        conditions.append(stored.condition);
    appendConditions(conditions, recording, options);
    if (conditions.isEmpty() && (options.any || options.negated))
        throw qv::IllegalArgumentException(
            QStringLiteral("--any and --not need a condition to work on, such as --suffix png"));
    ExpressionHandle const joined
        = BooleanOperator::join(conditions, options.any ? BooleanOperator::Or : BooleanOperator::And);
    return options.negated ? ExpressionHandle(!joined) : joined;
}

} // namespace

QVector<Search> readyMadeSearches(PropertySet const& recording, QDate const& today)
{
    return comparisons(recording, today) + calculations(recording);
}

std::optional<Search> requestedSearch(PropertySet const& recording, Options const& options)
{
    bool const isStored = !options.searchFile.isEmpty();
    Search search = isStored ? readSearchFile(options.searchFile, recording) : Search{"Your search", {}};
    if (!options.sortTerms.isEmpty())
        search.order = sortTerms(options.sortTerms, recording);
    search.condition = requestedCondition(search, recording, options);
    bool const isAsked = isStored || !search.findsAll() || !search.order.isEmpty();
    return isAsked ? std::optional(search) : std::nullopt;
}
