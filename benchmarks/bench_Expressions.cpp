// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Comparator.h>
#include <GenericUtilities/expressions/ExpressionBuilders.h>
#include <GenericUtilities/expressions/Functions.h>
#include <GenericUtilities/expressions/NumericOperators.h>
#include <GenericUtilities/properties/CommonProperties.h>

#include <benchmark/benchmark.h>

#include <QDataStream>
#include <QDateTime>

// What a condition costs for each object it is asked about, and once for each search.
namespace {

using namespace qvgen;

/// As a recording has them: eighteen properties, five of which the conditions ask for.
PropertySet recording()
{
    PropertySet set;
    auto const add = [&set](BaseProperty* property) { set.add(qvm::smart<BaseProperty>(property)); };
    for (int i = 0; i < 13; ++i)
        add(new StringProperty(QStringLiteral("other%1").arg(i), QString(), QStringLiteral("value")));
    add(new IntProperty("minutes", "length of the recording", 42));
    add(new StringProperty("camera", "where it was made", "Gate 3"));
    add(new IntProperty("size", "kilobytes", 1234567));
    QDateTime const begin(QDate(2026, 11, 21), QTime(10, 11, 12));
    add(new DateTimeProperty("begin", "first picture, local time", begin));
    add(new DateTimeProperty("utcBegin", "first picture", QDateTime(begin.date(), begin.time(), Qt::UTC)));
    return set;
}

ExpressionHandle minutes(PropertySet const& set)
{
    return set["minutes"] >= 30;
}

ExpressionHandle cameras(PropertySet const& set)
{
    ElementOf cameras(set["camera"]);
    for (char const* const name : {"Gate 1", "Gate 2", "Lobby", "Gate 3"})
        cameras.append(QVariant(QString::fromLatin1(name)));
    return cameras;
}

ExpressionHandle during(PropertySet const& set, QString const& name, Qt::TimeSpec clock)
{
    QTime const midnight(0, 0);
    return set[name] >= QDateTime(QDate(2026, 11, 21), midnight, clock)
        && set[name] < QDateTime(QDate(2026, 11, 22), midnight, clock);
}

ExpressionHandle day(PropertySet const& set)
{
    return during(set, QStringLiteral("begin"), Qt::LocalTime);
}

ExpressionHandle utcDay(PropertySet const& set)
{
    return during(set, QStringLiteral("utcBegin"), Qt::UTC);
}

ExpressionHandle name(PropertySet const& set)
{
    return like(ValueExpression(set["camera"], QString()), QStringLiteral("Gate%"));
}

ExpressionHandle rate(PropertySet const& set)
{
    return set["size"] / (set["minutes"] * 60) > 100;
}

ExpressionHandle all(PropertySet const& set)
{
    return minutes(set) && cameras(set) && day(set) && name(set) && rate(set);
}

using Condition = ExpressionHandle (*)(PropertySet const& set);

void evaluate(benchmark::State& state, Condition make)
{
    PropertySet const set = recording();
    ExpressionHandle const condition = make(set);
    if (!condition.evaluate(set).toBool())
        state.SkipWithError("the condition does not hold");
    for (auto _ : state)
        benchmark::DoNotOptimize(condition.evaluate(set));
}
BENCHMARK_CAPTURE(evaluate, minutes, minutes);
BENCHMARK_CAPTURE(evaluate, cameras, cameras);
BENCHMARK_CAPTURE(evaluate, day, day);
BENCHMARK_CAPTURE(evaluate, utc_day, utcDay);
BENCHMARK_CAPTURE(evaluate, name, name);
BENCHMARK_CAPTURE(evaluate, rate, rate);
BENCHMARK_CAPTURE(evaluate, all, all);

void build(benchmark::State& state)
{
    PropertySet const set = recording();
    for (auto _ : state)
        benchmark::DoNotOptimize(all(set));
}
BENCHMARK(build);

void print(benchmark::State& state)
{
    ExpressionHandle const condition = all(recording());
    for (auto _ : state) {
        benchmark::DoNotOptimize(condition.toString(Expression::StyleSql | Expression::StylePlaceholders));
        benchmark::DoNotOptimize(condition.collectPlaceholders());
    }
}
BENCHMARK(print);

void read(benchmark::State& state)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    Expression::writeExpression(out, all(recording()));
    for (auto _ : state) {
        QDataStream in(bytes);
        benchmark::DoNotOptimize(Expression::readExpression(in));
        if (in.status() != QDataStream::Ok)
            state.SkipWithError("the condition cannot be read");
    }
}
BENCHMARK(read);

} // namespace

BENCHMARK_MAIN();
