// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Input.h"

#include <GenericUtilities/expressions/Expression.h>

#include <typeinfo>

using namespace qvgen;

/// Reads the bytes behind the first, which chooses the stream version, as the value of a constant.
namespace {

QByteArray recordAround(QByteArray const& variant, int version)
{
    QByteArray record;
    QDataStream out(&record, QIODevice::WriteOnly);
    out.setVersion(version);
    constexpr qint32 fieldsVersion = 1;
    out << typeid(ConstExpression).name() << fieldsVersion << true;
    out.writeRawData(variant.constData(), variant.size());
    return record;
}

// What was accepted is harmless, so that Qt may read it, too.
void compareWithQt(QVariant const& value, qint64 length, QByteArray const& variant, int version)
{
    QDataStream in(variant);
    in.setVersion(version);
    QVariant expected;
    in >> expected;
    fuzz::require(in.status() == QDataStream::Ok, "Qt reads what is accepted");
    fuzz::require(in.device()->pos() == length, "as many bytes as Qt reads");
    fuzz::require(expected.userType() == value.userType(), "the type that Qt reads");
    fuzz::require(expected.isNull() == value.isNull(), "null where Qt reads null");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    if (size == 0)
        return 0;
    int const version = fuzz::streamVersion(data[0]);
    auto const variant = QByteArray(reinterpret_cast<char const*>(data) + 1, static_cast<int>(size) - 1);
    QByteArray const record = recordAround(variant, version);
    fuzz::Reading const reading = fuzz::read(record, version);
    fuzz::checkReading(reading, version);
    auto const* const constant = dynamic_cast<ConstExpression const*>(reading.tree.constData());
    fuzz::require(constant || reading.status == QDataStream::ReadCorruptData, "a constant or a refusal");
    if (reading.status == QDataStream::Ok)
        compareWithQt(constant->value(), reading.length - (record.size() - variant.size()), variant, version);
    return 0;
}
