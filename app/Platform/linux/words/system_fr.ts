<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="en">
<context>
    <name>Ferrobank</name>
    <message>
        <source>Setup changes a few things on this Mac. You choose which.</source>
        <translation>L’installation modifie quelques éléments sur cet ordinateur. Vous choisissez lesquels.</translation>
    </message>
    <message>
        <source>Adds ferrobank to /usr/local/bin so Terminal can run it. macOS may ask for your password once.</source>
        <translation>Ajoute ferrobank à /usr/local/bin pour que votre terminal puisse l’exécuter. Votre système peut demander une fois un mot de passe d’administrateur.</translation>
    </message>
    <message>
        <source>macOS will show a few things along the way:</source>
        <translation>Votre système peut vous poser une question en cours de route :</translation>
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
        <translation>Une demande de mot de passe, si cet ordinateur en a besoin pour ajouter la commande. Annulez-la pour passer cette étape ; vous pourrez installer la commande plus tard depuis le menu Ferrobank.</translation>
    </message>
    <message>
        <source>Your drive is at ~/Ferrobank and in Finder's sidebar under Locations. The Ferrobank menu in the menu bar shows its status and space saved, and can run these checks again.</source>
        <translation>Votre lecteur se trouve dans ~/⁠Ferrobank, où votre gestionnaire de fichiers l’affiche. Le menu Ferrobank affiche son état et l’espace gagné, et peut relancer ces vérifications.</translation>
    </message>
    <message>
        <source>Show in Finder</source>
        <translation>Afficher dans le gestionnaire de fichiers</translation>
    </message>
    <message>
        <source>Open Privacy Settings</source>
        <translation>(left out)</translation>
    </message>
    <message>
        <source>Free on this Mac</source>
        <translation>Libre sur l’ordinateur</translation>
    </message>
    <message>
        <source>Delete the drive's data from this Mac</source>
        <translation>Supprimer de cet ordinateur les données du lecteur</translation>
    </message>
    <message>
        <source>Ferrobank is a drive at ~/Ferrobank that stores repeated data once, so clones, worktrees and build output take a fraction of the space. Finder, Terminal and your tools all use the same path.</source>
        <translation>Ferrobank est un lecteur situé dans ~/⁠Ferrobank qui ne stocke qu’une fois les données répétées : clones, arbres de travail et résultats de compilation n’occupent qu’une fraction de l’espace. Votre gestionnaire de fichiers, votre terminal et vos outils utilisent tous le même chemin.</translation>
    </message>
    <message>
        <source>Room on this Mac</source>
        <translation>Place sur cet ordinateur</translation>
    </message>
    <message>
        <source>Open System Settings › General › Login Items and turn on Ferrobank.</source>
        <translation>Corrigez ce qu’indique le message, puis cliquez sur Réessayer.</translation>
    </message>
    <message>
        <source>Registered with macOS; it shows in System Settings › Login Items.</source>
        <translation>Inscrit comme service de votre session ; visible dans la fenêtre Éléments d’ouverture de Ferrobank.</translation>
    </message>
    <message>
        <source>Formatting an 8 TB volume. This takes a moment the first time.</source>
        <translation>Formatage du volume. Cela prend un instant la première fois.</translation>
    </message>
    <message>
        <source>If you clicked Don't Allow, open Privacy &amp; Security › Files &amp; Folders, turn on Network Volumes for Ferrobank, then click Try Again.</source>
        <translation>Corrigez ce qu’indique le message, puis cliquez sur Réessayer. Le journal, dans le menu Ferrobank, en dit plus.</translation>
    </message>
    <message>
        <source>macOS is asking for your permission. In the dialog “Ferrobank would like to access files on a network volume”, click Allow. The drive is served from this Mac over a private connection that never leaves it.</source>
        <translation>Cela prend plus de temps que d’habitude. Si votre système demande un mot de passe, c’est pour monter le lecteur.</translation>
    </message>
    <message>
        <source>In Finder's sidebar under Locations, with its own icon.</source>
        <translation>Votre gestionnaire de fichiers l’affiche dans ~/⁠Ferrobank.</translation>
    </message>
    <message>
        <source>Add the drive to Finder</source>
        <translation>Ajouter le lecteur à votre gestionnaire de fichiers</translation>
    </message>
    <message>
        <source>Run ferrobank in Terminal; it lives at /usr/local/bin/ferrobank.</source>
        <translation>Exécutez ferrobank dans un terminal ; il se trouve dans /usr/local/bin/ferrobank.</translation>
    </message>
    <message>
        <source>The drive's data is deleted from this Mac.</source>
        <translation>Les données du lecteur sont supprimées de cet ordinateur.</translation>
    </message>
</context>
</TS>
