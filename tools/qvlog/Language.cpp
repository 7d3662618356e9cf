// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Language.h"

#include <GenericUtilities/util/Translations.h>

#include <QLocale>

void chooseLanguage(QString const& language)
{
    // What the environment asks for may have no catalogue: then the texts stay English.
    qv::installTranslations(QLocale(language.isEmpty() ? QLocale::system().uiLanguages().value(0) : language));
}
