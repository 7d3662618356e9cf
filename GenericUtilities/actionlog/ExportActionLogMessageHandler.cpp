// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/ExportActionLogMessageHandler.h>

#include <GenericUtilities/actionlog/ActionLog.h>
#include <GenericUtilities/actionlog/Translation_p.h>

#include <QDateTime>

#include <algorithm>

namespace qv {

namespace {

    constexpr ExportActionLog::FormatData formats[] = {
        {ExportActionLog::Bitmap, QT_TRANSLATE_NOOP("ExportFormats", "Bitmap")},
        {ExportActionLog::JPEG, QT_TRANSLATE_NOOP("ExportFormats", "JPEG")},
        {ExportActionLog::KalvidClip, QT_TRANSLATE_NOOP("ExportFormats", "Kalvid clip")},
        {ExportActionLog::AVI, QT_TRANSLATE_NOOP("ExportFormats", "AVI")},
        {ExportActionLog::MP4, QT_TRANSLATE_NOOP("ExportFormats", "MP4")},
        {ExportActionLog::MOV, QT_TRANSLATE_NOOP("ExportFormats", "MOV")},
        {ExportActionLog::WebM, QT_TRANSLATE_NOOP("ExportFormats", "WebM")},
        {ExportActionLog::Matroska, QT_TRANSLATE_NOOP("ExportFormats", "Matroska")},
        {ExportActionLog::QuorvelFileServerStorage, QT_TRANSLATE_NOOP("ExportFormats", "Quorvel file server storage")},
        {ExportActionLog::Printer, QT_TRANSLATE_NOOP("ExportFormats", "Printer")},
        {ExportActionLog::UnknownFormat, QT_TRANSLATE_NOOP("ExportFormats", "unknown")},
    };

    constexpr ExportActionLog::StateData states[] = {
        {ExportActionLog::Start, QT_TRANSLATE_NOOP("ExportActionLog", "Start")},
        {ExportActionLog::Finished, QT_TRANSLATE_NOOP("ExportActionLog", "Finished")},
        {ExportActionLog::Abort, QT_TRANSLATE_NOOP("ExportActionLog", "Abort")},
        {ExportActionLog::Error, QT_TRANSLATE_NOOP("ExportActionLog", "Error")},
        {ExportActionLog::NoState, ""},
    };

    template <typename Row, unsigned count> constexpr Row const& rowOf(Row const (&rows)[count], int number)
    {
        return rows[std::min(static_cast<unsigned>(number), count - 1)];
    }

    enum Period { NoTime, Moment, FromTo };

    /// By period, then without and with a target. "Date and time to" has no equals sign; stored entries have none.
    constexpr char const* templates[3][2] = {
        {QT_TRANSLATE_NOOP("ActionLog", "Format='%1'; Source='%2'."),
            QT_TRANSLATE_NOOP("ActionLog", "Format='%1'; Source='%2'; Target='%3'.")},
        {QT_TRANSLATE_NOOP("ActionLog", "Format='%1'; Source='%2'; Timestamp='%4'.%3"),
            QT_TRANSLATE_NOOP("ActionLog", "Format='%1'; Source='%2'; Timestamp='%4'; Target='%3'.")},
        {QT_TRANSLATE_NOOP("ActionLog", "Format='%1'; Source='%2'; Date and time from='%4'; Date and time to '%5'.%3"),
            QT_TRANSLATE_NOOP(
                "ActionLog", "Format='%1'; Source='%2'; Date and time from='%4'; Date and time to '%5'; Target='%3'.")},
    };

    /// Local time in whole seconds; seconds that 32 bits cannot hold wrap around.
    QDateTime timeFrom(quint64 micros)
    {
        return QDateTime::fromSecsSinceEpoch(static_cast<quint32>(micros / 1000000));
    }

    template <typename Entry> void sendText(QString const& text)
    {
        Entry entry;
        entry.text.setValue(text);
        ActionLog::getInstance()->log(entry);
    }

    template <typename Entry>
    void sendExport(QString const& format, QString const& source, QString const& target, quint64 from, quint64 to)
    {
        Period const period = from == 0 ? NoTime : to == 0 ? Moment : FromTo;
        Entry entry;
        // Unfilled: the values that follow it fill it where it is shown.
        entry.text.setValue(translated(templates[period][target.isEmpty() ? 0 : 1]));
        entry.format.setValue(format);
        entry.source.setValue(source);
        entry.dest.setValue(target);
        entry.from.setValue(timeFrom(from));
        entry.to.setValue(timeFrom(to));
        ActionLog::getInstance()->log(entry);
    }

} // namespace

ExportActionLog::FormatData const& ExportActionLog::formatsData(int format)
{
    return rowOf(formats, format);
}

ExportActionLog::StateData const& ExportActionLog::stateData(int state)
{
    return rowOf(states, state);
}

void ExportActionLog::send(QString const& text, EState state)
{
    if (state == Abort)
        sendText<ExportAbortLogEntry>(text);
    else if (state == Error)
        sendText<ExportErrorLogEntry>(text);
    else if (state == Finished)
        sendText<ExportDoneLogEntry>(text);
}

void ExportActionLog::send(QString path, QString source, QString dest)
{
    ExportRenameLogEntry entry;
    entry.text.setValue(translated(QT_TRANSLATE_NOOP("ActionLog", "'%1%2' to '%1%3'.")).arg(path, source, dest));
    entry.path.setValue(path);
    entry.source.setValue(source);
    entry.dest.setValue(dest);
    ActionLog::getInstance()->log(entry);
}

void ExportActionLog::send(
    EFormat format, QString const& source, QString const& target, quint64 from, quint64 to, EState state)
{
    QString const name = QLatin1String(formatsData(format).name);
    if (state == Start)
        sendExport<ExportStartLogEntry>(name, source, target, from, to);
    else if (state == Finished)
        sendExport<ExportWrittenLogEntry>(name, source, target, from, to);
}

} // namespace qv
