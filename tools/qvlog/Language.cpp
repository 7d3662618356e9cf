// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Language.h"

#include "Failures.h"

#include <QCoreApplication>
#include <QLocale>
#include <QTranslator>

namespace {

QString catalogueOf(QString const& language)
{
    QString const locale = language == QLatin1String("de") ? QStringLiteral("de_DE") : QStringLiteral("fr_FR");
    return QStringLiteral(":/translations/GenericUtilities_%1.qm").arg(locale);
}

/// Of the environment, as far as it is one of those that are offered; English, that of the sources, else.
QString ownLanguage()
{
    QString const language = QLocale::system().uiLanguages().value(0).left(2);
    return language == QLatin1String("de") || language == QLatin1String("fr") ? language : QStringLiteral("en");
}

bool install(QString const& language)
{
    if (language == QLatin1String("en"))
        return true;
    static QTranslator translator;
    return translator.load(catalogueOf(language)) && QCoreApplication::installTranslator(&translator);
}

} // namespace

void chooseLanguage(QString const& language)
{
    if (!install(language.isEmpty() ? ownLanguage() : language) && !language.isEmpty())
        throw UsageException(QStringLiteral("--language %1: its catalogue is not part of this build").arg(language));
}
