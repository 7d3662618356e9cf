// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Sources.h"

#include "Failures.h"
#include "LogFile.h"

#include <GenericUtilities/actionlog/LogReader.h>

#include <QDir>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <tuple>

namespace {

struct Dated {
    QString path;
    QDateTime date;
};

QStringList filesOf(QString const& argument)
{
    QFileInfo const info(argument);
    if (!info.exists())
        throw RefusalException(QStringLiteral("'%1': there is no such file or folder").arg(argument));
    if (!info.isDir())
        return {argument};
    QDir const folder(argument);
    QStringList files;
    for (QString const& name : folder.entryList({QStringLiteral("*.qvl")}, QDir::Files | QDir::Hidden))
        files += folder.filePath(name);
    if (files.isEmpty())
        throw RefusalException(QStringLiteral("'%1': the folder holds no log file (*.qvl)").arg(argument));
    return files;
}

/// Null where the file tells none, whatever the reason: who reads its entries will meet it again.
QDateTime dateOf(QString const& path, Access& access)
{
    try {
        LogFile file(path, access);
        auto const header = qv::XMLLogReader(&file.device(), path).readHeader();
        return header ? header->date : QDateTime();
    } catch (qv::ExceptionQt const&) {
        return {};
    }
}

/// The name without the number of its repetition, and that number.
std::pair<QString, int> numberedName(QString const& path)
{
    static QRegularExpression const number(QStringLiteral(" \\((\\d{1,9})\\)(?=\\.|\\z)"));
    QString name = QFileInfo(path).fileName();
    auto const match = number.match(name);
    if (!match.hasMatch())
        return {name, 1};
    return {name.remove(match.capturedStart(), match.capturedLength()), match.captured(1).toInt()};
}

bool isEarlier(Dated const& left, Dated const& right)
{
    if (left.date.isValid() != right.date.isValid())
        return left.date.isValid();
    if (left.date.isValid() && left.date != right.date)
        return left.date < right.date;
    return isNamedEarlier(left.path, right.path);
}

} // namespace

bool isNamedEarlier(QString const& left, QString const& right)
{
    return std::tuple(numberedName(left), left) < std::tuple(numberedName(right), right);
}

QStringList sourceFiles(QStringList const& arguments, Access& access)
{
    QVector<Dated> files;
    QSet<QString> known;
    for (QString const& argument : arguments) {
        for (QString const& path : filesOf(argument)) {
            QString const canonical = QFileInfo(path).canonicalFilePath();
            if (known.contains(canonical))
                continue;
            known.insert(canonical);
            files.append({path, dateOf(path, access)});
        }
    }
    std::sort(files.begin(), files.end(), isEarlier);
    QStringList paths;
    for (Dated const& file : qAsConst(files))
        paths += file.path;
    return paths;
}
