<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="es" sourcelanguage="en">
<context>
    <name>Ferrobank</name>
    <message>
        <source>Setup changes a few things on this Mac. You choose which.</source>
        <translation>La configuración cambia algunas cosas en este equipo. Usted elige cuáles.</translation>
    </message>
    <message>
        <source>Adds ferrobank to /usr/local/bin so Terminal can run it. macOS may ask for your password once.</source>
        <translation>Añade ferrobank a /usr/local/bin para que su terminal pueda ejecutarlo. El sistema puede pedir una vez la contraseña de un administrador.</translation>
    </message>
    <message>
        <source>macOS will show a few things along the way:</source>
        <translation>El sistema puede preguntarle algo durante el proceso:</translation>
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
        <translation>Una solicitud de contraseña, si este equipo la necesita para añadir el comando. Cancélela para omitirlo; podrá instalar el comando más tarde desde el menú de Ferrobank.</translation>
    </message>
    <message>
        <source>Your drive is at ~/Ferrobank and in Finder's sidebar under Locations. The Ferrobank menu in the menu bar shows its status and space saved, and can run these checks again.</source>
        <translation>Su unidad está en ~/⁠Ferrobank, y su gestor de archivos la muestra allí. El menú de Ferrobank muestra su estado y el espacio ahorrado, y puede repetir estas comprobaciones.</translation>
    </message>
    <message>
        <source>Show in Finder</source>
        <translation>Mostrar en el gestor de archivos</translation>
    </message>
    <message>
        <source>Open Privacy Settings</source>
        <translation>(left out)</translation>
    </message>
    <message>
        <source>Free on this Mac</source>
        <translation>Libre en este equipo</translation>
    </message>
    <message>
        <source>Delete the drive's data from this Mac</source>
        <translation>Eliminar de este equipo los datos de la unidad</translation>
    </message>
    <message>
        <source>Ferrobank is a drive at ~/Ferrobank that stores repeated data once, so clones, worktrees and build output take a fraction of the space. Finder, Terminal and your tools all use the same path.</source>
        <translation>Ferrobank es una unidad en ~/⁠Ferrobank que guarda una sola vez los datos repetidos, de modo que clones, árboles de trabajo y resultados de compilación ocupan una fracción del espacio. Su gestor de archivos, su terminal y sus herramientas usan la misma ruta.</translation>
    </message>
    <message>
        <source>Room on this Mac</source>
        <translation>Espacio en este equipo</translation>
    </message>
    <message>
        <source>Open System Settings › General › Login Items and turn on Ferrobank.</source>
        <translation>Corrija lo que indica el mensaje y haga clic en Reintentar.</translation>
    </message>
    <message>
        <source>Registered with macOS; it shows in System Settings › Login Items.</source>
        <translation>Registrado como servicio de su sesión; aparece en la ventana Ítems de inicio de Ferrobank.</translation>
    </message>
    <message>
        <source>Formatting an 8 TB volume. This takes a moment the first time.</source>
        <translation>Formateando el volumen. La primera vez tarda un momento.</translation>
    </message>
    <message>
        <source>If you clicked Don't Allow, open Privacy &amp; Security › Files &amp; Folders, turn on Network Volumes for Ferrobank, then click Try Again.</source>
        <translation>Corrija lo que indica el mensaje y haga clic en Reintentar. El registro, en el menú de Ferrobank, da más detalles.</translation>
    </message>
    <message>
        <source>macOS is asking for your permission. In the dialog “Ferrobank would like to access files on a network volume”, click Allow. The drive is served from this Mac over a private connection that never leaves it.</source>
        <translation>Esto tarda más de lo habitual. Si el sistema pide una contraseña, es para montar la unidad.</translation>
    </message>
    <message>
        <source>In Finder's sidebar under Locations, with its own icon.</source>
        <translation>Su gestor de archivos la muestra en ~/⁠Ferrobank.</translation>
    </message>
    <message>
        <source>Add the drive to Finder</source>
        <translation>Añadir la unidad a su gestor de archivos</translation>
    </message>
    <message>
        <source>Run ferrobank in Terminal; it lives at /usr/local/bin/ferrobank.</source>
        <translation>Ejecute ferrobank en un terminal; está en /usr/local/bin/ferrobank.</translation>
    </message>
    <message>
        <source>The drive's data is deleted from this Mac.</source>
        <translation>Los datos de la unidad se han eliminado de este equipo.</translation>
    </message>
</context>
</TS>
