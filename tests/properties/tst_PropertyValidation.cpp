// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/properties/CommonProperties.h>
#include <GenericUtilities/properties/DefaultValidators.h>

#include <QTest>

#include <functional>
#include <stdexcept>

using namespace qvgen;

namespace {

using Handle = qvm::smart<BaseProperty>;
using ValidatorHandle = qvm::smart<PropertyValidator>;

QString const outOfRange = "Value out of range.";

/// A client's own rule, given as a function.
struct Rule : PropertyValidator {
    using Judge = std::function<bool(PropertySet&, BaseProperty&)>;
    explicit Rule(Judge judge)
        : m_judge(std::move(judge))
    {
    }
    bool validate(PropertySet& set, BaseProperty& property) override { return m_judge(set, property); }

private:
    Judge m_judge;
};

ValidatorHandle rule(Rule::Judge judge)
{
    return ValidatorHandle(new Rule(std::move(judge)));
}

Handle number(QString const& name, int value, ValidatorHandle const& validator)
{
    return Handle(new IntProperty(name, "", value, validator));
}

} // namespace

class tst_PropertyValidation : public QObject {
    Q_OBJECT

private slots:
    void setValidatesEveryProperty();
    void setValidatesInTheOrderOfNames();
    void setPassesItself();
    void resultIsTheValidatorsNotTheFlag();
    void clientsOwnMessage();
    void exceptionLeavesTheRestUnvalidated();
    void validatorMayAddProperties();
    void validatorMayRemoveItsProperty();
    void validatorMayClearTheSet();
    void validatorMaySetOtherValues();
    void validatorOfAnEmbeddedSet();
};

void tst_PropertyValidation::setValidatesEveryProperty()
{
    PropertySet set;
    set.add(number("checked", 11, ValidatorHandle(new DefaultIntValidator(0, 10))));
    set.add(Handle(new FloatProperty("float", "", 2.0f, ValidatorHandle(new DefaultFloatValidator(0.0f, 1.0f)))));
    set.add(number("unchecked", 11, {}));
    set.validate();
    QCOMPARE(set["checked"].errorText(), outOfRange);
    QCOMPARE(set["float"].errorText(), outOfRange);
    QVERIFY(set["unchecked"].isValid());
}

void tst_PropertyValidation::setValidatesInTheOrderOfNames()
{
    QStringList visited;
    ValidatorHandle const recorder = rule([&](PropertySet&, BaseProperty& property) {
        visited << property.name();
        return false;
    });
    PropertySet set;
    for (char const* const name : {"b", "C", "a"})
        set.add(number(name, 1, recorder));
    set.validate();
    QCOMPARE(visited, (QStringList{"C", "a", "b"}));
}

void tst_PropertyValidation::setPassesItself()
{
    PropertySet const* passed = nullptr;
    PropertySet set;
    set.add(number("a", 1, rule([&](PropertySet& given, BaseProperty&) {
        passed = &given;
        return true;
    })));
    set.validate();
    QCOMPARE(passed, &set);
    PropertySet other;
    QVERIFY(set["a"].validate(other));
    QCOMPARE(passed, &other);
}

void tst_PropertyValidation::resultIsTheValidatorsNotTheFlag()
{
    PropertySet set;
    Handle const refused = number("a", 1, rule([](PropertySet&, BaseProperty&) { return false; }));
    QVERIFY(!refused->validate(set));
    QVERIFY(refused->isValid());
    QVERIFY(refused->errorText().isNull());
}

void tst_PropertyValidation::clientsOwnMessage()
{
    PropertySet set;
    Handle const property = number("a", 3, rule([](PropertySet&, BaseProperty& judged) {
        bool const even = IntProperty::getValue(judged, 0) % 2 == 0;
        judged.setValidationResult(even, even ? QString() : "An even number is needed.");
        return even;
    }));
    QVERIFY(!property->validate(set));
    QVERIFY(!property->isValid());
    QCOMPARE(property->errorText(), QString("An even number is needed."));
    IntProperty::setValue(*property, 4);
    QVERIFY(property->validate(set));
    QVERIFY(property->isValid());
    QVERIFY(property->errorText().isNull());
}

void tst_PropertyValidation::exceptionLeavesTheRestUnvalidated()
{
    ValidatorHandle const small(new DefaultIntValidator(0, 10));
    PropertySet set;
    set.add(number("a", 11, small));
    set.add(number("b", 1, rule([](PropertySet&, BaseProperty&) -> bool { throw std::runtime_error("no verdict"); })));
    set.add(number("c", 11, small));
    QVERIFY_EXCEPTION_THROWN(set.validate(), std::runtime_error);
    QVERIFY(!set["a"].isValid());
    QVERIFY(set["b"].isValid());
    QVERIFY(set["c"].isValid());
}

void tst_PropertyValidation::validatorMayAddProperties()
{
    PropertySet set;
    set.add(number("a", 1, rule([](PropertySet& given, BaseProperty&) {
        for (int i = 0; i < 100; ++i)
            given.add(number(QString("new %1").arg(i), i, {}));
        return true;
    })));
    set.validate();
    QCOMPARE(set.count(), 101);
}

void tst_PropertyValidation::validatorMayRemoveItsProperty()
{
    QStringList visited;
    ValidatorHandle const remover = rule([&](PropertySet& given, BaseProperty& property) {
        given.remove(property.name());
        property.setValidationResult(false, "removed");
        visited << property.name();
        return false;
    });
    PropertySet set;
    set.add(number("a", 1, remover));
    set.add(number("b", 1, remover));
    set.validate();
    QCOMPARE(visited, (QStringList{"a", "b"}));
    QCOMPARE(set.count(), 0);
}

void tst_PropertyValidation::validatorMayClearTheSet()
{
    PropertySet set;
    set.add(number("a", 1, rule([](PropertySet& given, BaseProperty& property) {
        given.clear();
        property.setValidationResult(true, QString());
        return true;
    })));
    set.add(number("b", 11, ValidatorHandle(new DefaultIntValidator(0, 10))));
    set.validate();
    QCOMPARE(set.count(), 0);
}

void tst_PropertyValidation::validatorMaySetOtherValues()
{
    PropertySet set;
    set.add(number("a", 1, rule([](PropertySet& given, BaseProperty&) {
        IntProperty::setValue(given["b"], 11);
        return given.setVariantValues({{"c", 12}});
    })));
    set.add(number("b", 5, ValidatorHandle(new DefaultIntValidator(0, 10))));
    set.validate();
    QCOMPARE(set["b"].errorText(), outOfRange);
    QCOMPARE(set.allPropertyNames(), (QStringList{"a", "b", "c"}));
}

void tst_PropertyValidation::validatorOfAnEmbeddedSet()
{
    PropertySet inner;
    inner.add(number("i", 11, ValidatorHandle(new DefaultIntValidator(0, 10))));
    ValidatorHandle const descend = rule([](PropertySet&, BaseProperty& property) {
        PropertySetProperty::getValue(property, PropertySet()).validate();
        return true;
    });
    PropertySet set;
    set.add(Handle(new PropertySetProperty("s", "", inner, descend)));
    set.validate();
    QCOMPARE(inner["i"].errorText(), outOfRange);
}

QTEST_GUILESS_MAIN(tst_PropertyValidation)
#include "tst_PropertyValidation.moc"
