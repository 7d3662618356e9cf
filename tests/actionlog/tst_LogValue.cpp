// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/LogValue.h>

#include <QLocale>
#include <QTest>
#include <QTextStream>

#include <memory>
#include <type_traits>

using qv::LogValue;
using qv::TLogValue;

static_assert(std::is_abstract_v<LogValue> && std::has_virtual_destructor_v<LogValue>);
static_assert(!std::is_copy_constructible_v<TLogValue<int>>);

namespace {

QString const Name = QStringLiteral("name");

// What a value says of itself and what its text form gives when read.
template <typename T> void addRow(char const* name, T const& value, QString const& text, bool hasValue)
{
    auto const make = [](T const& initial) {
        return std::shared_ptr<LogValue>(std::make_shared<TLogValue<T>>("Code", Name, initial));
    };
    QTest::newRow(name) << make(value) << make(T()) << text << hasValue;
}

QDateTime localTime(int year, int month, int day, int hour, int minute, int second)
{
    return {QDate(year, month, day), QTime(hour, minute, second)};
}

} // namespace

Q_DECLARE_METATYPE(std::shared_ptr<qv::LogValue>)

class TestLogValue : public QObject {
    Q_OBJECT

private slots:
    void identity();
    void textForm_data();
    void textForm();
    void readText_data();
    void readText();
    void readList_data();
    void readList();
    void readTime_data();
    void readTime();
    void timeIsInTheSystemsShortForm();
    void textOfALiteralIsTheTextForm();
    void streamSettingsDoNotMatter();
    void copyOfTheSameClass();
    void copyOfAnotherClassDoesNothing_data();
    void copyOfAnotherClassDoesNothing();
};

void TestLogValue::identity()
{
    TLogValue<int> const value("Code", Name, 5);
    QCOMPARE(value.code(), qv::FourChars("Code"));
    QCOMPARE(value.name(), Name);
    QCOMPARE(value.value(), 5);
    QCOMPARE(TLogValue<QString>("Code", Name).value(), QString());
}

void TestLogValue::textForm_data()
{
    QTest::addColumn<std::shared_ptr<LogValue>>("value");
    QTest::addColumn<std::shared_ptr<LogValue>>("other");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("hasValue");
    addRow("text", QStringLiteral("a b"), QStringLiteral("a b"), true);
    addRow("text of blanks", QStringLiteral("  "), QStringLiteral("  "), true);
    addRow("empty text", QStringLiteral(""), QStringLiteral(""), false);
    addRow("null text", QString(), QStringLiteral(""), false);
    addRow("text with a zero", QString(QLatin1String("a\0b", 3)), QString(QLatin1String("a\0b", 3)), true);
    addRow("half a surrogate pair", QString(QChar(0xD800)), QString(QChar(0xD800)), true);
    addRow("number", 4711, QStringLiteral("4711"), true);
    addRow("negative", -1, QStringLiteral("-1"), true);
    addRow("lowest", -2147483647 - 1, QStringLiteral("-2147483648"), true);
    addRow("highest", 2147483647, QStringLiteral("2147483647"), true);
    addRow("zero is no value", 0, QStringLiteral("0"), false);
    addRow("true", true, QStringLiteral("true"), true);
    addRow("false is no value and no text", false, QStringLiteral(""), false);
    addRow("no items", QStringList(), QStringLiteral(""), false);
    addRow("one item", QStringList{"a"}, QStringLiteral("a"), true);
    addRow("one empty item", QStringList{""}, QStringLiteral(""), true);
    addRow("empty item between two", QStringList{"a", "", "b"}, QStringLiteral("a;;b"), true);
    addRow("two empty items", QStringList{"", ""}, QStringLiteral(";"), true);
    addRow("null time", QDateTime(), QStringLiteral(""), false);
}

void TestLogValue::textForm()
{
    QFETCH(std::shared_ptr<LogValue>, value);
    QFETCH(std::shared_ptr<LogValue>, other);
    QTEST(value->toString(), "text");
    QTEST(value->hasValue(), "hasValue");
    other->copyFrom(*value);
    QTEST(other->toString(), "text");
    QTEST(other->hasValue(), "hasValue");
    if (value->hasValue()) {
        other->setValue(value->toString());
        QTEST(other->toString(), "text");
    }
}

void TestLogValue::readText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("number");
    QTest::addColumn<bool>("truth");
    QTest::newRow("empty") << QStringLiteral("") << 0 << false;
    QTest::newRow("null") << QString() << 0 << false;
    QTest::newRow("number") << QStringLiteral("-12") << -12 << true;
    QTest::newRow("no number") << QStringLiteral("abc") << 0 << true;
    QTest::newRow("number and more") << QStringLiteral("12abc") << 0 << true;
    QTest::newRow("hexadecimal is not decimal") << QStringLiteral("0x10") << 0 << true;
    QTest::newRow("beyond 32 bits") << QStringLiteral("2147483648") << 0 << true;
    QTest::newRow("any text is true, this one too") << QStringLiteral("false") << 0 << true;
    QTest::newRow("zero is true") << QStringLiteral("0") << 0 << true;
    QTest::newRow("a blank is true") << QStringLiteral(" ") << 0 << true;
    QTest::newRow("megabytes") << QString(1 << 20, QLatin1Char('7')) << 0 << true;
}

void TestLogValue::readText()
{
    QFETCH(QString, text);
    TLogValue<int> number("Code", Name, 99);
    number.setValue(text);
    QTEST(number.value(), "number");
    TLogValue<bool> truth("Code", Name, text.isEmpty());
    truth.setValue(text);
    QTEST(truth.value(), "truth");
    TLogValue<QString> same("Code", Name, QStringLiteral("before"));
    same.setValue(text);
    QCOMPARE(same.value(), text);
}

void TestLogValue::readList_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("items");
    QTest::newRow("empty text is one empty item") << QStringLiteral("") << QStringList{""};
    QTest::newRow("one") << QStringLiteral("a") << QStringList{"a"};
    QTest::newRow("empty item between two") << QStringLiteral("a;;b") << QStringList{"a", "", "b"};
    QTest::newRow("separator alone") << QStringLiteral(";") << QStringList{"", ""};
    QTest::newRow("blanks stay") << QStringLiteral(" a ; b") << QStringList{" a ", " b"};
}

void TestLogValue::readList()
{
    QFETCH(QString, text);
    TLogValue<QStringList> value("Code", Name, {"before"});
    value.setValue(text);
    QTEST(value.value(), "items");
    QCOMPARE(value.toString(), text);
}

void TestLogValue::readTime_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QStringLiteral("");
    QTest::newRow("no time") << QStringLiteral("abc");
    QTest::newRow("as in the file's header") << QStringLiteral("2020-02-29T12:34:56.789Z");
    QTest::newRow("megabytes of digits") << QString(1 << 20, QLatin1Char('1'));
    QTest::newRow("megabytes of times") << QStringLiteral("29 Feb 2020 12:34:56 ").repeated(50000);
}

void TestLogValue::readTime()
{
    QFETCH(QString, text);
    TLogValue<QDateTime> value("Code", Name, QDateTime::currentDateTime());
    value.setValue(text);
    QVERIFY(value.value().isNull());
    QVERIFY(!value.hasValue());
    QCOMPARE(value.toString(), QString());
}

void TestLogValue::timeIsInTheSystemsShortForm()
{
    QLocale const locale = QLocale::system();
    QString const format = locale.dateTimeFormat(QLocale::ShortFormat);
    TLogValue<QDateTime> value("Code", Name, localTime(2020, 2, 29, 12, 34, 0));
    QCOMPARE(value.toString(), locale.toString(value.value(), format));
    TLogValue<QDateTime> read("Code", Name);
    read.setValue(value.toString());
    // A format with two digits of the year reads back in the twentieth century.
    QCOMPARE(read.value().time(), QTime(12, 34));
    QCOMPARE(read.value().date().year() % 100, 20);
    QCOMPARE(read.value().date().month(), 2);
    QCOMPARE(read.toString(), value.toString());
}

void TestLogValue::textOfALiteralIsTheTextForm()
{
    TLogValue<bool> truth("Code", Name, true);
    truth.setValue("");
    QVERIFY(!truth.value());
    truth.setValue(true);
    QVERIFY(truth.value());
    TLogValue<QStringList> list("Code", Name);
    list.setValue(QStringList{"a;b"});
    QCOMPARE(list.value(), QStringList{"a;b"});
    QCOMPARE(list.toString(), QStringLiteral("a;b"));
    TLogValue<int> number("Code", Name);
    number.setValue(7);
    QCOMPARE(number.value(), 7);
}

void TestLogValue::streamSettingsDoNotMatter()
{
    TLogValue<int> const number("Code", Name, 1234567);
    QString text;
    QTextStream stream(&text);
    stream.setIntegerBase(16);
    stream.setLocale(QLocale(QLocale::German));
    number.writeTo(stream);
    stream.flush();
    QCOMPARE(text, QStringLiteral("1234567"));
}

void TestLogValue::copyOfTheSameClass()
{
    TLogValue<QDateTime> const first("Frst", QStringLiteral("first"), QDateTime::fromMSecsSinceEpoch(0, Qt::UTC));
    QVERIFY(first.hasValue()); // although it compares equal to a null time where the zone is UTC
    TLogValue<QDateTime> second("Scnd", QStringLiteral("second"));
    second.copyFrom(first);
    QCOMPARE(second.value(), first.value());
    QVERIFY(second.hasValue());
    QCOMPARE(second.code(), qv::FourChars("Scnd"));
    QCOMPARE(second.name(), QStringLiteral("second"));
}

void TestLogValue::copyOfAnotherClassDoesNothing_data()
{
    QTest::addColumn<std::shared_ptr<LogValue>>("value");
    QTest::addColumn<std::shared_ptr<LogValue>>("other");
    struct Value {
        char const* name;
        std::shared_ptr<LogValue> value;
        std::shared_ptr<LogValue> other;
    };
    // The text of each of these others would mean something to most of the classes.
    auto const make = [](char const* name, auto const& value, auto const& other) {
        using Type = TLogValue<std::decay_t<decltype(value)>>;
        return Value{name, std::make_shared<Type>("Code", Name, value), std::make_shared<Type>("Code", Name, other)};
    };
    Value const values[] = {
        make("text", QStringLiteral("3"), QStringLiteral("5")),
        make("time", localTime(2020, 2, 29, 12, 34, 0), localTime(2021, 2, 28, 12, 34, 0)),
        make("number", 3, 5),
        make("truth", false, true),
        make("list", QStringList{"3"}, QStringList{"5"}),
    };
    for (Value const& to : values) {
        for (Value const& from : values) {
            if (&from != &to)
                QTest::addRow("%s to %s", from.name, to.name) << to.value << from.other;
        }
    }
}

void TestLogValue::copyOfAnotherClassDoesNothing()
{
    QFETCH(std::shared_ptr<LogValue>, value);
    QFETCH(std::shared_ptr<LogValue>, other);
    QString const before = value->toString();
    value->copyFrom(*other);
    QCOMPARE(value->toString(), before);
}

QTEST_APPLESS_MAIN(TestLogValue)
#include "tst_LogValue.moc"
