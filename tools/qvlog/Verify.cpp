// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Commands.h"
#include "EntryReader.h"
#include "Output.h"
#include "Sources.h"
#include "Trail.h"

#include <GenericUtilities/actionlog/LogFileEnd_p.h>
#include <terminal/Text.h>

namespace {

/// How many entries have been read, and what else there is to say of them.
struct Content {
    qint64 entries = 0;
    qint64 unknown = 0; ///< Of types that this program does not know.
    QString state;
};

QString entriesOf(Content const& content)
{
    QString const number = grouped(static_cast<qulonglong>(content.entries));
    QString const text = content.entries == 1 ? QStringLiteral("1 entry") : number + QStringLiteral(" entries");
    return content.unknown == 0
        ? text
        : QStringLiteral("%1 (%2 of unknown types)").arg(text, grouped(static_cast<qulonglong>(content.unknown)));
}

/// A crash has cut the last write: readers pass over what is left of it, and the next writer puts it aside.
void requireWholeEnd(LogFile& file)
{
    file.device().seek(0);
    qv::LogFileEnd const end = qv::scanLogFileEnd(file.device());
    if (end.kind == qv::LogFileEnd::Torn)
        throw DamageException(QStringLiteral("byte %1: the last entry is incomplete").arg(end.offset));
    if (end.kind == qv::LogFileEnd::Unreadable)
        throw RefusalException(QStringLiteral("it cannot be read from byte %1 on").arg(end.offset));
}

/// @p content tells what was read, whatever is thrown.
void readWhole(QString const& path, Access& access, Content& content)
{
    EntryReader reader(path, access, nullptr);
    while (auto const entry = reader.next()) {
        ++content.entries;
        content.unknown += entry->category.isEmpty() ? 1 : 0;
    }
    bool const hasEnded = reader.hasEnded();
    reader.file().requireIntact();
    requireWholeEnd(reader.file());
    content.state = QStringLiteral("%1, %2").arg(
        reader.file().isEncrypted() ? QStringLiteral("encrypted") : QStringLiteral("plain"),
        hasEnded ? QStringLiteral("ended") : QStringLiteral("not ended"));
}

/// Throws RefusalException alone.
QString verdict(QString const& path, Access& access, Findings& findings)
{
    Content content;
    try {
        readWhole(path, access, content);
        return QStringLiteral("intact, %1, %2").arg(entriesOf(content), content.state);
    } catch (DamageException const& exception) {
        findings.addDamage();
        return QStringLiteral("DAMAGED at %1; %2 before").arg(printable(exception.message()), entriesOf(content));
    }
}

} // namespace

ExitCode verify(Options const& options, Access& access)
{
    Output output;
    Findings findings;
    for (QString const& path : sourceFiles(options.sources, access)) {
        try {
            output.write(printable(path) + QLatin1String(": ") + verdict(path, access, findings) + QLatin1Char('\n'));
        } catch (OutputException const&) {
            throw;
        } catch (RefusalException const& exception) {
            findings.tellRefusal(path, exception.message());
        }
    }
    output.flush();
    return findings.exitCode();
}
