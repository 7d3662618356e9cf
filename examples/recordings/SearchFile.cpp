// SPDX-License-Identifier: LGPL-2.1-or-later
#include "SearchFile.h"

#include "SearchCheck.h"

#include <qvbase/Exceptions.h>

#include <QCryptographicHash>
#include <QDataStream>
#include <QFileInfo>
#include <QSaveFile>

using namespace qvgen;

namespace {

// Stored; never change.
constexpr quint32 magic = 0x52537263;
constexpr quint32 formatVersion = 1;
constexpr QDataStream::Version streamVersion = QDataStream::Qt_5_15;

constexpr qint64 maxBytes = 1 << 20;

[[noreturn]] void refuseFile(char const* reason)
{
    throw qv::ExceptionQt(QString::fromLatin1(reason));
}

[[noreturn]] void fail(QString const& file, char const* verb, QString const& reason)
{
    throw qv::ExceptionQt(
        QStringLiteral("the search file '%1' cannot be %2: %3").arg(file, QLatin1String(verb), reason));
}

void setUp(QDataStream& stream)
{
    stream.setVersion(streamVersion);
    stream.setByteOrder(QDataStream::BigEndian);
}

/// At most one byte more than a search may have, whatever the file pretends to be.
QByteArray readBytes(QString const& name)
{
    // Not from a pipe or a terminal, where reading would wait.
    QFileInfo const info(name);
    if (info.exists() && !info.isFile())
        refuseFile("it is no file");
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        throw qv::ExceptionQt(file.errorString());
    QByteArray bytes = file.read(maxBytes + 1);
    if (file.error() != QFileDevice::NoError)
        throw qv::ExceptionQt(file.errorString());
    return bytes;
}

bool isSearch(QByteArray const& bytes)
{
    QDataStream in(bytes);
    setUp(in);
    quint32 mark = 0;
    in >> mark;
    return mark == magic;
}

void write(QString const& name, QByteArray const& bytes)
{
    if (bytes.size() > maxBytes)
        refuseFile("it would be larger than 1 MiB");
    if (QFileInfo::exists(name) && !isSearch(readBytes(name)))
        refuseFile("it holds something else than a search");
    QSaveFile file(name);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        throw qv::ExceptionQt(file.errorString());
}

} // namespace

QByteArray encodedSearch(Search const& search)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    setUp(out);
    out << magic << formatVersion << search.condition << ExpressionHandle(search.order);
    if (out.status() != QDataStream::Ok)
        refuseFile("it is nested too deeply");
    return bytes + QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

Search decodedSearch(QByteArray const& bytes, PropertySet const& recording)
{
    if (!isSearch(bytes))
        refuseFile("it is no saved search");
    if (bytes.size() > maxBytes)
        refuseFile("it is larger than 1 MiB");
    QDataStream in(bytes);
    setUp(in);
    quint32 mark = 0;
    quint32 version = 0;
    in >> mark >> version;
    if (version > formatVersion)
        refuseFile("it was saved by a later version of this program");
    Search search{QStringLiteral("Your search"), Expression::readExpression(in)};
    search.order = ExpressionList(Expression::readExpression(in));
    // Tells every kind of damage at once: the reader itself passes over versions and unknown classes.
    if (encodedSearch(search) != bytes)
        refuseFile("it is damaged");
    checkSearch(search, recording);
    return search;
}

void writeSearchFile(QString const& file, Search const& search)
{
    try {
        write(file, encodedSearch(search));
    } catch (qv::ExceptionQt const& exception) {
        fail(file, "written", exception.message());
    }
}

Search readSearchFile(QString const& file, PropertySet const& recording)
{
    try {
        return decodedSearch(readBytes(file), recording);
    } catch (qv::ExceptionQt const& exception) {
        fail(file, "used", exception.message());
    }
}
