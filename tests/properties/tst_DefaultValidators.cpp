// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/properties/CommonProperties.h>
#include <GenericUtilities/properties/DefaultValidators.h>

#include <qvbase/Exceptions.h>

#include <QPointer>
#include <QTest>
#include <QTranslator>

#include <cmath>
#include <limits>

using namespace qvgen;

namespace {

using Handle = qvm::smart<BaseProperty>;
using ValidatorHandle = qvm::smart<PropertyValidator>;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr float notANumberF = std::numeric_limits<float>::quiet_NaN();
QString const outOfRange = "Value out of range.";

Handle number(QString const& name, int value, ValidatorHandle const& validator)
{
    return Handle(new IntProperty(name, "", value, validator));
}

/// Translates the one message, in the one context that it belongs to.
struct GermanMessages : QTranslator {
    bool isEmpty() const override { return false; }
    QString translate(char const* context, char const* text, char const* comment, int) const override
    {
        bool const isMessage = QByteArray(context) == "QObject" && text == outOfRange && QByteArray(comment).isEmpty();
        return isMessage ? "Wert liegt nicht im Bereich." : QString();
    }
};

} // namespace

Q_DECLARE_METATYPE(Handle)
Q_DECLARE_METATYPE(ValidatorHandle)

class tst_DefaultValidators : public QObject {
    Q_OBJECT

private slots:
    void cleanup();
    void range_data();
    void range();
    void verdictIsReplaced();
    void messageIsTranslated();
    void illegalPropertyCountsAsZero_data();
    void illegalPropertyCountsAsZero();
    void anotherClassThrows_data();
    void anotherClassThrows();
    void setIsNotConsulted();
    void handleOnAValidatorClassConverts();
    void validatorSharedByProperties();
    void validatorOutlivesOneProperty();
};

void tst_DefaultValidators::cleanup()
{
    // The verdict on the illegal property is shared by the whole process.
    IllegalProperty::ms_illegalProperty.setValidationResult(false, QString());
}

void tst_DefaultValidators::range_data()
{
    QTest::addColumn<ValidatorHandle>("validator");
    QTest::addColumn<Handle>("property");
    QTest::addColumn<bool>("inRange");
    auto const row = [](char const* name, PropertyValidator* validator, BaseProperty* property, bool inRange) {
        QTest::newRow(name) << ValidatorHandle(validator) << Handle(property) << inRange;
    };
    using Int = DefaultIntValidator;
    auto const i = [](int value) { return new IntProperty("a", "", value); };
    constexpr int lowest = std::numeric_limits<int>::min();
    constexpr int highest = std::numeric_limits<int>::max();
    row("int below the minimum", new Int(0, 10), i(-1), false);
    row("int at the minimum", new Int(0, 10), i(0), true);
    row("int inside", new Int(0, 10), i(5), true);
    row("int at the maximum", new Int(0, 10), i(10), true);
    row("int above the maximum", new Int(0, 10), i(11), false);
    row("int in a negative range", new Int(-10, -5), i(-7), true);
    row("int of the other sign", new Int(-10, -5), i(7), false);
    row("int in a range of one", new Int(5, 5), i(5), true);
    row("lowest int in the full range", new Int(lowest, highest), i(lowest), true);
    row("highest int in the full range", new Int(lowest, highest), i(highest), true);
    row("int at the minimum above the maximum", new Int(10, 0), i(10), false);
    row("int between crossed bounds", new Int(10, 0), i(5), false);
    row("int at the maximum below the minimum", new Int(10, 0), i(0), false);

    using UInt = DefaultUIntValidator;
    auto const u = [](unsigned int value) { return new UIntProperty("a", "", value); };
    row("unsigned below the minimum", new UInt(1, 10), u(0), false);
    row("unsigned at the minimum", new UInt(1, 10), u(1), true);
    row("unsigned at the maximum", new UInt(1, 10), u(10), true);
    row("unsigned above the maximum", new UInt(1, 10), u(11), false);
    row("highest unsigned is not negative", new UInt(0, 10), u(4294967295u), false);
    row("highest unsigned at the maximum", new UInt(3000000000u, 4294967295u), u(4294967295u), true);
    row("unsigned between crossed bounds", new UInt(10, 1), u(5), false);

    using U64 = DefaultU64Validator;
    auto const l = [](unsigned long long value) { return new U64Property("a", "", value); };
    row("64 bits below the minimum", new U64(1, 10), l(0), false);
    row("64 bits at the minimum", new U64(1, 10), l(1), true);
    row("64 bits at the maximum", new U64(1, 10), l(10), true);
    row("64 bits above the maximum", new U64(1, 10), l(11), false);
    row("2^32 + 5 is judged as 5", new U64(0, 10), l(4294967301), true);
    row("2^32 + 11 is judged as 11", new U64(0, 10), l(4294967307), false);
    row("2^32 is judged as 0", new U64(1, 10), l(4294967296), false);
    row("highest is judged as 2^32 - 1", new U64(4294967295, 4294967295), l(18446744073709551615ull), true);
    row("minimum keeps all 64 bits", new U64(4294967296, 4294967306), l(4294967301), false);
    row("maximum keeps all 64 bits", new U64(0, 4294967296), l(5), true);
    row("maximum beyond 32 bits", new U64(0, 18446744073709551615ull), l(4294967295), true);
    row("64 bits between crossed bounds", new U64(10, 1), l(5), false);

    using Float = DefaultFloatValidator;
    auto const f = [](float value) { return new FloatProperty("a", "", value); };
    row("float at the minimum", new Float(0.1f, 0.9f), f(0.1f), true);
    row("float at the maximum", new Float(0.1f, 0.9f), f(0.9f), true);
    row("float just below the minimum", new Float(0.1f, 0.9f), f(std::nextafter(0.1f, 0.0f)), false);
    row("float just above the maximum", new Float(0.1f, 0.9f), f(std::nextafter(0.9f, 1.0f)), false);
    row("negative zero float", new Float(0.0f, 1.0f), f(-0.0f), true);
    row("float not a number", new Float(0.0f, 1.0f), f(notANumberF), false);
    row("float not a number in an infinite range",
        new Float(-std::numeric_limits<float>::infinity(), std::numeric_limits<float>::infinity()), f(notANumberF),
        false);
    row("float between crossed bounds", new Float(1.0f, 0.0f), f(0.5f), false);

    using Double = DefaultDoubleValidator;
    auto const d = [](double value) { return new DoubleProperty("a", "", value); };
    row("double at the minimum", new Double(0.1, 0.9), d(0.1), true);
    row("double at the maximum", new Double(0.1, 0.9), d(0.9), true);
    row("double just below the minimum", new Double(0.1, 0.9), d(std::nextafter(0.1, 0.0)), false);
    row("double just above the maximum", new Double(0.1, 0.9), d(std::nextafter(0.9, 1.0)), false);
    row("smallest double above zero", new Double(0.0, 0.0), d(std::numeric_limits<double>::denorm_min()), false);
    row("double not a number", new Double(0.0, 1.0), d(notANumber), false);
    row("double against a minimum not a number", new Double(notANumber, 1.0), d(0.5), false);
    row("double against a maximum not a number", new Double(0.0, notANumber), d(0.5), false);
    row("infinity at an infinite maximum", new Double(0.0, infinity), d(infinity), true);
    row("infinity above a finite maximum", new Double(0.0, std::numeric_limits<double>::max()), d(infinity), false);
    row("negative infinity", new Double(0.0, infinity), d(-infinity), false);
    row("double between crossed bounds", new Double(1.0, 0.0), d(0.5), false);
}

void tst_DefaultValidators::range()
{
    QFETCH(ValidatorHandle, validator);
    QFETCH(Handle, property);
    QFETCH(bool, inRange);
    PropertySet set;
    QCOMPARE(validator->validate(set, *property), inRange);
    QCOMPARE(property->isValid(), inRange);
    QCOMPARE(property->errorText(), inRange ? QString() : outOfRange);
    QCOMPARE(property->errorText().isNull(), inRange);
}

void tst_DefaultValidators::verdictIsReplaced()
{
    PropertySet set;
    IntProperty property("a", "", 11, ValidatorHandle(new DefaultIntValidator(0, 10)));
    QVERIFY(!property.validate(set));
    QCOMPARE(property.errorText(), outOfRange);
    IntProperty::setValue(property, 10);
    QVERIFY(!property.isValid());
    QVERIFY(property.validate(set));
    QVERIFY(property.isValid());
    QVERIFY(property.errorText().isNull());
    property.setValidationResult(true, "");
    QVERIFY(property.validate(set));
    QVERIFY(property.errorText().isNull());
}

void tst_DefaultValidators::messageIsTranslated()
{
    GermanMessages messages;
    QVERIFY(QCoreApplication::installTranslator(&messages));
    PropertySet set;
    DoubleProperty property("a", "", 2.0, ValidatorHandle(new DefaultDoubleValidator(0.0, 1.0)));
    QVERIFY(!property.validate(set));
    QCoreApplication::removeTranslator(&messages);
    QCOMPARE(property.errorText(), QString("Wert liegt nicht im Bereich."));
}

void tst_DefaultValidators::illegalPropertyCountsAsZero_data()
{
    QTest::addColumn<ValidatorHandle>("validator");
    QTest::addColumn<bool>("inRange");
    auto const row = [](char const* name, PropertyValidator* validator, bool inRange) {
        QTest::newRow(name) << ValidatorHandle(validator) << inRange;
    };
    row("int range with 0", new DefaultIntValidator(0, 10), true);
    row("int range without 0", new DefaultIntValidator(1, 10), false);
    row("unsigned range with 0", new DefaultUIntValidator(0, 10), true);
    row("unsigned range without 0", new DefaultUIntValidator(1, 10), false);
    row("64-bit range with 0", new DefaultU64Validator(0, 10), true);
    row("64-bit range without 0", new DefaultU64Validator(1, 10), false);
    row("float range with 0", new DefaultFloatValidator(-1.0f, 1.0f), true);
    row("float range without 0", new DefaultFloatValidator(0.5f, 1.0f), false);
    row("double range with 0", new DefaultDoubleValidator(-1.0, 1.0), true);
    row("double range without 0", new DefaultDoubleValidator(0.5, 1.0), false);
}

void tst_DefaultValidators::illegalPropertyCountsAsZero()
{
    QFETCH(ValidatorHandle, validator);
    QFETCH(bool, inRange);
    PropertySet set;
    QCOMPARE(validator->validate(set, set["missing"]), inRange);
    QCOMPARE(IllegalProperty::ms_illegalProperty.isValid(), inRange);
    QCOMPARE(IllegalProperty::ms_illegalProperty.errorText(), inRange ? QString() : outOfRange);
}

void tst_DefaultValidators::anotherClassThrows_data()
{
    QTest::addColumn<ValidatorHandle>("validator");
    QTest::addColumn<QString>("expectedType");
    QTest::addColumn<Handle>("property");
    QVector<QPair<QString, ValidatorHandle>> const validators = {
        {"IntProperty", ValidatorHandle(new DefaultIntValidator(0, 10))},
        {"UIntProperty", ValidatorHandle(new DefaultUIntValidator(0, 10))},
        {"U64Property", ValidatorHandle(new DefaultU64Validator(0, 10))},
        {"FloatProperty", ValidatorHandle(new DefaultFloatValidator(0, 10))},
        {"DoubleProperty", ValidatorHandle(new DefaultDoubleValidator(0, 10))},
    };
    QVector<Handle> const properties = {Handle(new IntProperty("a", "", 5)), Handle(new UIntProperty("a", "", 5)),
        Handle(new U64Property("a", "", 5)), Handle(new FloatProperty("a", "", 5)),
        Handle(new DoubleProperty("a", "", 5)), Handle(new StringProperty("a", "", "5")),
        Handle(new BoolProperty("a", "", true)), Handle(new VariantProperty("a", "", 5))};
    for (auto const& [expectedType, validator] : validators) {
        for (Handle const& property : properties) {
            if (property->type() != expectedType)
                QTest::addRow("%s wanted, %s given", qPrintable(expectedType), qPrintable(property->type()))
                    << validator << expectedType << property;
        }
    }
}

void tst_DefaultValidators::anotherClassThrows()
{
    QFETCH(ValidatorHandle, validator);
    QFETCH(Handle, property);
    PropertySet set;
    property->setValidationResult(false, "earlier verdict");
    try {
        validator->validate(set, *property);
        QFAIL("nothing thrown");
    } catch (qv::UnexpectedTypeException const& error) {
        QCOMPARE(error.name(), QString("a"));
        QCOMPARE(error.actualType(), property->type());
        QTEST(error.expectedType(), "expectedType");
        QCOMPARE(error.message(), QString("Property has the wrong type."));
    }
    QVERIFY(!property->isValid());
    QCOMPARE(property->errorText(), QString("earlier verdict"));
}

void tst_DefaultValidators::setIsNotConsulted()
{
    DefaultIntValidator validator(0, 10);
    IntProperty property("a", "", 5);
    PropertySet set;
    set.add(number("a", 99, {}));
    QVERIFY(validator.validate(set, property));
    QCOMPARE(set.count(), 1);
    QVERIFY(set["a"].isValid());
}

void tst_DefaultValidators::handleOnAValidatorClassConverts()
{
    PropertySet set;
    QPointer<QObject> watched;
    {
        qvm::smart<DefaultIntValidator> const typed(new DefaultIntValidator(0, 10));
        watched = typed.get();
        QVERIFY(!watched->parent());
        IntProperty property("a", "", 11, typed);
        QCOMPARE(property.validator().get(), static_cast<PropertyValidator*>(typed.get()));
        QVERIFY(!property.validate(set));
    }
    QVERIFY(watched.isNull());
}

void tst_DefaultValidators::validatorSharedByProperties()
{
    ValidatorHandle const validator(new DefaultIntValidator(0, 10));
    PropertySet set;
    set.add(number("bad", 11, validator));
    set.add(number("good", 5, validator));
    set.add(number("low", -1, validator));
    set.validate();
    QVERIFY(!set["bad"].isValid());
    QVERIFY(set["good"].isValid());
    QVERIFY(set["good"].errorText().isNull());
    QVERIFY(!set["low"].isValid());
}

void tst_DefaultValidators::validatorOutlivesOneProperty()
{
    ValidatorHandle validator(new DefaultIntValidator(0, 10));
    PropertySet set;
    set.add(number("a", 5, validator));
    set.add(number("b", 11, validator));
    validator.reset();
    set.remove("a");
    set.validate();
    QCOMPARE(set["b"].errorText(), outOfRange);
}

QTEST_GUILESS_MAIN(tst_DefaultValidators)
#include "tst_DefaultValidators.moc"
