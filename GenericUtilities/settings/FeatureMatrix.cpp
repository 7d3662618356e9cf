// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/settings/FeatureMatrix.h>

#include <GenericUtilities/settings/Settings.h>
#include <qvbase/Log.h>

#include <QSet>
#include <QTextStream>
#include <QVariant>

#include <algorithm>

namespace qv {

namespace {

    QString groupKey()
    {
        return QStringLiteral("FeatureMatrix");
    }
    QString rowsKey()
    {
        return QStringLiteral("Rows");
    }
    QString columnsKey()
    {
        return QStringLiteral("Columns");
    }
    QString matrixKey()
    {
        return QStringLiteral("Matrix");
    }

    constexpr int bitsPerWord = 32;

    /// Bits, gathered into words of 32, the first being the lowest; each word is a decimal number and "+".
    class BitWriter {
    public:
        void write(bool bit)
        {
            m_word |= quint32(bit) << m_count;
            if (++m_count == bitsPerWord)
                endWord();
        }
        QByteArray finished()
        {
            if (m_count > 0)
                endWord();
            return m_text;
        }

    private:
        void endWord()
        {
            m_text += QByteArray::number(m_word) + '+';
            m_word = 0;
            m_count = 0;
        }

        QByteArray m_text;
        quint32 m_word = 0;
        int m_count = 0;
    };

    /// Reads what BitWriter wrote. After the last bit of a word it goes on to the next at once.
    class BitReader {
    public:
        explicit BitReader(QByteArray const& text)
            : m_text(text)
        {
            nextWord();
        }
        /// Whether there is a bit to be read.
        bool hasBit() const { return m_hasWord; }
        bool read()
        {
            bool const bit = (m_word >> m_used) & 1;
            if (++m_used == bitsPerWord)
                nextWord();
            return bit;
        }

    private:
        void nextWord()
        {
            int const end = m_text.indexOf('+', m_position);
            m_hasWord = end >= 0;
            m_word = m_hasWord ? m_text.mid(m_position, end - m_position).toUInt() : 0; // 0 for what is no number
            m_position = end + 1;
            m_used = 0;
        }

        QByteArray const& m_text;
        int m_position = 0;
        quint32 m_word = 0;
        int m_used = 0;
        bool m_hasWord = false;
    };

    void logIncompatibility()
    {
        constexpr int error = 3;
        LogQt* const log = LogQt::instance();
        MutexLocker const locker(log->mutex());
        QTextStream* const stream = log->getStream(error);
        if (stream && log->logLevel() <= error)
            *stream << log->pre(error) << "Saved matrix not compatible with current matrix." << Qt::endl;
    }

    size_t countOf(int number)
    {
        return static_cast<size_t>(std::max(number, 0));
    }

} // namespace

FeatureMatrix::FeatureMatrix(int rows, int columns)
    : m_cells(countOf(rows), std::vector<bool>(countOf(columns), true))
{
}

FeatureMatrix::~FeatureMatrix()
{
    // A feature of several groups is to be deleted once, and no earlier than the last group, which may look at it.
    QSet<Feature*> features;
    for (FeatureGroup* const group : qAsConst(m_featureGroups)) {
        if (!group)
            continue;
        for (Feature* const feature : qAsConst(group->m_features))
            features.insert(feature);
        group->m_ownsFeatures = false;
    }
    qDeleteAll(m_featureGroups);
    qDeleteAll(features);
    qDeleteAll(m_userGroups);
}

void FeatureMatrix::save(IPersistDestination* destination) const
{
    destination->beginGroup(groupKey());
    destination->setValue(rowsKey(), m_featureGroups.size());
    destination->setValue(columnsKey(), m_userGroups.size());
    destination->setValue(matrixKey(), packed());
    destination->endGroup();
    m_modified = false;
}

void FeatureMatrix::load(IPersistDestination* destination)
{
    destination->beginGroup(groupKey());
    int const rows = destination->value(rowsKey(), QVariant()).toInt();
    int const columns = destination->value(columnsKey(), QVariant()).toInt();
    QByteArray const text = destination->value(matrixKey(), QVariant()).toByteArray();
    destination->endGroup();
    if (rows != m_featureGroups.size() || columns != m_userGroups.size())
        return logIncompatibility();
    if (unpack(text))
        m_modified = false;
}

QByteArray FeatureMatrix::packed() const
{
    BitWriter bits;
    for (int row = 0; row < m_featureGroups.size(); ++row) {
        for (int column = 0; column < m_userGroups.size(); ++column)
            bits.write(isAllowed(row, column));
    }
    return bits.finished();
}

/// False where the text ends before the cells do. Where their number is a multiple of 32 one word more is looked for,
/// and is not there: such a matrix stays modified by loading, which clients know and expect.
bool FeatureMatrix::unpack(QByteArray const& text)
{
    BitReader bits(text);
    for (int row = 0; row < m_featureGroups.size(); ++row) {
        for (int column = 0; column < m_userGroups.size(); ++column) {
            if (!bits.hasBit())
                return false;
            setAllowed(row, column, bits.read());
        }
    }
    return bits.hasBit();
}

void FeatureMatrix::addFeatureGroup(FeatureGroup* group)
{
    if (group)
        m_featureGroups[group->id()] = group;
}

void FeatureMatrix::addUserGroup(UserGroup* group)
{
    if (group)
        m_userGroups[group->id()] = group;
}

void FeatureMatrix::addFeatureToGroup(Feature* feature, int groupId)
{
    if (FeatureGroup* const group = m_featureGroups[groupId])
        group->addFeature(feature);
}

bool FeatureMatrix::hasCell(int row, int column) const
{
    return row >= 0 && countOf(row) < m_cells.size() && column >= 0 && countOf(column) < m_cells[countOf(row)].size();
}

void FeatureMatrix::setAllowed(int row, int column, bool allowed)
{
    if (!hasCell(row, column) || isAllowed(row, column) == allowed)
        return;
    m_cells[countOf(row)][countOf(column)] = allowed;
    m_modified = true;
}

bool FeatureMatrix::isAllowed(int row, int column) const
{
    return hasCell(row, column) && m_cells[countOf(row)][countOf(column)];
}

bool FeatureMatrix::isFeatureAllowed(int featureId, int userGroup) const
{
    return std::any_of(m_featureGroups.begin(), m_featureGroups.end(), [=](FeatureGroup const* group) {
        return group && group->containsFeature(featureId) && isAllowed(group->id(), userGroup);
    });
}

void FeatureMatrix::disableAbilityToChange(int row, int column)
{
    m_fixedCells.append({row, column});
}

bool FeatureMatrix::isChangeable(int row, int column) const
{
    return !m_fixedCells.contains({row, column});
}

QList<FeatureMatrix::Reason> FeatureMatrix::explain(int featureId, int userGroup) const
{
    QList<Reason> reasons;
    for (FeatureGroup const* const group : m_featureGroups) {
        if (group && group->containsFeature(featureId))
            reasons.append({group, isAllowed(group->id(), userGroup)});
    }
    return reasons;
}

QList<int> FeatureMatrix::effectiveFeatures(int userGroup) const
{
    QMap<int, bool> allowed; // sorted
    for (FeatureGroup const* const group : m_featureGroups) {
        if (!group || !isAllowed(group->id(), userGroup))
            continue;
        for (int const featureId : group->features().keys())
            allowed.insert(featureId, true);
    }
    return allowed.keys();
}

QList<FeatureMatrix::Change> FeatureMatrix::difference(FeatureMatrix const& other) const
{
    auto const columnsOf
        = [](FeatureMatrix const& matrix) { return matrix.m_cells.empty() ? 0 : matrix.m_cells[0].size(); };
    int const rows = int(std::max(m_cells.size(), other.m_cells.size()));
    int const columns = int(std::max(columnsOf(*this), columnsOf(other)));
    QList<Change> changes;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            bool const before = isAllowed(row, column);
            bool const after = other.isAllowed(row, column);
            if (before != after)
                changes.append({row, column, before, after});
        }
    }
    return changes;
}

} // namespace qv
