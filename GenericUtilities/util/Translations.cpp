// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/util/Translations.h>

#include <QCoreApplication>
#include <QPointer>
#include <QTranslator>

#include <memory>

namespace qv {

namespace {

    struct Catalogue {
        QLocale::Language language;
        char const* file;
    };

    constexpr Catalogue catalogues[] = {
        {QLocale::German, ":/translations/GenericUtilities_de_DE.qm"},
        {QLocale::French, ":/translations/GenericUtilities_fr_FR.qm"},
    };

    char const* fileFor(QLocale::Language language)
    {
        for (Catalogue const& catalogue : catalogues) {
            if (catalogue.language == language)
                return catalogue.file;
        }
        return nullptr;
    }

    // The application deletes it.
    QPointer<QTranslator>& installed()
    {
        static QPointer<QTranslator> translator;
        return translator;
    }

} // namespace

bool installTranslations(QLocale const& locale)
{
    delete installed();
    char const* const file = fileFor(locale.language());
    if (!file)
        return locale.language() == QLocale::English || locale.language() == QLocale::C;
    QCoreApplication* const application = QCoreApplication::instance();
    auto translator = std::make_unique<QTranslator>();
    if (!application || !translator->load(QLatin1String(file))
        || !QCoreApplication::installTranslator(translator.get()))
        return false;
    translator->setParent(application);
    installed() = translator.release();
    return true;
}

} // namespace qv
