// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Searches.h"

#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Comparator.h>

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

} // namespace

QVector<Search> readyMadeSearches(PropertySet const& recording, QDate const& today)
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

std::optional<Search> requestedSearch(PropertySet const& recording, Options const& options)
{
    ExpressionList conditions;
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
    if (conditions.isEmpty())
        return {};

    ExpressionHandle condition
        = BooleanOperator::join(conditions, options.any ? BooleanOperator::Or : BooleanOperator::And);
    if (options.negated)
        condition = !condition;
    return Search{"Your search", condition};
}
