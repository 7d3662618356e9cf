// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/properties/CommonProperties.h>

#include <QTest>
#include <QTextStream>

#include <limits>

using namespace qvgen;

namespace {

using Handle = qvm::smart<BaseProperty>;

template <class Dumped> QString dumpOf(Dumped const& dumped)
{
    QString text;
    QTextStream stream(&text);
    dumped.dump(stream);
    return text;
}

PropertySet setOf(std::initializer_list<BaseProperty*> properties)
{
    PropertySet set;
    for (BaseProperty* const property : properties)
        set.add(Handle(property));
    return set;
}

} // namespace

Q_DECLARE_METATYPE(Handle)

class tst_PropertyDumps : public QObject {
    Q_OBJECT

private slots:
    void valueText_data();
    void valueText();
    void localisedValueText_data();
    void localisedValueText();
    void nameAndDescription_data();
    void nameAndDescription();
    void everyDumpReturnsItsStream();
    void embeddedSet_data();
    void embeddedSet();
    void illegalProperty();
    void set_data();
    void set();
    void verdictIsNotDumped();
};

void tst_PropertyDumps::valueText_data()
{
    QTest::addColumn<Handle>("property");
    QTest::addColumn<QString>("text");
    auto const row = [](char const* name, BaseProperty* property, QString const& text) {
        QTest::newRow(name) << Handle(property) << text;
    };
    QString const n = "n";
    QString const d = "d";
    row("int", new IntProperty(n, d, 42), "42");
    row("negative int", new IntProperty(n, d, -42), "-42");
    row("lowest int", new IntProperty(n, d, std::numeric_limits<int>::min()), "-2147483648");
    row("highest unsigned int", new UIntProperty(n, d, 4294967295u), "4294967295");
    row("highest of 64 bits", new U64Property(n, d, 18446744073709551615ull), "18446744073709551615");
    row("float", new FloatProperty(n, d, 1.5f), "1.5");
    row("float has six digits", new FloatProperty(n, d, 0.1f), "0.1");
    row("double", new DoubleProperty(n, d, -2.25), "-2.25");
    row("double has six digits", new DoubleProperty(n, d, 1.23456789), "1.23457");
    row("large double", new DoubleProperty(n, d, 1e20), "1e+20");
    row("infinity", new DoubleProperty(n, d, std::numeric_limits<double>::infinity()), "inf");
    row("not a number", new DoubleProperty(n, d, std::numeric_limits<double>::quiet_NaN()), "nan");
    row("true", new BoolProperty(n, d, true), "1");
    row("false", new BoolProperty(n, d, false), "0");
    row("string", new StringProperty(n, d, "some text"), "some text");
    row("empty string", new StringProperty(n, d, ""), "");
    row("string with line ends", new StringProperty(n, d, "one\ntwo\r\n"), "one\ntwo\r\n");
    row("string with a tab and a NUL", new StringProperty(n, d, QString("a\tb") + QChar(0)),
        QString("a\tb") + QChar(0));
    row("string list", new StringListProperty(n, d, {"a", "b", "c"}), "a,b,c");
    row("string list with blanks and commas", new StringListProperty(n, d, {"a ", "", "b,c"}), "a ,,b,c");
    row("empty string list", new StringListProperty(n, d, {}), "");
    row("rectangle", new RectProperty(n, d, QRect(1, 2, 10, 20)), "(1,2,10,20)");
    row("rectangle left of the origin", new RectProperty(n, d, QRect(-1, -2, 3, 4)), "(-1,-2,3,4)");
    row("null rectangle", new RectProperty(n, d, QRect()), "(0,0,0,0)");
    row("inverted rectangle", new RectProperty(n, d, QRect(QPoint(5, 5), QPoint(2, 1))), "(5,5,-2,-3)");
    row("variant with a number", new VariantProperty(n, d, 5), "5");
    row("variant with a bool", new VariantProperty(n, d, true), "true");
    row("variant with a text", new VariantProperty(n, d, "text"), "text");
    row("variant with a double keeps all digits", new VariantProperty(n, d, 1.23456789), "1.23456789");
    row("variant with a date", new VariantProperty(n, d, QDate(2020, 2, 29)), "2020-02-29");
    row("variant without text form", new VariantProperty(n, d, QRect(1, 2, 3, 4)), "");
    row("invalid variant", new VariantProperty(n, d, QVariant()), "");
    row("null date", new DateProperty(n, d, QDate()), "");
    row("null time", new TimeProperty(n, d, QTime()), "");
    row("null date and time", new DateTimeProperty(n, d, QDateTime()), "");
}

void tst_PropertyDumps::valueText()
{
    QFETCH(Handle, property);
    QFETCH(QString, text);
    QCOMPARE(dumpOf(*property),
        "Property name: n\nProperty description: d\nProperty value: " + text
            + "\n--------------------------------------------\n");
}

void tst_PropertyDumps::localisedValueText_data()
{
    QTest::addColumn<Handle>("property");
    QTest::addColumn<QString>("text");
    QDate const date(2020, 5, 3);
    QTime const time(3, 4, 5, 6);
    QDateTime const utc(date, time, Qt::UTC);
    QDateTime const local(date, time);
    QTest::newRow("date") << Handle(new DateProperty("n", "d", date)) << date.toString(Qt::TextDate);
    QTest::newRow("time") << Handle(new TimeProperty("n", "d", time)) << time.toString(Qt::TextDate);
    QTest::newRow("date and time in UTC") << Handle(new DateTimeProperty("n", "d", utc)) << utc.toString(Qt::TextDate);
    QTest::newRow("date and local time") << Handle(new DateTimeProperty("n", "d", local))
                                         << local.toString(Qt::TextDate);
}

void tst_PropertyDumps::localisedValueText()
{
    QFETCH(QString, text);
    QVERIFY(!text.isEmpty());
    valueText();
}

void tst_PropertyDumps::nameAndDescription_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("description");
    QTest::newRow("both empty") << ""
                                << "";
    QTest::newRow("blanks are kept") << " a "
                                     << " b ";
    QTest::newRow("line ends are kept") << "a\nb"
                                        << "c\nd";
    QTest::newRow("not ASCII") << QString(QChar(0xe9)) << QString::fromUcs4(U"\x1f4f7", 1);
    QTest::newRow("long") << QString(100000, 'n') << QString(100000, 'd');
}

void tst_PropertyDumps::nameAndDescription()
{
    QFETCH(QString, name);
    QFETCH(QString, description);
    QCOMPARE(dumpOf(IntProperty(name, description, 1)),
        "Property name: " + name + "\nProperty description: " + description
            + "\nProperty value: 1\n--------------------------------------------\n");
}

void tst_PropertyDumps::everyDumpReturnsItsStream()
{
    Handle const properties[] = {Handle(new IntProperty("n", "", 0)), Handle(new UIntProperty("n", "", 0)),
        Handle(new U64Property("n", "", 0)), Handle(new StringProperty("n", "", "")),
        Handle(new StringListProperty("n", "", {})), Handle(new FloatProperty("n", "", 0)),
        Handle(new DoubleProperty("n", "", 0)), Handle(new BoolProperty("n", "", false)),
        Handle(new RectProperty("n", "", QRect())), Handle(new VariantProperty("n", "", QVariant())),
        Handle(new DateProperty("n", "", QDate())), Handle(new TimeProperty("n", "", QTime())),
        Handle(new DateTimeProperty("n", "", QDateTime())), Handle(new PropertySetProperty("n", "", PropertySet()))};
    QString text;
    QTextStream stream(&text);
    for (Handle const& property : properties)
        QCOMPARE(&property->dump(stream), &stream);
    QCOMPARE(&IllegalProperty::ms_illegalProperty.dump(stream), &stream);
    QCOMPARE(&PropertySet().dump(stream), &stream);
}

void tst_PropertyDumps::embeddedSet_data()
{
    QTest::addColumn<PropertySet>("set");
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << PropertySet()
                           << "Property name: n\n"
                              "Property description: d\n"
                              "Embedded property set: \n"
                              "=======================================\n"
                              "=======================================\n"
                              "--------------------------------------------\n";
    QTest::newRow("one property") << setOf({new IntProperty("i", "inner", 5)})
                                  << "Property name: n\n"
                                     "Property description: d\n"
                                     "Embedded property set: \n"
                                     "=======================================\n"
                                     "Property name: i\n"
                                     "Property description: inner\n"
                                     "Property value: 5\n"
                                     "--------------------------------------------\n"
                                     "\n"
                                     "=======================================\n"
                                     "--------------------------------------------\n";
    QTest::newRow("a set in a set") << setOf({new PropertySetProperty("i", "inner", PropertySet())})
                                    << "Property name: n\n"
                                       "Property description: d\n"
                                       "Embedded property set: \n"
                                       "=======================================\n"
                                       "Property name: i\n"
                                       "Property description: inner\n"
                                       "Embedded property set: \n"
                                       "=======================================\n"
                                       "=======================================\n"
                                       "--------------------------------------------\n"
                                       "\n"
                                       "=======================================\n"
                                       "--------------------------------------------\n";
}

void tst_PropertyDumps::embeddedSet()
{
    QFETCH(PropertySet, set);
    QFETCH(QString, text);
    QCOMPARE(dumpOf(PropertySetProperty("n", "d", set)), text);
}

void tst_PropertyDumps::illegalProperty()
{
    QCOMPARE(dumpOf(IllegalProperty::ms_illegalProperty), QString("IllegaProperty\n"));
}

void tst_PropertyDumps::set_data()
{
    QTest::addColumn<PropertySet>("set");
    QTest::addColumn<QString>("text");
    PropertySet withEmptyHandle = setOf({new IntProperty("b", "", 2)});
    withEmptyHandle.setVariantValues({{"a", 1}});
    QTest::newRow("empty") << PropertySet()
                           << "=======================================\n"
                              "=======================================";
    QTest::newRow("in the order of the names")
        << setOf({new BoolProperty("b", "second", true), new IntProperty("a", "first", 1)})
        << "=======================================\n"
           "Property name: a\n"
           "Property description: first\n"
           "Property value: 1\n"
           "--------------------------------------------\n"
           "\n"
           "Property name: b\n"
           "Property description: second\n"
           "Property value: 1\n"
           "--------------------------------------------\n"
           "\n"
           "=======================================";
    QTest::newRow("an empty handle dumps as the illegal property") << withEmptyHandle
                                                                   << "=======================================\n"
                                                                      "IllegaProperty\n"
                                                                      "\n"
                                                                      "Property name: b\n"
                                                                      "Property description: \n"
                                                                      "Property value: 2\n"
                                                                      "--------------------------------------------\n"
                                                                      "\n"
                                                                      "=======================================";
}

void tst_PropertyDumps::set()
{
    QFETCH(PropertySet, set);
    QFETCH(QString, text);
    QCOMPARE(dumpOf(set), text);
}

void tst_PropertyDumps::verdictIsNotDumped()
{
    IntProperty property("n", "d", 1);
    QString const before = dumpOf(property);
    property.setValidationResult(false, "Value out of range.");
    QCOMPARE(dumpOf(property), before);
}

QTEST_GUILESS_MAIN(tst_PropertyDumps)
#include "tst_PropertyDumps.moc"
