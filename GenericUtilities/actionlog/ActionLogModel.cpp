// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/ActionLogModel.h>

#include <GenericUtilities/actionlog/ActionLog_p.h>
#include <GenericUtilities/actionlog/Translation_p.h>

#include <mutex>

namespace qv {

namespace {

    constexpr char const* titles[ActionLogModel::ColumnCount] = {
        QT_TRANSLATE_NOOP("ActionLog", "Time"),
        QT_TRANSLATE_NOOP("ActionLog", "User"),
        QT_TRANSLATE_NOOP("ActionLog", "Category"),
        QT_TRANSLATE_NOOP("ActionLog", "Action"),
        QT_TRANSLATE_NOOP("ActionLog", "Description"),
    };

    QVariant textOf(LogEntry const& entry, int column)
    {
        switch (column) {
        case ActionLogModel::TimeColumn:
            return entry.time().value();
        case ActionLogModel::UserColumn:
            return entry.user().value();
        case ActionLogModel::CategoryColumn:
            return LogCategory(entry.category()).name();
        case ActionLogModel::ActionColumn:
            return entry.action();
        case ActionLogModel::DescriptionColumn:
            return entry.description();
        default:
            return {};
        }
    }

} // namespace

/// Brings what happens in the log's threads to the model's. It outlives the model as long as a thread is on its way.
class ActionLogModel::Feed {
public:
    explicit Feed(ActionLogModel& model)
        : m_model(&model)
    {
    }

    /// Has the model do @p change in its thread, unless it is gone.
    template <typename Change> void post(Change change)
    {
        std::lock_guard const guard(m_mutex);
        if (ActionLogModel* const model = m_model)
            QMetaObject::invokeMethod(
                model, [model, change] { change(*model); }, Qt::QueuedConnection);
    }
    void end()
    {
        std::lock_guard const guard(m_mutex);
        m_model = nullptr;
    }

private:
    std::mutex m_mutex;
    ActionLogModel* m_model;
};

ActionLogModel::ActionLogModel(QObject* parent)
    : QAbstractTableModel(parent)
    , m_feed(std::make_shared<Feed>(*this))
{
    ActionLog* const log = ActionLog::getInstance();
    // Nothing may happen between the rows that are there and those that are told of.
    MutexLocker const locker(log->m_d->mutex);
    m_rows = log->snapshot();
    auto const feed = m_feed;
    auto const add = [feed, log](int first, int last) {
        for (int row = first; row <= last; ++row) {
            QSharedPointer<LogEntry const> const copy(log->entry(row)->clone());
            feed->post([row, copy](ActionLogModel& model) { model.insert(row, copy); });
        }
    };
    auto const remove = [feed](int first, int last) {
        feed->post([first, last](ActionLogModel& model) { model.remove(first, last); });
    };
    m_connections[0] = connect(log, &ActionLog::logEntriesAdded, log, add, Qt::DirectConnection);
    m_connections[1] = connect(log, &ActionLog::logEntriesRemoved, log, remove, Qt::DirectConnection);
}

ActionLogModel::~ActionLogModel()
{
    for (QMetaObject::Connection const& connection : m_connections)
        disconnect(connection);
    m_feed->end();
}

void ActionLogModel::insert(int row, QSharedPointer<LogEntry const> const& entry)
{
    beginInsertRows({}, row, row);
    m_rows.insert(row, entry);
    endInsertRows();
}

void ActionLogModel::remove(int first, int last)
{
    beginRemoveRows({}, first, last);
    m_rows.erase(m_rows.begin() + first, m_rows.begin() + last + 1);
    endRemoveRows();
}

int ActionLogModel::rowCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : m_rows.size();
}

int ActionLogModel::columnCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ActionLogModel::data(QModelIndex const& index, int role) const
{
    if (!index.isValid() || index.row() >= m_rows.size())
        return {};
    LogEntry const& entry = *m_rows.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return textOf(entry, index.column());
    case TimeRole:
        return entry.time().value();
    case UserRole:
        return entry.user().value();
    case CategoryRole:
        return static_cast<quint32>(entry.category());
    case IdRole:
        return entry.id().toString();
    case DescriptionRole:
        return entry.description();
    default:
        return {};
    }
}

QVariant ActionLogModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    bool const isTitle
        = orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 && section < ColumnCount;
    return isTitle ? translated(titles[section]) : QVariant();
}

QHash<int, QByteArray> ActionLogModel::roleNames() const
{
    return {{Qt::DisplayRole, "display"}, {TimeRole, "time"}, {UserRole, "user"}, {CategoryRole, "category"},
        {IdRole, "id"}, {DescriptionRole, "description"}};
}

QSharedPointer<LogEntry const> ActionLogModel::entry(int row) const
{
    return m_rows.value(row);
}

} // namespace qv
