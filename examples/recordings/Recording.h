// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/properties/CommonProperties.h>
#include <GenericUtilities/properties/PropertySet.h>

#include <QDateTime>
#include <QFileInfo>
#include <QHash>

/// Describes files as property sets.
///
/// Sets share property objects: what a file has in common with others (its folder, its owner, its day) is made once.
/// That keeps a recording below 3 KiB; in return nobody may write to the properties of a finished one.
class RecordingMaker {
public:
    /// @p today is what ages are counted to.
    RecordingMaker(QString const& root, QDate const& today);

    /// The properties that all recordings in @p path, a folder at or beneath the root, have in common.
    qvgen::PropertySet folder(QString const& path) const;
    /// All properties of one file, validated; @p folder comes from folder().
    qvgen::PropertySet recording(qvgen::PropertySet const& folder, QFileInfo const& file);

    /// A set with the properties of any recording, for building conditions and tables; its values mean nothing.
    static qvgen::PropertySet prototype();

private:
    using Validator = qvm::smart<qvgen::PropertyValidator>;

    qvgen::PropertySet owner(QFileInfo const& file) const;
    qvgen::PropertySet access(int permissions) const;
    qvgen::PropertySet day(QDate const& date) const;

    QString m_root;
    QDate m_today;
    Validator m_depthRange;
    Validator m_permissionRange;
    Validator m_ageRange;
    Validator m_momentRange;
    QHash<QString, qvgen::PropertySet> m_suffixes;
    QHash<quint64, qvgen::PropertySet> m_owners;
    QHash<int, qvgen::PropertySet> m_accesses;
    QHash<QDate, qvgen::PropertySet> m_days;
};
