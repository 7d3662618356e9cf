// SPDX-License-Identifier: LGPL-2.1-or-later
#include "LogInput.h"

#include <GenericUtilities/actionlog/LogFileFilter_p.h>

#include <QTextCodec>
#include <QXmlStreamReader>

#include <algorithm>

using fuzz::require;
using qv::LogFileFilter;
using qv::xml::XmlScanner;

/// Sends the input through the filter before the XML reader, whole and in pieces.
namespace {

struct Filtered {
    QByteArray bytes;
    QString failure;
};

Filtered filtered(QByteArray const& bytes, int pieceSize)
{
    fuzz::Pieces source(bytes, pieceSize);
    LogFileFilter filter(&source);
    return {filter.readAll(), filter.failure()};
}

QByteArray withoutControls(QByteArray bytes)
{
    bytes.truncate(
        static_cast<int>(std::remove_if(bytes.begin(), bytes.end(), &XmlScanner::isDropped) - bytes.begin()));
    return bytes;
}

void checkEncoding(QByteArray const& bytes)
{
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    require(state.invalidChars == 0, "what passes is UTF-8");
}

/// What Qt takes for elements is within the bounds, wherever the filter saw them.
void checkElements(QByteArray const& bytes)
{
    QXmlStreamReader reader(bytes);
    reader.setNamespaceProcessing(false);
    while (!reader.atEnd()) {
        QXmlStreamReader::TokenType const token = reader.readNext();
        bool const isForeign = token == QXmlStreamReader::StartDocument && !reader.documentEncoding().isEmpty()
            && reader.documentEncoding().compare(QLatin1String("UTF-8"), Qt::CaseInsensitive) != 0;
        if (isForeign)
            return; // the log's reader refuses it
        require(token != QXmlStreamReader::DTD, "no document type passes");
        require(reader.attributes().size() <= XmlScanner::MaxAttributes, "no element has too many attributes");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    if (size < 3)
        return 0;
    QByteArray const bytes = fuzz::logBytes(data, static_cast<int>(size));
    Filtered const whole = filtered(bytes, std::max(1, bytes.size()));
    Filtered const pieces = filtered(bytes, 1 + data[0]);
    require(whole.bytes == pieces.bytes && whole.failure == pieces.failure, "the size of pieces changes nothing");
    QByteArray const clean = withoutControls(bytes);
    require(clean.startsWith(whole.bytes), "only control characters are dropped");
    require(!whole.failure.isEmpty() || whole.bytes == clean, "what stops the filter is told");
    checkEncoding(whole.bytes);
    checkElements(whole.bytes);
    return 0;
}
