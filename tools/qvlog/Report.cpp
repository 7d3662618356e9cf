// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Report.h"

#include <GenericUtilities/actionlog/XmlWording_p.h>
#include <terminal/Text.h>

#include <QBuffer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QXmlStreamWriter>

namespace {

/// A line for people: time, user, action and description.
class TextReport : public Report {
public:
    explicit TextReport(Output& output)
        : m_output(output)
    {
    }

    void write(LoggedEntry const& entry) override
    {
        auto const orDash = [](QString const& text) { return text.isEmpty() ? QStringLiteral("-") : printable(text); };
        QString const description = entry.description.isEmpty() ? QString() : QStringLiteral(": ") + entry.description;
        m_output.write(orDash(entry.timeText(QLatin1Char(' '))) + QLatin1String("  ") + orDash(entry.user)
            + QLatin1String("  ") + printable(entry.action + description) + QLatin1Char('\n'));
    }

private:
    Output& m_output;
};

QString csvLine(QStringList fields)
{
    for (QString& field : fields) {
        bool const isPlain = !field.contains(QLatin1Char('"')) && !field.contains(QLatin1Char(','))
            && !field.contains(QLatin1Char('\r')) && !field.contains(QLatin1Char('\n'));
        if (!isPlain)
            field = QLatin1Char('"') + field.replace(QLatin1Char('"'), QLatin1String("\"\"")) + QLatin1Char('"');
    }
    return fields.join(QLatin1Char(',')) + QLatin1String("\r\n");
}

/// RFC 4180, with a line of titles.
class CsvReport : public Report {
public:
    explicit CsvReport(Output& output)
        : m_output(output)
    {
    }

    void begin() override
    {
        m_output.write(QStringLiteral("time,user,category,category_name,id,action,description,file\r\n"));
    }
    void write(LoggedEntry const& entry) override
    {
        m_output.write(csvLine({entry.timeText(QLatin1Char('T')), entry.user, entry.category, entry.categoryName,
            entry.id, entry.action, entry.description, entry.file}));
    }

private:
    Output& m_output;
};

/// An object of JSON in each line.
class JsonReport : public Report {
public:
    explicit JsonReport(Output& output)
        : m_output(output)
    {
    }

    void write(LoggedEntry const& entry) override
    {
        QJsonObject values;
        for (auto const& value : entry.values)
            values.insert(value.first, value.second);
        QJsonObject const object{
            {QStringLiteral("time"), entry.timeText(QLatin1Char('T'))},
            {QStringLiteral("user"), entry.user},
            {QStringLiteral("category"), entry.category},
            {QStringLiteral("categoryName"), entry.categoryName},
            {QStringLiteral("id"), entry.id},
            {QStringLiteral("action"), entry.action},
            {QStringLiteral("description"), entry.description},
            {QStringLiteral("values"), values},
            {QStringLiteral("file"), entry.file},
        };
        m_output.write(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + QLatin1Char('\n'));
    }

private:
    Output& m_output;
};

/// A document of its own, not a log file: with translated texts and times in ISO 8601. All texts are attributes, in
/// which Qt escapes whatever parsers would take for the end of a line.
class XmlReport : public Report {
public:
    explicit XmlReport(Output& output)
        : m_output(output)
    {
        m_buffer.open(QIODevice::WriteOnly);
        m_writer.setDevice(&m_buffer);
        m_writer.setAutoFormatting(true);
        m_writer.setAutoFormattingIndent(2);
    }

    void begin() override
    {
        m_writer.writeStartDocument();
        m_writer.writeStartElement(QStringLiteral("log"));
        pass();
    }
    void write(LoggedEntry const& entry) override
    {
        m_writer.writeStartElement(QStringLiteral("entry"));
        attribute("id", entry.id);
        attribute("time", entry.timeText(QLatin1Char('T')));
        attribute("user", entry.user);
        attribute("category", entry.category);
        attribute("categoryName", entry.categoryName);
        attribute("action", entry.action);
        attribute("description", entry.description);
        attribute("file", entry.file);
        for (auto const& value : entry.values) {
            m_writer.writeStartElement(QStringLiteral("value"));
            attribute("name", value.first);
            attribute("text", value.second);
            m_writer.writeEndElement();
        }
        m_writer.writeEndElement();
        pass();
    }
    void end() override
    {
        m_writer.writeEndDocument();
        pass();
    }

private:
    void attribute(char const* name, QString const& text)
    {
        m_writer.writeAttribute(QLatin1String(name), qv::xml::writtenText(text));
    }
    void pass()
    {
        m_output.write(QString::fromUtf8(m_buffer.data()));
        m_buffer.buffer().clear();
        m_buffer.seek(0);
    }

    Output& m_output;
    QBuffer m_buffer;
    QXmlStreamWriter m_writer;
};

} // namespace

std::unique_ptr<Report> makeReport(Format format, Output& output)
{
    switch (format) {
    case Format::Text:
        return std::make_unique<TextReport>(output);
    case Format::Csv:
        return std::make_unique<CsvReport>(output);
    case Format::JsonLines:
        return std::make_unique<JsonReport>(output);
    case Format::Xml:
        return std::make_unique<XmlReport>(output);
    }
    Q_UNREACHABLE();
}
