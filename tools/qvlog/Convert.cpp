// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Commands.h"
#include "EntryReader.h"
#include "Report.h"
#include "Trail.h"

#include <qvbase/FileEncrypt.h>

#include <QFileInfo>

namespace {

constexpr int PieceBytes = 64 * 1024;

[[noreturn]] void refuseTarget(QString const& path, QString const& reason)
{
    throw OutputException(QStringLiteral("'%1' cannot be written: %2").arg(path, reason));
}

Format reportFormat(Target target)
{
    return target == Target::Csv ? Format::Csv : target == Target::JsonLines ? Format::JsonLines : Format::Xml;
}

ExitCode makeReportFile(Options const& options, Access& access)
{
    Output output(options.targetFile);
    try {
        auto const report = makeReport(reportFormat(options.target), output);
        report->begin();
        ExitCode const code = readTrail(options, access, [&](LoggedEntry const& entry) { report->write(entry); });
        report->end();
        output.flush();
        if (code == NotDone)
            output.discard();
        return code;
    } catch (...) {
        output.discard();
        throw;
    }
}

/// A log file to be made. It is taken away again unless it is kept.
class NewLogFile {
public:
    explicit NewLogFile(QString const& path, QString const& user, QString const& password)
        : m_device(path)
    {
        m_device.setFileUserPassword(user, password);
        if (!m_device.open(QIODevice::WriteOnly | QIODevice::NewOnly))
            refuseTarget(path, m_device.errorString());
    }
    ~NewLogFile()
    {
        if (!m_isKept)
            m_device.remove();
    }
    NewLogFile(NewLogFile const&) = delete;
    NewLogFile& operator=(NewLogFile const&) = delete;

    void write(QByteArray const& bytes)
    {
        if (m_device.write(bytes) != bytes.size())
            refuseTarget(m_device.fileName(), m_device.errorString());
    }
    void keep()
    {
        if (!m_device.sync())
            refuseTarget(m_device.fileName(), m_device.errorString());
        m_isKept = true;
    }

private:
    qv::FileEncrypt m_device;
    bool m_isKept = false;
};

void copy(LogFile& source, NewLogFile& target)
{
    QByteArray piece(PieceBytes, '\0');
    qint64 length = 0;
    while ((length = source.device().read(piece.data(), PieceBytes)) > 0)
        target.write(QByteArray(piece.constData(), static_cast<int>(length)));
    if (length < 0)
        source.requireIntact();
    if (length < 0)
        throw RefusalException(QStringLiteral("it cannot be read: %1").arg(source.device().errorString()));
}

void requireLog(QString const& path, Access& access)
{
    EntryReader const reader(path, access, nullptr);
}

/// The same bytes, so that nothing is lost: not even what this program does not know.
void makeLogFile(Options const& options, Access& access, QString const& newPassword)
{
    LogFile source(options.sources.constFirst(), access);
    requireLog(source.path(), access);
    NewLogFile target(options.targetFile, options.fileUser, newPassword);
    copy(source, target);
    target.keep();
}

} // namespace

ExitCode convert(Options const& options, Access& access)
{
    if (options.target != Target::Plain && options.target != Target::Encrypted)
        return makeReportFile(options, access);
    if (QFileInfo::exists(options.targetFile))
        refuseTarget(options.targetFile, QStringLiteral("it exists")); // Before a password is asked for.
    QString const newPassword
        = options.target == Target::Encrypted ? Access::newPassword(options.newPasswordFile) : QString();
    workOn(options.sources.constFirst(), [&] { makeLogFile(options, access, newPassword); });
    return Fine;
}
