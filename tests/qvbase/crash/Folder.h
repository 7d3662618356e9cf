// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/FileEncrypt.h>

#include <QByteArray>
#include <QMap>
#include <QTemporaryDir>

namespace crash {

/// How the file of a test is kept.
enum class Mode { Plain, Encrypted };

/// Credentials for @p mode; key derivation is made cheap.
void prepare(qv::FileEncrypt& device, Mode mode);

/// Whether the device tells of an error since it was last opened.
bool hasError(qv::FileEncrypt const& device);

/// A row for each mode, column "mode".
void modes();

/// Names and contents.
using Files = QMap<QByteArray, QByteArray>;

/// A folder for files under test, in memory where the machine has such a place, gone with the object.
class Folder {
public:
    Folder();
    QString path() const { return m_folder.path(); }
    QString path(QString const& name) const { return m_folder.filePath(name); }
    /// Makes the folder hold exactly these files.
    void hold(Files const& files) const;
    Files files() const;

private:
    QTemporaryDir m_folder;
};

/// What a new device reads from the file; what it could read, where @p error is given and an error stops it.
QByteArray contentOf(QString const& path, Mode mode, QString* error = nullptr);

/// Empty where verify() of a new device finds the file intact; every plain file is.
QString faultOf(QString const& path, Mode mode);

} // namespace crash

Q_DECLARE_METATYPE(crash::Mode)
