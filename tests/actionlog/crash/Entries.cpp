// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Entries.h"

#include <GenericUtilities/actionlog/ActionLog.h>
#include <GenericUtilities/actionlog/ExportLogEntries.h>
#include <GenericUtilities/actionlog/LogFileContent_p.h>
#include <qvbase/FileEncrypt.h>
#include <qvbase/FileEncryptTesting_p.h>

#include <QFileInfo>

#include <algorithm>
#include <numeric>

namespace entries {

namespace {

    QString passwordFor(crash::Mode mode)
    {
        return mode == crash::Mode::Encrypted ? QStringLiteral("correct horse") : QString();
    }

    struct Name {
        int writer;
        int index;
    };

    bool read(QString const& text, Name& name)
    {
        name = {text.section(QLatin1Char(' '), 0, 0).toInt(), text.section(QLatin1Char(' '), 1, 1).toInt()};
        return text == entries::text(name.writer, name.index);
    }

    QVector<Name> namesIn(QString const& path, crash::Mode mode, QString& fault)
    {
        qv::FileEncrypt file(path);
        file.setFileUserPassword({}, passwordFor(mode));
        QVector<Name> names;
        if (!file.open(QIODevice::ReadOnly)) {
            fault = path + QStringLiteral(": ") + file.errorString();
            return names;
        }
        qv::LogFileContent const content = qv::readLogFile(file);
        if (content.isDamaged)
            fault = path + QStringLiteral(": ") + content.error;
        for (auto const& entry : content.entries) {
            Name name;
            qv::LogValue const* const value = entry->logValue(qv::FourChars("Text"));
            if (value && read(value->toString(), name))
                names.append(name);
            else if (value)
                fault = path + QStringLiteral(": a text is bent");
        }
        return names;
    }

} // namespace

void keepStateIn(QString const& folder)
{
    qputenv("XDG_STATE_HOME", QFile::encodeName(folder));
}

qv::ActionLog& openLog(QString const& path, crash::Mode mode, int splitSize)
{
    qv::FileEncryptTesting::setScryptCost(4, 1, 1);
    qv::ActionLog& log = *qv::ActionLog::getInstance();
    log.setFileInfo(QFileInfo(path));
    log.setFileUserPassword({}, passwordFor(mode));
    log.setSplitPolicy(splitSize > 0 ? qv::SplitBySize : qv::SplitNone, splitSize);
    return log;
}

QString text(int writer, int index)
{
    int const size = index % 97 == 96 ? 9000 : int(unsigned(index) * 2654435761U % 300);
    QChar const letter = QChar(QLatin1Char(char('a' + (writer + index) % 26)));
    return QStringLiteral("%1 %2 ").arg(writer).arg(index) + QString(size, letter);
}

void log(int writer, int index)
{
    ExportDoneLogEntry entry;
    entry.text.setValue(text(writer, index));
    qv::ActionLog::getInstance()->log(entry);
}

Found findAll(crash::Folder const& folder, crash::Mode mode)
{
    Found found;
    QVector<QVector<Name>> files;
    for (QByteArray const& name : folder.files().keys()) {
        if (name.endsWith(".qvl"))
            files.append(namesIn(folder.path(QString::fromUtf8(name)), mode, found.fault));
    }
    found.files = files.size();
    files.erase(std::remove_if(files.begin(), files.end(), [](auto const& f) { return f.isEmpty(); }), files.end());
    std::sort(
        files.begin(), files.end(), [](auto const& a, auto const& b) { return a.first().index < b.first().index; });
    for (QVector<Name> const& names : files) {
        for (Name const& name : names)
            found.indices[name.writer].append(name.index);
    }
    return found;
}

QVector<int> run(int first, int count)
{
    QVector<int> indices(count);
    std::iota(indices.begin(), indices.end(), first);
    return indices;
}

QString faultOf(crash::Folder const& folder, crash::Mode mode, int certain, int* count)
{
    Found const found = findAll(folder, mode);
    QVector<int> const indices = found.indices.value(1);
    if (count)
        *count = indices.size();
    if (!found.fault.isEmpty())
        return found.fault;
    if (indices != run(0, indices.size()))
        return QStringLiteral("entries are doubled, missing or out of order");
    if (indices.size() < certain || indices.size() > certain + 1)
        return QStringLiteral("%1 entries were logged, %2 found").arg(certain).arg(indices.size());
    return {};
}

} // namespace entries
