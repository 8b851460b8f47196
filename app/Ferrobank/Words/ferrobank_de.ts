<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>Ferrobank</name>
    <message>
        <source>Minimise</source>
        <translation>Minimieren</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Checks</source>
        <translation>Prüfungen</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>Ferrobank checks</source>
        <translation>Prüfungen von Ferrobank</translation>
    </message>
    <message>
        <source>The parts of your setup that keep the drive working.</source>
        <translation>Die Teile Ihrer Einrichtung, die das Laufwerk am Laufen halten.</translation>
    </message>
    <message>
        <source>Running checks…</source>
        <translation>Prüfungen laufen …</translation>
    </message>
    <message>
        <source>Run Again</source>
        <translation>Erneut prüfen</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <source>Before setup</source>
        <translation>Vor der Einrichtung</translation>
    </message>
    <message>
        <source>Setup changes a few things on this Mac. You choose which.</source>
        <translation>Die Einrichtung ändert einiges auf diesem Mac. Sie wählen aus, was.</translation>
    </message>
    <message>
        <source>The drive's background service starts when you log in, so ~/Ferrobank is there when you need it. The drive needs this.</source>
        <translation>Der Hintergrunddienst des Laufwerks startet bei der Anmeldung, damit ~/⁠Ferrobank da ist, wenn Sie es brauchen. Das Laufwerk ist darauf angewiesen.</translation>
    </message>
    <message>
        <source>Open the Ferrobank menu at login</source>
        <translation>Ferrobank-Menü bei der Anmeldung öffnen</translation>
    </message>
    <message>
        <source>Install the ferrobank command</source>
        <translation>Den Befehl ferrobank installieren</translation>
    </message>
    <message>
        <source>Adds ferrobank to /usr/local/bin so Terminal can run it. macOS may ask for your password once.</source>
        <translation>Legt ferrobank in /usr/local/bin ab, damit Terminal es ausführen kann. macOS fragt eventuell einmal nach Ihrem Passwort.</translation>
    </message>
    <message>
        <source>macOS will show a few things along the way:</source>
        <translation>macOS wird unterwegs einiges anzeigen:</translation>
    </message>
    <message>
        <source>A “Login Item Added” notification. That is Ferrobank registering so your drive mounts when you log in. Nothing to do.</source>
        <translation>Eine Mitteilung „Anmeldeobjekt hinzugefügt“. Damit meldet sich Ferrobank an, sodass Ihr Laufwerk bei der Anmeldung eingehängt wird. Es ist nichts zu tun.</translation>
    </message>
    <message>
        <source>A prompt asking whether Ferrobank may access files on a network volume. Your drive is served from this Mac over a private connection that never leaves it. Click Allow.</source>
        <translation>Eine Frage, ob Ferrobank auf Dateien auf einem Netzwerkvolume zugreifen darf. Ihr Laufwerk wird von diesem Mac über eine private Verbindung bereitgestellt, die ihn nie verlässt. Klicken Sie auf „Erlauben“.</translation>
    </message>
    <message>
        <source>A password prompt, if this Mac needs it to add the command. Cancel it to skip; you can install the command later from the Ferrobank menu.</source>
        <translation>Eine Passwortabfrage, falls dieser Mac sie für den Befehl benötigt. Brechen Sie sie ab, um dies zu überspringen; der Befehl lässt sich später über das Ferrobank-Menü installieren.</translation>
    </message>
    <message>
        <source>Allow and Set Up</source>
        <translation>Erlauben und einrichten</translation>
    </message>
    <message>
        <source>Copied</source>
        <translation>Kopiert</translation>
    </message>
    <message>
        <source>Copy Diagnostics</source>
        <translation>Diagnose kopieren</translation>
    </message>
    <message>
        <source>The diagnostics are on the clipboard.</source>
        <translation>Die Diagnose ist in der Zwischenablage.</translation>
    </message>
    <message>
        <source>Reading the drive's state</source>
        <translation>Zustand des Laufwerks wird gelesen</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Anzeigen</translation>
    </message>
    <message>
        <source>Ferrobank is ready</source>
        <translation>Ferrobank ist bereit</translation>
    </message>
    <message>
        <source>Your drive is at ~/Ferrobank and in Finder's sidebar under Locations. The Ferrobank menu in the menu bar shows its status and space saved, and can run these checks again.</source>
        <translation>Ihr Laufwerk liegt unter ~/⁠Ferrobank und steht in der Seitenleiste des Finders unter „Orte“. Das Ferrobank-Menü in der Menüleiste zeigt Zustand und gesparten Platz und kann diese Prüfungen erneut ausführen.</translation>
    </message>
    <message>
        <source>Open Ferrobank</source>
        <translation>Ferrobank öffnen</translation>
    </message>
    <message>
        <source>Mounted</source>
        <translation>Eingehängt</translation>
    </message>
    <message>
        <source>Needs attention</source>
        <translation>Braucht Aufmerksamkeit</translation>
    </message>
    <message>
        <source>Starting…</source>
        <translation>Startet …</translation>
    </message>
    <message>
        <source>Not set up</source>
        <translation>Nicht eingerichtet</translation>
    </message>
    <message>
        <source>%1 of files take %2 on disk, %3× smaller.</source>
        <translation>%1 an Dateien belegen %2 auf der Platte, %3-mal kleiner.</translation>
    </message>
    <message>
        <source>Ferrobank</source>
        <translation>Ferrobank</translation>
    </message>
    <message>
        <source>Show in Finder</source>
        <translation>Im Finder zeigen</translation>
    </message>
    <message>
        <source>Run Checks</source>
        <translation>Prüfen</translation>
    </message>
    <message>
        <source>%1 of %2 checks passed</source>
        <translation>%1 von %2 Prüfungen bestanden</translation>
    </message>
    <message>
        <source>Space saved</source>
        <translation>Gesparter Platz</translation>
    </message>
    <message>
        <source>Nothing saved yet</source>
        <translation>Noch nichts gespart</translation>
    </message>
    <message>
        <source>Clones and copies of the same files are stored once.</source>
        <translation>Klone und Kopien derselben Dateien werden nur einmal gespeichert.</translation>
    </message>
    <message>
        <source>Login Items</source>
        <translation>Anmeldeobjekte</translation>
    </message>
    <message>
        <source>What Ferrobank starts when you log in.</source>
        <translation>Was Ferrobank bei Ihrer Anmeldung startet.</translation>
    </message>
    <message>
        <source>Ferrobank drive</source>
        <translation>Ferrobank-Laufwerk</translation>
    </message>
    <message>
        <source>Ferrobank menu</source>
        <translation>Ferrobank-Menü</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>Weiter</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>%1 percent</source>
        <translation>%1 Prozent</translation>
    </message>
    <message>
        <source>dimmed</source>
        <translation>abgeblendet</translation>
    </message>
    <message>
        <source>Stored on disk</source>
        <translation>Auf der Platte</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>Command-line tool</source>
        <translation>Befehlszeilenwerkzeug</translation>
    </message>
    <message>
        <source>Install…</source>
        <translation>Installieren …</translation>
    </message>
    <message>
        <source>Show Log</source>
        <translation>Protokoll zeigen</translation>
    </message>
    <message>
        <source>Uninstall Ferrobank…</source>
        <translation>Ferrobank deinstallieren …</translation>
    </message>
    <message>
        <source>Set up your drive</source>
        <translation>Laufwerk einrichten</translation>
    </message>
    <message>
        <source>Steps of the setup</source>
        <translation>Schritte der Einrichtung</translation>
    </message>
    <message>
        <source>Open Login Items</source>
        <translation>Anmeldeobjekte öffnen</translation>
    </message>
    <message>
        <source>Open Privacy Settings</source>
        <translation>Datenschutz-Einstellungen öffnen</translation>
    </message>
    <message>
        <source>Try Again</source>
        <translation>Erneut versuchen</translation>
    </message>
    <message>
        <source>In progress</source>
        <translation>In Arbeit</translation>
    </message>
    <message>
        <source>Files on drive</source>
        <translation>Dateien im Laufwerk</translation>
    </message>
    <message>
        <source>Free on this Mac</source>
        <translation>Frei auf diesem Mac</translation>
    </message>
    <message>
        <source>Drive size</source>
        <translation>Laufwerksgröße</translation>
    </message>
    <message>
        <source>dimmed: %1</source>
        <translation>abgeblendet: %1</translation>
    </message>
    <message>
        <source>Uninstall Ferrobank</source>
        <translation>Ferrobank deinstallieren</translation>
    </message>
    <message>
        <source>This detaches the drive and stops Ferrobank from starting at login.</source>
        <translation>Das Laufwerk wird getrennt, und Ferrobank startet nicht mehr bei der Anmeldung.</translation>
    </message>
    <message>
        <source>Copy my files to a folder first</source>
        <translation>Meine Dateien zuerst in einen Ordner kopieren</translation>
    </message>
    <message>
        <source>Choose…</source>
        <translation>Auswählen …</translation>
    </message>
    <message>
        <source>Delete the drive's data from this Mac</source>
        <translation>Daten des Laufwerks von diesem Mac löschen</translation>
    </message>
    <message>
        <source>Uninstall</source>
        <translation>Deinstallieren</translation>
    </message>
    <message>
        <source>Uninstalling Ferrobank</source>
        <translation>Ferrobank wird deinstalliert</translation>
    </message>
    <message>
        <source>Ferrobank is uninstalled</source>
        <translation>Ferrobank ist deinstalliert</translation>
    </message>
    <message>
        <source>Open Copied Files</source>
        <translation>Kopierte Dateien öffnen</translation>
    </message>
    <message>
        <source>Move Ferrobank to Trash</source>
        <translation>Ferrobank in den Papierkorb legen</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>Software Update</source>
        <translation>Softwareaktualisierung</translation>
    </message>
    <message>
        <source>Ferrobank was updated</source>
        <translation>Ferrobank wurde aktualisiert</translation>
    </message>
    <message>
        <source>Ferrobank %1 is installed. Choose “Check for Updates…” to relaunch.</source>
        <translation>Ferrobank %1 ist installiert. Wählen Sie „Nach Updates suchen …“, um es neu zu starten.</translation>
    </message>
    <message>
        <source>Important update for Ferrobank</source>
        <translation>Wichtiges Update für Ferrobank</translation>
    </message>
    <message>
        <source>Update for Ferrobank</source>
        <translation>Update für Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank %1 is available. Choose “Check for Updates…” to see what is new.</source>
        <translation>Ferrobank %1 ist verfügbar. Wählen Sie „Nach Updates suchen …“, um zu sehen, was neu ist.</translation>
    </message>
    <message>
        <source>Ferrobank %1 is ready. It is installed when you close the window.</source>
        <translation>Ferrobank %1 ist bereit. Es wird installiert, wenn Sie das Fenster schließen.</translation>
    </message>
    <message>
        <source>Ferrobank %1 is ready. It is installed when you close the window or quit.</source>
        <translation>Ferrobank %1 ist bereit. Es wird installiert, wenn Sie das Fenster schließen oder Ferrobank beenden.</translation>
    </message>
    <message>
        <source>Updates could not be confirmed</source>
        <translation>Updates konnten nicht bestätigt werden</translation>
    </message>
    <message>
        <source>Ferrobank %1 could not be installed.</source>
        <translation>Ferrobank %1 konnte nicht installiert werden.</translation>
    </message>
    <message>
        <source>Ferrobank %1 was taken back</source>
        <translation>Ferrobank %1 wurde zurückgenommen</translation>
    </message>
    <message>
        <source>It did not start on this computer, so %1 was put back. It is tried again after %2, or when you choose “Check for Updates…”.</source>
        <translation>Es startete auf diesem Computer nicht, daher wurde %1 wieder eingesetzt. Ein neuer Versuch folgt nach dem %2, oder wenn Sie „Nach Updates suchen …“ wählen.</translation>
    </message>
    <message>
        <source>An older Ferrobank is installed</source>
        <translation>Ein älteres Ferrobank ist installiert</translation>
    </message>
    <message>
        <source>Ferrobank %1 was put in the place of %2, which is still running. The next start runs the older one.</source>
        <translation>Ferrobank %1 wurde an die Stelle von %2 gesetzt, das noch läuft. Der nächste Start führt das ältere aus.</translation>
    </message>
    <message>
        <source>Ferrobank has not looked for updates</source>
        <translation>Ferrobank hat nicht nach Updates gesucht</translation>
    </message>
    <message>
        <source>The connection is paid by volume. Choose “Check for Updates…” to look now.</source>
        <translation>Die Verbindung wird nach Datenmenge bezahlt. Wählen Sie „Nach Updates suchen …“, um jetzt zu suchen.</translation>
    </message>
    <message>
        <source>An update could not be installed</source>
        <translation>Ein Update konnte nicht installiert werden</translation>
    </message>
    <message>
        <source>Ferrobank could not look for updates</source>
        <translation>Ferrobank konnte nicht nach Updates suchen</translation>
    </message>
    <message>
        <source>It has been so for two weeks. %1</source>
        <translation>Das ist seit zwei Wochen so. %1</translation>
    </message>
    <message>
        <source>It was installed here before and did not start, so %1 was put back. Check again to try it once more.</source>
        <translation>Es war hier schon installiert und startete nicht, daher wurde %1 wieder eingesetzt. Suchen Sie erneut, um es noch einmal zu versuchen.</translation>
    </message>
    <message>
        <source>It was installed here before, did not start, and was taken back.</source>
        <translation>Es war hier schon installiert, startete nicht und wurde zurückgenommen.</translation>
    </message>
    <message>
        <source>Ferrobank %1 was put in the place of %2, which is still running. Relaunch to use it.</source>
        <translation>Ferrobank %1 wurde an die Stelle von %2 gesetzt, das noch läuft. Starten Sie neu, um es zu verwenden.</translation>
    </message>
    <message>
        <source>Checking your drive</source>
        <translation>Laufwerk wird geprüft</translation>
    </message>
    <message>
        <source>Ferrobank checks the parts of your setup that keep the drive working.</source>
        <translation>Ferrobank prüft die Teile Ihrer Einrichtung, die das Laufwerk am Laufen halten.</translation>
    </message>
    <message>
        <source>Welcome to Ferrobank</source>
        <translation>Willkommen bei Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank is a drive at ~/Ferrobank that stores repeated data once, so clones, worktrees and build output take a fraction of the space. Finder, Terminal and your tools all use the same path.</source>
        <translation>Ferrobank ist ein Laufwerk unter ~/⁠Ferrobank, das Wiederholtes nur einmal speichert. Klone, Arbeitsbäume und Build-Ergebnisse brauchen so nur einen Bruchteil des Platzes. Finder, Terminal und Ihre Werkzeuge verwenden alle denselben Pfad.</translation>
    </message>
    <message>
        <source>Setup takes about a minute.</source>
        <translation>Die Einrichtung dauert etwa eine Minute.</translation>
    </message>
    <message>
        <source>%1 used · %2 saved</source>
        <translation>%1 belegt · %2 gespart</translation>
    </message>
    <message>
        <source>Ferrobank · %1</source>
        <translation>Ferrobank · %1</translation>
    </message>
    <message>
        <source>Set Up Ferrobank…</source>
        <translation>Ferrobank einrichten …</translation>
    </message>
    <message>
        <source>Install Command-Line Tool…</source>
        <translation>Befehlszeilenwerkzeug installieren …</translation>
    </message>
    <message>
        <source>Check for Updates…</source>
        <translation>Nach Updates suchen …</translation>
    </message>
    <message>
        <source>Run Checks…</source>
        <translation>Prüfen …</translation>
    </message>
    <message>
        <source>Open Menu at Login</source>
        <translation>Menü bei der Anmeldung öffnen</translation>
    </message>
    <message>
        <source>Quit Ferrobank Menu</source>
        <translation>Ferrobank-Menü beenden</translation>
    </message>
    <message>
        <source>Ferrobank is running</source>
        <translation>Ferrobank läuft</translation>
    </message>
    <message>
        <source>Drive is mounted and writable</source>
        <translation>Laufwerk ist eingehängt und beschreibbar</translation>
    </message>
    <message>
        <source>Starts at login</source>
        <translation>Startet bei der Anmeldung</translation>
    </message>
    <message>
        <source>Room on this Mac</source>
        <translation>Platz auf diesem Mac</translation>
    </message>
    <message>
        <source>Running the checks</source>
        <translation>Ausführen der Prüfungen</translation>
    </message>
    <message>
        <source>Restarting Ferrobank…</source>
        <translation>Ferrobank wird neu gestartet …</translation>
    </message>
    <message>
        <source>Open System Settings › General › Login Items and turn on Ferrobank.</source>
        <translation>Öffnen Sie Systemeinstellungen › Allgemein › Anmeldeobjekte und schalten Sie Ferrobank ein.</translation>
    </message>
    <message>
        <source>Ferrobank is switched off in Login Items.</source>
        <translation>Ferrobank ist in den Anmeldeobjekten ausgeschaltet.</translation>
    </message>
    <message>
        <source>Turn on Ferrobank in the Login Items window that just opened; setup continues on its own.</source>
        <translation>Schalten Sie Ferrobank im eben geöffneten Fenster „Anmeldeobjekte“ ein; die Einrichtung läuft dann von selbst weiter.</translation>
    </message>
    <message>
        <source>Registered with macOS; it shows in System Settings › Login Items.</source>
        <translation>Bei macOS angemeldet; zu sehen in Systemeinstellungen › Anmeldeobjekte.</translation>
    </message>
    <message>
        <source>Formatting an 8 TB volume. This takes a moment the first time.</source>
        <translation>Ein Volume mit 8 TB wird formatiert. Beim ersten Mal dauert das einen Augenblick.</translation>
    </message>
    <message>
        <source>Starting the drive.</source>
        <translation>Das Laufwerk wird gestartet.</translation>
    </message>
    <message>
        <source>Mounted at ~/Ferrobank.</source>
        <translation>Unter ~/⁠Ferrobank eingehängt.</translation>
    </message>
    <message>
        <source>The drive could not be attached: %1</source>
        <translation>Das Laufwerk konnte nicht verbunden werden: %1</translation>
    </message>
    <message>
        <source>If you clicked Don't Allow, open Privacy &amp; Security › Files &amp; Folders, turn on Network Volumes for Ferrobank, then click Try Again.</source>
        <translation>Wenn Sie auf „Nicht erlauben“ geklickt haben, öffnen Sie „Datenschutz &amp; Sicherheit“ › „Dateien und Ordner“, schalten Sie dort für Ferrobank „Netzwerkvolumes“ ein und klicken Sie auf „Erneut versuchen“.</translation>
    </message>
    <message>
        <source>The drive did not mount within 5 minutes.</source>
        <translation>Das Laufwerk wurde nicht innerhalb von 5 Minuten eingehängt.</translation>
    </message>
    <message>
        <source>Choose Show Log from the Ferrobank menu; the last lines name what blocked the mount.</source>
        <translation>Wählen Sie „Protokoll zeigen“ im Ferrobank-Menü; die letzten Zeilen nennen, was das Einhängen verhindert hat.</translation>
    </message>
    <message>
        <source>macOS is asking for your permission. In the dialog “Ferrobank would like to access files on a network volume”, click Allow. The drive is served from this Mac over a private connection that never leaves it.</source>
        <translation>macOS bittet um Ihre Erlaubnis. Klicken Sie im Dialog „Ferrobank möchte auf Dateien auf einem Netzwerkvolume zugreifen“ auf „Erlauben“. Das Laufwerk wird von diesem Mac über eine private Verbindung bereitgestellt, die ihn nie verlässt.</translation>
    </message>
    <message>
        <source>In Finder's sidebar under Locations, with its own icon.</source>
        <translation>In der Seitenleiste des Finders unter „Orte“, mit eigenem Symbol.</translation>
    </message>
    <message>
        <source>Start your drive at login</source>
        <translation>Laufwerk bei der Anmeldung starten</translation>
    </message>
    <message>
        <source>Create and mount your drive at ~/Ferrobank</source>
        <translation>Laufwerk anlegen und unter ~/⁠Ferrobank einhängen</translation>
    </message>
    <message>
        <source>Add the drive to Finder</source>
        <translation>Laufwerk zum Finder hinzufügen</translation>
    </message>
    <message>
        <source>Skipped. Choose Install Command-Line Tool… from the Ferrobank menu any time.</source>
        <translation>Übersprungen. Wählen Sie jederzeit „Befehlszeilenwerkzeug installieren …“ im Ferrobank-Menü.</translation>
    </message>
    <message>
        <source>Choose Install Command-Line Tool… from the Ferrobank menu any time.</source>
        <translation>Wählen Sie jederzeit „Befehlszeilenwerkzeug installieren …“ im Ferrobank-Menü.</translation>
    </message>
    <message>
        <source>Run ferrobank in Terminal; it lives at /usr/local/bin/ferrobank.</source>
        <translation>Rufen Sie im Terminal ferrobank auf; es liegt unter /usr/local/bin/ferrobank.</translation>
    </message>
    <message>
        <source>Your files are in %1. </source>
        <translation>Ihre Dateien liegen in %1. </translation>
    </message>
    <message>
        <source>The drive's data is deleted from this Mac.</source>
        <translation>Die Daten des Laufwerks sind von diesem Mac gelöscht.</translation>
    </message>
    <message>
        <source>The drive's data is kept, so reinstalling Ferrobank brings your drive back.</source>
        <translation>Die Daten des Laufwerks bleiben; wenn Sie Ferrobank neu installieren, ist Ihr Laufwerk wieder da.</translation>
    </message>
    <message>
        <source>not started</source>
        <translation>nicht begonnen</translation>
    </message>
    <message>
        <source>in progress</source>
        <translation>in Arbeit</translation>
    </message>
    <message>
        <source>waiting for you</source>
        <translation>wartet auf Sie</translation>
    </message>
    <message>
        <source>passed</source>
        <translation>bestanden</translation>
    </message>
    <message>
        <source>failed</source>
        <translation>fehlgeschlagen</translation>
    </message>
    <message>
        <source>skipped</source>
        <translation>übersprungen</translation>
    </message>
    <message>
        <source>Restart Ferrobank</source>
        <translation>Ferrobank neu starten</translation>
    </message>
    <message>
        <source>Open Storage Settings</source>
        <translation>Speicher-Einstellungen öffnen</translation>
    </message>
    <message>
        <source>On. Your drive is there when you log in.</source>
        <translation>Ein. Ihr Laufwerk ist da, wenn Sie sich anmelden.</translation>
    </message>
    <message>
        <source>Switched off. Your drive stays away until you turn this on.</source>
        <translation>Ausgeschaltet. Ihr Laufwerk bleibt weg, bis Sie dies einschalten.</translation>
    </message>
    <message>
        <source>Off. Setup turns this on.</source>
        <translation>Aus. Die Einrichtung schaltet dies ein.</translation>
    </message>
    <message>
        <source>Not available: a part of Ferrobank is missing.</source>
        <translation>Nicht verfügbar: Ein Teil von Ferrobank fehlt.</translation>
    </message>
    <message>
        <source>On. The Ferrobank menu appears when you log in.</source>
        <translation>Ein. Das Ferrobank-Menü erscheint bei der Anmeldung.</translation>
    </message>
    <message>
        <source>Switched off. The menu appears only when you open Ferrobank.</source>
        <translation>Ausgeschaltet. Das Menü erscheint nur, wenn Sie Ferrobank öffnen.</translation>
    </message>
    <message>
        <source>Off. The menu appears only when you open Ferrobank.</source>
        <translation>Aus. Das Menü erscheint nur, wenn Sie Ferrobank öffnen.</translation>
    </message>
    <message>
        <source>The data stays, so reinstalling brings your drive back.</source>
        <translation>Die Daten bleiben; eine Neuinstallation bringt Ihr Laufwerk zurück.</translation>
    </message>
    <message>
        <source>Your files will be in the folder above.</source>
        <translation>Ihre Dateien liegen dann im oben genannten Ordner.</translation>
    </message>
    <message>
        <source>Your files on Ferrobank will be gone.</source>
        <translation>Ihre Dateien auf Ferrobank werden verloren sein.</translation>
    </message>
    <message>
        <source>Copying your files, then detaching the drive.</source>
        <translation>Ihre Dateien werden kopiert, dann wird das Laufwerk getrennt.</translation>
    </message>
    <message>
        <source>Detaching the drive.</source>
        <translation>Das Laufwerk wird getrennt.</translation>
    </message>
    <message>
        <source>Ferrobank %1</source>
        <translation>Ferrobank %1</translation>
    </message>
    <message>
        <source>The window cannot be opened. %1</source>
        <translation>Das Fenster lässt sich nicht öffnen. %1</translation>
    </message>
    <message>
        <source>Choose a Folder</source>
        <translation>Ordner auswählen</translation>
    </message>
    <message>
        <source>Copy Here</source>
        <translation>Hierher kopieren</translation>
    </message>
    <message>
        <source>Check for updates automatically?</source>
        <translation>Automatisch nach Updates suchen?</translation>
    </message>
    <message>
        <source>Ferrobank can look for new versions once a day. Nothing about you or your computer is sent. You can always check from the menu.</source>
        <translation>Ferrobank kann einmal am Tag nach neuen Versionen suchen. Über Sie oder Ihren Computer wird nichts gesendet. Im Menü können Sie jederzeit selbst suchen.</translation>
    </message>
    <message>
        <source>Automatically download and install updates</source>
        <translation>Updates automatisch laden und installieren</translation>
    </message>
    <message>
        <source>Checking for updates…</source>
        <translation>Suche nach Updates …</translation>
    </message>
    <message>
        <source>Your system is not supported</source>
        <translation>Ihr System wird nicht unterstützt</translation>
    </message>
    <message>
        <source>Ferrobank %1 is available, but it needs a newer system than yours.</source>
        <translation>Ferrobank %1 ist verfügbar, benötigt aber ein neueres System als Ihres.</translation>
    </message>
    <message>
        <source>Ferrobank %1 is available, but it does not support a system as new as yours.</source>
        <translation>Ferrobank %1 ist verfügbar, unterstützt aber ein so neues System wie Ihres nicht.</translation>
    </message>
    <message>
        <source>You’re up to date!</source>
        <translation>Sie sind auf dem neuesten Stand!</translation>
    </message>
    <message>
        <source>Ferrobank %1 is currently the newest version available. You are running version %2.</source>
        <translation>Ferrobank %1 ist derzeit die neueste Version. Sie verwenden Version %2.</translation>
    </message>
    <message>
        <source>Ferrobank %1 is currently the newest version available.</source>
        <translation>Ferrobank %1 ist derzeit die neueste Version.</translation>
    </message>
    <message>
        <source>To update: %1</source>
        <translation>So aktualisieren Sie: %1</translation>
    </message>
    <message>
        <source>An important update for Ferrobank is available</source>
        <translation>Ein wichtiges Update für Ferrobank ist verfügbar</translation>
    </message>
    <message>
        <source>A new version of Ferrobank is available</source>
        <translation>Eine neue Version von Ferrobank ist verfügbar</translation>
    </message>
    <message>
        <source>Ferrobank %1 is now available; you have %2.</source>
        <translation>Ferrobank %1 ist jetzt verfügbar; Sie haben %2.</translation>
    </message>
    <message>
        <source>Automatically download and install updates in the future</source>
        <translation>Updates künftig automatisch laden und installieren</translation>
    </message>
    <message>
        <source>Downloading update…</source>
        <translation>Update wird geladen …</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>Verifying and unpacking the update…</source>
        <translation>Update wird geprüft und entpackt …</translation>
    </message>
    <message>
        <source>Ready to install</source>
        <translation>Bereit zur Installation</translation>
    </message>
    <message>
        <source>Ferrobank %1 has been downloaded. It is installed when you quit, or now.</source>
        <translation>Ferrobank %1 wurde geladen. Es wird beim Beenden installiert oder jetzt.</translation>
    </message>
    <message>
        <source>Installing update…</source>
        <translation>Update wird installiert …</translation>
    </message>
    <message>
        <source>Ferrobank %1 is installed; %2 is still running. Relaunch to finish the update.</source>
        <translation>Ferrobank %1 ist installiert; %2 läuft noch. Starten Sie neu, um das Update abzuschließen.</translation>
    </message>
    <message>
        <source>Updates are switched off</source>
        <translation>Updates sind ausgeschaltet</translation>
    </message>
    <message>
        <source>Update error!</source>
        <translation>Fehler beim Update!</translation>
    </message>
    <message>
        <source>Your system has not answered yet.</source>
        <translation>Ihr System hat noch nicht geantwortet.</translation>
    </message>
    <message>
        <source>There is no log yet.</source>
        <translation>Es gibt noch kein Protokoll.</translation>
    </message>
    <message>
        <source>Ferrobank goes on in the background</source>
        <translation>Ferrobank läuft im Hintergrund weiter</translation>
    </message>
    <message>
        <source>This desktop shows no icon for it. Open Ferrobank again to see your drive; the menu of its icon among your applications has Run Checks and Quit.</source>
        <translation>Dieser Desktop zeigt dafür kein Symbol. Öffnen Sie Ferrobank erneut, um Ihr Laufwerk zu sehen; das Menü seines Symbols unter Ihren Anwendungen bietet Prüfungen und Beenden.</translation>
    </message>
    <message>
        <source>Ferrobank is in the Trash. The command %1 is still there, because removing it needs an administrator's password. To remove it: sudo rm %1</source>
        <translation>Ferrobank ist im Papierkorb. Der Befehl %1 ist noch da, weil zum Entfernen ein Administratorpasswort nötig ist. So entfernen Sie ihn: sudo rm %1</translation>
    </message>
    <message>
        <source>Check Automatically</source>
        <translation>Automatisch suchen</translation>
    </message>
    <message>
        <source>Don’t Check</source>
        <translation>Nicht suchen</translation>
    </message>
    <message>
        <source>Install Update</source>
        <translation>Update installieren</translation>
    </message>
    <message>
        <source>Install and Relaunch</source>
        <translation>Installieren und neu starten</translation>
    </message>
    <message>
        <source>Install on Quit</source>
        <translation>Beim Beenden installieren</translation>
    </message>
    <message>
        <source>Later</source>
        <translation>Später</translation>
    </message>
    <message>
        <source>Learn More…</source>
        <translation>Mehr erfahren …</translation>
    </message>
    <message>
        <source>Relaunch</source>
        <translation>Neu starten</translation>
    </message>
    <message>
        <source>Remind Me Later</source>
        <translation>Später erinnern</translation>
    </message>
    <message>
        <source>Skip This Version</source>
        <translation>Diese Version überspringen</translation>
    </message>
    <message>
        <source>Version History</source>
        <translation>Versionsverlauf</translation>
    </message>
    <message>
        <source>This copy of Ferrobank can be changed without a password, and everybody on this computer would run it by typing ferrobank, its administrator too. A copy that was installed as a package is safe from that.</source>
        <translation>Diese Kopie von Ferrobank lässt sich ohne Passwort verändern, und alle auf diesem Computer würden sie mit dem Befehl ferrobank ausführen, auch der Administrator. Eine als Paket installierte Kopie ist davor geschützt.</translation>
    </message>
</context>
</TS>
