// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/properties/CommonProperties.h>

#include <qvbase/Exceptions.h>

#include <QTest>

#include <functional>

using namespace qvgen;

namespace {

using Handle = qvm::smart<BaseProperty>;

/// The typed accessors of one class, with values in variants so that one table serves all.
struct Accessors {
    QString typeNamedByGet;
    QString typeNamedBySet;
    QVariant fallback;
    QVariant written;
    std::function<QVariant(BaseProperty const&)> get;
    std::function<void(BaseProperty&)> set;
};

struct Sample {
    QString type;
    QVariant value;
    std::function<BaseProperty*()> make;
};

template <class Value> QVariant boxed(Value const& value)
{
    return QVariant::fromValue(value);
}

QVariant boxed(PropertySet const& set)
{
    return set.variantValues();
}

template <class Property, class Value>
Accessors accessors(QString const& type, Value fallback, Value written, QString const& typeNamedBySet)
{
    return {type, typeNamedBySet, boxed(fallback), boxed(written),
        [=](BaseProperty const& property) { return boxed(Property::getValue(property, fallback)); },
        [=](BaseProperty& property) { Property::setValue(property, written); }};
}

template <class Property, class Value> Accessors accessors(QString const& type, Value fallback, Value written)
{
    return accessors<Property>(type, fallback, written, type);
}

PropertySet setOf(QString const& name, int value)
{
    PropertySet set;
    set.add(Handle(new IntProperty(name, "", value)));
    return set;
}

// clang-format off
QVector<Accessors> allAccessors()
{
    return {
        accessors<IntProperty>("IntProperty", 7, -8),
        accessors<UIntProperty>("UIntProperty", 7u, 4294967295u),
        accessors<U64Property>("U64Property", 7ull, 18446744073709551615ull),
        accessors<StringProperty>("StringProperty", QString("fallback"), QString("written")),
        accessors<StringListProperty>("StringListProperty", QStringList{"fallback"}, QStringList{"w", ""}, "StringProperty"),
        accessors<FloatProperty>("FloatProperty", 7.5f, 0.1f),
        accessors<DoubleProperty>("DoubleProperty", 7.5, 0.1),
        accessors<BoolProperty>("BoolProperty", true, true),
        accessors<RectProperty>("RectProperty", QRect(7, 7, 7, 7), QRect(8, 8, 8, 8)),
        accessors<VariantProperty>("VariantProperty", QVariant(7), QVariant("written")),
        accessors<TimeProperty>("TimeProperty", QTime(7, 7), QTime(8, 8)),
        accessors<DateTimeProperty>("DateTimeProperty", QDateTime(QDate(2007, 7, 7), QTime(7, 7), Qt::UTC),
                                    QDateTime(QDate(2008, 8, 8), QTime(8, 8), Qt::UTC)),
        accessors<PropertySetProperty>("PropertySetProperty", setOf("fallback", 7), setOf("written", 8)),
    };
}

/// One property of every class, each named "a".
QVector<Sample> allSamples()
{
    QDateTime const moment(QDate(2020, 2, 29), QTime(3, 4, 5, 6), Qt::UTC);
    return {
        {"IntProperty", 1, [] { return new IntProperty("a", "", 1); }},
        {"UIntProperty", 2u, [] { return new UIntProperty("a", "", 2); }},
        {"U64Property", 3ull, [] { return new U64Property("a", "", 3); }},
        {"StringProperty", "text", [] { return new StringProperty("a", "", "text"); }},
        {"StringListProperty", QStringList{"x", "y"}, [] { return new StringListProperty("a", "", {"x", "y"}); }},
        {"FloatProperty", 1.5f, [] { return new FloatProperty("a", "", 1.5f); }},
        {"DoubleProperty", 2.5, [] { return new DoubleProperty("a", "", 2.5); }},
        {"BoolProperty", false, [] { return new BoolProperty("a", "", false); }},
        {"RectProperty", QRect(1, 2, 3, 4), [] { return new RectProperty("a", "", QRect(1, 2, 3, 4)); }},
        {"VariantProperty", QVariant("any"), [] { return new VariantProperty("a", "", "any"); }},
        {"DateProperty", moment.date(), [=] { return new DateProperty("a", "", moment.date()); }},
        {"TimeProperty", moment.time(), [=] { return new TimeProperty("a", "", moment.time()); }},
        {"DateTimeProperty", moment, [=] { return new DateTimeProperty("a", "", moment); }},
        {"PropertySetProperty", QVariantMap{{"inner", 5}},
            [] { return new PropertySetProperty("a", "", setOf("inner", 5)); }},
    };
}
// clang-format on

/// Name, actual type, expected type and message of the exception; "a cause" besides where it has one. Empty where
/// nothing was thrown.
QStringList textsThrownBy(std::function<void()> const& call)
{
    try {
        call();
    } catch (qv::UnexpectedTypeException const& error) {
        QStringList texts{error.name(), error.actualType(), error.expectedType(), error.message()};
        if (error.cause())
            texts << "a cause";
        return texts;
    }
    return {};
}

QString const wrongType = "Property has the wrong type.";

void accessorRows()
{
    QTest::addColumn<Accessors>("accessors");
    for (Accessors const& accessors : allAccessors())
        QTest::newRow(qPrintable(accessors.typeNamedByGet)) << accessors;
}

void ownClassRows()
{
    QTest::addColumn<Accessors>("accessors");
    QTest::addColumn<Sample>("sample");
    for (Accessors const& accessors : allAccessors()) {
        for (Sample const& sample : allSamples()) {
            if (accessors.typeNamedByGet == sample.type)
                QTest::newRow(qPrintable(sample.type)) << accessors << sample;
        }
    }
}

void otherClassRows()
{
    QTest::addColumn<Accessors>("accessors");
    QTest::addColumn<Sample>("sample");
    for (Accessors const& accessors : allAccessors()) {
        for (Sample const& sample : allSamples()) {
            if (accessors.typeNamedByGet != sample.type)
                QTest::addRow("%s on a %s", qPrintable(accessors.typeNamedByGet), qPrintable(sample.type))
                    << accessors << sample;
        }
    }
}

} // namespace

Q_DECLARE_METATYPE(Accessors)
Q_DECLARE_METATYPE(Sample)

class tst_PropertyAccessors : public QObject {
    Q_OBJECT

private slots:
    void tablesAreComplete();
    void getValueOfItsClass_data() { ownClassRows(); }
    void getValueOfItsClass();
    void getValueOfIllegalProperty_data() { accessorRows(); }
    void getValueOfIllegalProperty();
    void getValueOfAnotherClass_data() { otherClassRows(); }
    void getValueOfAnotherClass();
    void setValueOfItsClass_data() { ownClassRows(); }
    void setValueOfItsClass();
    void setValueOfIllegalProperty_data() { accessorRows(); }
    void setValueOfIllegalProperty();
    void setValueOfAnotherClass_data() { otherClassRows(); }
    void setValueOfAnotherClass();
    void derivedClassCountsAsItsBase();
    void nameInTheExceptionIsTheProperties_data();
    void nameInTheExceptionIsTheProperties();
    void embeddedSetIsSharedOnReading();
};

void tst_PropertyAccessors::tablesAreComplete()
{
    QCOMPARE(allSamples().size(), 14);
    QCOMPARE(allAccessors().size(), 13);
}

void tst_PropertyAccessors::getValueOfItsClass()
{
    QFETCH(Accessors, accessors);
    QFETCH(Sample, sample);
    QCOMPARE(accessors.get(*Handle(sample.make())), sample.value);
}

void tst_PropertyAccessors::getValueOfIllegalProperty()
{
    QFETCH(Accessors, accessors);
    QCOMPARE(accessors.get(IllegalProperty::ms_illegalProperty), accessors.fallback);
}

void tst_PropertyAccessors::getValueOfAnotherClass()
{
    QFETCH(Accessors, accessors);
    QFETCH(Sample, sample);
    Handle const property(sample.make());
    QCOMPARE(textsThrownBy([&] { accessors.get(*property); }),
        (QStringList{"a", sample.type, accessors.typeNamedByGet, wrongType}));
}

void tst_PropertyAccessors::setValueOfItsClass()
{
    QFETCH(Accessors, accessors);
    QFETCH(Sample, sample);
    Handle const property(sample.make());
    accessors.set(*property);
    QCOMPARE(accessors.get(*property), accessors.written);
    QCOMPARE(property->variantValue(), accessors.written);
}

void tst_PropertyAccessors::setValueOfIllegalProperty()
{
    QFETCH(Accessors, accessors);
    QCOMPARE(textsThrownBy([&] { accessors.set(IllegalProperty::ms_illegalProperty); }),
        (QStringList{"", "IllegalProperty", accessors.typeNamedBySet, wrongType}));
}

void tst_PropertyAccessors::setValueOfAnotherClass()
{
    QFETCH(Accessors, accessors);
    QFETCH(Sample, sample);
    Handle const property(sample.make());
    QCOMPARE(textsThrownBy([&] { accessors.set(*property); }),
        (QStringList{"a", sample.type, accessors.typeNamedBySet, wrongType}));
    QCOMPARE(property->variantValue(), sample.value);
}

void tst_PropertyAccessors::derivedClassCountsAsItsBase()
{
    struct Channel : IntProperty {
        using IntProperty::IntProperty;
    };
    Channel channel("channel", "", 4);
    QCOMPARE(IntProperty::getValue(channel, 7), 4);
    IntProperty::setValue(channel, 5);
    QCOMPARE(channel.value(), 5);
}

void tst_PropertyAccessors::nameInTheExceptionIsTheProperties_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << "";
    QTest::newRow("blank") << " ";
    QTest::newRow("placeholder mark") << "%1";
    QTest::newRow("not ASCII") << QString(QChar(0x4e2d));
    QTest::newRow("long") << QString(100000, 'n');
}

void tst_PropertyAccessors::nameInTheExceptionIsTheProperties()
{
    QFETCH(QString, name);
    StringProperty property(name, "", "text");
    QCOMPARE(textsThrownBy([&] { IntProperty::getValue(property, 0); }),
        (QStringList{name, "StringProperty", "IntProperty", wrongType}));
}

void tst_PropertyAccessors::embeddedSetIsSharedOnReading()
{
    PropertySetProperty property("a", "", setOf("inner", 5));
    PropertySet read = PropertySetProperty::getValue(property, PropertySet());
    IntProperty::setValue(read["inner"], 6);
    QCOMPARE(property.variantValue(), QVariant(QVariantMap{{"inner", 6}}));
    read.clear();
    QCOMPARE(property.value().count(), 1);
}

QTEST_GUILESS_MAIN(tst_PropertyAccessors)
#include "tst_PropertyAccessors.moc"
