// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/Log.h>

#include "MatrixScene.h"

#include <QTest>

#include <limits>
#include <memory>
#include <type_traits>

using qv::Feature;
using qv::FeatureGroup;
using qv::FeatureMatrix;
using qv::UserGroup;

static_assert(std::has_virtual_destructor_v<FeatureGroup>);
static_assert(std::has_virtual_destructor_v<FeatureMatrix>);
static_assert(!std::is_copy_constructible_v<FeatureMatrix>);

namespace {

/// Counts how often it was deleted.
template <class Base> class Counted : public Base {
public:
    Counted(int id, int* deleted)
        : Base(id)
        , m_deleted(deleted)
    {
    }
    Counted(Counted const&) = delete;
    Counted& operator=(Counted const&) = delete;
    ~Counted() override { ++*m_deleted; }

private:
    int* m_deleted;
};

/// Says in its end which features it has.
class Farewell : public FeatureGroup {
public:
    Farewell(int id, QStringList* said)
        : FeatureGroup(id)
        , m_said(said)
    {
    }
    Farewell(Farewell const&) = delete;
    Farewell& operator=(Farewell const&) = delete;
    ~Farewell() override
    {
        for (Feature const* const feature : features())
            m_said->append(QString("%1 %2").arg(id()).arg(feature->name()));
    }

private:
    QStringList* m_said;
};

constexpr int live = 10;
constexpr int play = 20;
constexpr int exportVideo = 30;
constexpr int unknown = 99;

/// Viewing (0): live, play. Evidence (1): play, export. Three user groups: guards, auditors, guests.
std::unique_ptr<FeatureMatrix> makeRights()
{
    auto rights = std::make_unique<FeatureMatrix>(2, 3);
    rights->addFeatureGroup(new FeatureGroup(0, "viewing", "look at cameras"));
    rights->addFeatureGroup(new FeatureGroup(1, "evidence"));
    for (int id = 0; id < 3; ++id)
        rights->addUserGroup(new UserGroup(id));
    auto* const shared = new Feature(play, "play");
    rights->addFeatureToGroup(new Feature(live, "live"), 0);
    rights->addFeatureToGroup(shared, 0);
    rights->addFeatureToGroup(shared, 1);
    rights->addFeatureToGroup(new Feature(exportVideo, "export"), 1);
    rights->setAllowed(1, 0, false); // guards: viewing alone
    rights->setAllowed(0, 1, false); // auditors: evidence alone
    rights->setAllowed(0, 2, false); // guests: nothing
    rights->setAllowed(1, 2, false);
    return rights;
}

QString text(QList<FeatureMatrix::Reason> const& reasons)
{
    QStringList parts;
    for (auto const& reason : reasons)
        parts += reason.group->name() + (reason.isAllowed ? " yes" : " no");
    return parts.join(", ");
}

QString text(QList<FeatureMatrix::Change> const& changes)
{
    QStringList parts;
    for (auto const& change : changes)
        parts += QString("%1,%2 %3>%4").arg(change.row).arg(change.column).arg(change.before).arg(change.after);
    return parts.join(' ');
}

} // namespace

class tst_FeatureMatrix : public QObject {
    Q_OBJECT

private slots:
    void newMatrixAllowsAll();
    void changesAreNoticed();
    void absentCellIsNotAllowed_data();
    void absentCellIsNotAllowed();
    void countsBelowZeroAreNone();
    void featureIsAllowedByAnyGroup_data();
    void featureIsAllowedByAnyGroup();
    void reasonsExplainTheRight_data();
    void reasonsExplainTheRight();
    void effectiveFeatures_data();
    void effectiveFeatures();
    void differenceListsChangedCells();
    void differenceOfOtherSizes();
    void groupsKeepWhatTheyAreGiven();
    void fixedCellsAreRemembered();
    void missingGroupIsEnteredEmpty();
    void nullIsIgnored();
    void everythingOwnedIsDeletedOnce();
    void featuresOutliveTheirGroups();
    void replacedIsNotDeleted();
    void groupAloneDeletesItsFeatures();
};

void tst_FeatureMatrix::newMatrixAllowsAll()
{
    FeatureMatrix const matrix(2, 3);
    for (int row = 0; row < 2; ++row) {
        for (int column = 0; column < 3; ++column)
            QVERIFY(matrix.isAllowed(row, column));
    }
    QVERIFY(!matrix.isModified());
    QVERIFY(matrix.featureGroups().isEmpty());
    QVERIFY(matrix.userGroups().isEmpty());
}

void tst_FeatureMatrix::changesAreNoticed()
{
    FeatureMatrix matrix(2, 3);
    matrix.setAllowed(0, 1, true);
    QVERIFY(!matrix.isModified());
    matrix.setAllowed(0, 1, false);
    QVERIFY(matrix.isModified());
    QVERIFY(!matrix.isAllowed(0, 1));
    QVERIFY(matrix.isAllowed(1, 0));
    matrix.setAllowed(0, 1, true);
    QVERIFY(matrix.isModified());
}

void tst_FeatureMatrix::absentCellIsNotAllowed_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("column");

    QTest::newRow("row behind the last") << 2 << 0;
    QTest::newRow("column behind the last") << 0 << 3;
    QTest::newRow("row before the first") << -1 << 0;
    QTest::newRow("column before the first") << 0 << -1;
    QTest::newRow("highest") << std::numeric_limits<int>::max() << std::numeric_limits<int>::max();
    QTest::newRow("lowest") << std::numeric_limits<int>::min() << std::numeric_limits<int>::min();
}

void tst_FeatureMatrix::absentCellIsNotAllowed()
{
    QFETCH(int, row);
    QFETCH(int, column);
    FeatureMatrix matrix(2, 3);
    matrix.setAllowed(row, column, true);
    QVERIFY(!matrix.isAllowed(row, column));
    QVERIFY(!matrix.isModified());
}

void tst_FeatureMatrix::countsBelowZeroAreNone()
{
    QVERIFY(!FeatureMatrix(-1, 3).isAllowed(0, 0));
    QVERIFY(!FeatureMatrix(3, -1).isAllowed(0, 0));
}

void tst_FeatureMatrix::featureIsAllowedByAnyGroup_data()
{
    QTest::addColumn<int>("feature");
    QTest::addColumn<int>("userGroup");
    QTest::addColumn<bool>("isAllowed");

    QTest::newRow("its only group is allowed") << live << 0 << true;
    QTest::newRow("its only group is not") << live << 1 << false;
    QTest::newRow("the first of two groups is allowed") << play << 0 << true;
    QTest::newRow("the second of two groups is allowed") << play << 1 << true;
    QTest::newRow("none of two groups is allowed") << play << 2 << false;
    QTest::newRow("no group holds it") << unknown << 0 << false;
    QTest::newRow("user group that is not there") << play << 3 << false;
}

void tst_FeatureMatrix::featureIsAllowedByAnyGroup()
{
    QFETCH(int, feature);
    QFETCH(int, userGroup);
    QTEST(makeRights()->isFeatureAllowed(feature, userGroup), "isAllowed");
}

void tst_FeatureMatrix::reasonsExplainTheRight_data()
{
    QTest::addColumn<int>("feature");
    QTest::addColumn<int>("userGroup");
    QTest::addColumn<QString>("reasons");

    QTest::newRow("one group, allowed") << live << 0 << "viewing yes";
    QTest::newRow("one group, not allowed") << exportVideo << 0 << "evidence no";
    QTest::newRow("two groups, by their ids") << play << 1 << "viewing no, evidence yes";
    QTest::newRow("two groups, none allowed") << play << 2 << "viewing no, evidence no";
    QTest::newRow("no group") << unknown << 0 << "";
    QTest::newRow("user group that is not there") << play << 7 << "viewing no, evidence no";
}

void tst_FeatureMatrix::reasonsExplainTheRight()
{
    QFETCH(int, feature);
    QFETCH(int, userGroup);
    auto const rights = makeRights();
    QTEST(text(rights->explain(feature, userGroup)), "reasons");
}

void tst_FeatureMatrix::effectiveFeatures_data()
{
    QTest::addColumn<int>("userGroup");
    QTest::addColumn<QList<int>>("features");

    QTest::newRow("guards") << 0 << QList<int>{live, play};
    QTest::newRow("auditors") << 1 << QList<int>{play, exportVideo};
    QTest::newRow("guests") << 2 << QList<int>();
    QTest::newRow("user group that is not there") << 3 << QList<int>();
}

void tst_FeatureMatrix::effectiveFeatures()
{
    QFETCH(int, userGroup);
    auto const rights = makeRights();
    QTEST(rights->effectiveFeatures(userGroup), "features");
    for (int const feature : {live, play, exportVideo, unknown})
        QCOMPARE(rights->effectiveFeatures(userGroup).contains(feature), rights->isFeatureAllowed(feature, userGroup));
}

void tst_FeatureMatrix::differenceListsChangedCells()
{
    auto const before = makeRights();
    auto const after = makeRights();
    QCOMPARE(text(before->difference(*after)), QString());
    after->setAllowed(1, 2, true);
    after->setAllowed(0, 0, false);
    QCOMPARE(text(before->difference(*after)), QString("0,0 1>0 1,2 0>1"));
    QCOMPARE(text(after->difference(*before)), QString("0,0 0>1 1,2 1>0"));
}

void tst_FeatureMatrix::differenceOfOtherSizes()
{
    FeatureMatrix const small(1, 1);
    FeatureMatrix const wide(1, 2);
    FeatureMatrix const high(2, 1);
    FeatureMatrix const none(0, 0);
    QCOMPARE(text(small.difference(wide)), QString("0,1 0>1"));
    QCOMPARE(text(wide.difference(small)), QString("0,1 1>0"));
    QCOMPARE(text(wide.difference(high)), QString("0,1 1>0 1,0 0>1"));
    QCOMPARE(text(none.difference(small)), QString("0,0 0>1"));
    QCOMPARE(text(none.difference(none)), QString());
}

void tst_FeatureMatrix::groupsKeepWhatTheyAreGiven()
{
    auto const rights = makeRights();
    QCOMPARE(rights->featureGroups().keys(), (QList<int>{0, 1}));
    QCOMPARE(rights->userGroups().keys(), (QList<int>{0, 1, 2}));
    QVERIFY(rights->containsFeatureGroup(1) && !rights->containsFeatureGroup(2));
    FeatureGroup const& viewing = *rights->featureGroups()[0];
    QCOMPARE(viewing.name(), QString("viewing"));
    QCOMPARE(viewing.description(), QString("look at cameras"));
    QCOMPARE(viewing.features().keys(), (QList<int>{live, play}));
    QCOMPARE(viewing.features()[live]->name(), QString("live"));
    QVERIFY(viewing.containsFeature(play) && !viewing.containsFeature(exportVideo));
    QCOMPARE(UserGroup(3, "guards").name(), QString("guards"));
}

void tst_FeatureMatrix::fixedCellsAreRemembered()
{
    FeatureMatrix matrix(2, 3);
    QVERIFY(matrix.isChangeable(1, 2));
    matrix.disableAbilityToChange(1, 2);
    matrix.disableAbilityToChange(0, 0);
    matrix.disableAbilityToChange(1, 2);
    using Cells = QList<QPair<int, int>>;
    QCOMPARE(matrix.fixedCells(), (Cells{{1, 2}, {0, 0}, {1, 2}})); // repetitions are kept
    QVERIFY(!matrix.isChangeable(1, 2) && matrix.isChangeable(2, 1));
    QVERIFY(!matrix.isModified());
    matrix.setAllowed(1, 2, false); // the list is for editors: the matrix refuses nothing
    QVERIFY(!matrix.isAllowed(1, 2));
}

void tst_FeatureMatrix::missingGroupIsEnteredEmpty()
{
    MemoryDestination destination;
    FeatureMatrix matrix(1, 1);
    addGroups(matrix, 1, 1);
    Feature const feature(live);
    matrix.addFeatureToGroup(const_cast<Feature*>(&feature), 5);
    QVERIFY(matrix.containsFeatureGroup(5));
    QCOMPARE(matrix.featureGroups()[5], nullptr);
    QVERIFY(!matrix.isFeatureAllowed(live, 0));
    QVERIFY(matrix.explain(live, 0).isEmpty());
    QVERIFY(matrix.effectiveFeatures(0).isEmpty());
    matrix.save(&destination);
    QCOMPARE(destination.stored("FeatureMatrix/Rows"), QVariant(2));
    matrix.load(&destination);
}

void tst_FeatureMatrix::nullIsIgnored()
{
    FeatureMatrix matrix(1, 1);
    addGroups(matrix, 1, 1);
    matrix.addFeatureGroup(nullptr);
    matrix.addUserGroup(nullptr);
    matrix.addFeatureToGroup(nullptr, 0);
    QCOMPARE(matrix.featureGroups().size(), 1);
    QCOMPARE(matrix.userGroups().size(), 1);
    QVERIFY(matrix.featureGroups()[0]->features().isEmpty());
}

void tst_FeatureMatrix::everythingOwnedIsDeletedOnce()
{
    int features = 0;
    int featureGroups = 0;
    int userGroups = 0;
    {
        FeatureMatrix matrix(2, 1);
        matrix.addFeatureGroup(new Counted<FeatureGroup>(0, &featureGroups));
        matrix.addFeatureGroup(new Counted<FeatureGroup>(1, &featureGroups));
        matrix.addUserGroup(new Counted<UserGroup>(0, &userGroups));
        auto* const shared = new Counted<Feature>(play, &features);
        matrix.addFeatureToGroup(shared, 0);
        matrix.addFeatureToGroup(shared, 1);
        matrix.addFeatureToGroup(new Counted<Feature>(live, &features), 0);
    }
    QCOMPARE(features, 2);
    QCOMPARE(featureGroups, 2);
    QCOMPARE(userGroups, 1);
}

void tst_FeatureMatrix::featuresOutliveTheirGroups()
{
    QStringList said;
    {
        FeatureMatrix matrix(2, 1);
        matrix.addFeatureGroup(new Farewell(0, &said));
        matrix.addFeatureGroup(new Farewell(1, &said));
        auto* const shared = new Feature(play, "play");
        matrix.addFeatureToGroup(new Feature(live, "live"), 0);
        matrix.addFeatureToGroup(shared, 0);
        matrix.addFeatureToGroup(shared, 1);
    }
    QCOMPARE(said, (QStringList{"0 live", "0 play", "1 play"}));
}

void tst_FeatureMatrix::replacedIsNotDeleted()
{
    int deleted = 0;
    Counted<FeatureGroup> featureGroup(0, &deleted);
    Counted<UserGroup> userGroup(0, &deleted);
    Counted<Feature> feature(live, &deleted);
    {
        FeatureMatrix matrix(1, 1);
        matrix.addFeatureGroup(&featureGroup);
        matrix.addUserGroup(&userGroup);
        addGroups(matrix, 1, 1);
        matrix.addFeatureToGroup(&feature, 0);
        matrix.addFeatureToGroup(new Feature(live), 0);
        QVERIFY(matrix.featureGroups()[0] != &featureGroup);
        QVERIFY(matrix.userGroups()[0] != &userGroup);
        QVERIFY(matrix.featureGroups()[0]->features()[live] != &feature);
    }
    QCOMPARE(deleted, 0);
}

void tst_FeatureMatrix::groupAloneDeletesItsFeatures()
{
    int deleted = 0;
    {
        FeatureGroup group(0);
        group.addFeature(new Counted<Feature>(live, &deleted));
        group.addFeature(new Counted<Feature>(play, &deleted));
        group.addFeature(nullptr);
    }
    QCOMPARE(deleted, 2);
}

QTEST_APPLESS_MAIN(tst_FeatureMatrix)
#include "tst_FeatureMatrix.moc"
