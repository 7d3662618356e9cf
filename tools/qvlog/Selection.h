// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "LoggedEntry.h"
#include "Options.h"

/// Tells which entries are asked for.
class Selection {
public:
    /// @p englishCategories are the names of categories before they were translated. Throws UsageException where a
    /// category is none.
    Selection(Wanted const& wanted, QStringList const& englishCategories);

    /// Whether everything fits that is asked for: one of the users, of the categories, of the ids; all the texts; a
    /// time that may lie in the span.
    bool takes(LoggedEntry const& entry) const;

private:
    bool isInSpan(LoggedEntry const& entry) const;
    bool isOfUser(LoggedEntry const& entry) const;
    bool isOfCategory(LoggedEntry const& entry) const;
    bool holdsTexts(LoggedEntry const& entry) const;

    Wanted m_wanted;
    QStringList m_categories; ///< Codes, and translated names.
};

/// The selection that the options ask for, in the language that they choose. Throws UsageException.
Selection chosenSelection(Options const& options);
