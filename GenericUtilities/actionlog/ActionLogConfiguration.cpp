// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/ActionLog_p.h>

#include <GenericUtilities/actionlog/SplitPolicy_p.h>
#include <GenericUtilities/settings/Settings.h>
#include <qvbase/FileUtils.h>

#include <QVariant>

namespace qv {

namespace {

    // Stored; never rename.
    QLatin1String const groupName("ActionLog");
    QLatin1String const splitPolicyKey("SplitState");
    QLatin1String const splitSizeKey("SplitSize");
    QLatin1String const userKey("ActionLogUser");
    QLatin1String const passwordKey("ActionLogPassword");
    QLatin1String const isDefaultPathKey("isDefaultLogPath");
    QLatin1String const pathKey("ActionLogPath");
    QLatin1String const durabilityKey("Durability");
    /// What stands for the user's data folder in a stored path.
    QLatin1String const dataFolder("%LOCALAPPDATA%");

    bool isDefault(QFileInfo const& file)
    {
        return file.absoluteFilePath() == ActionLog::defaultFileInfo().absoluteFilePath();
    }

    QString storedPath(QFileInfo const& file)
    {
        QString const path = file.absoluteFilePath();
        QString const folder = FileUtils::userDataDir();
        bool const isWithin = path.startsWith(folder + QLatin1Char('/'));
        return isWithin ? dataFolder + path.midRef(folder.size()) : path;
    }

    QString pathFrom(QString const& stored)
    {
        bool const isWithin = stored.startsWith(dataFolder);
        return isWithin ? FileUtils::userDataDir() + stored.midRef(dataFolder.size()) : stored;
    }

    QByteArray storedPassword(QString const& password)
    {
        // Up to the first zero byte, as stored ones end.
        return QByteArray(password.toLocal8Bit().constData()).toBase64();
    }

    QString passwordFrom(QByteArray const& stored)
    {
        return QString::fromLocal8Bit(QByteArray::fromBase64(stored));
    }

    /// Where no number of 32 bits is stored, nothing changes.
    int numberFrom(IPersistDestination const& from, QLatin1String key, int otherwise)
    {
        bool isNumber = false;
        qint64 const number = from.value(key, otherwise).toLongLong(&isNumber);
        return isNumber && number == static_cast<int>(number) ? static_cast<int>(number) : otherwise;
    }

    EDurability durabilityFrom(int number)
    {
        bool const isKnown = number >= DurabilityNone && number <= DurabilityData;
        return isKnown ? static_cast<EDurability>(number) : DurabilityFlush;
    }

    QFileInfo loadFile(IPersistDestination const& from, QFileInfo const& otherwise)
    {
        if (from.value(isDefaultPathKey, false).toBool())
            return ActionLog::defaultFileInfo();
        QString const path = pathFrom(from.value(pathKey, QString()).toString());
        return path.isEmpty() ? otherwise : QFileInfo(path);
    }

} // namespace

void ActionLog::save(IPersistDestination* destination) const
{
    MutexLocker const locker(m_d->mutex);
    destination->beginGroup(groupName);
    destination->setValue(splitPolicyKey, int(m_d->splitPolicy));
    destination->setValue(splitSizeKey, m_d->splitSize);
    destination->setValue(userKey, m_d->user);
    destination->setValue(passwordKey, storedPassword(m_d->password));
    destination->setValue(isDefaultPathKey, isDefault(m_d->fileInfo));
    destination->setValue(pathKey, storedPath(m_d->fileInfo));
    destination->setValue(durabilityKey, int(m_d->durability));
    destination->endGroup();
}

void ActionLog::load(IPersistDestination* destination)
{
    m_d->call([this, destination] {
        destination->beginGroup(groupName);
        m_d->splitPolicy = split::policyFrom(numberFrom(*destination, splitPolicyKey, m_d->splitPolicy));
        m_d->splitSize = numberFrom(*destination, splitSizeKey, m_d->splitSize);
        QString const user = destination->value(userKey, m_d->user).toString();
        QVariant const password = destination->value(passwordKey, storedPassword(m_d->password));
        m_d->useCredentials(user, passwordFrom(password.toByteArray()));
        m_d->useFile(loadFile(*destination, m_d->fileInfo));
        setDurability(durabilityFrom(numberFrom(*destination, durabilityKey, m_d->durability)));
        destination->endGroup();
    });
}

} // namespace qv
