// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Export.h"

#include <GenericUtilities/actionlog/ExportActionLogMessageHandler.h>
#include <qvbase/Exceptions.h>

#include <QFile>

#include <algorithm>

using qv::ExportActionLog;
using qvgen::PropertySet;

namespace {

/// In microseconds since 1970, as the log has it; 0 where there is nothing.
struct Span {
    quint64 from = 0;
    quint64 to = 0;
};

Span modified(QVector<int> const& rows, QVector<PropertySet> const& recordings)
{
    Span span;
    for (int const row : rows) {
        auto const moment = recordings.at(row)["modified"].variantValue().toDateTime().toMSecsSinceEpoch() * 1000;
        if (moment <= 0)
            continue;
        auto const time = static_cast<quint64>(moment);
        span.from = span.from == 0 ? time : std::min(span.from, time);
        span.to = std::max(span.to, time);
    }
    return span;
}

QByteArray pathOf(PropertySet const& recording)
{
    return QFile::encodeName(
        recording["folder"].variantValue().toString() + QLatin1Char('/') + recording["name"].variantValue().toString());
}

/// Whether all was written before anyone interrupted.
bool write(QFile& file, QVector<int> const& rows, QVector<PropertySet> const& recordings,
    std::function<bool()> const& isInterrupted)
{
    for (int const row : rows) {
        if (isInterrupted())
            return false;
        if (file.write(pathOf(recordings.at(row)) + '\n') < 0)
            break;
    }
    if (!file.flush())
        throw qv::ExceptionQt(file.errorString());
    return true;
}

/// The same; nothing is left of a file that is not complete.
bool make(QString const& target, QVector<int> const& rows, QVector<PropertySet> const& recordings,
    std::function<bool()> const& isInterrupted)
{
    QFile file(target);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        throw qv::ExceptionQt(file.errorString());
    try {
        bool const isComplete = write(file, rows, recordings, isInterrupted);
        if (!isComplete)
            file.remove();
        return isComplete;
    } catch (...) {
        file.remove();
        throw;
    }
}

} // namespace

bool exportRows(QString const& target, QVector<int> const& rows, QVector<PropertySet> const& recordings,
    QString const& folder, std::function<bool()> const& isInterrupted)
{
    Span const span = modified(rows, recordings);
    auto const tell = [&](ExportActionLog::EState state) {
        ExportActionLog::send(ExportActionLog::UnknownFormat, folder, target, span.from, span.to, state);
    };
    tell(ExportActionLog::Start);
    try {
        if (!make(target, rows, recordings, isInterrupted)) {
            ExportActionLog::send(QStringLiteral("'%1' was interrupted.").arg(target), ExportActionLog::Abort);
            return false;
        }
    } catch (qv::ExceptionQt const& exception) {
        QString const message = QStringLiteral("'%1' cannot be written: %2").arg(target, exception.message());
        ExportActionLog::send(message, ExportActionLog::Error);
        throw qv::ExceptionQt(message);
    }
    tell(ExportActionLog::Finished);
    ExportActionLog::send(QStringLiteral("%1 paths.").arg(rows.size()), ExportActionLog::Finished);
    return true;
}
