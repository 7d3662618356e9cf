// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Recording.h"

#include <GenericUtilities/properties/DefaultValidators.h>

#include <QDir>

#include <limits>

using namespace qvgen;

namespace {

/// A validator of this program's own: the library counts seconds in 32 bits, so moments outside 1970 to 2106 are all
/// taken for the last one.
class MomentValidator : public PropertyValidator {
public:
    bool validate(PropertySet&, BaseProperty& property) override
    {
        qint64 const seconds = DateTimeProperty::getValue(property, QDateTime()).toSecsSinceEpoch();
        bool const valid = seconds >= 0 && seconds < std::numeric_limits<quint32>::max();
        property.setValidationResult(valid, valid ? QString() : QStringLiteral("Not between 1970 and 2106."));
        return valid;
    }
};

template <class Property, class Value> void add(PropertySet& set, QString const& name, QString const& description,
    Value const& value, qvm::smart<PropertyValidator> const& validator = {})
{
    set.add(qvm::smart<BaseProperty>(new Property(name, description, value, validator)));
}

void addAll(PropertySet& set, PropertySet const& shared)
{
    for (auto const& property : shared)
        set.add(property);
}

/// The set known under @p key, made the first time.
template <class Key, class Make>
PropertySet const& once(QHash<Key, PropertySet>& known, Key const& key, Make const& make)
{
    auto found = known.find(key);
    if (found == known.end())
        found = known.insert(key, make());
    return *found;
}

/// As chmod(1) has it: 0644.
int octalPermissions(QFile::Permissions permissions)
{
    auto const bits = static_cast<int>(permissions);
    return (bits >> 12 & 7) << 6 | (bits >> 4 & 7) << 3 | (bits & 7);
}

PropertySet suffix(QString const& text)
{
    PropertySet set;
    add<StringProperty>(set, QStringLiteral("suffix"), QStringLiteral("After the last dot, lower case"), text);
    return set;
}

} // namespace

RecordingMaker::RecordingMaker(QString const& root, QDate const& today)
    : m_root(root)
    , m_today(today)
    , m_depthRange(new DefaultUIntValidator(0, 64))
    , m_permissionRange(new DefaultIntValidator(0400, 0777))
    , m_ageRange(new DefaultDoubleValidator(0, 36525))
    , m_momentRange(new MomentValidator)
{
}

PropertySet RecordingMaker::folder(QString const& path) const
{
    QString const beneath = path == m_root ? QString() : QDir(m_root).relativeFilePath(path);
    QStringList const parts = beneath.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    PropertySet set;
    add<StringProperty>(set, QStringLiteral("folder"), QStringLiteral("The folder it stands in"), path);
    add<StringProperty>(
        set, QStringLiteral("parent"), QStringLiteral("Name of that folder alone"), QFileInfo(path).fileName());
    add<StringProperty>(set, QStringLiteral("section"), QStringLiteral("First folder beneath the top"), parts.value(0));
    add<StringListProperty>(set, QStringLiteral("path"), QStringLiteral("Folders from the top to here"), parts);
    add<UIntProperty>(set, QStringLiteral("depth"), QStringLiteral("Folders above it; valid up to 64"),
        static_cast<unsigned>(parts.size()), m_depthRange);
    return set;
}

PropertySet RecordingMaker::owner(QFileInfo const& file) const
{
    PropertySet details;
    add<UIntProperty>(details, QStringLiteral("gid"), QStringLiteral("Number of the group"), file.groupId());
    add<StringProperty>(details, QStringLiteral("group"), QStringLiteral("Name of the group"), file.group());

    PropertySet set;
    add<StringProperty>(set, QStringLiteral("owner"), QStringLiteral("The user it belongs to"), file.owner());
    add<UIntProperty>(set, QStringLiteral("uid"), QStringLiteral("The number of that user"), file.ownerId());
    add<PropertySetProperty>(set, QStringLiteral("group"), QStringLiteral("Group: a set of its own"), details);
    return set;
}

PropertySet RecordingMaker::access(int permissions) const
{
    PropertySet set;
    add<IntProperty>(set, QStringLiteral("permissions"), QStringLiteral("As chmod; valid if owner may read"),
        permissions, m_permissionRange);
    add<BoolProperty>(
        set, QStringLiteral("executable"), QStringLiteral("Whether anyone may execute it"), (permissions & 0111) != 0);
    return set;
}

PropertySet RecordingMaker::day(QDate const& date) const
{
    // Whole days, as the library holds doubles that are less than 1 apart for equal, and a database does not.
    auto const age = static_cast<double>(date.daysTo(m_today));
    PropertySet set;
    add<DateProperty>(set, QStringLiteral("day"), QStringLiteral("Day of its last change, UTC"), date);
    add<DoubleProperty>(set, QStringLiteral("age"), QStringLiteral("Days since then; valid to 36525"), age, m_ageRange);
    return set;
}

PropertySet RecordingMaker::recording(PropertySet const& folder, QFileInfo const& file)
{
    auto const modified = QDateTime::fromSecsSinceEpoch(file.lastModified().toSecsSinceEpoch(), Qt::UTC);
    int const permissions = octalPermissions(file.permissions());
    QString const ending = file.suffix().toLower();

    PropertySet set = folder;
    add<StringProperty>(set, QStringLiteral("name"), QStringLiteral("File name"), file.fileName());
    add<StringProperty>(
        set, QStringLiteral("stem"), QStringLiteral("File name without suffix"), file.completeBaseName());
    add<U64Property>(
        set, QStringLiteral("size"), QStringLiteral("Size in bytes"), static_cast<qulonglong>(file.size()));
    add<DateTimeProperty>(
        set, QStringLiteral("modified"), QStringLiteral("Last change, UTC; valid to 2106"), modified, m_momentRange);
    add<TimeProperty>(set, QStringLiteral("time"), QStringLiteral("Time of its last change, UTC"), modified.time());
    add<BoolProperty>(set, QStringLiteral("hidden"), QStringLiteral("Whether it begins with a dot"),
        file.fileName().startsWith(QLatin1Char('.')));
    addAll(set, once(m_suffixes, ending, [&] { return suffix(ending); }));
    addAll(set, once(m_owners, quint64{file.ownerId()} << 32 | file.groupId(), [&] { return owner(file); }));
    addAll(set, once(m_accesses, permissions, [&] { return access(permissions); }));
    addAll(set, once(m_days, modified.date(), [&] { return day(modified.date()); }));
    set.validate();
    return set;
}

PropertySet RecordingMaker::prototype()
{
    QString const root = QDir::rootPath();
    RecordingMaker maker(root, QDate(1970, 1, 1));
    return maker.recording(maker.folder(root), QFileInfo(root));
}
