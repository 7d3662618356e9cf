// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Disk.h"

namespace crash {

namespace {

    constexpr int pieceSize = 512;

    /// Bytes beyond the end of a file are zero once it has grown.
    QByteArray padded(QByteArray bytes, int size)
    {
        return bytes.append(qMax(0, size - bytes.size()), '\0').left(size);
    }

    template <class T> T const& anyOf(QVector<T> const& versions, QRandomGenerator& random)
    {
        return versions[random.bounded(versions.size())];
    }

    QByteArray mixed(QVector<QByteArray> const& versions, QRandomGenerator& random)
    {
        int const size = anyOf(versions, random).size();
        QByteArray bytes;
        for (int at = 0; at < size; at += pieceSize)
            bytes += padded(anyOf(versions, random).mid(at, pieceSize), qMin(pieceSize, size - at));
        return bytes;
    }

    QByteArray bytesOf(std::string const& text)
    {
        return QByteArray(text.data(), static_cast<int>(text.size()));
    }

} // namespace

void Disk::apply(calls::Event const& event)
{
    using Event = calls::Event;
    QByteArray const name = bytesOf(event.name);
    switch (event.kind) {
    case Event::Found:
        m_files.insert(event.file, {bytesOf(event.bytes)});
        m_names.last().insert(name, event.file);
        break;
    case Event::Create:
        m_files.insert(event.file, {QByteArray()});
        changedNames().insert(name, event.file);
        break;
    case Event::Write:
        write(event.file, event.offset, bytesOf(event.bytes));
        break;
    case Event::Truncate:
        truncate(event.file, event.offset);
        break;
    case Event::Sync:
        m_files[event.file] = {m_files[event.file].last()};
        break;
    case Event::Rename:
        changedNames().remove(name);
        m_names.last().insert(bytesOf(event.newName), event.file);
        break;
    case Event::Remove:
        changedNames().remove(name);
        break;
    case Event::SyncFolder:
        m_names = {m_names.last()};
        break;
    case Event::Mark:
        break;
    }
}

void Disk::applyPart(calls::Event event, int bytes)
{
    event.bytes.resize(static_cast<size_t>(bytes));
    apply(event);
}

void Disk::write(int file, qint64 offset, QByteArray const& bytes)
{
    int const at = static_cast<int>(offset);
    Versions& versions = m_files[file];
    versions.append(padded(versions.last(), qMax(versions.last().size(), at)).replace(at, bytes.size(), bytes));
}

void Disk::truncate(int file, qint64 size)
{
    Versions& versions = m_files[file];
    versions.append(padded(versions.last(), static_cast<int>(size)));
}

Disk::Names& Disk::changedNames()
{
    m_names.append(Names(m_names.last()));
    return m_names.last();
}

Files Disk::seen() const
{
    Files files;
    for (auto name = m_names.last().begin(); name != m_names.last().end(); ++name)
        files.insert(name.key(), m_files[name.value()].last());
    return files;
}

Files Disk::afterLoss(QRandomGenerator& random) const
{
    Names const& names = anyOf(m_names, random);
    Files files;
    for (auto name = names.begin(); name != names.end(); ++name)
        files.insert(name.key(), mixed(m_files[name.value()], random));
    return files;
}

} // namespace crash
