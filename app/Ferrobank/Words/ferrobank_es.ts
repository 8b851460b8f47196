<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="es" sourcelanguage="en">
<context>
    <name>Ferrobank</name>
    <message>
        <source>Minimise</source>
        <translation>Minimizar</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Cerrar</translation>
    </message>
    <message>
        <source>Checks</source>
        <translation>Comprobaciones</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>Ferrobank checks</source>
        <translation>Comprobaciones de Ferrobank</translation>
    </message>
    <message>
        <source>The parts of your setup that keep the drive working.</source>
        <translation>Las partes de su configuración que mantienen la unidad en funcionamiento.</translation>
    </message>
    <message>
        <source>Running checks…</source>
        <translation>Comprobando…</translation>
    </message>
    <message>
        <source>Run Again</source>
        <translation>Repetir</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>Listo</translation>
    </message>
    <message>
        <source>Before setup</source>
        <translation>Antes de configurar</translation>
    </message>
    <message>
        <source>Setup changes a few things on this Mac. You choose which.</source>
        <translation>La configuración cambia algunas cosas en este Mac. Usted elige cuáles.</translation>
    </message>
    <message>
        <source>The drive's background service starts when you log in, so ~/Ferrobank is there when you need it. The drive needs this.</source>
        <translation>El servicio en segundo plano de la unidad se inicia al iniciar sesión, para que ~/⁠Ferrobank esté disponible cuando lo necesite. La unidad lo requiere.</translation>
    </message>
    <message>
        <source>Open the Ferrobank menu at login</source>
        <translation>Abrir el menú de Ferrobank al iniciar sesión</translation>
    </message>
    <message>
        <source>Install the ferrobank command</source>
        <translation>Instalar el comando ferrobank</translation>
    </message>
    <message>
        <source>Adds ferrobank to /usr/local/bin so Terminal can run it. macOS may ask for your password once.</source>
        <translation>Añade ferrobank a /usr/local/bin para que Terminal pueda ejecutarlo. macOS puede pedirle la contraseña una vez.</translation>
    </message>
    <message>
        <source>macOS will show a few things along the way:</source>
        <translation>macOS mostrará algunas cosas durante el proceso:</translation>
    </message>
    <message>
        <source>A “Login Item Added” notification. That is Ferrobank registering so your drive mounts when you log in. Nothing to do.</source>
        <translation>Una notificación «Ítem de inicio añadido». Es Ferrobank, que se registra para que su unidad se monte al iniciar sesión. No hay que hacer nada.</translation>
    </message>
    <message>
        <source>A prompt asking whether Ferrobank may access files on a network volume. Your drive is served from this Mac over a private connection that never leaves it. Click Allow.</source>
        <translation>Una pregunta sobre si Ferrobank puede acceder a archivos de un volumen de red. Este Mac sirve su unidad por una conexión privada que nunca sale de él. Haga clic en Permitir.</translation>
    </message>
    <message>
        <source>A password prompt, if this Mac needs it to add the command. Cancel it to skip; you can install the command later from the Ferrobank menu.</source>
        <translation>Una solicitud de contraseña, si este Mac la necesita para añadir el comando. Cancélela para omitirlo; podrá instalar el comando más tarde desde el menú de Ferrobank.</translation>
    </message>
    <message>
        <source>Allow and Set Up</source>
        <translation>Permitir y configurar</translation>
    </message>
    <message>
        <source>Copied</source>
        <translation>Copiado</translation>
    </message>
    <message>
        <source>Copy Diagnostics</source>
        <translation>Copiar diagnóstico</translation>
    </message>
    <message>
        <source>The diagnostics are on the clipboard.</source>
        <translation>El diagnóstico está en el portapapeles.</translation>
    </message>
    <message>
        <source>Reading the drive's state</source>
        <translation>Leyendo el estado de la unidad</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Mostrar</translation>
    </message>
    <message>
        <source>Ferrobank is ready</source>
        <translation>Ferrobank está listo</translation>
    </message>
    <message>
        <source>Your drive is at ~/Ferrobank and in Finder's sidebar under Locations. The Ferrobank menu in the menu bar shows its status and space saved, and can run these checks again.</source>
        <translation>Su unidad está en ~/⁠Ferrobank y en la barra lateral del Finder, en Ubicaciones. El menú de Ferrobank en la barra de menús muestra su estado y el espacio ahorrado, y puede repetir estas comprobaciones.</translation>
    </message>
    <message>
        <source>Open Ferrobank</source>
        <translation>Abrir Ferrobank</translation>
    </message>
    <message>
        <source>Mounted</source>
        <translation>Montada</translation>
    </message>
    <message>
        <source>Needs attention</source>
        <translation>Requiere atención</translation>
    </message>
    <message>
        <source>Starting…</source>
        <translation>Iniciando…</translation>
    </message>
    <message>
        <source>Not set up</source>
        <translation>Sin configurar</translation>
    </message>
    <message>
        <source>%1 of files take %2 on disk, %3× smaller.</source>
        <translation>%1 de archivos ocupan %2 en el disco, %3 veces menos.</translation>
    </message>
    <message>
        <source>Ferrobank</source>
        <translation>Ferrobank</translation>
    </message>
    <message>
        <source>Show in Finder</source>
        <translation>Mostrar en el Finder</translation>
    </message>
    <message>
        <source>Run Checks</source>
        <translation>Comprobar</translation>
    </message>
    <message>
        <source>%1 of %2 checks passed</source>
        <translation>%1 de %2 comprobaciones superadas</translation>
    </message>
    <message>
        <source>Space saved</source>
        <translation>Espacio ahorrado</translation>
    </message>
    <message>
        <source>Nothing saved yet</source>
        <translation>Aún no se ha ahorrado nada</translation>
    </message>
    <message>
        <source>Clones and copies of the same files are stored once.</source>
        <translation>Los clones y las copias de los mismos archivos se guardan una sola vez.</translation>
    </message>
    <message>
        <source>Login Items</source>
        <translation>Ítems de inicio</translation>
    </message>
    <message>
        <source>What Ferrobank starts when you log in.</source>
        <translation>Lo que Ferrobank inicia al iniciar sesión.</translation>
    </message>
    <message>
        <source>Ferrobank drive</source>
        <translation>Unidad de Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank menu</source>
        <translation>Menú de Ferrobank</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancelar</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>Continuar</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>Aceptar</translation>
    </message>
    <message>
        <source>%1 percent</source>
        <translation>%1 por ciento</translation>
    </message>
    <message>
        <source>dimmed</source>
        <translation>atenuado</translation>
    </message>
    <message>
        <source>Stored on disk</source>
        <translation>En el disco</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>Command-line tool</source>
        <translation>Herramienta de línea de comandos</translation>
    </message>
    <message>
        <source>Install…</source>
        <translation>Instalar…</translation>
    </message>
    <message>
        <source>Show Log</source>
        <translation>Mostrar registro</translation>
    </message>
    <message>
        <source>Uninstall Ferrobank…</source>
        <translation>Desinstalar Ferrobank…</translation>
    </message>
    <message>
        <source>Set up your drive</source>
        <translation>Configurar su unidad</translation>
    </message>
    <message>
        <source>Steps of the setup</source>
        <translation>Pasos de la configuración</translation>
    </message>
    <message>
        <source>Open Login Items</source>
        <translation>Abrir Ítems de inicio</translation>
    </message>
    <message>
        <source>Open Privacy Settings</source>
        <translation>Abrir ajustes de privacidad</translation>
    </message>
    <message>
        <source>Try Again</source>
        <translation>Reintentar</translation>
    </message>
    <message>
        <source>In progress</source>
        <translation>En curso</translation>
    </message>
    <message>
        <source>Files on drive</source>
        <translation>Archivos en la unidad</translation>
    </message>
    <message>
        <source>Free on this Mac</source>
        <translation>Libre en este Mac</translation>
    </message>
    <message>
        <source>Drive size</source>
        <translation>Tamaño de la unidad</translation>
    </message>
    <message>
        <source>dimmed: %1</source>
        <translation>atenuado: %1</translation>
    </message>
    <message>
        <source>Uninstall Ferrobank</source>
        <translation>Desinstalar Ferrobank</translation>
    </message>
    <message>
        <source>This detaches the drive and stops Ferrobank from starting at login.</source>
        <translation>Se desconecta la unidad y Ferrobank deja de iniciarse al iniciar sesión.</translation>
    </message>
    <message>
        <source>Copy my files to a folder first</source>
        <translation>Copiar antes mis archivos a una carpeta</translation>
    </message>
    <message>
        <source>Choose…</source>
        <translation>Elegir…</translation>
    </message>
    <message>
        <source>Delete the drive's data from this Mac</source>
        <translation>Eliminar de este Mac los datos de la unidad</translation>
    </message>
    <message>
        <source>Uninstall</source>
        <translation>Desinstalar</translation>
    </message>
    <message>
        <source>Uninstalling Ferrobank</source>
        <translation>Desinstalando Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank is uninstalled</source>
        <translation>Ferrobank se ha desinstalado</translation>
    </message>
    <message>
        <source>Open Copied Files</source>
        <translation>Abrir archivos copiados</translation>
    </message>
    <message>
        <source>Move Ferrobank to Trash</source>
        <translation>Trasladar Ferrobank a la papelera</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Salir</translation>
    </message>
    <message>
        <source>Software Update</source>
        <translation>Actualización de software</translation>
    </message>
    <message>
        <source>Ferrobank was updated</source>
        <translation>Ferrobank se ha actualizado</translation>
    </message>
    <message>
        <source>Ferrobank %1 is installed. Choose “Check for Updates…” to relaunch.</source>
        <translation>Ferrobank %1 está instalado. Elija «Buscar actualizaciones…» para reiniciarlo.</translation>
    </message>
    <message>
        <source>Important update for Ferrobank</source>
        <translation>Actualización importante de Ferrobank</translation>
    </message>
    <message>
        <source>Update for Ferrobank</source>
        <translation>Actualización de Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank %1 is available. Choose “Check for Updates…” to see what is new.</source>
        <translation>Ferrobank %1 está disponible. Elija «Buscar actualizaciones…» para ver las novedades.</translation>
    </message>
    <message>
        <source>Ferrobank %1 is ready. It is installed when you close the window.</source>
        <translation>Ferrobank %1 está listo. Se instalará al cerrar la ventana.</translation>
    </message>
    <message>
        <source>Ferrobank %1 is ready. It is installed when you close the window or quit.</source>
        <translation>Ferrobank %1 está listo. Se instalará al cerrar la ventana o al salir.</translation>
    </message>
    <message>
        <source>Updates could not be confirmed</source>
        <translation>No se pudieron confirmar las actualizaciones</translation>
    </message>
    <message>
        <source>Ferrobank %1 could not be installed.</source>
        <translation>No se pudo instalar Ferrobank %1.</translation>
    </message>
    <message>
        <source>Ferrobank %1 was taken back</source>
        <translation>Se ha retirado Ferrobank %1</translation>
    </message>
    <message>
        <source>It did not start on this computer, so %1 was put back. It is tried again after %2, or when you choose “Check for Updates…”.</source>
        <translation>No se inició en este ordenador, así que se repuso la versión %1. Se intentará de nuevo después del %2, o cuando elija «Buscar actualizaciones…».</translation>
    </message>
    <message>
        <source>An older Ferrobank is installed</source>
        <translation>Hay instalada una versión anterior de Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank %1 was put in the place of %2, which is still running. The next start runs the older one.</source>
        <translation>Ferrobank %1 se puso en el lugar de %2, que sigue en ejecución. El próximo inicio usará la versión anterior.</translation>
    </message>
    <message>
        <source>Ferrobank has not looked for updates</source>
        <translation>Ferrobank no ha buscado actualizaciones</translation>
    </message>
    <message>
        <source>The connection is paid by volume. Choose “Check for Updates…” to look now.</source>
        <translation>La conexión se paga por volumen. Elija «Buscar actualizaciones…» para buscar ahora.</translation>
    </message>
    <message>
        <source>An update could not be installed</source>
        <translation>No se pudo instalar una actualización</translation>
    </message>
    <message>
        <source>Ferrobank could not look for updates</source>
        <translation>Ferrobank no pudo buscar actualizaciones</translation>
    </message>
    <message>
        <source>It has been so for two weeks. %1</source>
        <translation>Así ha sido durante dos semanas. %1</translation>
    </message>
    <message>
        <source>It was installed here before and did not start, so %1 was put back. Check again to try it once more.</source>
        <translation>Ya se instaló aquí y no se inició, así que se repuso la versión %1. Busque de nuevo para volver a intentarlo.</translation>
    </message>
    <message>
        <source>It was installed here before, did not start, and was taken back.</source>
        <translation>Ya se instaló aquí, no se inició y se retiró.</translation>
    </message>
    <message>
        <source>Ferrobank %1 was put in the place of %2, which is still running. Relaunch to use it.</source>
        <translation>Ferrobank %1 se puso en el lugar de %2, que sigue en ejecución. Reinicie para usarlo.</translation>
    </message>
    <message>
        <source>Checking your drive</source>
        <translation>Comprobación de su unidad</translation>
    </message>
    <message>
        <source>Ferrobank checks the parts of your setup that keep the drive working.</source>
        <translation>Ferrobank comprueba las partes de su configuración que mantienen la unidad en funcionamiento.</translation>
    </message>
    <message>
        <source>Welcome to Ferrobank</source>
        <translation>Le damos la bienvenida a Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank is a drive at ~/Ferrobank that stores repeated data once, so clones, worktrees and build output take a fraction of the space. Finder, Terminal and your tools all use the same path.</source>
        <translation>Ferrobank es una unidad en ~/⁠Ferrobank que guarda una sola vez los datos repetidos, de modo que clones, árboles de trabajo y resultados de compilación ocupan una fracción del espacio. El Finder, Terminal y sus herramientas usan la misma ruta.</translation>
    </message>
    <message>
        <source>Setup takes about a minute.</source>
        <translation>La configuración tarda alrededor de un minuto.</translation>
    </message>
    <message>
        <source>%1 used · %2 saved</source>
        <translation>%1 en uso · %2 ahorrados</translation>
    </message>
    <message>
        <source>Ferrobank · %1</source>
        <translation>Ferrobank · %1</translation>
    </message>
    <message>
        <source>Set Up Ferrobank…</source>
        <translation>Configurar Ferrobank…</translation>
    </message>
    <message>
        <source>Install Command-Line Tool…</source>
        <translation>Instalar herramienta de línea de comandos…</translation>
    </message>
    <message>
        <source>Check for Updates…</source>
        <translation>Buscar actualizaciones…</translation>
    </message>
    <message>
        <source>Run Checks…</source>
        <translation>Comprobar…</translation>
    </message>
    <message>
        <source>Open Menu at Login</source>
        <translation>Abrir el menú al iniciar sesión</translation>
    </message>
    <message>
        <source>Quit Ferrobank Menu</source>
        <translation>Salir del menú de Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank is running</source>
        <translation>Ferrobank está en marcha</translation>
    </message>
    <message>
        <source>Drive is mounted and writable</source>
        <translation>La unidad está montada y se puede escribir</translation>
    </message>
    <message>
        <source>Starts at login</source>
        <translation>Se inicia al iniciar sesión</translation>
    </message>
    <message>
        <source>Room on this Mac</source>
        <translation>Espacio en este Mac</translation>
    </message>
    <message>
        <source>Running the checks</source>
        <translation>Ejecución de las comprobaciones</translation>
    </message>
    <message>
        <source>Restarting Ferrobank…</source>
        <translation>Reiniciando Ferrobank…</translation>
    </message>
    <message>
        <source>Open System Settings › General › Login Items and turn on Ferrobank.</source>
        <translation>Abra Ajustes del Sistema › General › Ítems de inicio y active Ferrobank.</translation>
    </message>
    <message>
        <source>Ferrobank is switched off in Login Items.</source>
        <translation>Ferrobank está desactivado en Ítems de inicio.</translation>
    </message>
    <message>
        <source>Turn on Ferrobank in the Login Items window that just opened; setup continues on its own.</source>
        <translation>Active Ferrobank en la ventana Ítems de inicio que acaba de abrirse; la configuración continúa sola.</translation>
    </message>
    <message>
        <source>Registered with macOS; it shows in System Settings › Login Items.</source>
        <translation>Registrado en macOS; aparece en Ajustes del Sistema › Ítems de inicio.</translation>
    </message>
    <message>
        <source>Formatting an 8 TB volume. This takes a moment the first time.</source>
        <translation>Formateando un volumen de 8 TB. La primera vez tarda un momento.</translation>
    </message>
    <message>
        <source>Starting the drive.</source>
        <translation>Iniciando la unidad.</translation>
    </message>
    <message>
        <source>Mounted at ~/Ferrobank.</source>
        <translation>Montada en ~/⁠Ferrobank.</translation>
    </message>
    <message>
        <source>The drive could not be attached: %1</source>
        <translation>No se pudo conectar la unidad: %1</translation>
    </message>
    <message>
        <source>If you clicked Don't Allow, open Privacy &amp; Security › Files &amp; Folders, turn on Network Volumes for Ferrobank, then click Try Again.</source>
        <translation>Si hizo clic en No permitir, abra Privacidad y seguridad › Archivos y carpetas, active Volúmenes de red para Ferrobank y haga clic en Reintentar.</translation>
    </message>
    <message>
        <source>The drive did not mount within 5 minutes.</source>
        <translation>La unidad no se montó en 5 minutos.</translation>
    </message>
    <message>
        <source>Choose Show Log from the Ferrobank menu; the last lines name what blocked the mount.</source>
        <translation>Elija Mostrar registro en el menú de Ferrobank; las últimas líneas indican qué impidió el montaje.</translation>
    </message>
    <message>
        <source>macOS is asking for your permission. In the dialog “Ferrobank would like to access files on a network volume”, click Allow. The drive is served from this Mac over a private connection that never leaves it.</source>
        <translation>macOS le pide permiso. En el cuadro «Ferrobank quiere acceder a archivos de un volumen de red», haga clic en Permitir. Este Mac sirve la unidad por una conexión privada que nunca sale de él.</translation>
    </message>
    <message>
        <source>In Finder's sidebar under Locations, with its own icon.</source>
        <translation>En la barra lateral del Finder, en Ubicaciones, con su propio icono.</translation>
    </message>
    <message>
        <source>Start your drive at login</source>
        <translation>Iniciar su unidad al iniciar sesión</translation>
    </message>
    <message>
        <source>Create and mount your drive at ~/Ferrobank</source>
        <translation>Crear y montar su unidad en ~/⁠Ferrobank</translation>
    </message>
    <message>
        <source>Add the drive to Finder</source>
        <translation>Añadir la unidad al Finder</translation>
    </message>
    <message>
        <source>Skipped. Choose Install Command-Line Tool… from the Ferrobank menu any time.</source>
        <translation>Omitido. Elija Instalar herramienta de línea de comandos… en el menú de Ferrobank cuando quiera.</translation>
    </message>
    <message>
        <source>Choose Install Command-Line Tool… from the Ferrobank menu any time.</source>
        <translation>Elija Instalar herramienta de línea de comandos… en el menú de Ferrobank cuando quiera.</translation>
    </message>
    <message>
        <source>Run ferrobank in Terminal; it lives at /usr/local/bin/ferrobank.</source>
        <translation>Ejecute ferrobank en Terminal; está en /usr/local/bin/ferrobank.</translation>
    </message>
    <message>
        <source>Your files are in %1. </source>
        <translation>Sus archivos están en %1. </translation>
    </message>
    <message>
        <source>The drive's data is deleted from this Mac.</source>
        <translation>Los datos de la unidad se han eliminado de este Mac.</translation>
    </message>
    <message>
        <source>The drive's data is kept, so reinstalling Ferrobank brings your drive back.</source>
        <translation>Los datos de la unidad se conservan; al reinstalar Ferrobank, la unidad vuelve a aparecer.</translation>
    </message>
    <message>
        <source>not started</source>
        <translation>sin empezar</translation>
    </message>
    <message>
        <source>in progress</source>
        <translation>en curso</translation>
    </message>
    <message>
        <source>waiting for you</source>
        <translation>esperando su respuesta</translation>
    </message>
    <message>
        <source>passed</source>
        <translation>superado</translation>
    </message>
    <message>
        <source>failed</source>
        <translation>fallido</translation>
    </message>
    <message>
        <source>skipped</source>
        <translation>omitido</translation>
    </message>
    <message>
        <source>Restart Ferrobank</source>
        <translation>Reiniciar Ferrobank</translation>
    </message>
    <message>
        <source>Open Storage Settings</source>
        <translation>Abrir ajustes de almacenamiento</translation>
    </message>
    <message>
        <source>On. Your drive is there when you log in.</source>
        <translation>Activado. Su unidad está disponible al iniciar sesión.</translation>
    </message>
    <message>
        <source>Switched off. Your drive stays away until you turn this on.</source>
        <translation>Desactivado. Su unidad no aparecerá hasta que lo active.</translation>
    </message>
    <message>
        <source>Off. Setup turns this on.</source>
        <translation>Desactivado. La configuración lo activa.</translation>
    </message>
    <message>
        <source>Not available: a part of Ferrobank is missing.</source>
        <translation>No disponible: falta una parte de Ferrobank.</translation>
    </message>
    <message>
        <source>On. The Ferrobank menu appears when you log in.</source>
        <translation>Activado. El menú de Ferrobank aparece al iniciar sesión.</translation>
    </message>
    <message>
        <source>Switched off. The menu appears only when you open Ferrobank.</source>
        <translation>Desactivado. El menú solo aparece cuando abre Ferrobank.</translation>
    </message>
    <message>
        <source>Off. The menu appears only when you open Ferrobank.</source>
        <translation>Desactivado. El menú solo aparece cuando abre Ferrobank.</translation>
    </message>
    <message>
        <source>The data stays, so reinstalling brings your drive back.</source>
        <translation>Los datos permanecen; al reinstalar, su unidad vuelve a aparecer.</translation>
    </message>
    <message>
        <source>Your files will be in the folder above.</source>
        <translation>Sus archivos estarán en la carpeta indicada arriba.</translation>
    </message>
    <message>
        <source>Your files on Ferrobank will be gone.</source>
        <translation>Sus archivos en Ferrobank se perderán.</translation>
    </message>
    <message>
        <source>Copying your files, then detaching the drive.</source>
        <translation>Copiando sus archivos y después desconectando la unidad.</translation>
    </message>
    <message>
        <source>Detaching the drive.</source>
        <translation>Desconectando la unidad.</translation>
    </message>
    <message>
        <source>Ferrobank %1</source>
        <translation>Ferrobank %1</translation>
    </message>
    <message>
        <source>The window cannot be opened. %1</source>
        <translation>No se puede abrir la ventana. %1</translation>
    </message>
    <message>
        <source>Choose a Folder</source>
        <translation>Elegir una carpeta</translation>
    </message>
    <message>
        <source>Copy Here</source>
        <translation>Copiar aquí</translation>
    </message>
    <message>
        <source>Check for updates automatically?</source>
        <translation>¿Buscar actualizaciones automáticamente?</translation>
    </message>
    <message>
        <source>Ferrobank can look for new versions once a day. Nothing about you or your computer is sent. You can always check from the menu.</source>
        <translation>Ferrobank puede buscar versiones nuevas una vez al día. No se envía nada sobre usted ni su equipo. Siempre puede buscarlas desde el menú.</translation>
    </message>
    <message>
        <source>Automatically download and install updates</source>
        <translation>Descargar e instalar actualizaciones automáticamente</translation>
    </message>
    <message>
        <source>Checking for updates…</source>
        <translation>Buscando actualizaciones…</translation>
    </message>
    <message>
        <source>Your system is not supported</source>
        <translation>Su sistema no es compatible</translation>
    </message>
    <message>
        <source>Ferrobank %1 is available, but it needs a newer system than yours.</source>
        <translation>Ferrobank %1 está disponible, pero necesita un sistema más reciente que el suyo.</translation>
    </message>
    <message>
        <source>Ferrobank %1 is available, but it does not support a system as new as yours.</source>
        <translation>Ferrobank %1 está disponible, pero no es compatible con un sistema tan reciente como el suyo.</translation>
    </message>
    <message>
        <source>You’re up to date!</source>
        <translation>¡Está al día!</translation>
    </message>
    <message>
        <source>Ferrobank %1 is currently the newest version available. You are running version %2.</source>
        <translation>Ferrobank %1 es actualmente la versión más reciente. Usted usa la versión %2.</translation>
    </message>
    <message>
        <source>Ferrobank %1 is currently the newest version available.</source>
        <translation>Ferrobank %1 es actualmente la versión más reciente.</translation>
    </message>
    <message>
        <source>To update: %1</source>
        <translation>Para actualizar: %1</translation>
    </message>
    <message>
        <source>An important update for Ferrobank is available</source>
        <translation>Hay disponible una actualización importante de Ferrobank</translation>
    </message>
    <message>
        <source>A new version of Ferrobank is available</source>
        <translation>Hay disponible una versión nueva de Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank %1 is now available; you have %2.</source>
        <translation>Ya está disponible Ferrobank %1; usted tiene la versión %2.</translation>
    </message>
    <message>
        <source>Automatically download and install updates in the future</source>
        <translation>Descargar e instalar automáticamente las actualizaciones futuras</translation>
    </message>
    <message>
        <source>Downloading update…</source>
        <translation>Descargando actualización…</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 de %2</translation>
    </message>
    <message>
        <source>Verifying and unpacking the update…</source>
        <translation>Verificando y descomprimiendo la actualización…</translation>
    </message>
    <message>
        <source>Ready to install</source>
        <translation>Listo para instalar</translation>
    </message>
    <message>
        <source>Ferrobank %1 has been downloaded. It is installed when you quit, or now.</source>
        <translation>Ferrobank %1 se ha descargado. Se instala al salir o ahora.</translation>
    </message>
    <message>
        <source>Installing update…</source>
        <translation>Instalando actualización…</translation>
    </message>
    <message>
        <source>Ferrobank %1 is installed; %2 is still running. Relaunch to finish the update.</source>
        <translation>Ferrobank %1 está instalado; %2 sigue en ejecución. Reinicie para terminar la actualización.</translation>
    </message>
    <message>
        <source>Updates are switched off</source>
        <translation>Las actualizaciones están desactivadas</translation>
    </message>
    <message>
        <source>Update error!</source>
        <translation>¡Error de actualización!</translation>
    </message>
    <message>
        <source>Your system has not answered yet.</source>
        <translation>Su sistema aún no ha respondido.</translation>
    </message>
    <message>
        <source>There is no log yet.</source>
        <translation>Todavía no hay ningún registro.</translation>
    </message>
    <message>
        <source>Ferrobank goes on in the background</source>
        <translation>Ferrobank sigue en segundo plano</translation>
    </message>
    <message>
        <source>This desktop shows no icon for it. Open Ferrobank again to see your drive; the menu of its icon among your applications has Run Checks and Quit.</source>
        <translation>Este escritorio no muestra ningún icono. Abra Ferrobank de nuevo para ver su unidad; el menú de su icono entre las aplicaciones permite ejecutar las comprobaciones y salir.</translation>
    </message>
    <message>
        <source>Ferrobank is in the Trash. The command %1 is still there, because removing it needs an administrator's password. To remove it: sudo rm %1</source>
        <translation>Ferrobank está en la papelera. La orden %1 sigue ahí, porque eliminarla requiere la contraseña de un administrador. Para eliminarla: sudo rm %1</translation>
    </message>
    <message>
        <source>Check Automatically</source>
        <translation>Buscar automáticamente</translation>
    </message>
    <message>
        <source>Don’t Check</source>
        <translation>No buscar</translation>
    </message>
    <message>
        <source>Install Update</source>
        <translation>Instalar actualización</translation>
    </message>
    <message>
        <source>Install and Relaunch</source>
        <translation>Instalar y reiniciar</translation>
    </message>
    <message>
        <source>Install on Quit</source>
        <translation>Instalar al salir</translation>
    </message>
    <message>
        <source>Later</source>
        <translation>Más tarde</translation>
    </message>
    <message>
        <source>Learn More…</source>
        <translation>Más información…</translation>
    </message>
    <message>
        <source>Relaunch</source>
        <translation>Reiniciar</translation>
    </message>
    <message>
        <source>Remind Me Later</source>
        <translation>Recordármelo más tarde</translation>
    </message>
    <message>
        <source>Skip This Version</source>
        <translation>Omitir esta versión</translation>
    </message>
    <message>
        <source>Version History</source>
        <translation>Historial de versiones</translation>
    </message>
    <message>
        <source>This copy of Ferrobank can be changed without a password, and everybody on this computer would run it by typing ferrobank, its administrator too. A copy that was installed as a package is safe from that.</source>
        <translation>Esta copia de Ferrobank se puede modificar sin contraseña, y todos en este equipo la ejecutarían al escribir ferrobank, también el administrador. Una copia instalada como paquete está a salvo de ello.</translation>
    </message>
</context>
</TS>
