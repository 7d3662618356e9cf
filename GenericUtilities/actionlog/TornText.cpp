// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/TornText_p.h>

#include <GenericUtilities/actionlog/MoveAside_p.h>

#include <QFileInfo>

namespace qv {

namespace {

    /// Under a name that no file had.
    std::unique_ptr<FileEncrypt> openAside(QString const& path, DeviceMaker const& newDevice)
    {
        QFileInfo const info(path);
        QString const stem = info.baseName();
        AsideName const name = {stem, info.fileName().mid(stem.size()) + QStringLiteral(".torn")};
        int attempt = 1;
        QString aside;
        do
            aside = info.absolutePath() + QLatin1Char('/') + name.fileName(attempt++);
        while (QFileInfo::exists(aside));
        auto device = newDevice(aside);
        return device->open(QIODevice::WriteOnly | QIODevice::NewOnly) ? std::move(device) : nullptr;
    }

    bool copy(QIODevice& from, QIODevice& to)
    {
        QByteArray block(65536, Qt::Uninitialized);
        for (;;) {
            qint64 const count = from.read(block.data(), block.size());
            if (count <= 0)
                return count == 0;
            if (to.write(block.constData(), count) != count)
                return false;
        }
    }

} // namespace

bool keepTornText(FileEncrypt& file, qint64 offset, DeviceMaker const& newDevice)
{
    auto const aside = openAside(file.fileName(), newDevice);
    if (!aside)
        return false;
    bool const isKept = file.seek(offset) && copy(file, *aside) && aside->sync();
    if (!isKept)
        aside->remove();
    return isKept;
}

} // namespace qv
