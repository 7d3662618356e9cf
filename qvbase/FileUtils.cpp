// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/FileUtils.h>

#include <qvbase/UserAccount_p.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <sys/stat.h>

namespace qv {
namespace {

    constexpr int MaxFileNameBytes = 255; // NAME_MAX of every file system in use

    // A folder from the environment, or an empty text: a relative one is to be ignored by the XDG rules.
    QString absoluteFolder(QByteArray const& bytes)
    {
        return bytes.startsWith('/') ? QDir::cleanPath(QFile::decodeName(bytes)) : QString();
    }

    QString homeFolder()
    {
        QString home = absoluteFolder(qgetenv("HOME"));
        UserAccount account;
        if (!home.isEmpty() || findOwnUserAccount(account) != 0)
            return home;
        return absoluteFolder(account.home);
    }

    bool endsWithinCharacter(QString const& text)
    {
        return !text.isEmpty() && text.back().isHighSurrogate();
    }

    QString applicationFolderName()
    {
        QString name = QCoreApplication::applicationName();
        name.replace(QLatin1Char('/'), QLatin1Char('_')).replace(QChar::Null, QLatin1Char('_'));
        name.truncate(MaxFileNameBytes);
        while (QFile::encodeName(name).size() > MaxFileNameBytes || endsWithinCharacter(name))
            name.chop(1);
        bool const isName = !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..");
        return isName ? name : QStringLiteral("application");
    }

    // Not QDir::mkpath(), whose folders are open to others until they are told not to be.
    void createPrivateFolders(QString const& path)
    {
        for (int end = path.indexOf(QLatin1Char('/'), 1); end > 0; end = path.indexOf(QLatin1Char('/'), end + 1))
            mkdir(QFile::encodeName(path.left(end)).constData(), S_IRWXU);
        mkdir(QFile::encodeName(path).constData(), S_IRWXU);
    }

} // namespace

QString FileUtils::userDataDir()
{
    QString const folder = absoluteFolder(qgetenv("XDG_STATE_HOME"));
    return folder.isEmpty() ? QDir::cleanPath(homeFolder() + QLatin1String("/.local/state")) : folder;
}

QString FileUtils::userLogDir()
{
    QString folder = QDir::cleanPath(userDataDir() + QLatin1Char('/') + applicationFolderName());
    createPrivateFolders(folder);
    return folder;
}

} // namespace qv
