// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Anchors.h"

#include "Failures.h"

#include <QFile>
#include <QFileInfo>

namespace {

constexpr int AnchorBytes = 56;
constexpr int IdBytes = 32;
constexpr int MaxAnchors = 100000;

[[noreturn]] void refuseAnchors(QString const& path, QString const& reason)
{
    throw RefusalException(QStringLiteral("'%1': %2").arg(path, reason));
}

/// Empty where @p line holds none.
QByteArray anchorIn(QByteArray const& line)
{
    QByteArray const anchor = QByteArray::fromHex(line);
    return anchor.size() == AnchorBytes && anchor.toHex() == line ? anchor : QByteArray();
}

} // namespace

Anchors::Anchors(QString const& path)
{
    QFile file(path);
    // A pipe would wait for its writer.
    if (QFileInfo const info(path); info.exists() && !info.isFile())
        refuseAnchors(path, QStringLiteral("it is no regular file"));
    if (!file.open(QIODevice::ReadOnly))
        refuseAnchors(path, QStringLiteral("it cannot be read: %1").arg(file.errorString()));
    constexpr int lineBytes = 2 * AnchorBytes + 1;
    while (m_anchors.size() < MaxAnchors && !file.atEnd()) {
        QByteArray const anchor = anchorIn(file.readLine(lineBytes + 1).trimmed());
        if (anchor.isEmpty())
            refuseAnchors(path, QStringLiteral("line %1 holds no anchor").arg(m_anchors.size() + 1));
        m_anchors.insert(anchor.left(IdBytes), anchor);
    }
    if (m_anchors.isEmpty() || !file.atEnd())
        refuseAnchors(path, m_anchors.isEmpty() ? QStringLiteral("it is empty") : QStringLiteral("it is too long"));
    m_logs = missing();
}

QByteArrayList Anchors::take(QByteArray const& anchor)
{
    QByteArray const id = anchor.left(IdBytes);
    QByteArrayList const known = m_anchors.values(id);
    m_anchors.remove(id);
    return known;
}

NewAnchors::NewAnchors(QString const& path)
    : m_path(path)
    , m_output(path)
{
}

NewAnchors::~NewAnchors()
{
    if (!m_isKept)
        m_output.discard();
}

void NewAnchors::add(QByteArray const& anchor)
{
    m_output.write(QString::fromLatin1(anchor.toHex()) + QLatin1Char('\n'));
    m_isEmpty = false;
}

void NewAnchors::keep()
{
    if (m_isEmpty)
        throw OutputException(QStringLiteral("'%1': no log is encrypted, and so none has an anchor").arg(m_path));
    m_output.flush();
    m_isKept = true;
}
