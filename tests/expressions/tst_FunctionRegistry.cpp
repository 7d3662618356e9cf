// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/Functions.h>
#include <qvbase/Log.h>

#include "Nodes.h"
#include "TypedVariant.h"

#include <QTest>
#include <QTextStream>

using namespace qvgen;
using namespace nodes;

using Functions = FunctionExpression;

Q_DECLARE_METATYPE(Functions::Evaluate)
Q_DECLARE_METATYPE(Functions::PrintSql)

namespace {

/// Catches what is logged as a warning, at a log level, until it goes.
class LogCapture {
public:
    explicit LogCapture(int level)
    {
        m_log->setLogLevel(level);
        m_log->setStream(2, &m_stream);
    }
    ~LogCapture()
    {
        m_log->setStream(2, m_oldStream);
        m_log->setLogLevel(m_oldLevel);
    }
    Q_DISABLE_COPY(LogCapture)

    QString text()
    {
        m_stream.flush();
        return m_text;
    }

private:
    qv::LogQt* m_log = qv::LogQt::instance();
    QTextStream* m_oldStream = m_log->getStream(2);
    int m_oldLevel = m_log->logLevel();
    QString m_text;
    QTextStream m_stream{&m_text};
};

/// Puts the registry back as it was.
class RegistryGuard {
public:
    RegistryGuard() = default;
    ~RegistryGuard() { Functions::functionMap() = m_entries; }
    Q_DISABLE_COPY(RegistryGuard)

private:
    QMap<QString, Functions::FunctionEntry> m_entries = Functions::functionMap();
};

QVariant half(QList<QVariant> const& values)
{
    return values.isEmpty() ? QVariant() : values.first().toInt() / 2;
}

QVariant other(QList<QVariant> const&)
{
    return QStringLiteral("other");
}

void printHalf(
    QTextStream& out, Expression::PrintStyle style, QString const& name, QList<ExpressionHandle> const& operands)
{
    out << name << '[' << static_cast<int>(style) << ';' << operands.size() << ']';
}

bool registerHalf(Functions::PrintSql print = printHalf)
{
    return Functions::registerFunction("half", half, print, 1, 1);
}

FunctionExpression halfOf(QVariant const& value, bool distinct = false)
{
    return {QStringLiteral("half"), ExpressionList(QVariantList{value}), distinct};
}

} // namespace

class TestFunctionRegistry : public QObject {
    Q_OBJECT

private slots:
    void entries_data();
    void entries();
    void nothingElseIsRegistered();

    void registering();
    void registeringTwice();
    void registeringABuiltIn();
    void replacingPrintFunction();
    void replacingPrintFunctionOfABuiltIn();
    void replacingUnknownPrintFunction();
    void messageNamesWhatIsNotAscii();
    void messageAtLogLevel_data();
    void messageAtLogLevel();
    void silencedLog();

    void userFunctionIsEvaluated();
    void userFunctionPrintsItself();
    void userFunctionInOtherStyles();
    void userFunctionWithoutPrintFunction();
    void withoutEvaluationFunction();
};

void TestFunctionRegistry::entries_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<Functions::PrintSql>("print");
    QTest::addColumn<Functions::Evaluate>("evaluate");

    auto const row
        = [](char const* name, int minimum, int maximum, Functions::PrintSql print, Functions::Evaluate evaluate) {
              QTest::newRow(name) << QString::fromLatin1(name) << minimum << maximum << print << evaluate;
          };
    row("currentDate", 0, 0, nullptr, Functions::currentDate);
    row("currentTime", 0, 0, nullptr, Functions::currentTime);
    row("currentDateTime", 0, 0, nullptr, Functions::currentDateTime);
    row("abs", 1, 1, Functions::printDefault, Functions::abs);
    row("min", 1, -1, Functions::printDefault, Functions::min);
    row("max", 1, -1, Functions::printDefault, Functions::max);
    row("count", 1, -1, Functions::printDefault, Functions::count);
    row("group_concat", 1, -1, Functions::printDefault, Functions::groupConcat);
    row("coalesce", 2, -1, Functions::printDefault, Functions::coalesce);
    row("ifnull", 2, 2, Functions::printDefault, Functions::coalesce);
    row("nullif", 2, 2, Functions::printDefault, Functions::nullif);
    row("hex", 1, 1, Functions::printDefault, Functions::hex);
    row("round", 1, 1, Functions::printDefault, Functions::round);
    row("random", 0, 0, Functions::printDefault, Functions::random);
    row("length", 1, 1, Functions::printDefault, Functions::length);
    row("lower", 1, 1, Functions::printDefault, Functions::lower);
    row("upper", 1, 1, Functions::printDefault, Functions::upper);
    row("quote", 1, 1, Functions::printDefault, Functions::quote);
    row("trim", 1, 1, Functions::printDefault, Functions::trim);
    row("like", 2, 3, Functions::printLike, Functions::like);
    row("regexp", 2, 2, Functions::printLike, Functions::regexp);
}

void TestFunctionRegistry::entries()
{
    QFETCH(QString, name);
    QVERIFY(Functions::functionMap().contains(name));
    Functions::FunctionEntry const entry = Functions::functionMap().value(name);
    QTEST(entry.minArguments, "minimum");
    QTEST(entry.maxArguments, "maximum");
    QFETCH(Functions::PrintSql, print);
    QVERIFY(entry.printSql == print);
    QFETCH(Functions::Evaluate, evaluate);
    QVERIFY(entry.evaluate == evaluate);
}

void TestFunctionRegistry::nothingElseIsRegistered()
{
    QCOMPARE(Functions::functionMap().keys().join(QLatin1Char(' ')),
        QStringLiteral("abs coalesce count currentDate currentDateTime currentTime group_concat hex ifnull length like "
                       "lower max min nullif quote random regexp round trim upper"));
}

void TestFunctionRegistry::registering()
{
    RegistryGuard const guard;
    LogCapture log(0);
    QVERIFY(Functions::registerFunction("half", half, printHalf, 1, -1));
    Functions::FunctionEntry const entry = Functions::functionMap().value(QStringLiteral("half"));
    QVERIFY(entry.evaluate == half && entry.printSql == printHalf);
    QCOMPARE(entry.minArguments, 1);
    QCOMPARE(entry.maxArguments, -1);
    QCOMPARE(log.text(), QString());
}

void TestFunctionRegistry::registeringTwice()
{
    RegistryGuard const guard;
    LogCapture log(2);
    QVERIFY(registerHalf());
    QVERIFY(!Functions::registerFunction("half", other, nullptr, 3, 4));
    Functions::FunctionEntry const entry = Functions::functionMap().value(QStringLiteral("half"));
    QVERIFY(entry.evaluate == half && entry.printSql == printHalf);
    QCOMPARE(entry.minArguments, 1);
    QCOMPARE(entry.maxArguments, 1);
    QCOMPARE(log.text(), QStringLiteral("WARNING: Function half already declared.\n"));
}

void TestFunctionRegistry::registeringABuiltIn()
{
    RegistryGuard const guard;
    LogCapture log(2);
    QVERIFY(!Functions::registerFunction("abs", other, nullptr, 0, 0));
    QVERIFY(Functions::functionMap().value(QStringLiteral("abs")).evaluate == Functions::abs);
    QCOMPARE(log.text(), QStringLiteral("WARNING: Function abs already declared.\n"));
}

void TestFunctionRegistry::replacingPrintFunction()
{
    RegistryGuard const guard;
    LogCapture log(0);
    QVERIFY(registerHalf(nullptr));
    QVERIFY(Functions::registerSqlPrintFunction("half", Functions::printDefault));
    QCOMPARE(halfOf(8).toString(Sql), QStringLiteral("half(8)"));
    QVERIFY(Functions::functionMap().value(QStringLiteral("half")).evaluate == half);
    QCOMPARE(Functions::functionMap().value(QStringLiteral("half")).maxArguments, 1);
    QCOMPARE(log.text(), QString());
}

void TestFunctionRegistry::replacingPrintFunctionOfABuiltIn()
{
    RegistryGuard const guard;
    QVERIFY(Functions::registerSqlPrintFunction("currentDate", Functions::printDefault));
    QCOMPARE(currentDate().toString(Sql), QStringLiteral("currentDate()"));
    QVERIFY(Functions::registerSqlPrintFunction("abs", nullptr));
    QCOMPARE(qvgen::abs(constant(-5)).toString(Sql), QStringLiteral("5"));
}

void TestFunctionRegistry::replacingUnknownPrintFunction()
{
    RegistryGuard const guard;
    LogCapture log(2);
    QVERIFY(!Functions::registerSqlPrintFunction("nosuch", Functions::printDefault));
    QVERIFY(!Functions::functionMap().contains(QStringLiteral("nosuch")));
    QCOMPARE(log.text(), QStringLiteral("WARNING: Function nosuch not declared.\n"));
}

void TestFunctionRegistry::messageNamesWhatIsNotAscii()
{
    RegistryGuard const guard;
    LogCapture log(2);
    QVERIFY(!Functions::registerSqlPrintFunction("l\xC3\xA4nge", nullptr));
    QVERIFY(Functions::registerFunction("l\xC3\xA4nge", half, nullptr, 1, 1));
    QVERIFY(!Functions::registerFunction("l\xC3\xA4nge", half, nullptr, 1, 1));
    QString const name = QString::fromLatin1("l\xE4nge");
    QVERIFY(Functions::functionMap().contains(name));
    QCOMPARE(log.text(),
        QStringLiteral("WARNING: Function %1 not declared.\nWARNING: Function %1 already declared.\n").arg(name));
}

void TestFunctionRegistry::messageAtLogLevel_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<bool>("written");
    QTest::newRow("debug") << 0 << true;
    QTest::newRow("info") << 1 << true;
    QTest::newRow("warning") << 2 << true;
    QTest::newRow("error") << 3 << false;
    QTest::newRow("above all levels") << 4 << false;
}

void TestFunctionRegistry::messageAtLogLevel()
{
    QFETCH(int, level);
    QFETCH(bool, written);
    LogCapture log(level);
    QVERIFY(!Functions::registerFunction("abs", other, nullptr, 0, 0));
    QVERIFY(!Functions::registerSqlPrintFunction("nosuch", nullptr));
    QString const both
        = QStringLiteral("WARNING: Function abs already declared.\nWARNING: Function nosuch not declared.\n");
    QCOMPARE(log.text(), written ? both : QString());
}

void TestFunctionRegistry::silencedLog()
{
    LogCapture log(2);
    qv::LogQt::instance()->setStream(2, nullptr);
    QVERIFY(!Functions::registerFunction("abs", other, nullptr, 0, 0));
    QVERIFY(!Functions::registerSqlPrintFunction("nosuch", nullptr));
    QCOMPARE(log.text(), QString());
}

void TestFunctionRegistry::userFunctionIsEvaluated()
{
    RegistryGuard const guard;
    QVERIFY(registerHalf());
    QCOMPARE(halfOf(8).evaluate({}, nullptr), QVariant(4));
    ExpressionHandle const nested = qvgen::abs(halfOf(-8));
    QCOMPARE(nested.evaluate({}), QVariant(4));
}

void TestFunctionRegistry::userFunctionPrintsItself()
{
    RegistryGuard const guard;
    QVERIFY(registerHalf());
    QCOMPARE(halfOf(8).toString(Sql), QStringLiteral("half[2;1]"));
    QCOMPARE(halfOf(8, true).toString(Sql), QStringLiteral("half[18;1]"));
    QCOMPARE(halfOf(8).toString(Bound | Nested), QStringLiteral("half[2054;1]"));
}

void TestFunctionRegistry::userFunctionInOtherStyles()
{
    RegistryGuard const guard;
    QVERIFY(registerHalf());
    QCOMPARE(halfOf(8).toString(Plain), QStringLiteral("half(8)"));
    QCOMPARE(halfOf(8, true).toString(Code), QStringLiteral("half(8)"));
}

void TestFunctionRegistry::userFunctionWithoutPrintFunction()
{
    RegistryGuard const guard;
    QVERIFY(registerHalf(nullptr));
    QCOMPARE(halfOf(8).toString(Sql), QStringLiteral("4"));
    QCOMPARE(halfOf(8).toString(Bound), QStringLiteral("?"));
    QCOMPARE(halfOf(8).collectPlaceholders(), (QVariantList{4}));
    QCOMPARE(halfOf(8).toString(Code), QStringLiteral("half(8)"));
}

void TestFunctionRegistry::withoutEvaluationFunction()
{
    RegistryGuard const guard;
    QVERIFY(Functions::registerFunction("half", nullptr, Functions::printDefault, 1, 1));
    QVERIFY(!halfOf(8).evaluate({}, nullptr).isValid());
    QCOMPARE(halfOf(8).toString(Sql), QStringLiteral("half(8)"));
}

QTEST_APPLESS_MAIN(TestFunctionRegistry)
#include "tst_FunctionRegistry.moc"
