// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace qv {

/// What the system's user database says of an account.
struct UserAccount {
    QString name;
    QString fullName; ///< Empty where the database has none.
    QByteArray home; ///< As the system spells it.
};

/// Looks an account up by its login name; safe in several threads. Returns 0 and sets @p account, else an errno value:
/// ENOENT where there is no such account.
int findUserAccount(QString const& name, UserAccount& account);
/// The account that this process runs under.
int findOwnUserAccount(UserAccount& account);

} // namespace qv
