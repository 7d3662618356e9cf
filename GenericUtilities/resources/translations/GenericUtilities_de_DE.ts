<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>ActionLog</name>
    <message>
        <source>Switched log</source>
        <translation>Protokoll gewechselt</translation>
    </message>
    <message>
        <source>Switched logging from &apos;%1&apos; to &apos;%2&apos;.</source>
        <translation>Protokollierung von „%1“ nach „%2“ gewechselt.</translation>
    </message>
    <message>
        <source>The entry is too large, or of a type that is not registered</source>
        <translation>Der Eintrag ist zu groß oder sein Typ ist nicht registriert</translation>
    </message>
    <message>
        <source>Format=&apos;%1&apos;; Source=&apos;%2&apos;.</source>
        <translation>Format=„%1“; Quelle=„%2“.</translation>
    </message>
    <message>
        <source>Format=&apos;%1&apos;; Source=&apos;%2&apos;; Target=&apos;%3&apos;.</source>
        <translation>Format=„%1“; Quelle=„%2“; Ziel=„%3“.</translation>
    </message>
    <message>
        <source>Format=&apos;%1&apos;; Source=&apos;%2&apos;; Timestamp=&apos;%4&apos;.%3</source>
        <translation>Format=„%1“; Quelle=„%2“; Zeitpunkt=„%4“.%3</translation>
    </message>
    <message>
        <source>Format=&apos;%1&apos;; Source=&apos;%2&apos;; Timestamp=&apos;%4&apos;; Target=&apos;%3&apos;.</source>
        <translation>Format=„%1“; Quelle=„%2“; Zeitpunkt=„%4“; Ziel=„%3“.</translation>
    </message>
    <message>
        <source>Format=&apos;%1&apos;; Source=&apos;%2&apos;; Date and time from=&apos;%4&apos;; Date and time to &apos;%5&apos;.%3</source>
        <translation>Format=„%1“; Quelle=„%2“; Datum und Uhrzeit von=„%4“; Datum und Uhrzeit bis=„%5“.%3</translation>
    </message>
    <message>
        <source>Format=&apos;%1&apos;; Source=&apos;%2&apos;; Date and time from=&apos;%4&apos;; Date and time to &apos;%5&apos;; Target=&apos;%3&apos;.</source>
        <translation>Format=„%1“; Quelle=„%2“; Datum und Uhrzeit von=„%4“; Datum und Uhrzeit bis=„%5“; Ziel=„%3“.</translation>
    </message>
    <message>
        <source>&apos;%1%2&apos; to &apos;%1%3&apos;.</source>
        <translation>„%1%2“ in „%1%3“.</translation>
    </message>
    <message>
        <source>%1</source>
        <translation>%1</translation>
    </message>
    <message>
        <source>Export written</source>
        <translation>Export geschrieben</translation>
    </message>
    <message>
        <source>Export start</source>
        <translation>Export gestartet</translation>
    </message>
    <message>
        <source>Export abort</source>
        <translation>Export abgebrochen</translation>
    </message>
    <message>
        <source>Export error</source>
        <translation>Exportfehler</translation>
    </message>
    <message>
        <source>Export done</source>
        <translation>Export abgeschlossen</translation>
    </message>
    <message>
        <source>Export rename</source>
        <translation>Exportdatei umbenannt</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Keine</translation>
    </message>
    <message>
        <source>Access</source>
        <translation>Zugriff</translation>
    </message>
    <message>
        <source>Logon &amp; Logoff</source>
        <translation>An- und Abmeldung</translation>
    </message>
    <message>
        <source>User &amp; Groups</source>
        <translation>Benutzer und Gruppen</translation>
    </message>
    <message>
        <source>Authorize</source>
        <translation>Autorisierung</translation>
    </message>
    <message>
        <source>Software updates</source>
        <translation>Software-Updates</translation>
    </message>
    <message>
        <source>Camera Settings</source>
        <translation>Kameraeinstellungen</translation>
    </message>
    <message>
        <source>Web browser</source>
        <translation>Webbrowser</translation>
    </message>
    <message>
        <source>Network messages</source>
        <translation>Netzwerkmeldungen</translation>
    </message>
    <message>
        <source>Softbuttons</source>
        <translation>Softbuttons</translation>
    </message>
    <message>
        <source>Orvane configuration</source>
        <translation>Orvane-Konfiguration</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>Layout Manager</source>
        <translation>Layout-Manager</translation>
    </message>
    <message>
        <source>Display scaling</source>
        <translation>Anzeigeskalierung</translation>
    </message>
    <message>
        <source>Context menus</source>
        <translation>Kontextmenüs</translation>
    </message>
    <message>
        <source>Action log</source>
        <translation>Aktionsprotokoll</translation>
    </message>
    <message>
        <source>Event Search</source>
        <translation>Ereignissuche</translation>
    </message>
    <message>
        <source>Export</source>
        <translation>Export</translation>
    </message>
    <message>
        <source>Local archive</source>
        <translation>Lokales Archiv</translation>
    </message>
    <message>
        <source>Video search</source>
        <translation>Videosuche</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Wiedergabe</translation>
    </message>
    <message>
        <source>Viewing</source>
        <translation>Anzeige</translation>
    </message>
    <message>
        <source>Alarm</source>
        <translation>Alarm</translation>
    </message>
    <message>
        <source>Sequencer</source>
        <translation>Sequenzer</translation>
    </message>
    <message>
        <source>Layout</source>
        <translation>Layout</translation>
    </message>
    <message>
        <source>Audio</source>
        <translation>Audio</translation>
    </message>
    <message>
        <source>PTZ</source>
        <translation>PTZ</translation>
    </message>
    <message>
        <source>PTZ post</source>
        <translation>PTZ-Position</translation>
    </message>
    <message>
        <source>PTZ config</source>
        <translation>PTZ-Konfiguration</translation>
    </message>
    <message>
        <source>PTZ post config</source>
        <translation>PTZ-Positionskonfiguration</translation>
    </message>
    <message>
        <source>Signal outs</source>
        <translation>Signalausgänge</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>Remote control</source>
        <translation>Fernsteuerung</translation>
    </message>
    <message>
        <source>Devices</source>
        <translation>Geräte</translation>
    </message>
    <message>
        <source>System</source>
        <translation>System</translation>
    </message>
    <message>
        <source>No action log</source>
        <translation>Kein Aktionsprotokoll</translation>
    </message>
    <message>
        <source>Error reading log file &apos;%1&apos;; Line &apos;%2&apos;; Column &apos;%3&apos;</source>
        <translation>Fehler beim Lesen der Protokolldatei „%1“; Zeile %2; Spalte %3</translation>
    </message>
    <message>
        <source>Could not open file &apos;%1&apos;</source>
        <translation>Die Datei „%1“ konnte nicht geöffnet werden</translation>
    </message>
    <message>
        <source>Action log &apos;%1&apos; invalid header version.</source>
        <translation>Das Aktionsprotokoll „%1“ hat eine ungültige Version im Dateikopf.</translation>
    </message>
    <message>
        <source>A log file is written in UTF-8.</source>
        <translation>Eine Protokolldatei muss in UTF-8 geschrieben sein.</translation>
    </message>
    <message>
        <source>A log file has no document type.</source>
        <translation>Eine Protokolldatei darf keinen Dokumenttyp haben.</translation>
    </message>
    <message>
        <source>An entry is larger than 16 MiB.</source>
        <translation>Ein Eintrag ist größer als 16 MiB.</translation>
    </message>
    <message>
        <source>An entry has more than 1000 attributes.</source>
        <translation>Ein Eintrag hat mehr als 1000 Attribute.</translation>
    </message>
    <message>
        <source>The file is not open.</source>
        <translation>Die Datei ist nicht geöffnet.</translation>
    </message>
    <message>
        <source>The file cannot be read.</source>
        <translation>Die Datei kann nicht gelesen werden.</translation>
    </message>
    <message>
        <source>Elements are nested too deeply.</source>
        <translation>Elemente sind zu tief verschachtelt.</translation>
    </message>
    <message>
        <source>Action log error</source>
        <translation>Fehler im Aktionsprotokoll</translation>
    </message>
    <message>
        <source>Error &apos;%1&apos; reading action log &apos;%2&apos; in line &apos;%3&apos;, column &apos;%4&apos;.</source>
        <translation>Fehler „%1“ beim Lesen des Aktionsprotokolls „%2“ in Zeile %3, Spalte %4.</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>User</source>
        <translation>Benutzer</translation>
    </message>
    <message>
        <source>Category</source>
        <translation>Kategorie</translation>
    </message>
    <message>
        <source>Action</source>
        <translation>Aktion</translation>
    </message>
    <message>
        <source>Description</source>
        <translation>Beschreibung</translation>
    </message>
</context>
<context>
    <name>ExportActionLog</name>
    <message>
        <source>Start</source>
        <translation>Gestartet</translation>
    </message>
    <message>
        <source>Finished</source>
        <translation>Abgeschlossen</translation>
    </message>
    <message>
        <source>Abort</source>
        <translation>Abgebrochen</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Fehler</translation>
    </message>
</context>
<context>
    <name>ExportFormats</name>
    <message>
        <source>Bitmap</source>
        <translation>Bitmap</translation>
    </message>
    <message>
        <source>JPEG</source>
        <translation>JPEG</translation>
    </message>
    <message>
        <source>Kalvid clip</source>
        <translation>Kalvid-Clip</translation>
    </message>
    <message>
        <source>AVI</source>
        <translation>AVI</translation>
    </message>
    <message>
        <source>MP4</source>
        <translation>MP4</translation>
    </message>
    <message>
        <source>MOV</source>
        <translation>MOV</translation>
    </message>
    <message>
        <source>WebM</source>
        <translation>WebM</translation>
    </message>
    <message>
        <source>Matroska</source>
        <translation>Matroska</translation>
    </message>
    <message>
        <source>Quorvel file server storage</source>
        <translation>Quorvel-Fileserver-Speicher</translation>
    </message>
    <message>
        <source>Printer</source>
        <translation>Drucker</translation>
    </message>
    <message>
        <source>unknown</source>
        <translation>unbekannt</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>Value out of range.</source>
        <translation>Der Wert liegt außerhalb des zulässigen Bereichs.</translation>
    </message>
</context>
</TS>
