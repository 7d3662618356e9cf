// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/actionlog/ExportLogEntries.h>

#include <QString>
#include <QtGlobal>

namespace qv {

/// Logs exports of images and video: each call makes one entry and hands it to ActionLog::getInstance().
class GENERICUTILITIES_EXPORT ExportActionLog {
public:
    ExportActionLog() = delete;

    enum EFormat {
        Bitmap,
        JPEG,
        KalvidClip,
        AVI,
        MP4,
        MOV,
        WebM,
        Matroska,
        QuorvelFileServerStorage,
        Printer,
        UnknownFormat
    };
    enum EState { Start, Finished, Abort, Error, NoState };

    struct FormatData {
        EFormat value;
        char const* name; ///< untranslated, in the context "ExportFormats"
    };
    struct StateData {
        EState value;
        char const* name; ///< untranslated, in the context "ExportActionLog"
    };

    /// The row of a number; the last one for a number that has none.
    static FormatData const& formatsData(int format);
    static StateData const& stateData(int state);

    /// What became of a series of exports: Abort, Error or Finished. Other states are not logged.
    static void send(QString const& text, EState state);
    /// A file in the folder @p path was renamed from @p source to @p dest; they are joined as they are.
    static void send(QString path, QString source, QString dest);
    /// An export, from @p source to @p target (which may be empty), Start or Finished. Other states are not logged.
    /// @p from and @p to are microseconds since 1970-01-01 00:00 UTC, kept in whole seconds: both for a period, @p to 0
    /// for a moment, both 0 for neither.
    static void send(
        EFormat format, QString const& source, QString const& target, quint64 from, quint64 to, EState state);
};

} // namespace qv
