// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/properties/CommonProperties.h>

#include <QTest>

using namespace qvgen;

namespace {

using Handle = qvm::smart<BaseProperty>;

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

int valueOf(PropertySet const& set, QString const& name)
{
    return IntProperty::getValue(set[name], -1);
}

} // namespace

/// What copies of a set share, and how a set travels.
class tst_PropertySetSharing : public QObject {
    Q_OBJECT

signals:
    void sent(qvgen::PropertySet set);

public slots:
    void receive(qvgen::PropertySet set) { m_received << set; }

private slots:
    void cleanup();
    void iteratorsDetach();
    void copySharesProperties();
    void copyHasItsOwnNames();
    void selfAssignment();
    void assignmentReleasesTheOldProperties();
    void propertiesLiveAsLongAsAnySet();
    void setVariantValuesOnACopy();
    void metaTypeIsRegistered();
    void metaTypeConstructs();
    void travelsInAVariant();
    void travelsThroughAQueuedSignal();

private:
    QVector<qvgen::PropertySet> m_received;
};

void tst_PropertySetSharing::cleanup()
{
    QCOMPARE(CountedProperty::s_alive, 0);
}

void tst_PropertySetSharing::iteratorsDetach()
{
    PropertySet const original = setOf({number("a", 1)});
    PropertySet copy(original);
    copy.begin().value() = Handle(number("a", 2));
    QCOMPARE(valueOf(copy, "a"), 2);
    QCOMPARE(valueOf(original, "a"), 1);
}

void tst_PropertySetSharing::copySharesProperties()
{
    PropertySet const original = setOf({number("a", 1)});
    PropertySet copy(original);
    PropertySet assigned;
    assigned = original;
    IntProperty::setValue(copy["a"], 2);
    QCOMPARE(valueOf(original, "a"), 2);
    QVERIFY(assigned.setVariantValues({{"a", 3}}));
    QCOMPARE(valueOf(original, "a"), 3);
    QCOMPARE(&original["a"], &static_cast<PropertySet const&>(copy)["a"]);
}

void tst_PropertySetSharing::copyHasItsOwnNames()
{
    PropertySet const original = setOf({number("a", 1)});
    PropertySet copy(original);
    copy.remove("a");
    copy.add(Handle(number("b", 2)));
    QCOMPARE(original.allPropertyNames(), QStringList{"a"});
    QCOMPARE(copy.allPropertyNames(), QStringList{"b"});
    QCOMPARE(valueOf(original, "a"), 1);
}

void tst_PropertySetSharing::selfAssignment()
{
    PropertySet set = setOf({new CountedProperty("a", 1)});
    PropertySet const& same = set;
    set = same;
    QCOMPARE(set.count(), 1);
    QCOMPARE(valueOf(set, "a"), 1);
    QCOMPARE(CountedProperty::s_alive, 1);
}

void tst_PropertySetSharing::assignmentReleasesTheOldProperties()
{
    PropertySet set = setOf({new CountedProperty("a", 1)});
    set = setOf({number("b", 2)});
    QCOMPARE(CountedProperty::s_alive, 0);
    QCOMPARE(set.allPropertyNames(), QStringList{"b"});
}

void tst_PropertySetSharing::propertiesLiveAsLongAsAnySet()
{
    PropertySet survivor;
    {
        PropertySet const original = setOf({new CountedProperty("a", 1)});
        survivor = original;
    }
    QCOMPARE(valueOf(survivor, "a"), 1);
    QCOMPARE(CountedProperty::s_alive, 1);
}

void tst_PropertySetSharing::setVariantValuesOnACopy()
{
    PropertySet const original = setOf({number("a", 1)});
    PropertySet copy(original);
    QVERIFY(!copy.setVariantValues({{"a", 2}, {"unknown", 5}}));
    QCOMPARE(valueOf(original, "a"), 2);
    QVERIFY(!original.contains("unknown"));
}

void tst_PropertySetSharing::metaTypeIsRegistered()
{
    QVERIFY(PropertySet::MetaType >= QMetaType::User);
    QCOMPARE(QMetaType::type("qvgen::PropertySet"), PropertySet::MetaType);
    QCOMPARE(qMetaTypeId<PropertySet>(), PropertySet::MetaType);
    QCOMPARE(QByteArray(QMetaType::typeName(PropertySet::MetaType)), QByteArray("qvgen::PropertySet"));
}

void tst_PropertySetSharing::metaTypeConstructs()
{
    PropertySet const original = setOf({new CountedProperty("a", 1)});
    void* const copy = QMetaType::create(PropertySet::MetaType, &original);
    void* const blank = QMetaType::create(PropertySet::MetaType);
    QCOMPARE(valueOf(*static_cast<PropertySet*>(copy), "a"), 1);
    QCOMPARE(static_cast<PropertySet*>(blank)->count(), 0);
    QMetaType::destroy(PropertySet::MetaType, copy);
    QMetaType::destroy(PropertySet::MetaType, blank);
    QCOMPARE(CountedProperty::s_alive, 1);
}

void tst_PropertySetSharing::travelsInAVariant()
{
    PropertySet const set = setOf({number("a", 1)});
    QVariant const variant = QVariant::fromValue(set);
    QCOMPARE(variant.userType(), PropertySet::MetaType);
    PropertySet taken = variant.value<PropertySet>();
    QVERIFY(taken == set);
    IntProperty::setValue(taken["a"], 2);
    QCOMPARE(valueOf(set, "a"), 2);
    QCOMPARE(QVariant(5).value<PropertySet>().count(), 0);
}

void tst_PropertySetSharing::travelsThroughAQueuedSignal()
{
    // Connected by name, so that the name of the type has to be known.
    QVERIFY(
        connect(this, SIGNAL(sent(qvgen::PropertySet)), this, SLOT(receive(qvgen::PropertySet)), Qt::QueuedConnection));
    emit sent(setOf({new CountedProperty("a", 1)}));
    QVERIFY(m_received.isEmpty());
    QCoreApplication::processEvents();
    QCOMPARE(m_received.size(), 1);
    QCOMPARE(valueOf(m_received[0], "a"), 1);
    m_received.clear();
}

QTEST_GUILESS_MAIN(tst_PropertySetSharing)
#include "tst_PropertySetSharing.moc"
