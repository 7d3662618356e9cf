// SPDX-License-Identifier: LGPL-2.1-or-later
// Appends records to a file and reports on standard output: a byte before the file is opened, then the index of each
// record (4 bytes) once it is flushed.
//
//     appender FILE plain|encrypted WRITER FIRST COUNT [quiet|aside]
//
// "quiet" reports no indices; "aside" neither, but moves the file aside every thousand records, to FILE.1, FILE.2, …

#include "Folder.h"
#include "Records.h"

#include <QTextStream>

#include <unistd.h>

namespace {

struct Task {
    QString path;
    crash::Mode mode;
    quint32 writer;
    quint32 first;
    quint32 count;
    QString habit;
};

Task taskFrom(char** words)
{
    auto const text = [words](int i) { return QFile::decodeName(words[i]); };
    return {text(1), text(2) == QLatin1String("plain") ? crash::Mode::Plain : crash::Mode::Encrypted, text(3).toUInt(),
        text(4).toUInt(), text(5).toUInt(), words[6] ? text(6) : QString()};
}

bool report(void const* bytes, size_t size)
{
    return write(STDOUT_FILENO, bytes, size) == static_cast<ssize_t>(size);
}

bool moveAside(qv::FileEncrypt& device, QString const& newPath)
{
    device.close();
    return QFile::rename(device.fileName(), newPath) && device.open(QIODevice::WriteOnly | QIODevice::Append);
}

bool appendOne(qv::FileEncrypt& device, Task const& task, quint32 index)
{
    QByteArray const record = records::make(task.writer, index);
    if (device.write(record) != record.size() || !device.flush())
        return false;
    if (task.habit == QLatin1String("aside") && index % 1000 == 999)
        return moveAside(device, task.path + QStringLiteral(".%1").arg(index / 1000 + 1));
    return !task.habit.isEmpty() || report(&index, sizeof index);
}

int complain(qv::FileEncrypt const& device)
{
    QTextStream(stderr) << "appender: " << device.errorString() << '\n';
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 6)
        return 2;
    Task const task = taskFrom(argv);
    qv::FileEncrypt device(task.path);
    crash::prepare(device, task.mode);
    if (!report("o", 1) || !device.open(QIODevice::WriteOnly | QIODevice::Append))
        return complain(device);
    for (quint32 i = 0; i < task.count; ++i) {
        if (!appendOne(device, task, task.first + i))
            return complain(device);
    }
    return 0;
}
