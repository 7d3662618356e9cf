// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/actionlog/LogEntry.h>

#include <memory>
#include <vector>

/// An entry as clients may define one: any description, any values.
class OtherEntry : public qv::LogEntry {
public:
    explicit OtherEntry(QString const& descriptionText = {}, qv::FourChars id = "Othr")
        : m_descriptionText(descriptionText)
        , m_id(id)
    {
    }

    template <typename T> OtherEntry& with(qv::FourChars code, T const& value)
    {
        m_values.push_back(std::make_unique<qv::TLogValue<T>>(code, code.toString(), value));
        append(m_values.back().get());
        return *this;
    }

    static qv::LogEntry* create() { return &(new OtherEntry(QStringLiteral("%1")))->with("valA", QString()); }

    qv::FourChars id() const override { return m_id; }
    qv::ELogCategory category() const override { return otherCategory; }
    QString descriptionText() const override { return m_descriptionText; }
    QString action() const override { return QStringLiteral("Other"); }

    qv::ELogCategory otherCategory = qv::LogCategorySystem;

private:
    QString m_descriptionText;
    qv::FourChars m_id;
    std::vector<std::unique_ptr<qv::LogValue>> m_values;
};
