// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/Expression.h>

#include "Nodes.h"

#include <QDateTime>
#include <QRect>
#include <QRegExp>
#include <QTest>
#include <QTextStream>

#include <limits>

using namespace qvgen;
using namespace nodes;

class TestConstExpression : public QObject {
    Q_OBJECT

private slots:
    void printedConstant_data();
    void printedConstant();
    void halfSurrogatePairEndsNoLiteral_data();
    void halfSurrogatePairEndsNoLiteral();
    void printedPlaceholder_data();
    void printedPlaceholder();
    void printValueKnowsNoPlaceholderFlag();
    void stringValue_data();
    void stringValue();
    void makers_data();
    void makers();
    void constantEvaluatesToItsValue();
    void collectedConstant_data();
    void collectedConstant();
    void longTextIsPrintedWhole();
};

void TestConstExpression::halfSurrogatePairEndsNoLiteral_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("sql");
    QString const high = QChar(0xD800);
    QString const low = QChar(0xDC00);
    QString const replaced = QChar(QChar::ReplacementCharacter);
    QTest::newRow("first half before the closing quote") << high << '\'' + replaced + '\'';
    QTest::newRow("first half before an apostrophe") << high + "' OR 1=1 --" << '\'' + replaced + "'' OR 1=1 --'";
    QTest::newRow("first half twice") << high + high << '\'' + replaced + replaced + '\'';
    QTest::newRow("second half alone") << low + '\'' << '\'' + replaced + "'''";
    QTest::newRow("second half before the first") << low + high << '\'' + replaced + replaced + '\'';
    QTest::newRow("whole pair is kept") << high + low + '\'' << '\'' + high + low + "'''";
}

void TestConstExpression::halfSurrogatePairEndsNoLiteral()
{
    QFETCH(QString, text);
    QTEST(constant(text).toString(Sql), "sql");
    QCOMPARE(constant(text).toString(Code), '"' + text + '"');
    QCOMPARE(ConstExpression(text, true).collectPlaceholders(), QList<QVariant>{text});
}

void TestConstExpression::printedConstant_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("sql");
    QTest::addColumn<QString>("other");
    auto const row = [](char const* name, QVariant const& value, char const* sql, char const* other) {
        QTest::newRow(name) << value << QString::fromUtf8(sql) << QString::fromUtf8(other);
    };
    QDateTime const moment(QDate(1970, 1, 1), QTime(0, 0, 1, 250), Qt::UTC);
    row("int", 5, "5", "5");
    row("negative int", -5, "-5", "-5");
    row("lowest int", std::numeric_limits<int>::min(), "-2147483648", "-2147483648");
    row("unsigned int", 4294967295U, "4294967295", "4294967295");
    row("lowest 64-bit", std::numeric_limits<qlonglong>::min(), "-9223372036854775808", "-9223372036854775808");
    row("highest 64-bit", std::numeric_limits<qulonglong>::max(), "18446744073709551615", "18446744073709551615");
    row("double", 2.5, "2.5", "2.5");
    row("null int", QVariant(QVariant::Int), "0", "0");
    row("text", QStringLiteral("Gate"), "'Gate'", "\"Gate\"");
    row("text with apostrophe", QStringLiteral("it's"), "'it''s'", "\"it's\"");
    row("only apostrophes", QStringLiteral("''"), "''''''", "\"''\"");
    row("text that ends the literal", QStringLiteral("x'; DROP TABLE t; --"), "'x''; DROP TABLE t; --'",
        "\"x'; DROP TABLE t; --\"");
    row("double quotes are not escaped", QStringLiteral("say \"hi\""), "'say \"hi\"'", "\"say \"hi\"\"");
    row("backslash stays", QStringLiteral("a\\'"), "'a\\'''", "\"a\\'\"");
    row("question mark stays", QStringLiteral("?"), "'?'", "\"?\"");
    row("text beyond ASCII", QString::fromUtf8("Tür"), "'Tür'", "\"Tür\"");
    row("empty text", QString(), "''", "\"\"");
    row("truth value is quoted", true, "'true'", "\"true\"");
    row("single precision is quoted", 1.5F, "'1.5'", "\"1.5\"");
    row("character", QVariant(QLatin1Char('\'')), "''''", "\"'\"");
    row("bytes", QByteArray("it's"), "'it''s'", "\"it's\"");
    row("pattern", QRegExp(QStringLiteral("a.'b")), "'a.''b'", "\"a.'b\"");
    row("list", QVariantList{1, 2}, "''", "\"\"");
    row("rectangle", QRect(1, 2, 3, 4), "''", "\"\"");
    row("invalid", QVariant(), "''", "\"\"");
    row("date", QDate(1970, 1, 2), "86400000000", "1970-01-02");
    row("date before the epoch", QDate(1969, 12, 31), "-86400000000", "1969-12-31");
    row("time", QTime(0, 0, 1, 500), "1500000", "00:00:01.500");
    row("moment", moment, "1250000", "1970-01-01T00:00:01.250Z");
}

void TestConstExpression::printedConstant()
{
    QFETCH(QVariant, value);
    QFETCH(QString, sql);
    QFETCH(QString, other);
    QCOMPARE(constant(value).toString(Sql), sql);
    QCOMPARE(constant(value).toString(Sql | Nested), sql);
    QCOMPARE(constant(value).toString(Code), other);
    QCOMPARE(constant(value).toString(Plain), other);
}

void TestConstExpression::printedPlaceholder_data()
{
    QTest::addColumn<bool>("isPlaceholder");
    QTest::addColumn<Expression::PrintStyle>("style");
    QTest::addColumn<QString>("text");
    QTest::newRow("placeholder in SQL with marks") << true << Bound << "?";
    QTest::newRow("placeholder in code with marks") << true << (Code | Expression::StylePlaceholders) << "?";
    QTest::newRow("placeholder in plain with marks") << true << Expression::StylePlaceholders << "?";
    QTest::newRow("placeholder in SQL") << true << Sql << "'a'";
    QTest::newRow("placeholder in code") << true << Code << "\"a\"";
    QTest::newRow("placeholder in plain") << true << Plain << "\"a\"";
    QTest::newRow("fixed in SQL with marks") << false << Bound << "'a'";
    QTest::newRow("fixed in code with marks") << false << (Code | Expression::StylePlaceholders) << "\"a\"";
    QTest::newRow("fixed in SQL") << false << Sql << "'a'";
}

void TestConstExpression::printedPlaceholder()
{
    QFETCH(bool, isPlaceholder);
    QFETCH(Expression::PrintStyle, style);
    ConstExpression const node(QStringLiteral("a"), isPlaceholder);
    QCOMPARE(node.isPlaceholder(), isPlaceholder);
    QTEST(node.toString(style), "text");
}

void TestConstExpression::printValueKnowsNoPlaceholderFlag()
{
    QString text;
    QTextStream out(&text);
    ConstExpression::printValue(out, 5, Bound);
    ConstExpression::printValue(out, 5, Sql);
    out.flush();
    QCOMPARE(text, QStringLiteral("?5"));
}

void TestConstExpression::stringValue_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("pattern") << QVariant(QRegExp(QStringLiteral("a.*"))) << "a.*";
    QTest::newRow("text") << QVariant(QStringLiteral("it's")) << "it's";
    QTest::newRow("number") << QVariant(-7) << "-7";
    QTest::newRow("date") << QVariant(QDate(2020, 2, 29)) << "2020-02-29";
    QTest::newRow("invalid") << QVariant() << QString();
}

void TestConstExpression::stringValue()
{
    QFETCH(QVariant, value);
    QTEST(ConstExpression::stringValue(value), "text");
}

void TestConstExpression::makers_data()
{
    QTest::addColumn<ExpressionHandle>("node");
    QTest::addColumn<QVariant>("value");
    auto const row = [](char const* name, ConstExpression const& node, QVariant const& value) {
        QTest::newRow(name) << ExpressionHandle(node) << value;
    };
    row("time", ConstExpression::time(13, 14, 15, 16), QTime(13, 14, 15, 16));
    row("no such time", ConstExpression::time(25, 0, 0, 0), QTime());
    row("date", ConstExpression::date(2020, 2, 29), QDate(2020, 2, 29));
    row("no such date", ConstExpression::date(2019, 2, 29), QDate());
    row("moment", ConstExpression::dateTime(2020, 2, 29, 13, 14, 15, 16),
        QDateTime(QDate(2020, 2, 29), QTime(13, 14, 15, 16), Qt::LocalTime));
}

void TestConstExpression::makers()
{
    QFETCH(ExpressionHandle, node);
    QFETCH(QVariant, value);
    auto const* const made = held<ConstExpression>(node);
    QCOMPARE(made->value(), value);
    QCOMPARE(made->value().type(), value.type());
    QVERIFY(!made->isPlaceholder());
    QCOMPARE(made->value().toDateTime().timeSpec(), Qt::LocalTime);
}

void TestConstExpression::constantEvaluatesToItsValue()
{
    bool isConstant = false;
    QCOMPARE(constant(5).evaluate({}, &isConstant), QVariant(5));
    QVERIFY(isConstant);
    QCOMPARE(placeholder(QStringLiteral("a")).evaluate({}, nullptr), QVariant(QStringLiteral("a")));
}

void TestConstExpression::collectedConstant_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QVariant>("bound");
    QTest::newRow("int") << QVariant(5) << QVariant(5);
    QTest::newRow("text") << QVariant(QStringLiteral("it's")) << QVariant(QStringLiteral("it's"));
    QTest::newRow("invalid") << QVariant() << QVariant();
    QTest::newRow("list") << QVariant(QVariantList{1}) << QVariant(QVariantList{1});
    QTest::newRow("date") << QVariant(QDate(1970, 1, 2)) << QVariant(86400000000LL);
    QTest::newRow("time") << QVariant(QTime(0, 0, 1, 500)) << QVariant(1500000LL);
    QTest::newRow("moment") << QVariant(QDateTime(QDate(1970, 1, 1), QTime(0, 0, 1), Qt::UTC)) << QVariant(1000000LL);
}

void TestConstExpression::collectedConstant()
{
    QFETCH(QVariant, value);
    QFETCH(QVariant, bound);
    QList<QVariant> const collected = placeholder(value).collectPlaceholders();
    QCOMPARE(collected, QList<QVariant>({bound}));
    QCOMPARE(collected.first().type(), bound.type());
    QCOMPARE(constant(value).collectPlaceholders(), QList<QVariant>());
}

void TestConstExpression::longTextIsPrintedWhole()
{
    QString const apostrophes(1000000, QLatin1Char('\''));
    QCOMPARE(constant(apostrophes).toString(Sql), QString(2000002, QLatin1Char('\'')));
    QCOMPARE(constant(apostrophes).toString(Code).size(), 1000002);
}

QTEST_APPLESS_MAIN(TestConstExpression)
#include "tst_ConstExpression.moc"
