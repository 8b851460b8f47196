<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>Ferrobank</name>
    <message>
        <source>Setup changes a few things on this Mac. You choose which.</source>
        <translation>Die Einrichtung ändert einiges auf diesem Computer. Sie wählen aus, was.</translation>
    </message>
    <message>
        <source>Adds ferrobank to /usr/local/bin so Terminal can run it. macOS may ask for your password once.</source>
        <translation>Legt ferrobank in /usr/local/bin ab, damit Ihr Terminal es ausführen kann. Ihr System fragt eventuell einmal nach dem Passwort eines Administrators.</translation>
    </message>
    <message>
        <source>macOS will show a few things along the way:</source>
        <translation>Ihr System stellt Ihnen unterwegs eventuell eine Frage:</translation>
    </message>
    <message>
        <source>A “Login Item Added” notification. That is Ferrobank registering so your drive mounts when you log in. Nothing to do.</source>
        <translation>(left out)</translation>
    </message>
    <message>
        <source>A prompt asking whether Ferrobank may access files on a network volume. Your drive is served from this Mac over a private connection that never leaves it. Click Allow.</source>
        <translation>(left out)</translation>
    </message>
    <message>
        <source>A password prompt, if this Mac needs it to add the command. Cancel it to skip; you can install the command later from the Ferrobank menu.</source>
        <translation>Eine Passwortabfrage, falls dieser Computer sie für den Befehl benötigt. Brechen Sie sie ab, um dies zu überspringen; der Befehl lässt sich später über das Ferrobank-Menü installieren.</translation>
    </message>
    <message>
        <source>Your drive is at ~/Ferrobank and in Finder's sidebar under Locations. The Ferrobank menu in the menu bar shows its status and space saved, and can run these checks again.</source>
        <translation>Ihr Laufwerk liegt unter ~/⁠Ferrobank, und Ihre Dateiverwaltung zeigt es dort. Das Ferrobank-Menü zeigt Zustand und gesparten Platz und kann diese Prüfungen erneut ausführen.</translation>
    </message>
    <message>
        <source>Show in Finder</source>
        <translation>In Dateiverwaltung zeigen</translation>
    </message>
    <message>
        <source>Open Privacy Settings</source>
        <translation>(left out)</translation>
    </message>
    <message>
        <source>Free on this Mac</source>
        <translation>Frei auf diesem Computer</translation>
    </message>
    <message>
        <source>Delete the drive's data from this Mac</source>
        <translation>Daten des Laufwerks von diesem Computer löschen</translation>
    </message>
    <message>
        <source>Ferrobank is a drive at ~/Ferrobank that stores repeated data once, so clones, worktrees and build output take a fraction of the space. Finder, Terminal and your tools all use the same path.</source>
        <translation>Ferrobank ist ein Laufwerk unter ~/⁠Ferrobank, das Wiederholtes nur einmal speichert. Klone, Arbeitsbäume und Build-Ergebnisse brauchen so nur einen Bruchteil des Platzes. Dateiverwaltung, Terminal und Ihre Werkzeuge verwenden alle denselben Pfad.</translation>
    </message>
    <message>
        <source>Room on this Mac</source>
        <translation>Platz auf diesem Computer</translation>
    </message>
    <message>
        <source>Open System Settings › General › Login Items and turn on Ferrobank.</source>
        <translation>Beheben Sie, was die Meldung nennt, und klicken Sie auf „Erneut versuchen“.</translation>
    </message>
    <message>
        <source>Registered with macOS; it shows in System Settings › Login Items.</source>
        <translation>Als Dienst Ihrer Anmeldung eingetragen; zu sehen im Fenster „Anmeldeobjekte“ von Ferrobank.</translation>
    </message>
    <message>
        <source>Formatting an 8 TB volume. This takes a moment the first time.</source>
        <translation>Das Volume wird formatiert. Beim ersten Mal dauert das einen Augenblick.</translation>
    </message>
    <message>
        <source>If you clicked Don't Allow, open Privacy &amp; Security › Files &amp; Folders, turn on Network Volumes for Ferrobank, then click Try Again.</source>
        <translation>Beheben Sie, was die Meldung nennt, und klicken Sie auf „Erneut versuchen“. Mehr steht im Protokoll, das Sie über das Ferrobank-Menü öffnen.</translation>
    </message>
    <message>
        <source>macOS is asking for your permission. In the dialog “Ferrobank would like to access files on a network volume”, click Allow. The drive is served from this Mac over a private connection that never leaves it.</source>
        <translation>Das dauert länger als üblich. Wenn Ihr System nach einem Passwort fragt, dann um das Laufwerk einzuhängen.</translation>
    </message>
    <message>
        <source>In Finder's sidebar under Locations, with its own icon.</source>
        <translation>Ihre Dateiverwaltung zeigt es unter ~/⁠Ferrobank.</translation>
    </message>
    <message>
        <source>Add the drive to Finder</source>
        <translation>Laufwerk zur Dateiverwaltung hinzufügen</translation>
    </message>
    <message>
        <source>Run ferrobank in Terminal; it lives at /usr/local/bin/ferrobank.</source>
        <translation>Rufen Sie in einem Terminal ferrobank auf; es liegt unter /usr/local/bin/ferrobank.</translation>
    </message>
    <message>
        <source>The drive's data is deleted from this Mac.</source>
        <translation>Die Daten des Laufwerks sind von diesem Computer gelöscht.</translation>
    </message>
</context>
</TS>
