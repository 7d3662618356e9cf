// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/actionlog/LogEntry.h>

// Kinds of entries of this program, which no library knows. Ids and codes are stored; never change them.

/// The program was started.
class StartLogEntry : public qv::LogEntry {
public:
    StartLogEntry();
    static qv::LogEntry* create();

    qv::FourChars id() const override;
    qv::ELogCategory category() const override;
    QString descriptionText() const override;
    QString action() const override;

    qv::TLogValue<QString> folder;
    qv::TLogValue<QString> version;
};

/// A search was answered.
class SearchLogEntry : public qv::LogEntry {
public:
    SearchLogEntry();
    static qv::LogEntry* create();

    qv::FourChars id() const override;
    qv::ELogCategory category() const override;
    QString descriptionText() const override;
    QString action() const override;

    qv::TLogValue<QString> condition; ///< As code; empty for all recordings.
    qv::TLogValue<int> rows;
};

/// The program ended.
class QuitLogEntry : public qv::LogEntry {
public:
    QuitLogEntry();
    static qv::LogEntry* create();

    qv::FourChars id() const override;
    qv::ELogCategory category() const override;
    QString descriptionText() const override;
    QString action() const override;

    qv::TLogValue<int> exitCode;
};
