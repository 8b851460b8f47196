<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>Ferrobank</name>
    <message>
        <source>Setup changes a few things on this Mac. You choose which.</source>
        <translation>Setup changes a few things on this computer. You choose which.</translation>
    </message>
    <message>
        <source>Adds ferrobank to /usr/local/bin so Terminal can run it. macOS may ask for your password once.</source>
        <translation>Adds ferrobank to /usr/local/bin so your terminal can run it. Your system may ask for an administrator's password once.</translation>
    </message>
    <message>
        <source>macOS will show a few things along the way:</source>
        <translation>Your system may ask you something along the way:</translation>
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
        <translation>A password prompt, if this computer needs it to add the command. Cancel it to skip; you can install the command later from the Ferrobank menu.</translation>
    </message>
    <message>
        <source>Your drive is at ~/Ferrobank and in Finder's sidebar under Locations. The Ferrobank menu in the menu bar shows its status and space saved, and can run these checks again.</source>
        <translation>Your drive is at ~/Ferrobank, and your file manager shows it there. The Ferrobank menu shows its status and space saved, and can run these checks again.</translation>
    </message>
    <message>
        <source>Show in Finder</source>
        <translation>Show in File Manager</translation>
    </message>
    <message>
        <source>Open Privacy Settings</source>
        <translation>(left out)</translation>
    </message>
    <message>
        <source>Free on this Mac</source>
        <translation>Free on this computer</translation>
    </message>
    <message>
        <source>Delete the drive's data from this Mac</source>
        <translation>Delete the drive's data from this computer</translation>
    </message>
    <message>
        <source>Ferrobank is a drive at ~/Ferrobank that stores repeated data once, so clones, worktrees and build output take a fraction of the space. Finder, Terminal and your tools all use the same path.</source>
        <translation>Ferrobank is a drive at ~/Ferrobank that stores repeated data once, so clones, worktrees and build output take a fraction of the space. Your file manager, your terminal and your tools all use the same path.</translation>
    </message>
    <message>
        <source>Room on this Mac</source>
        <translation>Room on this computer</translation>
    </message>
    <message>
        <source>Open System Settings › General › Login Items and turn on Ferrobank.</source>
        <translation>Mend what the message names, then click Try Again.</translation>
    </message>
    <message>
        <source>Registered with macOS; it shows in System Settings › Login Items.</source>
        <translation>Registered as a service of your login; it shows in Ferrobank's Login Items window.</translation>
    </message>
    <message>
        <source>Formatting an 8 TB volume. This takes a moment the first time.</source>
        <translation>Formatting the volume. This takes a moment the first time.</translation>
    </message>
    <message>
        <source>If you clicked Don't Allow, open Privacy &amp; Security › Files &amp; Folders, turn on Network Volumes for Ferrobank, then click Try Again.</source>
        <translation>Mend what the message names, then click Try Again. The log, in the Ferrobank menu, tells more.</translation>
    </message>
    <message>
        <source>macOS is asking for your permission. In the dialog “Ferrobank would like to access files on a network volume”, click Allow. The drive is served from this Mac over a private connection that never leaves it.</source>
        <translation>This takes longer than usual. If your system asks for a password, that is to mount the drive.</translation>
    </message>
    <message>
        <source>In Finder's sidebar under Locations, with its own icon.</source>
        <translation>Your file manager shows it at ~/Ferrobank.</translation>
    </message>
    <message>
        <source>Add the drive to Finder</source>
        <translation>Add the drive to your file manager</translation>
    </message>
    <message>
        <source>Run ferrobank in Terminal; it lives at /usr/local/bin/ferrobank.</source>
        <translation>Run ferrobank in a terminal; it lives at /usr/local/bin/ferrobank.</translation>
    </message>
    <message>
        <source>The drive's data is deleted from this Mac.</source>
        <translation>The drive's data is deleted from this computer.</translation>
    </message>
</context>
</TS>
