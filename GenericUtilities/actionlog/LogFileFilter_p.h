// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/actionlog/Utf8Scanner_p.h>
#include <GenericUtilities/actionlog/XmlScanner_p.h>

#include <QIODevice>
#include <QString>

namespace qv {

/// Stands between a log file and the XML reader. It drops the control characters that older writers left in names and
/// values, each of which would make Qt refuse the whole file, and ends the file where a piece of it asks for more than
/// readers grant, or is not UTF-8: Qt would lose what it read together with such a byte. It holds no bytes of its own.
class GENERICUTILITIES_EXPORT LogFileFilter : public QIODevice {
public:
    /// @p source stays the caller's, is open for reading, and is read from where it stands.
    explicit LogFileFilter(QIODevice* source);
    ~LogFileFilter() override;

    bool isSequential() const override { return true; }
    /// Whether the last read found nothing. Another one may find what was appended since.
    bool atEnd() const override { return m_isAtEnd; }
    /// Has the next read look at the source again.
    void retry() { m_isAtEnd = hasFailed(); }

    /// Why nothing more will come: the source's error or what was refused, translated; empty while all is well.
    QString const& failure() const { return m_failure; }
    bool hasFailed() const { return !m_failure.isEmpty(); }

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(char const* data, qint64 size) override;

private:
    qint64 keep(char* data, qint64 size);
    void fail(QString const& text);

    QIODevice* m_source;
    xml::XmlScanner m_scanner;
    xml::Utf8Scanner m_utf8;
    QString m_failure;
    bool m_isAtEnd = false;
};

} // namespace qv
