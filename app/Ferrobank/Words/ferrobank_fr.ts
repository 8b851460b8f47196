<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="en">
<context>
    <name>Ferrobank</name>
    <message>
        <source>Minimise</source>
        <translation>Réduire</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Fermer</translation>
    </message>
    <message>
        <source>Checks</source>
        <translation>Vérifications</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1 : %2</translation>
    </message>
    <message>
        <source>Ferrobank checks</source>
        <translation>Vérifications de Ferrobank</translation>
    </message>
    <message>
        <source>The parts of your setup that keep the drive working.</source>
        <translation>Les éléments de votre installation qui font fonctionner le lecteur.</translation>
    </message>
    <message>
        <source>Running checks…</source>
        <translation>Vérifications en cours…</translation>
    </message>
    <message>
        <source>Run Again</source>
        <translation>Relancer</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>Terminé</translation>
    </message>
    <message>
        <source>Before setup</source>
        <translation>Avant l’installation</translation>
    </message>
    <message>
        <source>Setup changes a few things on this Mac. You choose which.</source>
        <translation>L’installation modifie quelques éléments sur ce Mac. Vous choisissez lesquels.</translation>
    </message>
    <message>
        <source>The drive's background service starts when you log in, so ~/Ferrobank is there when you need it. The drive needs this.</source>
        <translation>Le service d’arrière-plan du lecteur démarre à l’ouverture de session, pour que ~/⁠Ferrobank soit là quand vous en avez besoin. Le lecteur en dépend.</translation>
    </message>
    <message>
        <source>Open the Ferrobank menu at login</source>
        <translation>Ouvrir le menu Ferrobank à l’ouverture de session</translation>
    </message>
    <message>
        <source>Install the ferrobank command</source>
        <translation>Installer la commande ferrobank</translation>
    </message>
    <message>
        <source>Adds ferrobank to /usr/local/bin so Terminal can run it. macOS may ask for your password once.</source>
        <translation>Ajoute ferrobank à /usr/local/bin pour que Terminal puisse l’exécuter. macOS peut demander une fois votre mot de passe.</translation>
    </message>
    <message>
        <source>macOS will show a few things along the way:</source>
        <translation>macOS affichera plusieurs messages en cours de route :</translation>
    </message>
    <message>
        <source>A “Login Item Added” notification. That is Ferrobank registering so your drive mounts when you log in. Nothing to do.</source>
        <translation>Une notification « Élément d’ouverture ajouté ». C’est Ferrobank qui s’inscrit pour que votre lecteur soit monté à l’ouverture de session. Rien à faire.</translation>
    </message>
    <message>
        <source>A prompt asking whether Ferrobank may access files on a network volume. Your drive is served from this Mac over a private connection that never leaves it. Click Allow.</source>
        <translation>Une demande d’accès de Ferrobank aux fichiers d’un volume réseau. Votre lecteur est servi par ce Mac via une connexion privée qui ne le quitte jamais. Cliquez sur Autoriser.</translation>
    </message>
    <message>
        <source>A password prompt, if this Mac needs it to add the command. Cancel it to skip; you can install the command later from the Ferrobank menu.</source>
        <translation>Une demande de mot de passe, si ce Mac en a besoin pour ajouter la commande. Annulez-la pour passer cette étape ; vous pourrez installer la commande plus tard depuis le menu Ferrobank.</translation>
    </message>
    <message>
        <source>Allow and Set Up</source>
        <translation>Autoriser et installer</translation>
    </message>
    <message>
        <source>Copied</source>
        <translation>Copié</translation>
    </message>
    <message>
        <source>Copy Diagnostics</source>
        <translation>Copier le diagnostic</translation>
    </message>
    <message>
        <source>The diagnostics are on the clipboard.</source>
        <translation>Le diagnostic est dans le presse-papiers.</translation>
    </message>
    <message>
        <source>Reading the drive's state</source>
        <translation>Lecture de l’état du lecteur</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Afficher</translation>
    </message>
    <message>
        <source>Ferrobank is ready</source>
        <translation>Ferrobank est prêt</translation>
    </message>
    <message>
        <source>Your drive is at ~/Ferrobank and in Finder's sidebar under Locations. The Ferrobank menu in the menu bar shows its status and space saved, and can run these checks again.</source>
        <translation>Votre lecteur se trouve dans ~/⁠Ferrobank et dans la barre latérale du Finder, sous Emplacements. Le menu Ferrobank de la barre des menus affiche son état et l’espace gagné, et peut relancer ces vérifications.</translation>
    </message>
    <message>
        <source>Open Ferrobank</source>
        <translation>Ouvrir Ferrobank</translation>
    </message>
    <message>
        <source>Mounted</source>
        <translation>Monté</translation>
    </message>
    <message>
        <source>Needs attention</source>
        <translation>Intervention requise</translation>
    </message>
    <message>
        <source>Starting…</source>
        <translation>Démarrage…</translation>
    </message>
    <message>
        <source>Not set up</source>
        <translation>Non installé</translation>
    </message>
    <message>
        <source>%1 of files take %2 on disk, %3× smaller.</source>
        <translation>%1 de fichiers occupent %2 sur le disque, %3 fois moins.</translation>
    </message>
    <message>
        <source>Ferrobank</source>
        <translation>Ferrobank</translation>
    </message>
    <message>
        <source>Show in Finder</source>
        <translation>Afficher dans le Finder</translation>
    </message>
    <message>
        <source>Run Checks</source>
        <translation>Vérifier</translation>
    </message>
    <message>
        <source>%1 of %2 checks passed</source>
        <translation>%1 vérifications réussies sur %2</translation>
    </message>
    <message>
        <source>Space saved</source>
        <translation>Espace gagné</translation>
    </message>
    <message>
        <source>Nothing saved yet</source>
        <translation>Rien de gagné pour l’instant</translation>
    </message>
    <message>
        <source>Clones and copies of the same files are stored once.</source>
        <translation>Les clones et copies des mêmes fichiers ne sont stockés qu’une fois.</translation>
    </message>
    <message>
        <source>Login Items</source>
        <translation>Éléments d’ouverture</translation>
    </message>
    <message>
        <source>What Ferrobank starts when you log in.</source>
        <translation>Ce que Ferrobank lance à l’ouverture de session.</translation>
    </message>
    <message>
        <source>Ferrobank drive</source>
        <translation>Lecteur Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank menu</source>
        <translation>Menu Ferrobank</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>Continuer</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>%1 percent</source>
        <translation>%1 pour cent</translation>
    </message>
    <message>
        <source>dimmed</source>
        <translation>estompé</translation>
    </message>
    <message>
        <source>Stored on disk</source>
        <translation>Sur le disque</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>Command-line tool</source>
        <translation>Outil en ligne de commande</translation>
    </message>
    <message>
        <source>Install…</source>
        <translation>Installer…</translation>
    </message>
    <message>
        <source>Show Log</source>
        <translation>Afficher le journal</translation>
    </message>
    <message>
        <source>Uninstall Ferrobank…</source>
        <translation>Désinstaller Ferrobank…</translation>
    </message>
    <message>
        <source>Set up your drive</source>
        <translation>Installation de votre lecteur</translation>
    </message>
    <message>
        <source>Steps of the setup</source>
        <translation>Étapes de l’installation</translation>
    </message>
    <message>
        <source>Open Login Items</source>
        <translation>Ouvrir Éléments d’ouverture</translation>
    </message>
    <message>
        <source>Open Privacy Settings</source>
        <translation>Ouvrir les réglages de confidentialité</translation>
    </message>
    <message>
        <source>Try Again</source>
        <translation>Réessayer</translation>
    </message>
    <message>
        <source>In progress</source>
        <translation>En cours</translation>
    </message>
    <message>
        <source>Files on drive</source>
        <translation>Fichiers du lecteur</translation>
    </message>
    <message>
        <source>Free on this Mac</source>
        <translation>Libre sur ce Mac</translation>
    </message>
    <message>
        <source>Drive size</source>
        <translation>Taille du lecteur</translation>
    </message>
    <message>
        <source>dimmed: %1</source>
        <translation>estompé : %1</translation>
    </message>
    <message>
        <source>Uninstall Ferrobank</source>
        <translation>Désinstaller Ferrobank</translation>
    </message>
    <message>
        <source>This detaches the drive and stops Ferrobank from starting at login.</source>
        <translation>Le lecteur est détaché et Ferrobank ne démarre plus à l’ouverture de session.</translation>
    </message>
    <message>
        <source>Copy my files to a folder first</source>
        <translation>Copier d’abord mes fichiers dans un dossier</translation>
    </message>
    <message>
        <source>Choose…</source>
        <translation>Choisir…</translation>
    </message>
    <message>
        <source>Delete the drive's data from this Mac</source>
        <translation>Supprimer de ce Mac les données du lecteur</translation>
    </message>
    <message>
        <source>Uninstall</source>
        <translation>Désinstaller</translation>
    </message>
    <message>
        <source>Uninstalling Ferrobank</source>
        <translation>Désinstallation de Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank is uninstalled</source>
        <translation>Ferrobank est désinstallé</translation>
    </message>
    <message>
        <source>Open Copied Files</source>
        <translation>Ouvrir les fichiers copiés</translation>
    </message>
    <message>
        <source>Move Ferrobank to Trash</source>
        <translation>Mettre Ferrobank à la corbeille</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Quitter</translation>
    </message>
    <message>
        <source>Software Update</source>
        <translation>Mise à jour de logiciels</translation>
    </message>
    <message>
        <source>Ferrobank was updated</source>
        <translation>Ferrobank a été mis à jour</translation>
    </message>
    <message>
        <source>Ferrobank %1 is installed. Choose “Check for Updates…” to relaunch.</source>
        <translation>Ferrobank %1 est installé. Choisissez « Rechercher des mises à jour… » pour relancer.</translation>
    </message>
    <message>
        <source>Important update for Ferrobank</source>
        <translation>Mise à jour importante de Ferrobank</translation>
    </message>
    <message>
        <source>Update for Ferrobank</source>
        <translation>Mise à jour de Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank %1 is available. Choose “Check for Updates…” to see what is new.</source>
        <translation>Ferrobank %1 est disponible. Choisissez « Rechercher des mises à jour… » pour voir les nouveautés.</translation>
    </message>
    <message>
        <source>Ferrobank %1 is ready. It is installed when you close the window.</source>
        <translation>Ferrobank %1 est prêt. Il sera installé à la fermeture de la fenêtre.</translation>
    </message>
    <message>
        <source>Ferrobank %1 is ready. It is installed when you close the window or quit.</source>
        <translation>Ferrobank %1 est prêt. Il sera installé à la fermeture de la fenêtre ou quand vous quitterez.</translation>
    </message>
    <message>
        <source>Updates could not be confirmed</source>
        <translation>Les mises à jour n’ont pas pu être confirmées</translation>
    </message>
    <message>
        <source>Ferrobank %1 could not be installed.</source>
        <translation>Ferrobank %1 n’a pas pu être installé.</translation>
    </message>
    <message>
        <source>Ferrobank %1 was taken back</source>
        <translation>Ferrobank %1 a été retiré</translation>
    </message>
    <message>
        <source>It did not start on this computer, so %1 was put back. It is tried again after %2, or when you choose “Check for Updates…”.</source>
        <translation>Il n’a pas démarré sur cet ordinateur, la version %1 a donc été remise. Un nouvel essai aura lieu après le %2, ou lorsque vous choisirez « Rechercher des mises à jour… ».</translation>
    </message>
    <message>
        <source>An older Ferrobank is installed</source>
        <translation>Une version plus ancienne de Ferrobank est installée</translation>
    </message>
    <message>
        <source>Ferrobank %1 was put in the place of %2, which is still running. The next start runs the older one.</source>
        <translation>Ferrobank %1 a été mis à la place de la version %2, qui s’exécute encore. Le prochain démarrage utilisera la plus ancienne.</translation>
    </message>
    <message>
        <source>Ferrobank has not looked for updates</source>
        <translation>Ferrobank n’a pas recherché de mises à jour</translation>
    </message>
    <message>
        <source>The connection is paid by volume. Choose “Check for Updates…” to look now.</source>
        <translation>La connexion est facturée au volume. Choisissez « Rechercher des mises à jour… » pour rechercher maintenant.</translation>
    </message>
    <message>
        <source>An update could not be installed</source>
        <translation>Une mise à jour n’a pas pu être installée</translation>
    </message>
    <message>
        <source>Ferrobank could not look for updates</source>
        <translation>Ferrobank n’a pas pu rechercher de mises à jour</translation>
    </message>
    <message>
        <source>It has been so for two weeks. %1</source>
        <translation>C’est ainsi depuis deux semaines. %1</translation>
    </message>
    <message>
        <source>It was installed here before and did not start, so %1 was put back. Check again to try it once more.</source>
        <translation>Il a déjà été installé ici et n’a pas démarré, la version %1 a donc été remise. Recherchez à nouveau pour réessayer.</translation>
    </message>
    <message>
        <source>It was installed here before, did not start, and was taken back.</source>
        <translation>Il a déjà été installé ici, n’a pas démarré et a été retiré.</translation>
    </message>
    <message>
        <source>Ferrobank %1 was put in the place of %2, which is still running. Relaunch to use it.</source>
        <translation>Ferrobank %1 a été mis à la place de la version %2, qui s’exécute encore. Relancez pour l’utiliser.</translation>
    </message>
    <message>
        <source>Checking your drive</source>
        <translation>Vérification de votre lecteur</translation>
    </message>
    <message>
        <source>Ferrobank checks the parts of your setup that keep the drive working.</source>
        <translation>Ferrobank vérifie les éléments de votre installation qui font fonctionner le lecteur.</translation>
    </message>
    <message>
        <source>Welcome to Ferrobank</source>
        <translation>Bienvenue dans Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank is a drive at ~/Ferrobank that stores repeated data once, so clones, worktrees and build output take a fraction of the space. Finder, Terminal and your tools all use the same path.</source>
        <translation>Ferrobank est un lecteur situé dans ~/⁠Ferrobank qui ne stocke qu’une fois les données répétées : clones, arbres de travail et résultats de compilation n’occupent qu’une fraction de l’espace. Le Finder, le Terminal et vos outils utilisent tous le même chemin.</translation>
    </message>
    <message>
        <source>Setup takes about a minute.</source>
        <translation>L’installation prend environ une minute.</translation>
    </message>
    <message>
        <source>%1 used · %2 saved</source>
        <translation>%1 utilisés · %2 gagnés</translation>
    </message>
    <message>
        <source>Ferrobank · %1</source>
        <translation>Ferrobank · %1</translation>
    </message>
    <message>
        <source>Set Up Ferrobank…</source>
        <translation>Installer Ferrobank…</translation>
    </message>
    <message>
        <source>Install Command-Line Tool…</source>
        <translation>Installer l’outil en ligne de commande…</translation>
    </message>
    <message>
        <source>Check for Updates…</source>
        <translation>Rechercher des mises à jour…</translation>
    </message>
    <message>
        <source>Run Checks…</source>
        <translation>Vérifier…</translation>
    </message>
    <message>
        <source>Open Menu at Login</source>
        <translation>Ouvrir le menu à l’ouverture de session</translation>
    </message>
    <message>
        <source>Quit Ferrobank Menu</source>
        <translation>Quitter le menu Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank is running</source>
        <translation>Ferrobank fonctionne</translation>
    </message>
    <message>
        <source>Drive is mounted and writable</source>
        <translation>Le lecteur est monté et accessible en écriture</translation>
    </message>
    <message>
        <source>Starts at login</source>
        <translation>Démarre à l’ouverture de session</translation>
    </message>
    <message>
        <source>Room on this Mac</source>
        <translation>Place sur ce Mac</translation>
    </message>
    <message>
        <source>Running the checks</source>
        <translation>Exécution des vérifications</translation>
    </message>
    <message>
        <source>Restarting Ferrobank…</source>
        <translation>Redémarrage de Ferrobank…</translation>
    </message>
    <message>
        <source>Open System Settings › General › Login Items and turn on Ferrobank.</source>
        <translation>Ouvrez Réglages Système › Général › Ouverture et activez Ferrobank.</translation>
    </message>
    <message>
        <source>Ferrobank is switched off in Login Items.</source>
        <translation>Ferrobank est désactivé dans les éléments d’ouverture.</translation>
    </message>
    <message>
        <source>Turn on Ferrobank in the Login Items window that just opened; setup continues on its own.</source>
        <translation>Activez Ferrobank dans la fenêtre Éléments d’ouverture qui vient de s’ouvrir ; l’installation se poursuit d’elle-même.</translation>
    </message>
    <message>
        <source>Registered with macOS; it shows in System Settings › Login Items.</source>
        <translation>Inscrit auprès de macOS ; visible dans Réglages Système › Ouverture.</translation>
    </message>
    <message>
        <source>Formatting an 8 TB volume. This takes a moment the first time.</source>
        <translation>Formatage d’un volume de 8 To. Cela prend un instant la première fois.</translation>
    </message>
    <message>
        <source>Starting the drive.</source>
        <translation>Démarrage du lecteur.</translation>
    </message>
    <message>
        <source>Mounted at ~/Ferrobank.</source>
        <translation>Monté dans ~/⁠Ferrobank.</translation>
    </message>
    <message>
        <source>The drive could not be attached: %1</source>
        <translation>Le lecteur n’a pas pu être attaché : %1</translation>
    </message>
    <message>
        <source>If you clicked Don't Allow, open Privacy &amp; Security › Files &amp; Folders, turn on Network Volumes for Ferrobank, then click Try Again.</source>
        <translation>Si vous avez cliqué sur Ne pas autoriser, ouvrez Confidentialité et sécurité › Fichiers et dossiers, activez Volumes réseau pour Ferrobank, puis cliquez sur Réessayer.</translation>
    </message>
    <message>
        <source>The drive did not mount within 5 minutes.</source>
        <translation>Le lecteur n’a pas été monté en 5 minutes.</translation>
    </message>
    <message>
        <source>Choose Show Log from the Ferrobank menu; the last lines name what blocked the mount.</source>
        <translation>Choisissez Afficher le journal dans le menu Ferrobank ; les dernières lignes indiquent ce qui a bloqué le montage.</translation>
    </message>
    <message>
        <source>macOS is asking for your permission. In the dialog “Ferrobank would like to access files on a network volume”, click Allow. The drive is served from this Mac over a private connection that never leaves it.</source>
        <translation>macOS demande votre autorisation. Dans la fenêtre « Ferrobank souhaite accéder aux fichiers d’un volume réseau », cliquez sur Autoriser. Le lecteur est servi par ce Mac via une connexion privée qui ne le quitte jamais.</translation>
    </message>
    <message>
        <source>In Finder's sidebar under Locations, with its own icon.</source>
        <translation>Dans la barre latérale du Finder, sous Emplacements, avec sa propre icône.</translation>
    </message>
    <message>
        <source>Start your drive at login</source>
        <translation>Démarrer votre lecteur à l’ouverture de session</translation>
    </message>
    <message>
        <source>Create and mount your drive at ~/Ferrobank</source>
        <translation>Créer et monter votre lecteur dans ~/⁠Ferrobank</translation>
    </message>
    <message>
        <source>Add the drive to Finder</source>
        <translation>Ajouter le lecteur au Finder</translation>
    </message>
    <message>
        <source>Skipped. Choose Install Command-Line Tool… from the Ferrobank menu any time.</source>
        <translation>Ignoré. Choisissez Installer l’outil en ligne de commande… dans le menu Ferrobank quand vous voulez.</translation>
    </message>
    <message>
        <source>Choose Install Command-Line Tool… from the Ferrobank menu any time.</source>
        <translation>Choisissez Installer l’outil en ligne de commande… dans le menu Ferrobank quand vous voulez.</translation>
    </message>
    <message>
        <source>Run ferrobank in Terminal; it lives at /usr/local/bin/ferrobank.</source>
        <translation>Exécutez ferrobank dans le Terminal ; il se trouve dans /usr/local/bin/ferrobank.</translation>
    </message>
    <message>
        <source>Your files are in %1. </source>
        <translation>Vos fichiers sont dans %1. </translation>
    </message>
    <message>
        <source>The drive's data is deleted from this Mac.</source>
        <translation>Les données du lecteur sont supprimées de ce Mac.</translation>
    </message>
    <message>
        <source>The drive's data is kept, so reinstalling Ferrobank brings your drive back.</source>
        <translation>Les données du lecteur sont conservées : réinstaller Ferrobank fera revenir votre lecteur.</translation>
    </message>
    <message>
        <source>not started</source>
        <translation>pas commencé</translation>
    </message>
    <message>
        <source>in progress</source>
        <translation>en cours</translation>
    </message>
    <message>
        <source>waiting for you</source>
        <translation>en attente de votre action</translation>
    </message>
    <message>
        <source>passed</source>
        <translation>réussi</translation>
    </message>
    <message>
        <source>failed</source>
        <translation>échec</translation>
    </message>
    <message>
        <source>skipped</source>
        <translation>ignoré</translation>
    </message>
    <message>
        <source>Restart Ferrobank</source>
        <translation>Redémarrer Ferrobank</translation>
    </message>
    <message>
        <source>Open Storage Settings</source>
        <translation>Ouvrir les réglages de stockage</translation>
    </message>
    <message>
        <source>On. Your drive is there when you log in.</source>
        <translation>Activé. Votre lecteur est là dès l’ouverture de session.</translation>
    </message>
    <message>
        <source>Switched off. Your drive stays away until you turn this on.</source>
        <translation>Désactivé. Votre lecteur reste absent tant que vous ne l’activez pas.</translation>
    </message>
    <message>
        <source>Off. Setup turns this on.</source>
        <translation>Désactivé. L’installation l’active.</translation>
    </message>
    <message>
        <source>Not available: a part of Ferrobank is missing.</source>
        <translation>Indisponible : une partie de Ferrobank est manquante.</translation>
    </message>
    <message>
        <source>On. The Ferrobank menu appears when you log in.</source>
        <translation>Activé. Le menu Ferrobank apparaît à l’ouverture de session.</translation>
    </message>
    <message>
        <source>Switched off. The menu appears only when you open Ferrobank.</source>
        <translation>Désactivé. Le menu n’apparaît que si vous ouvrez Ferrobank.</translation>
    </message>
    <message>
        <source>Off. The menu appears only when you open Ferrobank.</source>
        <translation>Désactivé. Le menu n’apparaît que si vous ouvrez Ferrobank.</translation>
    </message>
    <message>
        <source>The data stays, so reinstalling brings your drive back.</source>
        <translation>Les données restent : une réinstallation fera revenir votre lecteur.</translation>
    </message>
    <message>
        <source>Your files will be in the folder above.</source>
        <translation>Vos fichiers seront dans le dossier ci-dessus.</translation>
    </message>
    <message>
        <source>Your files on Ferrobank will be gone.</source>
        <translation>Vos fichiers sur Ferrobank seront perdus.</translation>
    </message>
    <message>
        <source>Copying your files, then detaching the drive.</source>
        <translation>Copie de vos fichiers, puis détachement du lecteur.</translation>
    </message>
    <message>
        <source>Detaching the drive.</source>
        <translation>Détachement du lecteur.</translation>
    </message>
    <message>
        <source>Ferrobank %1</source>
        <translation>Ferrobank %1</translation>
    </message>
    <message>
        <source>The window cannot be opened. %1</source>
        <translation>La fenêtre ne peut pas être ouverte. %1</translation>
    </message>
    <message>
        <source>Choose a Folder</source>
        <translation>Choisir un dossier</translation>
    </message>
    <message>
        <source>Copy Here</source>
        <translation>Copier ici</translation>
    </message>
    <message>
        <source>Check for updates automatically?</source>
        <translation>Rechercher automatiquement les mises à jour ?</translation>
    </message>
    <message>
        <source>Ferrobank can look for new versions once a day. Nothing about you or your computer is sent. You can always check from the menu.</source>
        <translation>Ferrobank peut rechercher de nouvelles versions une fois par jour. Rien n’est envoyé sur vous ou votre ordinateur. Vous pouvez toujours vérifier depuis le menu.</translation>
    </message>
    <message>
        <source>Automatically download and install updates</source>
        <translation>Télécharger et installer automatiquement les mises à jour</translation>
    </message>
    <message>
        <source>Checking for updates…</source>
        <translation>Recherche de mises à jour…</translation>
    </message>
    <message>
        <source>Your system is not supported</source>
        <translation>Votre système n’est pas pris en charge</translation>
    </message>
    <message>
        <source>Ferrobank %1 is available, but it needs a newer system than yours.</source>
        <translation>Ferrobank %1 est disponible, mais nécessite un système plus récent que le vôtre.</translation>
    </message>
    <message>
        <source>Ferrobank %1 is available, but it does not support a system as new as yours.</source>
        <translation>Ferrobank %1 est disponible, mais ne prend pas en charge un système aussi récent que le vôtre.</translation>
    </message>
    <message>
        <source>You’re up to date!</source>
        <translation>Vous êtes à jour !</translation>
    </message>
    <message>
        <source>Ferrobank %1 is currently the newest version available. You are running version %2.</source>
        <translation>Ferrobank %1 est actuellement la version la plus récente. Vous utilisez la version %2.</translation>
    </message>
    <message>
        <source>Ferrobank %1 is currently the newest version available.</source>
        <translation>Ferrobank %1 est actuellement la version la plus récente.</translation>
    </message>
    <message>
        <source>To update: %1</source>
        <translation>Pour mettre à jour : %1</translation>
    </message>
    <message>
        <source>An important update for Ferrobank is available</source>
        <translation>Une mise à jour importante de Ferrobank est disponible</translation>
    </message>
    <message>
        <source>A new version of Ferrobank is available</source>
        <translation>Une nouvelle version de Ferrobank est disponible</translation>
    </message>
    <message>
        <source>Ferrobank %1 is now available; you have %2.</source>
        <translation>Ferrobank %1 est maintenant disponible ; vous avez la version %2.</translation>
    </message>
    <message>
        <source>Automatically download and install updates in the future</source>
        <translation>Télécharger et installer automatiquement les mises à jour à l’avenir</translation>
    </message>
    <message>
        <source>Downloading update…</source>
        <translation>Téléchargement de la mise à jour…</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 sur %2</translation>
    </message>
    <message>
        <source>Verifying and unpacking the update…</source>
        <translation>Vérification et extraction de la mise à jour…</translation>
    </message>
    <message>
        <source>Ready to install</source>
        <translation>Prêt à installer</translation>
    </message>
    <message>
        <source>Ferrobank %1 has been downloaded. It is installed when you quit, or now.</source>
        <translation>Ferrobank %1 a été téléchargé. Il sera installé quand vous quitterez, ou maintenant.</translation>
    </message>
    <message>
        <source>Installing update…</source>
        <translation>Installation de la mise à jour…</translation>
    </message>
    <message>
        <source>Ferrobank %1 is installed; %2 is still running. Relaunch to finish the update.</source>
        <translation>Ferrobank %1 est installé ; la version %2 s’exécute encore. Relancez pour terminer la mise à jour.</translation>
    </message>
    <message>
        <source>Updates are switched off</source>
        <translation>Les mises à jour sont désactivées</translation>
    </message>
    <message>
        <source>Update error!</source>
        <translation>Erreur de mise à jour !</translation>
    </message>
    <message>
        <source>Your system has not answered yet.</source>
        <translation>Votre système n’a pas encore répondu.</translation>
    </message>
    <message>
        <source>There is no log yet.</source>
        <translation>Il n'y a pas encore de journal.</translation>
    </message>
    <message>
        <source>Ferrobank goes on in the background</source>
        <translation>Ferrobank continue en arrière-plan</translation>
    </message>
    <message>
        <source>This desktop shows no icon for it. Open Ferrobank again to see your drive; the menu of its icon among your applications has Run Checks and Quit.</source>
        <translation>Ce bureau n'affiche pas d'icône pour lui. Ouvrez de nouveau Ferrobank pour voir votre disque ; le menu de son icône parmi vos applications permet de lancer les vérifications et de quitter.</translation>
    </message>
    <message>
        <source>Ferrobank is in the Trash. The command %1 is still there, because removing it needs an administrator's password. To remove it: sudo rm %1</source>
        <translation>Ferrobank est dans la corbeille. La commande %1 est toujours là, car sa suppression demande un mot de passe d'administrateur. Pour la supprimer : sudo rm %1</translation>
    </message>
    <message>
        <source>Check Automatically</source>
        <translation>Rechercher automatiquement</translation>
    </message>
    <message>
        <source>Don’t Check</source>
        <translation>Ne pas rechercher</translation>
    </message>
    <message>
        <source>Install Update</source>
        <translation>Installer la mise à jour</translation>
    </message>
    <message>
        <source>Install and Relaunch</source>
        <translation>Installer et relancer</translation>
    </message>
    <message>
        <source>Install on Quit</source>
        <translation>Installer en quittant</translation>
    </message>
    <message>
        <source>Later</source>
        <translation>Plus tard</translation>
    </message>
    <message>
        <source>Learn More…</source>
        <translation>En savoir plus…</translation>
    </message>
    <message>
        <source>Relaunch</source>
        <translation>Relancer</translation>
    </message>
    <message>
        <source>Remind Me Later</source>
        <translation>Me le rappeler plus tard</translation>
    </message>
    <message>
        <source>Skip This Version</source>
        <translation>Ignorer cette version</translation>
    </message>
    <message>
        <source>Version History</source>
        <translation>Historique des versions</translation>
    </message>
    <message>
        <source>This copy of Ferrobank can be changed without a password, and everybody on this computer would run it by typing ferrobank, its administrator too. A copy that was installed as a package is safe from that.</source>
        <translation>Cette copie de Ferrobank peut être modifiée sans mot de passe, et tout le monde sur cet ordinateur l’exécuterait en tapant ferrobank, l’administrateur aussi. Une copie installée comme paquet en est protégée.</translation>
    </message>
</context>
</TS>
