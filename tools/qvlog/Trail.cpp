// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Trail.h"

#include "EntryReader.h"
#include "Selection.h"
#include "Sources.h"

void Findings::tellDamage(QString const& file, QString const& what)
{
    addDamage();
    printError(QStringLiteral("'%1' is damaged: %2").arg(file, what));
}

void Findings::tellRefusal(QString const& file, QString const& what)
{
    m_hasRefusal = true;
    printError(QStringLiteral("'%1': %2").arg(file, what));
}

ExitCode readTrail(Options const& options, Access& access, std::function<void(LoggedEntry const&)> const& take)
{
    Findings findings;
    Selection const selection = chosenSelection(options);
    for (QString const& path : sourceFiles(options.sources, access)) {
        try {
            EntryReader reader(path, access, options.logLocale ? &*options.logLocale : nullptr);
            while (auto const entry = reader.next()) {
                if (selection.takes(*entry))
                    take(*entry);
            }
        } catch (DamageException const& exception) {
            findings.tellDamage(path, exception.message());
        } catch (OutputException const&) {
            throw;
        } catch (RefusalException const& exception) {
            findings.tellRefusal(path, exception.message());
        }
    }
    return findings.exitCode();
}
