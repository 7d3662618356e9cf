// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "Access.h"
#include "Failures.h"
#include "LoggedEntry.h"
#include "Options.h"

#include <functional>

/// Remembers what kept files from being read.
class Findings {
public:
    void addDamage() { m_hasDamage = true; }
    /// These tell it on standard error, too.
    void tellDamage(QString const& file, QString const& what);
    void tellRefusal(QString const& file, QString const& what);
    bool hasRefusal() const { return m_hasRefusal; }
    /// Damage outweighs what could not be read: it is a finding, the other none.
    ExitCode exitCode() const { return m_hasDamage ? DamageFound : m_hasRefusal ? NotDone : Fine; }

private:
    bool m_hasDamage = false;
    bool m_hasRefusal = false;
};

/// Hands the entries that are asked for to @p take, file by file in the order of time, one at a time. A file that is
/// damaged gives those before the damage; the next one follows all the same.
ExitCode readTrail(Options const& options, Access& access, std::function<void(LoggedEntry const&)> const& take);
