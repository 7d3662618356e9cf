// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/properties/CommonProperties.h>

#include <QTest>

#include <limits>
#include <type_traits>

using namespace qvgen;

namespace {

using Handle = qvm::smart<BaseProperty>;

QDate const leapDay(2020, 2, 29);
QTime const clockTime(3, 4, 5, 6);
QDateTime const moment(leapDay, clockTime, Qt::UTC);

struct Approve : PropertyValidator {
    bool validate(PropertySet&, BaseProperty&) override { return true; }
};

PropertySet setOf(std::initializer_list<BaseProperty*> properties)
{
    PropertySet set;
    for (BaseProperty* const property : properties)
        set.add(Handle(property));
    return set;
}

} // namespace

Q_DECLARE_METATYPE(Handle)

class tst_CommonProperties : public QObject {
    Q_OBJECT

private slots:
    void construction();
    void validatorIsOptional();
    void typeAndVariant_data();
    void typeAndVariant();
    void variantPropertyKeepsItsVariant_data();
    void variantPropertyKeepsItsVariant();
    void setVariantValue_data();
    void setVariantValue();
    void setVariantValueKeepsNaN();
    void mapIntoEmbeddedSet_data();
    void mapIntoEmbeddedSet();
    void mapIntoEmbeddedSetEntersNoUnknownName();
    void mapIntoNestedSets();
    void embeddedSetIsSharedWithItsSource();
    void validateWithoutValidator_data();
    void validateWithoutValidator();
    void illegalProperty();
    void illegalPropertyTakesNothing();
    void propertiesAreNotCopyable();
    void handleDeletesTheProperty();
};

void tst_CommonProperties::construction()
{
    qvm::smart<PropertyValidator> const validator(new Approve);
    IntProperty const property("name", "description", 5, validator);
    QCOMPARE(property.name(), QString("name"));
    QCOMPARE(property.description(), QString("description"));
    QCOMPARE(property.value(), 5);
    QVERIFY(property.validator() == validator);
    QVERIFY(property.isValid());
    QVERIFY(property.errorText().isNull());
}

void tst_CommonProperties::validatorIsOptional()
{
    QVERIFY(StringProperty("a", "", "").validator().null());
    QVERIFY(PropertySetProperty("a", "", PropertySet()).validator().null());
    QVERIFY(IllegalProperty::ms_illegalProperty.validator().null());
}

void tst_CommonProperties::typeAndVariant_data()
{
    QTest::addColumn<Handle>("property");
    QTest::addColumn<QString>("type");
    QTest::addColumn<int>("variantType");
    QTest::addColumn<QVariant>("variant");
    auto const row = [](char const* type, BaseProperty* property, int variantType, QVariant const& variant) {
        QTest::newRow(type) << Handle(property) << type << variantType << variant;
    };
    PropertySet const embedded = setOf({new IntProperty("i", "", 5), new StringProperty("s", "", "text")});
    row("IntProperty", new IntProperty("a", "", -5), QMetaType::Int, -5);
    row("UIntProperty", new UIntProperty("a", "", 4294967295u), QMetaType::UInt, 4294967295u);
    row("U64Property", new U64Property("a", "", 18446744073709551615ull), QMetaType::ULongLong,
        18446744073709551615ull);
    row("StringProperty", new StringProperty("a", "", "text"), QMetaType::QString, "text");
    row("StringListProperty", new StringListProperty("a", "", {"x", "y"}), QMetaType::QStringList,
        QStringList{"x", "y"});
    row("FloatProperty", new FloatProperty("a", "", 0.1f), QMetaType::Float, 0.1f);
    row("DoubleProperty", new DoubleProperty("a", "", 0.1), QMetaType::Double, 0.1);
    row("BoolProperty", new BoolProperty("a", "", true), QMetaType::Bool, true);
    row("RectProperty", new RectProperty("a", "", QRect(1, 2, 3, 4)), QMetaType::QRect, QRect(1, 2, 3, 4));
    row("VariantProperty", new VariantProperty("a", "", leapDay), QMetaType::QDate, leapDay);
    row("DateProperty", new DateProperty("a", "", leapDay), QMetaType::QDate, leapDay);
    row("TimeProperty", new TimeProperty("a", "", clockTime), QMetaType::QTime, clockTime);
    row("DateTimeProperty", new DateTimeProperty("a", "", moment), QMetaType::QDateTime, moment);
    row("PropertySetProperty", new PropertySetProperty("a", "", embedded), QMetaType::QVariantMap,
        QVariantMap{{"i", 5}, {"s", "text"}});
}

void tst_CommonProperties::typeAndVariant()
{
    QFETCH(Handle, property);
    QTEST(property->type(), "type");
    QTEST(property->variantValue().userType(), "variantType");
    QTEST(property->variantValue(), "variant");
}

void tst_CommonProperties::variantPropertyKeepsItsVariant_data()
{
    QTest::addColumn<QVariant>("variant");
    QTest::newRow("invalid") << QVariant();
    QTest::newRow("null int") << QVariant(QVariant::Int);
    QTest::newRow("int") << QVariant(5);
    QTest::newRow("text of a number") << QVariant("5");
    QTest::newRow("list") << QVariant(QVariantList{1, "a"});
    QTest::newRow("map") << QVariant(QVariantMap{{"a", 1}});
    QTest::newRow("property set") << QVariant::fromValue(PropertySet());
}

void tst_CommonProperties::variantPropertyKeepsItsVariant()
{
    QFETCH(QVariant, variant);
    VariantProperty property("a", "", "old");
    QVERIFY(property.setVariantValue(variant));
    QCOMPARE(property.variantValue().userType(), variant.userType());
    QCOMPARE(property.variantValue().isNull(), variant.isNull());
    QCOMPARE(property.variantValue().toString(), variant.toString());
}

void tst_CommonProperties::setVariantValue_data()
{
    QTest::addColumn<Handle>("property");
    QTest::addColumn<QVariant>("given");
    QTest::addColumn<bool>("taken");
    QTest::addColumn<QVariant>("value");
    auto const row
        = [](BaseProperty* property, char const* what, QVariant const& given, bool taken, QVariant const& value) {
              Handle const handle(property);
              QTest::addRow("%s: %s", qPrintable(handle->type()), what) << handle << given << taken << value;
          };
    QStringList const two{"x", "y"};

    auto const number = [] { return new IntProperty("a", "", 1); };
    row(number(), "int", 5, true, 5);
    row(number(), "text of a number", "5", true, 5);
    row(number(), "any text counts as convertible", "abc", true, 0);
    row(number(), "bool", true, true, 1);
    row(number(), "double is rounded up", 2.5, true, 3);
    row(number(), "negative double is rounded", -1.5, true, -1);
    row(number(), "invalid", QVariant(), false, 1);
    row(number(), "date", leapDay, false, 1);
    row(number(), "list", QVariantList{5}, false, 1);
    row(number(), "null int", QVariant(QVariant::Int), true, 0);

    auto const count = [] { return new UIntProperty("a", "", 1); };
    row(count(), "unsigned int", 4294967295u, true, 4294967295u);
    row(count(), "negative int wraps", -1, true, 4294967295u);
    row(count(), "text of the highest", "4294967295", true, 4294967295u);
    row(count(), "double is rounded", 2999999999.5, true, 3000000000u);
    row(count(), "invalid", QVariant(), false, 1u);
    row(count(), "rectangle", QRect(1, 2, 3, 4), false, 1u);

    auto const size = [] { return new U64Property("a", "", 1); };
    row(size(), "highest", 18446744073709551615ull, true, 18446744073709551615ull);
    row(size(), "text of the highest", "18446744073709551615", true, 18446744073709551615ull);
    row(size(), "negative int wraps", -1, true, 18446744073709551615ull);
    row(size(), "invalid", QVariant(), false, 1ull);
    row(size(), "time", clockTime, false, 1ull);

    auto const text = [] { return new StringProperty("a", "", "old"); };
    row(text(), "text", "new", true, "new");
    row(text(), "int", 5, true, "5");
    row(text(), "bool", true, true, "true");
    row(text(), "date", leapDay, true, "2020-02-29");
    row(text(), "list of one text", QStringList{"x"}, true, "x");
    row(text(), "list of two texts", two, false, "old");
    row(text(), "bytes", QByteArray("bytes"), true, "bytes");
    row(text(), "invalid", QVariant(), false, "old");
    row(text(), "rectangle", QRect(1, 2, 3, 4), false, "old");

    auto const texts = [] { return new StringListProperty("a", "", {"old"}); };
    row(texts(), "list of texts", two, true, two);
    row(texts(), "list of variants", QVariantList{1, "b"}, true, QStringList{"1", "b"});
    row(texts(), "empty list", QStringList(), true, QStringList());
    row(texts(), "text keeps its empty parts", "a,,b", true, QStringList{"a", "", "b"});
    row(texts(), "text keeps blanks", " a , b", true, QStringList{" a ", " b"});
    row(texts(), "text of commas", ",,", true, QStringList{"", "", ""});
    row(texts(), "text without comma", "a;b", true, QStringList{"a;b"});
    row(texts(), "empty text", "", true, QStringList{""});
    row(texts(), "text in a list is not split", QStringList{"a,b"}, true, QStringList{"a,b"});
    row(texts(), "number", 5, true, QStringList{"5"});
    row(texts(), "bytes", QByteArray("a,b"), true, QStringList{"a", "b"});
    row(texts(), "invalid", QVariant(), true, QStringList{""});
    row(texts(), "rectangle", QRect(1, 2, 3, 4), true, QStringList{""});

    auto const single = [] { return new FloatProperty("a", "", 1.5f); };
    row(single(), "float", 0.1f, true, 0.1f);
    row(single(), "double is narrowed", 0.1, true, 0.1f);
    row(single(), "text", "2.5", true, 2.5f);
    row(single(), "int", 3, true, 3.0f);
    row(single(), "invalid", QVariant(), false, 1.5f);
    row(single(), "date", leapDay, false, 1.5f);

    auto const real = [] { return new DoubleProperty("a", "", 1.5); };
    row(real(), "double", 0.1, true, 0.1);
    row(real(), "float", 0.5f, true, 0.5);
    row(real(), "text with an exponent", "1e3", true, 1000.0);
    row(real(), "text with a decimal comma", "2,5", true, 0.0);
    row(real(), "int", -3, true, -3.0);
    row(real(), "invalid", QVariant(), false, 1.5);
    row(real(), "list", QVariantList{1}, false, 1.5);

    auto const flag = [](bool value) { return new BoolProperty("a", "", value); };
    row(flag(false), "bool", true, true, true);
    row(flag(false), "number other than 0", -2, true, true);
    row(flag(false), "double other than 0", 2.5, true, true);
    row(flag(true), "0", 0, true, false);
    row(flag(false), "text true", "true", true, true);
    row(flag(true), "text false", "false", true, false);
    row(flag(true), "text 0", "0", true, false);
    row(flag(false), "any other text", "abc", true, true);
    row(flag(true), "empty text", "", true, false);
    row(flag(true), "invalid", QVariant(), false, true);
    row(flag(true), "date", leapDay, false, true);

    QRect const area(1, 2, 3, 4);
    auto const rectangle = [=] { return new RectProperty("a", "", area); };
    row(rectangle(), "rectangle", QRect(5, 6, 7, 8), true, QRect(5, 6, 7, 8));
    row(rectangle(), "null rectangle", QRect(), true, QRect());
    row(rectangle(), "text", "1,2,3,4", false, area);
    row(rectangle(), "int", 5, false, area);
    row(rectangle(), "invalid", QVariant(), false, area);

    QDate const oldDate(1999, 12, 31);
    auto const date = [=] { return new DateProperty("a", "", oldDate); };
    row(date(), "date", leapDay, true, leapDay);
    row(date(), "date and time", moment, true, leapDay);
    row(date(), "text", "2020-02-29", true, leapDay);
    row(date(), "any text counts as convertible", "abc", true, QDate());
    row(date(), "time", clockTime, false, oldDate);
    row(date(), "int", 5, false, oldDate);
    row(date(), "invalid", QVariant(), false, oldDate);

    QTime const oldTime(23, 59, 59);
    auto const time = [=] { return new TimeProperty("a", "", oldTime); };
    row(time(), "time", clockTime, true, clockTime);
    row(time(), "date and time", moment, true, clockTime);
    row(time(), "text", "03:04:05.006", true, clockTime);
    row(time(), "any text counts as convertible", "abc", true, QTime());
    row(time(), "date", leapDay, false, oldTime);
    row(time(), "int", 5, false, oldTime);
    row(time(), "invalid", QVariant(), false, oldTime);

    QDateTime const oldMoment(oldDate, oldTime, Qt::UTC);
    auto const dateTime = [=] { return new DateTimeProperty("a", "", oldMoment); };
    row(dateTime(), "date and time", moment, true, moment);
    row(dateTime(), "date is its midnight", leapDay, true, QDateTime(leapDay, QTime(0, 0)));
    row(dateTime(), "text", "2020-02-29T03:04:05Z", true, QDateTime(leapDay, QTime(3, 4, 5), Qt::UTC));
    row(dateTime(), "any text counts as convertible", "abc", true, QDateTime());
    row(dateTime(), "time", clockTime, false, oldMoment);
    row(dateTime(), "int", 5, false, oldMoment);
    row(dateTime(), "invalid", QVariant(), false, oldMoment);

    auto const set = [] { return new PropertySetProperty("a", "", setOf({new IntProperty("i", "", 5)})); };
    QVariantMap const oldMap{{"i", 5}};
    row(set(), "map", QVariantMap{{"i", 6}}, true, QVariantMap{{"i", 6}});
    row(set(), "hash", QVariantHash{{"i", 6}}, true, QVariantMap{{"i", 6}});
    row(set(), "list", QVariantList{6}, false, oldMap);
    row(set(), "text", "i", false, oldMap);
    row(set(), "invalid", QVariant(), false, oldMap);
}

void tst_CommonProperties::setVariantValue()
{
    QFETCH(Handle, property);
    QFETCH(QVariant, given);
    QTEST(property->setVariantValue(given), "taken");
    QTEST(property->variantValue(), "value");
}

void tst_CommonProperties::setVariantValueKeepsNaN()
{
    double const nan = std::numeric_limits<double>::quiet_NaN();
    DoubleProperty real("a", "", 1.0);
    QVERIFY(real.setVariantValue(nan));
    QVERIFY(qIsNaN(real.value()));
    FloatProperty single("a", "", 1.0f);
    QVERIFY(single.setVariantValue(nan));
    QVERIFY(qIsNaN(single.value()));
    QVERIFY(single.setVariantValue(std::numeric_limits<double>::infinity()));
    QVERIFY(qIsInf(single.value()));
}

void tst_CommonProperties::mapIntoEmbeddedSet_data()
{
    QTest::addColumn<QVariantMap>("given");
    QTest::addColumn<bool>("taken");
    QTest::addColumn<QVariantMap>("values");
    QRect const area(1, 2, 3, 4);
    QTest::newRow("empty map") << QVariantMap() << true << QVariantMap{{"i", 1}, {"r", area}};
    QTest::newRow("all names") << QVariantMap{{"i", 2}, {"r", QRect()}} << true
                               << QVariantMap{{"i", 2}, {"r", QRect()}};
    QTest::newRow("some names") << QVariantMap{{"i", 2}} << true << QVariantMap{{"i", 2}, {"r", area}};
    QTest::newRow("one known and one unknown name")
        << QVariantMap{{"i", 2}, {"unknown", 3}} << false << QVariantMap{{"i", 2}, {"r", area}};
    QTest::newRow("an unknown name first does not stop the rest")
        << QVariantMap{{"a", 3}, {"i", 2}} << false << QVariantMap{{"i", 2}, {"r", area}};
    QTest::newRow("a refused value does not stop the rest")
        << QVariantMap{{"i", area}, {"r", QRect()}} << false << QVariantMap{{"i", 1}, {"r", QRect()}};
    QTest::newRow("name in the other case") << QVariantMap{{"I", 2}} << false << QVariantMap{{"i", 1}, {"r", area}};
    QTest::newRow("empty name") << QVariantMap{{"", 2}} << false << QVariantMap{{"i", 1}, {"r", area}};
}

void tst_CommonProperties::mapIntoEmbeddedSet()
{
    QFETCH(QVariantMap, given);
    QFETCH(QVariantMap, values);
    PropertySet const embedded = setOf({new IntProperty("i", "", 1), new RectProperty("r", "", QRect(1, 2, 3, 4))});
    PropertySetProperty property("a", "", embedded);
    QTEST(property.setVariantValue(given), "taken");
    QCOMPARE(property.variantValue(), QVariant(values));
}

void tst_CommonProperties::mapIntoEmbeddedSetEntersNoUnknownName()
{
    PropertySetProperty property("a", "", PropertySet());
    QVERIFY(!property.setVariantValue(QVariantMap{{"unknown", 1}}));
    QCOMPARE(property.value().count(), 0);
    QVERIFY(!property.value().contains("unknown"));
}

void tst_CommonProperties::mapIntoNestedSets()
{
    PropertySet const inner = setOf({new IntProperty("i", "", 1)});
    PropertySetProperty property("a", "", setOf({new PropertySetProperty("inner", "", inner)}));
    QVERIFY(property.setVariantValue(QVariantMap{{"inner", QVariantMap{{"i", 2}}}}));
    QCOMPARE(IntProperty::getValue(inner["i"], 0), 2);
    QVERIFY(!property.setVariantValue(QVariantMap{{"inner", QVariantMap{{"unknown", 2}}}}));
    QVERIFY(!property.setVariantValue(QVariantMap{{"inner", 2}}));
}

void tst_CommonProperties::embeddedSetIsSharedWithItsSource()
{
    PropertySet source = setOf({new IntProperty("i", "", 1)});
    PropertySetProperty const property("a", "", source);
    IntProperty::setValue(source["i"], 2);
    QCOMPARE(property.variantValue(), QVariant(QVariantMap{{"i", 2}}));
    source.clear();
    QCOMPARE(property.value().count(), 1);
}

void tst_CommonProperties::validateWithoutValidator_data()
{
    QTest::addColumn<bool>("valid");
    QTest::addColumn<QString>("errorText");
    QTest::newRow("never judged") << true << QString();
    QTest::newRow("rejected by its owner") << false << "too dark";
}

void tst_CommonProperties::validateWithoutValidator()
{
    QFETCH(bool, valid);
    QFETCH(QString, errorText);
    PropertySet set;
    IntProperty property("a", "", 1);
    property.setValidationResult(valid, errorText);
    QVERIFY(property.validate(set));
    QCOMPARE(property.isValid(), valid);
    QCOMPARE(property.errorText(), errorText);
}

void tst_CommonProperties::illegalProperty()
{
    IllegalProperty& illegal = IllegalProperty::ms_illegalProperty;
    QCOMPARE(illegal.type(), QString("IllegalProperty"));
    QVERIFY(illegal.name().isEmpty());
    QVERIFY(illegal.description().isEmpty());
    QVERIFY(!illegal.isValid());
    QVERIFY(!illegal.variantValue().isValid());
    PropertySet set;
    QVERIFY(illegal.validate(set));
    QVERIFY(!illegal.isValid());
}

void tst_CommonProperties::illegalPropertyTakesNothing()
{
    QVERIFY(!IllegalProperty::ms_illegalProperty.setVariantValue(5));
    QVERIFY(!IllegalProperty::ms_illegalProperty.setVariantValue(QVariant()));
    QVERIFY(!IllegalProperty::ms_illegalProperty.variantValue().isValid());
}

void tst_CommonProperties::propertiesAreNotCopyable()
{
    QVERIFY(!std::is_copy_constructible_v<IntProperty>);
    QVERIFY(!std::is_copy_assignable_v<IntProperty>);
    QVERIFY(!std::is_default_constructible_v<IllegalProperty>);
    QVERIFY(std::has_virtual_destructor_v<BaseProperty>);
}

void tst_CommonProperties::handleDeletesTheProperty()
{
    struct Watched : IntProperty {
        explicit Watched(bool& gone)
            : IntProperty("a", "", 1)
            , m_gone(gone)
        {
        }
        ~Watched() override { m_gone = true; }
        bool& m_gone;
    };
    bool gone = false;
    Handle handle(new Watched(gone));
    QVERIFY(!gone);
    handle.reset();
    QVERIFY(gone);
}

QTEST_GUILESS_MAIN(tst_CommonProperties)
#include "tst_CommonProperties.moc"
