<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr_FR">
<context>
    <name>ActionLog</name>
    <message>
        <source>Switched log</source>
        <translation>Changement de journal</translation>
    </message>
    <message>
        <source>Switched logging from &apos;%1&apos; to &apos;%2&apos;.</source>
        <translation>Journalisation passée de «&#xa0;%1&#xa0;» à «&#xa0;%2&#xa0;».</translation>
    </message>
    <message>
        <source>The entry is too large, or of a type that is not registered</source>
        <translation>L’entrée est trop volumineuse ou son type n’est pas enregistré</translation>
    </message>
    <message>
        <source>Format=&apos;%1&apos;; Source=&apos;%2&apos;.</source>
        <translation>Format=«&#xa0;%1&#xa0;»&#xa0;; source=«&#xa0;%2&#xa0;».</translation>
    </message>
    <message>
        <source>Format=&apos;%1&apos;; Source=&apos;%2&apos;; Target=&apos;%3&apos;.</source>
        <translation>Format=«&#xa0;%1&#xa0;»&#xa0;; source=«&#xa0;%2&#xa0;»&#xa0;; cible=«&#xa0;%3&#xa0;».</translation>
    </message>
    <message>
        <source>Format=&apos;%1&apos;; Source=&apos;%2&apos;; Timestamp=&apos;%4&apos;.%3</source>
        <translation>Format=«&#xa0;%1&#xa0;»&#xa0;; source=«&#xa0;%2&#xa0;»&#xa0;; horodatage=«&#xa0;%4&#xa0;».%3</translation>
    </message>
    <message>
        <source>Format=&apos;%1&apos;; Source=&apos;%2&apos;; Timestamp=&apos;%4&apos;; Target=&apos;%3&apos;.</source>
        <translation>Format=«&#xa0;%1&#xa0;»&#xa0;; source=«&#xa0;%2&#xa0;»&#xa0;; horodatage=«&#xa0;%4&#xa0;»&#xa0;; cible=«&#xa0;%3&#xa0;».</translation>
    </message>
    <message>
        <source>Format=&apos;%1&apos;; Source=&apos;%2&apos;; Date and time from=&apos;%4&apos;; Date and time to &apos;%5&apos;.%3</source>
        <translation>Format=«&#xa0;%1&#xa0;»&#xa0;; source=«&#xa0;%2&#xa0;»&#xa0;; date et heure de début=«&#xa0;%4&#xa0;»&#xa0;; date et heure de fin=«&#xa0;%5&#xa0;».%3</translation>
    </message>
    <message>
        <source>Format=&apos;%1&apos;; Source=&apos;%2&apos;; Date and time from=&apos;%4&apos;; Date and time to &apos;%5&apos;; Target=&apos;%3&apos;.</source>
        <translation>Format=«&#xa0;%1&#xa0;»&#xa0;; source=«&#xa0;%2&#xa0;»&#xa0;; date et heure de début=«&#xa0;%4&#xa0;»&#xa0;; date et heure de fin=«&#xa0;%5&#xa0;»&#xa0;; cible=«&#xa0;%3&#xa0;».</translation>
    </message>
    <message>
        <source>&apos;%1%2&apos; to &apos;%1%3&apos;.</source>
        <translation>«&#xa0;%1%2&#xa0;» en «&#xa0;%1%3&#xa0;».</translation>
    </message>
    <message>
        <source>%1</source>
        <translation>%1</translation>
    </message>
    <message>
        <source>Export written</source>
        <translation>Exportation écrite</translation>
    </message>
    <message>
        <source>Export start</source>
        <translation>Exportation démarrée</translation>
    </message>
    <message>
        <source>Export abort</source>
        <translation>Exportation interrompue</translation>
    </message>
    <message>
        <source>Export error</source>
        <translation>Erreur d’exportation</translation>
    </message>
    <message>
        <source>Export done</source>
        <translation>Exportation terminée</translation>
    </message>
    <message>
        <source>Export rename</source>
        <translation>Fichier exporté renommé</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Aucune</translation>
    </message>
    <message>
        <source>Access</source>
        <translation>Accès</translation>
    </message>
    <message>
        <source>Logon &amp; Logoff</source>
        <translation>Connexion et déconnexion</translation>
    </message>
    <message>
        <source>User &amp; Groups</source>
        <translation>Utilisateurs et groupes</translation>
    </message>
    <message>
        <source>Authorize</source>
        <translation>Autorisation</translation>
    </message>
    <message>
        <source>Software updates</source>
        <translation>Mises à jour logicielles</translation>
    </message>
    <message>
        <source>Camera Settings</source>
        <translation>Paramètres des caméras</translation>
    </message>
    <message>
        <source>Web browser</source>
        <translation>Navigateur Web</translation>
    </message>
    <message>
        <source>Network messages</source>
        <translation>Messages réseau</translation>
    </message>
    <message>
        <source>Softbuttons</source>
        <translation>Boutons logiciels</translation>
    </message>
    <message>
        <source>Orvane configuration</source>
        <translation>Configuration d’Orvane</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Fermeture</translation>
    </message>
    <message>
        <source>Layout Manager</source>
        <translation>Gestionnaire de dispositions</translation>
    </message>
    <message>
        <source>Display scaling</source>
        <translation>Mise à l’échelle de l’affichage</translation>
    </message>
    <message>
        <source>Context menus</source>
        <translation>Menus contextuels</translation>
    </message>
    <message>
        <source>Action log</source>
        <translation>Journal des actions</translation>
    </message>
    <message>
        <source>Event Search</source>
        <translation>Recherche d’événements</translation>
    </message>
    <message>
        <source>Export</source>
        <translation>Exportation</translation>
    </message>
    <message>
        <source>Local archive</source>
        <translation>Archive locale</translation>
    </message>
    <message>
        <source>Video search</source>
        <translation>Recherche vidéo</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Lecture</translation>
    </message>
    <message>
        <source>Viewing</source>
        <translation>Visualisation</translation>
    </message>
    <message>
        <source>Alarm</source>
        <translation>Alarme</translation>
    </message>
    <message>
        <source>Sequencer</source>
        <translation>Séquenceur</translation>
    </message>
    <message>
        <source>Layout</source>
        <translation>Disposition</translation>
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
        <translation>Position PTZ</translation>
    </message>
    <message>
        <source>PTZ config</source>
        <translation>Configuration PTZ</translation>
    </message>
    <message>
        <source>PTZ post config</source>
        <translation>Configuration des positions PTZ</translation>
    </message>
    <message>
        <source>Signal outs</source>
        <translation>Sorties de signal</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Erreur</translation>
    </message>
    <message>
        <source>Remote control</source>
        <translation>Commande à distance</translation>
    </message>
    <message>
        <source>Devices</source>
        <translation>Appareils</translation>
    </message>
    <message>
        <source>System</source>
        <translation>Système</translation>
    </message>
    <message>
        <source>No action log</source>
        <translation>Ce n’est pas un journal des actions</translation>
    </message>
    <message>
        <source>Error reading log file &apos;%1&apos;; Line &apos;%2&apos;; Column &apos;%3&apos;</source>
        <translation>Erreur de lecture du fichier journal «&#xa0;%1&#xa0;»&#xa0;; ligne %2&#xa0;; colonne %3</translation>
    </message>
    <message>
        <source>Could not open file &apos;%1&apos;</source>
        <translation>Impossible d’ouvrir le fichier «&#xa0;%1&#xa0;»</translation>
    </message>
    <message>
        <source>Action log &apos;%1&apos; invalid header version.</source>
        <translation>La version d’en-tête du journal des actions «&#xa0;%1&#xa0;» n’est pas valide.</translation>
    </message>
    <message>
        <source>A log file is written in UTF-8.</source>
        <translation>Un fichier journal doit être écrit en UTF-8.</translation>
    </message>
    <message>
        <source>A log file has no document type.</source>
        <translation>Un fichier journal ne doit pas avoir de type de document.</translation>
    </message>
    <message>
        <source>An entry is larger than 16 MiB.</source>
        <translation>Une entrée dépasse 16 Mio.</translation>
    </message>
    <message>
        <source>An entry has more than 1000 attributes.</source>
        <translation>Une entrée a plus de 1&#xa0;000 attributs.</translation>
    </message>
    <message>
        <source>The file is not open.</source>
        <translation>Le fichier n’est pas ouvert.</translation>
    </message>
    <message>
        <source>The file cannot be read.</source>
        <translation>Le fichier ne peut pas être lu.</translation>
    </message>
    <message>
        <source>Elements are nested too deeply.</source>
        <translation>Des éléments sont imbriqués trop profondément.</translation>
    </message>
    <message>
        <source>Action log error</source>
        <translation>Erreur du journal des actions</translation>
    </message>
    <message>
        <source>Error &apos;%1&apos; reading action log &apos;%2&apos; in line &apos;%3&apos;, column &apos;%4&apos;.</source>
        <translation>Erreur «&#xa0;%1&#xa0;» lors de la lecture du journal des actions «&#xa0;%2&#xa0;», ligne %3, colonne %4.</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Date et heure</translation>
    </message>
    <message>
        <source>User</source>
        <translation>Utilisateur</translation>
    </message>
    <message>
        <source>Category</source>
        <translation>Catégorie</translation>
    </message>
    <message>
        <source>Action</source>
        <translation>Action</translation>
    </message>
    <message>
        <source>Description</source>
        <translation>Description</translation>
    </message>
</context>
<context>
    <name>ExportActionLog</name>
    <message>
        <source>Start</source>
        <translation>Démarré</translation>
    </message>
    <message>
        <source>Finished</source>
        <translation>Terminé</translation>
    </message>
    <message>
        <source>Abort</source>
        <translation>Interrompu</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Erreur</translation>
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
        <translation>Clip Kalvid</translation>
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
        <translation>Stockage sur serveur de fichiers Quorvel</translation>
    </message>
    <message>
        <source>Printer</source>
        <translation>Imprimante</translation>
    </message>
    <message>
        <source>unknown</source>
        <translation>inconnu</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>Value out of range.</source>
        <translation>La valeur est hors de la plage autorisée.</translation>
    </message>
</context>
</TS>
