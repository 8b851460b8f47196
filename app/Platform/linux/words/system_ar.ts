<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ar" sourcelanguage="en">
<context>
    <name>Ferrobank</name>
    <message>
        <source>Setup changes a few things on this Mac. You choose which.</source>
        <translation>يغيّر الإعداد بعض الأشياء على هذا الحاسوب، وأنت من يختارها.</translation>
    </message>
    <message>
        <source>Adds ferrobank to /usr/local/bin so Terminal can run it. macOS may ask for your password once.</source>
        <translation>يضيف ferrobank إلى ‎/usr/local/bin لتشغّله الطرفية. قد يطلب نظامك كلمة سر مدير مرة واحدة.</translation>
    </message>
    <message>
        <source>macOS will show a few things along the way:</source>
        <translation>قد يسألك نظامك عن شيء في الأثناء:</translation>
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
        <translation>طلب كلمة السر إن احتاج إليها هذا الحاسوب لإضافة الأمر. ألغِه للتخطي؛ يمكنك تثبيت الأمر لاحقًا من قائمة Ferrobank.</translation>
    </message>
    <message>
        <source>Your drive is at ~/Ferrobank and in Finder's sidebar under Locations. The Ferrobank menu in the menu bar shows its status and space saved, and can run these checks again.</source>
        <translation>قرصك موجود في ‎~/⁠Ferrobank، ويعرضه مدير الملفات هناك. تعرض قائمة Ferrobank حالته والمساحة الموفَّرة، ويمكنها تشغيل هذه الفحوص مجددًا.</translation>
    </message>
    <message>
        <source>Show in Finder</source>
        <translation>عرض في مدير الملفات</translation>
    </message>
    <message>
        <source>Open Privacy Settings</source>
        <translation>(left out)</translation>
    </message>
    <message>
        <source>Free on this Mac</source>
        <translation>الحر على هذا الحاسوب</translation>
    </message>
    <message>
        <source>Delete the drive's data from this Mac</source>
        <translation>حذف بيانات القرص من هذا الحاسوب</translation>
    </message>
    <message>
        <source>Ferrobank is a drive at ~/Ferrobank that stores repeated data once, so clones, worktrees and build output take a fraction of the space. Finder, Terminal and your tools all use the same path.</source>
        <translation>‏Ferrobank قرص في ‎~/⁠Ferrobank يخزّن البيانات المكررة مرة واحدة، فتشغل النُّسخ وأشجار العمل ونواتج البناء جزءًا يسيرًا من المساحة. يستخدم مدير الملفات والطرفية وأدواتك المسار نفسه.</translation>
    </message>
    <message>
        <source>Room on this Mac</source>
        <translation>المساحة على هذا الحاسوب</translation>
    </message>
    <message>
        <source>Open System Settings › General › Login Items and turn on Ferrobank.</source>
        <translation>أصلح ما تذكره الرسالة، ثم انقر على «إعادة المحاولة».</translation>
    </message>
    <message>
        <source>Registered with macOS; it shows in System Settings › Login Items.</source>
        <translation>مسجَّل كخدمة لتسجيل دخولك؛ يظهر في نافذة «عناصر تسجيل الدخول» في Ferrobank.</translation>
    </message>
    <message>
        <source>Formatting an 8 TB volume. This takes a moment the first time.</source>
        <translation>جارٍ تهيئة وحدة التخزين. يستغرق هذا لحظة في المرة الأولى.</translation>
    </message>
    <message>
        <source>If you clicked Don't Allow, open Privacy &amp; Security › Files &amp; Folders, turn on Network Volumes for Ferrobank, then click Try Again.</source>
        <translation>أصلح ما تذكره الرسالة، ثم انقر على «إعادة المحاولة». تجد المزيد في السجل ضمن قائمة Ferrobank.</translation>
    </message>
    <message>
        <source>macOS is asking for your permission. In the dialog “Ferrobank would like to access files on a network volume”, click Allow. The drive is served from this Mac over a private connection that never leaves it.</source>
        <translation>يستغرق هذا وقتًا أطول من المعتاد. إن طلب نظامك كلمة سر فذلك لتوصيل القرص.</translation>
    </message>
    <message>
        <source>In Finder's sidebar under Locations, with its own icon.</source>
        <translation>يعرضه مدير الملفات في ‎~/⁠Ferrobank.</translation>
    </message>
    <message>
        <source>Add the drive to Finder</source>
        <translation>إضافة القرص إلى مدير الملفات</translation>
    </message>
    <message>
        <source>Run ferrobank in Terminal; it lives at /usr/local/bin/ferrobank.</source>
        <translation>شغّل ferrobank في الطرفية؛ مكانه ‎/usr/local/bin/ferrobank.</translation>
    </message>
    <message>
        <source>The drive's data is deleted from this Mac.</source>
        <translation>حُذفت بيانات القرص من هذا الحاسوب.</translation>
    </message>
</context>
</TS>
