// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/properties/CommonProperties.h>

#include <qvbase/Exceptions.h>

#include <QTest>

#include <limits>

using namespace qvgen;

namespace {

using Handle = qvm::smart<BaseProperty>;
using Values = QMap<QString, QVariant>;

struct CountedProperty : IntProperty {
    CountedProperty(QString const& name, int value)
        : IntProperty(name, "", value)
    {
        ++s_alive;
    }
    ~CountedProperty() override { --s_alive; }
    inline static int s_alive = 0;
};

PropertySet setOf(std::initializer_list<BaseProperty*> properties)
{
    PropertySet set;
    for (BaseProperty* const property : properties)
        set.add(Handle(property));
    return set;
}

IntProperty* number(QString const& name, int value)
{
    return new IntProperty(name, "", value);
}

VariantProperty* anything(QString const& name, QVariant const& value)
{
    return new VariantProperty(name, "", value);
}

/// A set with the number "a" and an empty handle under "unknown".
PropertySet setWithEmptyHandle()
{
    PropertySet set = setOf({number("a", 1)});
    set.setVariantValues({{"unknown", 5}});
    return set;
}

int valueOf(PropertySet const& set, QString const& name)
{
    return IntProperty::getValue(set[name], -1);
}

} // namespace

class tst_PropertySet : public QObject {
    Q_OBJECT

private slots:
    void cleanup();
    void startsEmpty();
    void add();
    void addReplacesTheSameName();
    void addOfAnEmptyHandle();
    void addOfAnotherTypeReplaces();
    void remove();
    void clear();
    void namesAreAscending_data();
    void namesAreAscending();
    void lookup();
    void lookupOfMissingName_data();
    void lookupOfMissingName();
    void find();
    void iterationFollowsTheNames();
    void variantValues();
    void setVariantValues_data();
    void setVariantValues();
    void setVariantValuesEntersUnknownNames();
    void equality_data();
    void equality();
    void comparesToItself_data();
    void comparesToItself();
    void emptyHandleActsAsIllegalProperty();
    void emptyHandleEqualsNothing();
    void emptyHandleIsRepairedByAddOrRemove();
    void emptyHandleInAnEmbeddedSet();
    void thousandsOfProperties();
};

void tst_PropertySet::cleanup()
{
    QCOMPARE(CountedProperty::s_alive, 0);
}

void tst_PropertySet::startsEmpty()
{
    PropertySet const set;
    QCOMPARE(set.count(), 0);
    QVERIFY(!set.contains(""));
    QVERIFY(set.allPropertyNames().isEmpty());
    QVERIFY(set.variantValues().isEmpty());
    QVERIFY(set.begin() == set.end());
}

void tst_PropertySet::add()
{
    PropertySet set;
    set.add(Handle(number("a", 1)));
    set.add(Handle(number("", 2)));
    QCOMPARE(set.count(), 2);
    QVERIFY(set.contains("a"));
    QVERIFY(set.contains(""));
    QVERIFY(!set.contains("A"));
    QCOMPARE(valueOf(set, ""), 2);
}

void tst_PropertySet::addReplacesTheSameName()
{
    PropertySet set = setOf({new CountedProperty("a", 1)});
    set.add(Handle(new CountedProperty("a", 2)));
    QCOMPARE(set.count(), 1);
    QCOMPARE(valueOf(set, "a"), 2);
    QCOMPARE(CountedProperty::s_alive, 1);
}

void tst_PropertySet::addOfAnEmptyHandle()
{
    PropertySet set = setOf({number("a", 1)});
    set.add(Handle());
    QCOMPARE(set.allPropertyNames(), QStringList{"a"});
}

void tst_PropertySet::addOfAnotherTypeReplaces()
{
    PropertySet const set = setOf({number("a", 1), new StringProperty("a", "", "text")});
    QCOMPARE(set.count(), 1);
    QCOMPARE(set["a"].type(), QString("StringProperty"));
}

void tst_PropertySet::remove()
{
    PropertySet set = setOf({new CountedProperty("a", 1), number("b", 2)});
    set.remove("absent");
    QCOMPARE(set.count(), 2);
    set.remove("a");
    QCOMPARE(set.allPropertyNames(), QStringList{"b"});
    QCOMPARE(CountedProperty::s_alive, 0);
}

void tst_PropertySet::clear()
{
    PropertySet set = setOf({new CountedProperty("a", 1), new CountedProperty("b", 2)});
    set.clear();
    QCOMPARE(set.count(), 0);
    QCOMPARE(CountedProperty::s_alive, 0);
    set.clear();
    QVERIFY(set == PropertySet());
}

void tst_PropertySet::namesAreAscending_data()
{
    QTest::addColumn<QStringList>("added");
    QTest::addColumn<QStringList>("names");
    QString const eAcute(QChar(0xe9));
    QString const beyondFirstPlane = QString::fromUcs4(U"\x1f4f7", 1);
    QString const privateUse(QChar(0xe000));
    QTest::newRow("none") << QStringList() << QStringList();
    QTest::newRow("added backwards") << QStringList{"c", "b", "a"} << QStringList{"a", "b", "c"};
    QTest::newRow("capitals before small letters")
        << QStringList{"a", "B", "b", "A"} << QStringList{"A", "B", "a", "b"};
    QTest::newRow("digits by code, not by number") << QStringList{"a10", "a9"} << QStringList{"a10", "a9"};
    QTest::newRow("prefix first") << QStringList{"ab", "a", ""} << QStringList{"", "a", "ab"};
    QTest::newRow("accents after ASCII") << QStringList{eAcute, "z"} << QStringList{"z", eAcute};
    QTest::newRow("surrogates by code unit")
        << QStringList{privateUse, beyondFirstPlane} << QStringList{beyondFirstPlane, privateUse};
}

void tst_PropertySet::namesAreAscending()
{
    QFETCH(QStringList, added);
    PropertySet set;
    for (QString const& name : added)
        set.add(Handle(number(name, 1)));
    QTEST(set.allPropertyNames(), "names");
}

void tst_PropertySet::lookup()
{
    PropertySet set = setOf({number("a", 1), number("b", 2)});
    IntProperty::setValue(set["a"], 3);
    PropertySet const& readOnly = set;
    QCOMPARE(IntProperty::getValue(readOnly["a"], -1), 3);
    QCOMPARE(&readOnly["b"], &static_cast<BaseProperty const&>(set["b"]));
}

void tst_PropertySet::lookupOfMissingName_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("other name") << "c";
    QTest::newRow("other case") << "A";
    QTest::newRow("trailing blank") << "a ";
    QTest::newRow("empty") << "";
    QTest::newRow("null") << QString();
    QTest::newRow("long") << QString(100000, 'a');
}

void tst_PropertySet::lookupOfMissingName()
{
    QFETCH(QString, name);
    PropertySet set = setOf({number("a", 1)});
    PropertySet const& readOnly = set;
    QCOMPARE(&set[name], &IllegalProperty::ms_illegalProperty);
    QCOMPARE(&readOnly[name], &static_cast<BaseProperty const&>(IllegalProperty::ms_illegalProperty));
    QCOMPARE(IntProperty::getValue(readOnly[name], 7), 7);
    QVERIFY_EXCEPTION_THROWN(IntProperty::setValue(set[name], 7), qv::UnexpectedTypeException);
    QCOMPARE(set.count(), 1);
    QVERIFY(!set.contains(name));
}

void tst_PropertySet::find()
{
    PropertySet const set = setOf({number("a", 1), number("", 2)});
    QCOMPARE(set.find("a"), &set["a"]);
    QCOMPARE(set.find(""), &set[""]);
    QVERIFY(!set.find("b"));
    QVERIFY(!PropertySet().find(""));
    QVERIFY(!setOf({number("a", 1)}).find(""));
}

void tst_PropertySet::iterationFollowsTheNames()
{
    PropertySet set = setOf({number("b", 2), number("a", 1), number("c", 3)});
    QStringList names;
    for (PropertySet::iterator entry = set.begin(); entry != set.end(); ++entry)
        names << entry.key() + QString::number(IntProperty::getValue(*entry.value(), -1));
    QCOMPARE(names, (QStringList{"a1", "b2", "c3"}));
    PropertySet const& readOnly = set;
    names.clear();
    for (PropertySet::const_iterator entry = readOnly.begin(); entry != readOnly.end(); ++entry)
        names << entry.key();
    QCOMPARE(names, (QStringList{"a", "b", "c"}));
}

void tst_PropertySet::variantValues()
{
    QRect const area(1, 2, 3, 4);
    PropertySet const embedded = setOf({number("i", 5)});
    PropertySet const set = setOf({number("a", 1), new RectProperty("r", "", area), anything("none", QVariant()),
        new PropertySetProperty("set", "", embedded)});
    Values const values = set.variantValues();
    QCOMPARE(values.keys(), (QStringList{"a", "none", "r", "set"}));
    QCOMPARE(values["a"], QVariant(1));
    QVERIFY(!values["none"].isValid());
    QCOMPARE(values["r"], QVariant(area));
    QCOMPARE(values["set"], QVariant(QVariantMap{{"i", 5}}));
}

void tst_PropertySet::setVariantValues_data()
{
    QTest::addColumn<Values>("given");
    QTest::addColumn<bool>("taken");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<int>("b");
    QRect const refused(1, 2, 3, 4);
    QStringList const both{"b", "d"};
    QTest::newRow("nothing") << Values() << true << both << 1;
    QTest::newRow("one") << Values{{"b", 5}} << true << both << 5;
    QTest::newRow("text of a number") << Values{{"b", "5"}, {"d", "6"}} << true << both << 5;
    QTest::newRow("unknown name in front") << Values{{"a", 0}, {"b", 5}} << false << QStringList{"a", "b", "d"} << 5;
    QTest::newRow("unknown name between")
        << Values{{"b", 5}, {"c", 0}, {"d", 6}} << false << QStringList{"b", "c", "d"} << 5;
    QTest::newRow("other case is unknown") << Values{{"B", 5}} << false << QStringList{"B", "b", "d"} << 1;
    QTest::newRow("empty name is unknown") << Values{{"", 5}} << false << QStringList{"", "b", "d"} << 1;
    QTest::newRow("refused value") << Values{{"b", refused}} << false << both << 1;
    QTest::newRow("a later value does not mend the result")
        << Values{{"a", 0}, {"d", 6}} << false << QStringList{"a", "b", "d"} << 1;
    QTest::newRow("invalid value") << Values{{"b", QVariant()}} << false << both << 1;
}

void tst_PropertySet::setVariantValues()
{
    QFETCH(Values, given);
    PropertySet set = setOf({number("b", 1), number("d", 2)});
    QTEST(set.setVariantValues(given), "taken");
    QTEST(set.allPropertyNames(), "names");
    QTEST(valueOf(set, "b"), "b");
    QCOMPARE(valueOf(set, "d"), given.contains("d") ? 6 : 2);
}

void tst_PropertySet::setVariantValuesEntersUnknownNames()
{
    PropertySet set = setOf({number("a", 1)});
    QVERIFY(!set.setVariantValues({{"unknown", 5}}));
    QCOMPARE(set.count(), 2);
    QVERIFY(set.contains("unknown"));
    PropertySet const& readOnly = set;
    QVERIFY((++readOnly.begin()).value().null());
    QVERIFY(!set.setVariantValues({{"unknown", 5}}));
    QCOMPARE(set.count(), 2);
}

void tst_PropertySet::equality_data()
{
    QTest::addColumn<PropertySet>("left");
    QTest::addColumn<PropertySet>("right");
    QTest::addColumn<bool>("equal");
    auto const one = [] { return setOf({number("a", 1)}); };
    QTest::newRow("both empty") << PropertySet() << PropertySet() << true;
    QTest::newRow("one empty") << one() << PropertySet() << false;
    QTest::newRow("same names and values") << one() << one() << true;
    QTest::newRow("one value differs") << setOf({number("a", 1), number("b", 2)})
                                       << setOf({number("a", 1), number("b", 3)}) << false;
    QTest::newRow("names differ in case") << one() << setOf({number("A", 1)}) << false;
    QTest::newRow("names differ") << one() << setOf({number("b", 1)}) << false;
    QTest::newRow("one name more") << one() << setOf({number("a", 1), number("b", 2)}) << false;
    QTest::newRow("order of adding") << setOf({number("a", 1), number("b", 2)})
                                     << setOf({number("b", 2), number("a", 1)}) << true;
    QTest::newRow("descriptions do not matter") << one() << setOf({new IntProperty("a", "described", 1)}) << true;
    QTest::newRow("int and double of one value") << one() << setOf({new DoubleProperty("a", "", 1.0)}) << true;
    QTest::newRow("int and double of two values") << one() << setOf({new DoubleProperty("a", "", 1.5)}) << false;
    QTest::newRow("int and its text") << one() << setOf({new StringProperty("a", "", "1")}) << true;
    QTest::newRow("text case matters") << setOf({new StringProperty("a", "", "x")})
                                       << setOf({new StringProperty("a", "", "X")}) << false;
    QTest::newRow("invalid and valid") << setOf({anything("a", QVariant())}) << one() << false;
    QTest::newRow("both invalid") << setOf({anything("a", QVariant())}) << setOf({anything("a", QVariant())}) << false;
    QTest::newRow("equal embedded sets") << setOf({new PropertySetProperty("s", "", one())})
                                         << setOf({new PropertySetProperty("s", "", one())}) << true;
    QTest::newRow("different embedded sets") << setOf({new PropertySetProperty("s", "", one())})
                                             << setOf({new PropertySetProperty("s", "", PropertySet())}) << false;
}

void tst_PropertySet::equality()
{
    QFETCH(PropertySet, left);
    QFETCH(PropertySet, right);
    QFETCH(bool, equal);
    QCOMPARE(left == right, equal);
    QCOMPARE(right == left, equal);
    QCOMPARE(left != right, !equal);
    QCOMPARE(right != left, !equal);
}

void tst_PropertySet::comparesToItself_data()
{
    QTest::addColumn<PropertySet>("set");
    QTest::addColumn<bool>("equal");
    QTest::newRow("empty") << PropertySet() << true;
    QTest::newRow("number") << setOf({number("a", 1)}) << true;
    QTest::newRow("null text") << setOf({new StringProperty("a", "", QString())}) << true;
    QTest::newRow("null date") << setOf({new DateProperty("a", "", QDate())}) << true;
    QTest::newRow("null variant of a type") << setOf({anything("a", QVariant(QVariant::Int))}) << true;
    QTest::newRow("invalid variant") << setOf({anything("a", QVariant())}) << false;
    QTest::newRow("invalid variant behind a valid one") << setOf({number("a", 1), anything("b", QVariant())}) << false;
    QTest::newRow("not a number") << setOf({new DoubleProperty("a", "", std::numeric_limits<double>::quiet_NaN())})
                                  << false;
    QTest::newRow("empty handle") << setWithEmptyHandle() << false;
}

void tst_PropertySet::comparesToItself()
{
    QFETCH(PropertySet, set);
    QFETCH(bool, equal);
    PropertySet const& same = set;
    QCOMPARE(set == same, equal);
    QCOMPARE(set != same, !equal);
    QCOMPARE(set == PropertySet(set), equal);
}

void tst_PropertySet::emptyHandleActsAsIllegalProperty()
{
    PropertySet set = setWithEmptyHandle();
    PropertySet const& readOnly = set;
    QCOMPARE(&set["unknown"], &IllegalProperty::ms_illegalProperty);
    QCOMPARE(&readOnly["unknown"], &static_cast<BaseProperty const&>(IllegalProperty::ms_illegalProperty));
    QCOMPARE(readOnly.find("unknown"), &static_cast<BaseProperty const&>(IllegalProperty::ms_illegalProperty));
    QCOMPARE(readOnly.variantValues().keys(), (QStringList{"a", "unknown"}));
    QVERIFY(!readOnly.variantValues()["unknown"].isValid());
    set.validate();
    QVERIFY(!set["unknown"].isValid());
}

void tst_PropertySet::emptyHandleEqualsNothing()
{
    PropertySet const set = setWithEmptyHandle();
    QVERIFY(set != setWithEmptyHandle());
    QVERIFY(set != setOf({number("a", 1), number("unknown", 5)}));
    QVERIFY(setOf({number("a", 1), number("unknown", 5)}) != set);
}

void tst_PropertySet::emptyHandleIsRepairedByAddOrRemove()
{
    PropertySet removed = setWithEmptyHandle();
    removed.remove("unknown");
    QVERIFY(removed == setOf({number("a", 1)}));
    PropertySet added = setWithEmptyHandle();
    added.add(Handle(number("unknown", 5)));
    QVERIFY(added == setOf({number("a", 1), number("unknown", 5)}));
    QVERIFY(added.setVariantValues({{"unknown", 6}}));
}

void tst_PropertySet::emptyHandleInAnEmbeddedSet()
{
    PropertySetProperty property("s", "", setWithEmptyHandle());
    QVERIFY(!property.setVariantValue(QVariantMap{{"unknown", 5}}));
    QVERIFY(property.setVariantValue(QVariantMap{{"a", 5}}));
    QVERIFY(!property.variantValue().toMap()["unknown"].isValid());
}

void tst_PropertySet::thousandsOfProperties()
{
    PropertySet set;
    for (int i = 0; i < 20000; ++i)
        set.add(Handle(new CountedProperty(QString::number(i % 10000), i)));
    QCOMPARE(set.count(), 10000);
    QCOMPARE(CountedProperty::s_alive, 10000);
    QCOMPARE(valueOf(set, "9999"), 19999);
    QVERIFY(set.setVariantValues(set.variantValues()));
    QVERIFY(set == PropertySet(set));
}

QTEST_GUILESS_MAIN(tst_PropertySet)
#include "tst_PropertySet.moc"
