// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/ExportActionLogMessageHandler.h>
#include <GenericUtilities/actionlog/LogEntry.h>
#include <GenericUtilities/util/Translations.h>

#include "actionlog/EntryTypes.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QResource>
#include <QTest>
#include <QTranslator>

using namespace qv;

namespace {

char const* const actionLog = "ActionLog";
char const* const exportActionLog = "ExportActionLog";
char const* const exportFormats = "ExportFormats";

struct Text {
    char const* context;
    QString source;
};

// Texts with a place in no table that a test could walk.
constexpr char const* sentences[] = {
    "'%1%2' to '%1%3'.",
    "Format='%1'; Source='%2'.",
    "Format='%1'; Source='%2'; Target='%3'.",
    "Format='%1'; Source='%2'; Timestamp='%4'.%3",
    "Format='%1'; Source='%2'; Timestamp='%4'; Target='%3'.",
    "Format='%1'; Source='%2'; Date and time from='%4'; Date and time to '%5'.%3",
    "Format='%1'; Source='%2'; Date and time from='%4'; Date and time to '%5'; Target='%3'.",
    "Could not open file '%1'",
    "Action log '%1' invalid header version.",
    "Error reading log file '%1'; Line '%2'; Column '%3'",
    "No action log",
    "The entry is too large, or of a type that is not registered",
    "A log file is written in UTF-8.",
    "A log file has no document type.",
    "An entry is larger than 16 MiB.",
    "An entry has more than 1000 attributes.",
    "The file is not open.",
    "The file cannot be read.",
    "Elements are nested too deeply.",
    "Time",
    "User",
    "Category",
    "Action",
    "Description",
};

constexpr ELogCategory categories[]
    = {LogCategoryNone, LogCategoryAccess, LogCategoryLogonLogoff, LogCategoryUserGroups, LogCategoryAuthorize,
        LogCategorySoftwareUpdates, LogCategoryCameraSettings, LogCategoryWebBrowser, LogCategoryNetworkMessages,
        LogCategorySoftbuttons, LogCategoryConfiguration, LogCategoryQuit, LogCategoryLayoutManager,
        LogCategoryDisplayScaling, LogCategoryContextMenus, LogCategoryActionLogging, LogCategoryEventSearch,
        LogCategoryExport, LogCategoryLocalArchive, LogCategoryVideoSearch, LogCategoryPlay, LogCategoryViewing,
        LogCategoryAlarm, LogCategorySequencer, LogCategoryLayout, LogCategoryAudio, LogCategoryPTZ, LogCategoryPTZPost,
        LogCategoryPTZConfig, LogCategoryPTZPostConfig, LogCategorySignalOuts, LogCategoryError,
        LogCategoryRemoteControl, LogCategoryDevices, LogCategorySystem};

/// Every text of the library that users see, as long as no catalogue is installed.
QList<Text> allTexts()
{
    QList<Text> texts = {{"QObject", QStringLiteral("Value out of range.")}};
    for (ELogCategory const category : categories)
        texts.append({actionLog, LogCategory(category).name()});
    for (entries::Sample const& sample : entries::samples()) {
        texts.append({actionLog, sample.entry->action()});
        texts.append({actionLog, sample.entry->descriptionText()});
    }
    for (char const* const sentence : sentences)
        texts.append({actionLog, QString::fromLatin1(sentence)});
    for (int format = ExportActionLog::Bitmap; format <= ExportActionLog::UnknownFormat; ++format)
        texts.append({exportFormats, QString::fromLatin1(ExportActionLog::formatsData(format).name)});
    for (int state = ExportActionLog::Start; state <= ExportActionLog::Error; ++state)
        texts.append({exportActionLog, QString::fromLatin1(ExportActionLog::stateData(state).name)});
    return texts;
}

QStringList placeholders(QString const& text)
{
    QStringList found;
    QRegularExpression const mark(QStringLiteral("%\\d"));
    for (auto match = mark.globalMatch(text); match.hasNext();)
        found.append(match.next().captured());
    found.sort();
    return found;
}

/// A client's catalogue.
class OneText : public QTranslator {
public:
    QString translate(
        char const* /*context*/, char const* source, char const* /*disambiguation*/, int /*n*/) const override
    {
        return qstrcmp(source, "Printer") == 0 ? QStringLiteral("Plotter") : QString();
    }
    bool isEmpty() const override { return false; }
};

} // namespace

class TranslationsTest : public QObject {
    Q_OBJECT

private slots:
    void everyTextIsTranslated_data();
    void everyTextIsTranslated();
    void catalogueIsNotCompressed_data();
    void catalogueIsNotCompressed();
    void textsReadSo_data();
    void textsReadSo();
    void languages_data();
    void languages();
    void nextLanguageTakesThePlace();
    void entriesFollow();
    void catalogueOfTheClientStays();
    void withoutApplication();
    void anotherApplication();

private:
    int m_count = 1;
    char m_name[5] = "test";
    char* m_arguments[2] = {m_name, nullptr};
};

void TranslationsTest::everyTextIsTranslated_data()
{
    QTest::addColumn<QString>("catalogue");
    QTest::newRow("German") << ":/translations/GenericUtilities_de_DE.qm";
    QTest::newRow("French") << ":/translations/GenericUtilities_fr_FR.qm";
}

void TranslationsTest::everyTextIsTranslated()
{
    QFETCH(QString, catalogue);
    QTranslator translator;
    QVERIFY(translator.load(catalogue));
    QList<Text> const texts = allTexts();
    QCOMPARE(texts.size(), 1 + 35 + 2 * 8 + 24 + 11 + 4);
    for (Text const& text : texts) {
        QString const translation = translator.translate(text.context, text.source.toLatin1().constData());
        QVERIFY2(!translation.isEmpty(), qPrintable(text.source));
        QCOMPARE(placeholders(translation), placeholders(text.source));
    }
}

void TranslationsTest::catalogueIsNotCompressed_data()
{
    everyTextIsTranslated_data();
}

/// Who reads a catalogue as raw bytes of the resources finds the format of .qm files.
void TranslationsTest::catalogueIsNotCompressed()
{
    QFETCH(QString, catalogue);
    QResource const resource(catalogue);
    QVERIFY(resource.isValid());
    QCOMPARE(resource.compressionAlgorithm(), QResource::NoCompression);
    QByteArray const start(reinterpret_cast<char const*>(resource.data()), 16);
    QCOMPARE(start.toHex(), QByteArray("3cb86418caef9c95cd211cbf60a1bddd"));
}

void TranslationsTest::textsReadSo_data()
{
    QTest::addColumn<QByteArray>("context");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("german");
    QTest::addColumn<QString>("french");

    auto const row = [](char const* context, char const* text, char const* german, char const* french) {
        QTest::newRow(text) << QByteArray(context) << QByteArray(text) << QString::fromUtf8(german)
                            << QString::fromUtf8(french);
    };
    row("QObject", "Value out of range.", "Der Wert liegt außerhalb des zulässigen Bereichs.",
        "La valeur est hors de la plage autorisée.");
    row(actionLog, "None", "Keine", "Aucune");
    row(actionLog, "Logon & Logoff", "An- und Abmeldung", "Connexion et déconnexion");
    row(actionLog, "Quit", "Beenden", "Fermeture");
    row(actionLog, "Switched logging from '%1' to '%2'.", "Protokollierung von „%1“ nach „%2“ gewechselt.",
        "Journalisation passée de «\u00a0%1\u00a0» à «\u00a0%2\u00a0».");
    row(actionLog, "Format='%1'; Source='%2'; Date and time from='%4'; Date and time to '%5'.%3",
        "Format=„%1“; Quelle=„%2“; Datum und Uhrzeit von=„%4“; Datum und Uhrzeit bis=„%5“.%3",
        "Format=«\u00a0%1\u00a0»\u00a0; source=«\u00a0%2\u00a0»\u00a0; date et heure de début=«\u00a0%4\u00a0»\u00a0; "
        "date et heure de fin=«\u00a0%5\u00a0».%3");
    row(actionLog, "Could not open file '%1'", "Die Datei „%1“ konnte nicht geöffnet werden",
        "Impossible d’ouvrir le fichier «\u00a0%1\u00a0»");
    row(exportFormats, "Printer", "Drucker", "Imprimante");
    row(exportActionLog, "Finished", "Abgeschlossen", "Terminé");
}

void TranslationsTest::textsReadSo()
{
    QFETCH(QByteArray, context);
    QFETCH(QByteArray, text);
    QFETCH(QString, german);
    QFETCH(QString, french);
    QCoreApplication const application(m_count, m_arguments);
    QVERIFY(installTranslations(QLocale(QLocale::German)));
    QCOMPARE(QCoreApplication::translate(context, text), german);
    QVERIFY(installTranslations(QLocale(QLocale::French)));
    QCOMPARE(QCoreApplication::translate(context, text), french);
}

void TranslationsTest::languages_data()
{
    QTest::addColumn<QLocale>("locale");
    QTest::addColumn<bool>("isInstalled");
    QTest::addColumn<QString>("printer");

    QTest::newRow("German") << QLocale("de_DE") << true << "Drucker";
    QTest::newRow("German of Switzerland") << QLocale("de_CH") << true << "Drucker";
    QTest::newRow("French of Canada") << QLocale("fr_CA") << true << "Imprimante";
    QTest::newRow("English") << QLocale("en_GB") << true << "Printer";
    QTest::newRow("the C locale") << QLocale::c() << true << "Printer";
    QTest::newRow("without a catalogue") << QLocale("sv_SE") << false << "Printer";
}

void TranslationsTest::languages()
{
    QFETCH(QLocale, locale);
    QFETCH(bool, isInstalled);
    QFETCH(QString, printer);
    QCoreApplication const application(m_count, m_arguments);
    QCOMPARE(installTranslations(locale), isInstalled);
    QCOMPARE(QCoreApplication::translate(exportFormats, "Printer"), printer);
}

void TranslationsTest::nextLanguageTakesThePlace()
{
    QCoreApplication const application(m_count, m_arguments);
    QVERIFY(installTranslations(QLocale("fr_FR")));
    QVERIFY(!installTranslations(QLocale("sv_SE")));
    QCOMPARE(QCoreApplication::translate(exportFormats, "Printer"), QString("Printer"));
    QVERIFY(installTranslations(QLocale("de_DE")));
    QVERIFY(installTranslations(QLocale("en_US")));
    QCOMPARE(QCoreApplication::translate(exportFormats, "Printer"), QString("Printer"));
}

void TranslationsTest::entriesFollow()
{
    QCoreApplication const application(m_count, m_arguments);
    QVERIFY(installTranslations(QLocale("de_DE")));
    entries::Entry const entry = entries::contextSwitch();
    QCOMPARE(entry->action(), QString("Protokoll gewechselt"));
    QCOMPARE(entry->description(), QString::fromUtf8("Protokollierung von „/var/a.qvl“ nach „/var/b.qvl“ gewechselt."));
    QCOMPARE(LogCategory(entry->category()).name(), QString("Aktionsprotokoll"));
    QVERIFY(LogCategory::categoryNames().contains(QString::fromUtf8("Geräte")));
    QVERIFY(logEntryFactory().entryNames().contains("Export abgeschlossen"));
}

void TranslationsTest::catalogueOfTheClientStays()
{
    QCoreApplication const application(m_count, m_arguments);
    OneText own;
    QVERIFY(QCoreApplication::installTranslator(&own));
    QCOMPARE(QCoreApplication::translate(exportFormats, "Printer"), QString("Plotter"));
    QVERIFY(installTranslations(QLocale("de_DE"))); // installed last
    QCOMPARE(QCoreApplication::translate(exportFormats, "Printer"), QString("Drucker"));
    QVERIFY(installTranslations(QLocale("en_US")));
    QCOMPARE(QCoreApplication::translate(exportFormats, "Printer"), QString("Plotter"));
}

void TranslationsTest::withoutApplication()
{
    QVERIFY(!installTranslations(QLocale("de_DE")));
    QVERIFY(installTranslations(QLocale("en_GB"))); // which needs nothing
}

void TranslationsTest::anotherApplication()
{
    {
        QCoreApplication const application(m_count, m_arguments);
        QVERIFY(installTranslations(QLocale("de_DE")));
    }
    QCoreApplication const application(m_count, m_arguments);
    QCOMPARE(QCoreApplication::translate(exportFormats, "Printer"), QString("Printer"));
    QVERIFY(installTranslations(QLocale("de_DE")));
    QCOMPARE(QCoreApplication::translate(exportFormats, "Printer"), QString("Drucker"));
}

QTEST_APPLESS_MAIN(TranslationsTest)
#include "tst_Translations.moc"
