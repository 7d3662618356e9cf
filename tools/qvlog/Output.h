// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QFile>
#include <QString>

/// Where a report goes, as UTF-8. What cannot be written throws OutputException.
class Output {
public:
    /// Standard output. On a terminal whatever could act on it is escaped, in every format.
    Output();
    /// A new file; one that exists is never overwritten.
    explicit Output(QString const& path);

    bool isTerminal() const { return m_isTerminal; }
    /// Complete lines.
    void write(QString const& text);
    /// Hands everything to the system.
    void flush();
    /// Takes a new file away again.
    void discard() { m_file.remove(); }

private:
    [[noreturn]] void fail() const;

    QFile m_file;
    QString m_name;
    bool m_isTerminal = false;
};
