// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Anchors.h"
#include "Commands.h"
#include "EntryReader.h"
#include "Output.h"
#include "Sources.h"
#include "Trail.h"

#include <GenericUtilities/actionlog/LogFileEnd_p.h>
#include <terminal/Text.h>

#include <optional>

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

QString missingIn(Anchors const& anchors)
{
    return QStringLiteral("%1 of %2 MISSING")
        .arg(grouped(static_cast<qulonglong>(anchors.missing())), counted(anchors.logs(), QStringLiteral("log")));
}

/// A crash has cut the last write: readers pass over what is left of it, and the next writer puts it aside. Returns how
/// many bytes there are without the end tag.
qint64 requireWholeEnd(LogFile& file)
{
    file.device().seek(0);
    qv::LogFileEnd const end = qv::scanLogFileEnd(file.device());
    if (end.kind == qv::LogFileEnd::Torn)
        throw DamageException(QStringLiteral("byte %1: the last entry is incomplete").arg(end.offset));
    if (end.kind == qv::LogFileEnd::Unreadable)
        throw RefusalException(QStringLiteral("it cannot be read from byte %1 on").arg(end.offset));
    return end.offset;
}

class Verification {
public:
    Verification(Options const& options, Access& access);

    ExitCode verify(QStringList const& paths);

private:
    QString verdict(QString const& path);
    void readWhole(QString const& path, Content& content);
    void keepAnchor(LogFile& file, qint64 size);
    void tellMissing();

    Access& m_access;
    QString m_anchorsFile;
    Anchors m_anchors;
    std::optional<NewAnchors> m_newAnchors;
    Output m_output;
    Findings m_findings;
};

Verification::Verification(Options const& options, Access& access)
    : m_access(access)
    , m_anchorsFile(options.anchorsFile)
{
    if (!m_anchorsFile.isEmpty())
        m_anchors = Anchors(m_anchorsFile);
    if (!options.newAnchorsFile.isEmpty())
        m_newAnchors.emplace(options.newAnchorsFile);
}

void Verification::keepAnchor(LogFile& file, qint64 size)
{
    QByteArray const anchor = file.device().anchor(size);
    if (anchor.isEmpty())
        throw RefusalException(QStringLiteral("it cannot be read: %1").arg(file.device().errorString()));
    m_newAnchors->add(anchor);
}

/// @p content tells what was read, whatever is thrown.
void Verification::readWhole(QString const& path, Content& content)
{
    EntryReader reader(path, m_access, nullptr);
    LogFile& file = reader.file();
    QByteArrayList const anchors = m_anchors.take(file.device().anchor());
    while (auto const entry = reader.next()) {
        ++content.entries;
        content.unknown += entry->category.isEmpty() ? 1 : 0;
    }
    bool const hasEnded = reader.hasEnded();
    file.requireIntact();
    for (QByteArray const& anchor : anchors)
        file.requireIntact(anchor);
    qint64 const end = requireWholeEnd(file);
    // A client that goes on in the file cuts the end tag off.
    if (m_newAnchors && file.isEncrypted())
        keepAnchor(file, end);
    content.state
        = QStringLiteral("%1, %2").arg(file.isEncrypted() ? QStringLiteral("encrypted") : QStringLiteral("plain"),
            hasEnded ? QStringLiteral("ended") : QStringLiteral("not ended"));
}

/// Throws RefusalException alone.
QString Verification::verdict(QString const& path)
{
    Content content;
    try {
        readWhole(path, content);
        return QStringLiteral("intact, %1, %2").arg(entriesOf(content), content.state);
    } catch (DamageException const& exception) {
        m_findings.addDamage();
        return QStringLiteral("DAMAGED at %1; %2 before").arg(printable(exception.message()), entriesOf(content));
    }
}

/// A file that could not be read may be the one.
void Verification::tellMissing()
{
    if (m_anchors.missing() == 0 || m_findings.hasRefusal())
        return;
    m_findings.addDamage();
    m_output.write(printable(m_anchorsFile) + QLatin1String(": ") + missingIn(m_anchors) + QLatin1Char('\n'));
}

ExitCode Verification::verify(QStringList const& paths)
{
    for (QString const& path : paths) {
        try {
            m_output.write(printable(path) + QLatin1String(": ") + verdict(path) + QLatin1Char('\n'));
        } catch (OutputException const&) {
            throw;
        } catch (RefusalException const& exception) {
            m_findings.tellRefusal(path, exception.message());
        }
    }
    tellMissing();
    m_output.flush();
    if (m_newAnchors && m_findings.exitCode() == Fine)
        m_newAnchors->keep();
    return m_findings.exitCode();
}

} // namespace

ExitCode verify(Options const& options, Access& access)
{
    return Verification(options, access).verify(sourceFiles(options.sources, access));
}
