// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QByteArray>

/// Pieces of log files, spelled out.
namespace document {

inline QByteArray header(QByteArray const& version = "v0.1")
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><Entries Version=\"" + version
        + "\" LogFile=\"a.qvl\" Date=\"2020-02-29T12:34:56\">";
}

inline QByteArray element(QByteArray const& id, QByteArray const& attributes)
{
    return "<Entry ID=\"" + id + "\" " + attributes + "/>";
}

/// As a file is ended when the log leaves it.
constexpr char const* End = "\n</Entries>\n";

} // namespace document
