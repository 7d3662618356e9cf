// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Selection.h"

#include "Failures.h"
#include "Language.h"

#include <GenericUtilities/actionlog/LogCategory.h>

#include <QCoreApplication>

#include <algorithm>

namespace {

bool isCode(QString const& text)
{
    auto const code = static_cast<qv::ELogCategory>(qv::FourChars(text).value());
    // An unknown code is called as none is.
    return text.size() == 4
        && (code == qv::LogCategoryNone || qv::LogCategory(code).name() != qv::LogCategory(qv::LogCategoryNone).name());
}

/// The item of @p names that is @p text in any case; null for none.
QString foundIn(QStringList const& names, QString const& text)
{
    auto const isIt = [&](QString const& name) { return name.compare(text, Qt::CaseInsensitive) == 0; };
    auto const found = std::find_if(names.begin(), names.end(), isIt);
    return found != names.end() ? *found : QString();
}

/// A category as entries have it: its code, or its name in the language at hand.
QString categoryOf(QString const& text, QStringList const& englishNames)
{
    if (isCode(text))
        return text;
    QString const english = foundIn(englishNames, text);
    QString name = english.isEmpty() ? foundIn(qv::LogCategory::categoryNames(), text)
                                     : QCoreApplication::translate("ActionLog", english.toUtf8().constData());
    if (name.isEmpty())
        throw UsageException(
            QStringLiteral("--category takes a code such as Expt or a name such as Export, not '%1'").arg(text));
    return name;
}

} // namespace

Selection::Selection(Wanted const& wanted, QStringList const& englishCategories)
    : m_wanted(wanted)
{
    for (QString const& category : wanted.categories)
        m_categories += categoryOf(category, englishCategories);
}

bool Selection::takes(LoggedEntry const& entry) const
{
    return isInSpan(entry) && isOfUser(entry) && isOfCategory(entry)
        && (m_wanted.ids.isEmpty() || m_wanted.ids.contains(entry.id)) && holdsTexts(entry);
}

bool Selection::isInSpan(LoggedEntry const& entry) const
{
    if (!entry.time.isValid())
        return m_wanted.since.isNull() && m_wanted.until.isNull();
    return (m_wanted.since.isNull() || entry.lastMoment() >= m_wanted.since)
        && (m_wanted.until.isNull() || entry.time <= m_wanted.until);
}

bool Selection::isOfUser(LoggedEntry const& entry) const
{
    auto const isIt
        = [&](QString const& user) { return entry.user == user || entry.user.startsWith(user + QLatin1String(" (")); };
    return m_wanted.users.isEmpty() || std::any_of(m_wanted.users.begin(), m_wanted.users.end(), isIt);
}

bool Selection::isOfCategory(LoggedEntry const& entry) const
{
    return m_categories.isEmpty()
        || (!entry.category.isEmpty()
            && (m_categories.contains(entry.category) || m_categories.contains(entry.categoryName)));
}

bool Selection::holdsTexts(LoggedEntry const& entry) const
{
    auto const isHeld = [&](QString const& text) {
        return entry.user.contains(text, Qt::CaseInsensitive) || entry.action.contains(text, Qt::CaseInsensitive)
            || entry.description.contains(text, Qt::CaseInsensitive);
    };
    return std::all_of(m_wanted.texts.begin(), m_wanted.texts.end(), isHeld);
}

Selection chosenSelection(Options const& options)
{
    QStringList const englishCategories = qv::LogCategory::categoryNames();
    chooseLanguage(options.language);
    return {options.wanted, englishCategories};
}
