<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ar" sourcelanguage="en">
<context>
    <name>Ferrobank</name>
    <message>
        <source>Minimise</source>
        <translation>تصغير</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>إغلاق</translation>
    </message>
    <message>
        <source>Checks</source>
        <translation>الفحوص</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>Ferrobank checks</source>
        <translation>فحوص Ferrobank</translation>
    </message>
    <message>
        <source>The parts of your setup that keep the drive working.</source>
        <translation>أجزاء الإعداد التي تُبقي القرص يعمل.</translation>
    </message>
    <message>
        <source>Running checks…</source>
        <translation>جارٍ الفحص…</translation>
    </message>
    <message>
        <source>Run Again</source>
        <translation>إعادة الفحص</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>تم</translation>
    </message>
    <message>
        <source>Before setup</source>
        <translation>قبل الإعداد</translation>
    </message>
    <message>
        <source>Setup changes a few things on this Mac. You choose which.</source>
        <translation>يغيّر الإعداد بعض الأشياء على جهاز Mac هذا، وأنت من يختارها.</translation>
    </message>
    <message>
        <source>The drive's background service starts when you log in, so ~/Ferrobank is there when you need it. The drive needs this.</source>
        <translation>تبدأ خدمة القرص في الخلفية عند تسجيل دخولك، فتجد ‎~/⁠Ferrobank متى احتجت إليه. لا يعمل القرص من دونها.</translation>
    </message>
    <message>
        <source>Open the Ferrobank menu at login</source>
        <translation>فتح قائمة Ferrobank عند تسجيل الدخول</translation>
    </message>
    <message>
        <source>Install the ferrobank command</source>
        <translation>تثبيت الأمر ferrobank</translation>
    </message>
    <message>
        <source>Adds ferrobank to /usr/local/bin so Terminal can run it. macOS may ask for your password once.</source>
        <translation>يضيف ferrobank إلى ‎/usr/local/bin ليشغّله تطبيق Terminal. قد يطلب macOS كلمة سرك مرة واحدة.</translation>
    </message>
    <message>
        <source>macOS will show a few things along the way:</source>
        <translation>سيعرض macOS بعض الأشياء في الأثناء:</translation>
    </message>
    <message>
        <source>A “Login Item Added” notification. That is Ferrobank registering so your drive mounts when you log in. Nothing to do.</source>
        <translation>إشعار «تمت إضافة عنصر تسجيل دخول». هذا هو Ferrobank يسجّل نفسه ليُوصَل قرصك عند تسجيل الدخول. لا يلزمك فعل شيء.</translation>
    </message>
    <message>
        <source>A prompt asking whether Ferrobank may access files on a network volume. Your drive is served from this Mac over a private connection that never leaves it. Click Allow.</source>
        <translation>سؤال عن السماح لـ Ferrobank بالوصول إلى ملفات على وحدة تخزين شبكية. يُقدَّم قرصك من جهاز Mac هذا عبر اتصال خاص لا يغادره أبدًا. انقر على «سماح».</translation>
    </message>
    <message>
        <source>A password prompt, if this Mac needs it to add the command. Cancel it to skip; you can install the command later from the Ferrobank menu.</source>
        <translation>طلب كلمة السر إن احتاج إليها جهاز Mac هذا لإضافة الأمر. ألغِه للتخطي؛ يمكنك تثبيت الأمر لاحقًا من قائمة Ferrobank.</translation>
    </message>
    <message>
        <source>Allow and Set Up</source>
        <translation>السماح وبدء الإعداد</translation>
    </message>
    <message>
        <source>Copied</source>
        <translation>تم النسخ</translation>
    </message>
    <message>
        <source>Copy Diagnostics</source>
        <translation>نسخ التشخيص</translation>
    </message>
    <message>
        <source>The diagnostics are on the clipboard.</source>
        <translation>التشخيص موجود في الحافظة.</translation>
    </message>
    <message>
        <source>Reading the drive's state</source>
        <translation>جارٍ قراءة حالة القرص</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>عرض</translation>
    </message>
    <message>
        <source>Ferrobank is ready</source>
        <translation>Ferrobank جاهز</translation>
    </message>
    <message>
        <source>Your drive is at ~/Ferrobank and in Finder's sidebar under Locations. The Ferrobank menu in the menu bar shows its status and space saved, and can run these checks again.</source>
        <translation>قرصك موجود في ‎~/⁠Ferrobank وفي الشريط الجانبي في Finder ضمن المواقع. تعرض قائمة Ferrobank في شريط القوائم حالته والمساحة الموفَّرة، ويمكنها تشغيل هذه الفحوص مجددًا.</translation>
    </message>
    <message>
        <source>Open Ferrobank</source>
        <translation>فتح Ferrobank</translation>
    </message>
    <message>
        <source>Mounted</source>
        <translation>موصول</translation>
    </message>
    <message>
        <source>Needs attention</source>
        <translation>يحتاج إلى انتباه</translation>
    </message>
    <message>
        <source>Starting…</source>
        <translation>جارٍ البدء…</translation>
    </message>
    <message>
        <source>Not set up</source>
        <translation>غير مُعَدّ</translation>
    </message>
    <message>
        <source>%1 of files take %2 on disk, %3× smaller.</source>
        <translation>تشغل ملفات بحجم %1 مساحة %2 على القرص، أي أصغر ‎%3 مرة.</translation>
    </message>
    <message>
        <source>Ferrobank</source>
        <translation>Ferrobank</translation>
    </message>
    <message>
        <source>Show in Finder</source>
        <translation>عرض في Finder</translation>
    </message>
    <message>
        <source>Run Checks</source>
        <translation>تشغيل الفحوص</translation>
    </message>
    <message>
        <source>%1 of %2 checks passed</source>
        <translation>الفحوص الناجحة: %1 من %2</translation>
    </message>
    <message>
        <source>Space saved</source>
        <translation>المساحة الموفَّرة</translation>
    </message>
    <message>
        <source>Nothing saved yet</source>
        <translation>لم يُوفَّر شيء بعد</translation>
    </message>
    <message>
        <source>Clones and copies of the same files are stored once.</source>
        <translation>تُخزَّن نُسخ الملفات نفسها مرة واحدة.</translation>
    </message>
    <message>
        <source>Login Items</source>
        <translation>عناصر تسجيل الدخول</translation>
    </message>
    <message>
        <source>What Ferrobank starts when you log in.</source>
        <translation>ما يبدأه Ferrobank عند تسجيل دخولك.</translation>
    </message>
    <message>
        <source>Ferrobank drive</source>
        <translation>قرص Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank menu</source>
        <translation>قائمة Ferrobank</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>إلغاء</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>متابعة</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>حسنًا</translation>
    </message>
    <message>
        <source>%1 percent</source>
        <translation>%1 بالمئة</translation>
    </message>
    <message>
        <source>dimmed</source>
        <translation>معتّم</translation>
    </message>
    <message>
        <source>Stored on disk</source>
        <translation>على القرص الصلب</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1٪</translation>
    </message>
    <message>
        <source>Command-line tool</source>
        <translation>أداة سطر الأوامر</translation>
    </message>
    <message>
        <source>Install…</source>
        <translation>تثبيت…</translation>
    </message>
    <message>
        <source>Show Log</source>
        <translation>عرض السجل</translation>
    </message>
    <message>
        <source>Uninstall Ferrobank…</source>
        <translation>إزالة Ferrobank…</translation>
    </message>
    <message>
        <source>Set up your drive</source>
        <translation>إعداد قرصك</translation>
    </message>
    <message>
        <source>Steps of the setup</source>
        <translation>خطوات الإعداد</translation>
    </message>
    <message>
        <source>Open Login Items</source>
        <translation>فتح عناصر تسجيل الدخول</translation>
    </message>
    <message>
        <source>Open Privacy Settings</source>
        <translation>فتح إعدادات الخصوصية</translation>
    </message>
    <message>
        <source>Try Again</source>
        <translation>إعادة المحاولة</translation>
    </message>
    <message>
        <source>In progress</source>
        <translation>قيد التنفيذ</translation>
    </message>
    <message>
        <source>Files on drive</source>
        <translation>الملفات على قرصك</translation>
    </message>
    <message>
        <source>Free on this Mac</source>
        <translation>الحر على هذا الـ Mac</translation>
    </message>
    <message>
        <source>Drive size</source>
        <translation>حجم القرص</translation>
    </message>
    <message>
        <source>dimmed: %1</source>
        <translation>معتّم: %1</translation>
    </message>
    <message>
        <source>Uninstall Ferrobank</source>
        <translation>إزالة Ferrobank</translation>
    </message>
    <message>
        <source>This detaches the drive and stops Ferrobank from starting at login.</source>
        <translation>يفصل هذا القرص ويوقف بدء Ferrobank عند تسجيل الدخول.</translation>
    </message>
    <message>
        <source>Copy my files to a folder first</source>
        <translation>نسخ ملفاتي إلى مجلد أولًا</translation>
    </message>
    <message>
        <source>Choose…</source>
        <translation>اختيار…</translation>
    </message>
    <message>
        <source>Delete the drive's data from this Mac</source>
        <translation>حذف بيانات القرص من جهاز Mac هذا</translation>
    </message>
    <message>
        <source>Uninstall</source>
        <translation>إزالة</translation>
    </message>
    <message>
        <source>Uninstalling Ferrobank</source>
        <translation>جارٍ إزالة Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank is uninstalled</source>
        <translation>أُزيل Ferrobank</translation>
    </message>
    <message>
        <source>Open Copied Files</source>
        <translation>فتح الملفات المنسوخة</translation>
    </message>
    <message>
        <source>Move Ferrobank to Trash</source>
        <translation>نقل Ferrobank إلى سلة المهملات</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>إنهاء</translation>
    </message>
    <message>
        <source>Software Update</source>
        <translation>تحديث البرنامج</translation>
    </message>
    <message>
        <source>Ferrobank was updated</source>
        <translation>حُدِّث Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank %1 is installed. Choose “Check for Updates…” to relaunch.</source>
        <translation>ثُبّت Ferrobank %1. اختر «البحث عن تحديثات…» لإعادة التشغيل.</translation>
    </message>
    <message>
        <source>Important update for Ferrobank</source>
        <translation>تحديث مهم لـ Ferrobank</translation>
    </message>
    <message>
        <source>Update for Ferrobank</source>
        <translation>تحديث لـ Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank %1 is available. Choose “Check for Updates…” to see what is new.</source>
        <translation>يتوفر Ferrobank %1. اختر «البحث عن تحديثات…» لمعرفة الجديد.</translation>
    </message>
    <message>
        <source>Ferrobank %1 is ready. It is installed when you close the window.</source>
        <translation>‏Ferrobank %1 جاهز. يُثبَّت عند إغلاق النافذة.</translation>
    </message>
    <message>
        <source>Ferrobank %1 is ready. It is installed when you close the window or quit.</source>
        <translation>‏Ferrobank %1 جاهز. يُثبَّت عند إغلاق النافذة أو الإنهاء.</translation>
    </message>
    <message>
        <source>Updates could not be confirmed</source>
        <translation>تعذّر التحقق من التحديثات</translation>
    </message>
    <message>
        <source>Ferrobank %1 could not be installed.</source>
        <translation>تعذّر تثبيت Ferrobank %1.</translation>
    </message>
    <message>
        <source>Ferrobank %1 was taken back</source>
        <translation>أُزيل Ferrobank %1</translation>
    </message>
    <message>
        <source>It did not start on this computer, so %1 was put back. It is tried again after %2, or when you choose “Check for Updates…”.</source>
        <translation>لم يبدأ على هذا الحاسوب، لذلك أُعيد %1. ستُعاد المحاولة بعد %2، أو عندما تختار «البحث عن تحديثات…».</translation>
    </message>
    <message>
        <source>An older Ferrobank is installed</source>
        <translation>الإصدار المثبّت من Ferrobank أقدم</translation>
    </message>
    <message>
        <source>Ferrobank %1 was put in the place of %2, which is still running. The next start runs the older one.</source>
        <translation>وُضع Ferrobank %1 مكان %2 الذي ما زال قيد التشغيل. سيشغّل البدء التالي الإصدار الأقدم.</translation>
    </message>
    <message>
        <source>Ferrobank has not looked for updates</source>
        <translation>لم يبحث Ferrobank عن تحديثات</translation>
    </message>
    <message>
        <source>The connection is paid by volume. Choose “Check for Updates…” to look now.</source>
        <translation>يُدفع ثمن هذا الاتصال بحسب حجم البيانات. اختر «البحث عن تحديثات…» للبحث الآن.</translation>
    </message>
    <message>
        <source>An update could not be installed</source>
        <translation>تعذّر تثبيت تحديث</translation>
    </message>
    <message>
        <source>Ferrobank could not look for updates</source>
        <translation>تعذّر على Ferrobank البحث عن تحديثات</translation>
    </message>
    <message>
        <source>It has been so for two weeks. %1</source>
        <translation>الأمر كذلك منذ أسبوعين. %1</translation>
    </message>
    <message>
        <source>It was installed here before and did not start, so %1 was put back. Check again to try it once more.</source>
        <translation>ثُبّت هنا من قبل ولم يبدأ، لذلك أُعيد %1. ابحث مجددًا لتجربته مرة أخرى.</translation>
    </message>
    <message>
        <source>It was installed here before, did not start, and was taken back.</source>
        <translation>ثُبّت هنا من قبل ولم يبدأ ثم أُزيل.</translation>
    </message>
    <message>
        <source>Ferrobank %1 was put in the place of %2, which is still running. Relaunch to use it.</source>
        <translation>وُضع Ferrobank %1 مكان %2 الذي ما زال قيد التشغيل. أعد التشغيل لاستخدامه.</translation>
    </message>
    <message>
        <source>Checking your drive</source>
        <translation>فحص قرصك</translation>
    </message>
    <message>
        <source>Ferrobank checks the parts of your setup that keep the drive working.</source>
        <translation>يفحص Ferrobank أجزاء الإعداد التي تُبقي القرص يعمل.</translation>
    </message>
    <message>
        <source>Welcome to Ferrobank</source>
        <translation>مرحبًا بك في Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank is a drive at ~/Ferrobank that stores repeated data once, so clones, worktrees and build output take a fraction of the space. Finder, Terminal and your tools all use the same path.</source>
        <translation>‏Ferrobank قرص في ‎~/⁠Ferrobank يخزّن البيانات المكررة مرة واحدة، فتشغل النُّسخ وأشجار العمل ونواتج البناء جزءًا يسيرًا من المساحة. يستخدم Finder وTerminal وأدواتك المسار نفسه.</translation>
    </message>
    <message>
        <source>Setup takes about a minute.</source>
        <translation>يستغرق الإعداد نحو دقيقة.</translation>
    </message>
    <message>
        <source>%1 used · %2 saved</source>
        <translation>المستخدم %1 · الموفَّر %2</translation>
    </message>
    <message>
        <source>Ferrobank · %1</source>
        <translation>Ferrobank · %1</translation>
    </message>
    <message>
        <source>Set Up Ferrobank…</source>
        <translation>إعداد Ferrobank…</translation>
    </message>
    <message>
        <source>Install Command-Line Tool…</source>
        <translation>تثبيت أداة سطر الأوامر…</translation>
    </message>
    <message>
        <source>Check for Updates…</source>
        <translation>البحث عن تحديثات…</translation>
    </message>
    <message>
        <source>Run Checks…</source>
        <translation>تشغيل الفحوص…</translation>
    </message>
    <message>
        <source>Open Menu at Login</source>
        <translation>فتح القائمة عند تسجيل الدخول</translation>
    </message>
    <message>
        <source>Quit Ferrobank Menu</source>
        <translation>إنهاء قائمة Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank is running</source>
        <translation>‏Ferrobank قيد التشغيل</translation>
    </message>
    <message>
        <source>Drive is mounted and writable</source>
        <translation>القرص موصول وقابل للكتابة</translation>
    </message>
    <message>
        <source>Starts at login</source>
        <translation>يبدأ عند تسجيل الدخول</translation>
    </message>
    <message>
        <source>Room on this Mac</source>
        <translation>المساحة على جهاز Mac هذا</translation>
    </message>
    <message>
        <source>Running the checks</source>
        <translation>تشغيل الفحوص</translation>
    </message>
    <message>
        <source>Restarting Ferrobank…</source>
        <translation>جارٍ إعادة تشغيل Ferrobank…</translation>
    </message>
    <message>
        <source>Open System Settings › General › Login Items and turn on Ferrobank.</source>
        <translation>افتح إعدادات النظام › عام › عناصر تسجيل الدخول وشغّل Ferrobank.</translation>
    </message>
    <message>
        <source>Ferrobank is switched off in Login Items.</source>
        <translation>‏Ferrobank متوقف في عناصر تسجيل الدخول.</translation>
    </message>
    <message>
        <source>Turn on Ferrobank in the Login Items window that just opened; setup continues on its own.</source>
        <translation>شغّل Ferrobank في نافذة عناصر تسجيل الدخول التي فُتحت للتو؛ ويتابع الإعداد من تلقاء نفسه.</translation>
    </message>
    <message>
        <source>Registered with macOS; it shows in System Settings › Login Items.</source>
        <translation>مسجَّل لدى macOS؛ يظهر في إعدادات النظام › عناصر تسجيل الدخول.</translation>
    </message>
    <message>
        <source>Formatting an 8 TB volume. This takes a moment the first time.</source>
        <translation>جارٍ تهيئة وحدة تخزين بسعة 8 تيرابايت. يستغرق هذا لحظة في المرة الأولى.</translation>
    </message>
    <message>
        <source>Starting the drive.</source>
        <translation>جارٍ بدء القرص.</translation>
    </message>
    <message>
        <source>Mounted at ~/Ferrobank.</source>
        <translation>موصول في ‎~/⁠Ferrobank.</translation>
    </message>
    <message>
        <source>The drive could not be attached: %1</source>
        <translation>تعذّر توصيل القرص: %1</translation>
    </message>
    <message>
        <source>If you clicked Don't Allow, open Privacy &amp; Security › Files &amp; Folders, turn on Network Volumes for Ferrobank, then click Try Again.</source>
        <translation>إذا نقرت على «عدم السماح»، فافتح الخصوصية والأمن › الملفات والمجلدات، وشغّل «وحدات التخزين الشبكية» لـ Ferrobank، ثم انقر على «إعادة المحاولة».</translation>
    </message>
    <message>
        <source>The drive did not mount within 5 minutes.</source>
        <translation>لم يُوصَل القرص خلال 5 دقائق.</translation>
    </message>
    <message>
        <source>Choose Show Log from the Ferrobank menu; the last lines name what blocked the mount.</source>
        <translation>اختر «عرض السجل» من قائمة Ferrobank؛ تذكر الأسطر الأخيرة ما منع التوصيل.</translation>
    </message>
    <message>
        <source>macOS is asking for your permission. In the dialog “Ferrobank would like to access files on a network volume”, click Allow. The drive is served from this Mac over a private connection that never leaves it.</source>
        <translation>يطلب macOS إذنك. في مربع الحوار «يرغب Ferrobank في الوصول إلى ملفات على وحدة تخزين شبكية» انقر على «سماح». يُقدَّم القرص من جهاز Mac هذا عبر اتصال خاص لا يغادره أبدًا.</translation>
    </message>
    <message>
        <source>In Finder's sidebar under Locations, with its own icon.</source>
        <translation>في الشريط الجانبي في Finder ضمن المواقع، بأيقونته الخاصة.</translation>
    </message>
    <message>
        <source>Start your drive at login</source>
        <translation>بدء قرصك عند تسجيل الدخول</translation>
    </message>
    <message>
        <source>Create and mount your drive at ~/Ferrobank</source>
        <translation>إنشاء قرصك وتوصيله في ‎~/⁠Ferrobank</translation>
    </message>
    <message>
        <source>Add the drive to Finder</source>
        <translation>إضافة القرص إلى Finder</translation>
    </message>
    <message>
        <source>Skipped. Choose Install Command-Line Tool… from the Ferrobank menu any time.</source>
        <translation>تم التخطي. اختر «تثبيت أداة سطر الأوامر…» من قائمة Ferrobank في أي وقت.</translation>
    </message>
    <message>
        <source>Choose Install Command-Line Tool… from the Ferrobank menu any time.</source>
        <translation>اختر «تثبيت أداة سطر الأوامر…» من قائمة Ferrobank في أي وقت.</translation>
    </message>
    <message>
        <source>Run ferrobank in Terminal; it lives at /usr/local/bin/ferrobank.</source>
        <translation>شغّل ferrobank في Terminal؛ مكانه ‎/usr/local/bin/ferrobank.</translation>
    </message>
    <message>
        <source>Your files are in %1. </source>
        <translation>ملفاتك موجودة في %1. </translation>
    </message>
    <message>
        <source>The drive's data is deleted from this Mac.</source>
        <translation>حُذفت بيانات القرص من جهاز Mac هذا.</translation>
    </message>
    <message>
        <source>The drive's data is kept, so reinstalling Ferrobank brings your drive back.</source>
        <translation>بيانات القرص محفوظة، فإعادة تثبيت Ferrobank تعيد قرصك.</translation>
    </message>
    <message>
        <source>not started</source>
        <translation>لم يبدأ</translation>
    </message>
    <message>
        <source>in progress</source>
        <translation>قيد التنفيذ</translation>
    </message>
    <message>
        <source>waiting for you</source>
        <translation>في انتظارك</translation>
    </message>
    <message>
        <source>passed</source>
        <translation>نجح</translation>
    </message>
    <message>
        <source>failed</source>
        <translation>فشل</translation>
    </message>
    <message>
        <source>skipped</source>
        <translation>تم تخطيه</translation>
    </message>
    <message>
        <source>Restart Ferrobank</source>
        <translation>إعادة تشغيل Ferrobank</translation>
    </message>
    <message>
        <source>Open Storage Settings</source>
        <translation>فتح إعدادات التخزين</translation>
    </message>
    <message>
        <source>On. Your drive is there when you log in.</source>
        <translation>مشغَّل. تجد قرصك عند تسجيل دخولك.</translation>
    </message>
    <message>
        <source>Switched off. Your drive stays away until you turn this on.</source>
        <translation>متوقف. يبقى قرصك غائبًا إلى أن تشغّل هذا.</translation>
    </message>
    <message>
        <source>Off. Setup turns this on.</source>
        <translation>متوقف. يشغّله الإعداد.</translation>
    </message>
    <message>
        <source>Not available: a part of Ferrobank is missing.</source>
        <translation>غير متاح: جزء من Ferrobank مفقود.</translation>
    </message>
    <message>
        <source>On. The Ferrobank menu appears when you log in.</source>
        <translation>مشغَّل. تظهر قائمة Ferrobank عند تسجيل دخولك.</translation>
    </message>
    <message>
        <source>Switched off. The menu appears only when you open Ferrobank.</source>
        <translation>متوقف. تظهر القائمة فقط عند فتح Ferrobank.</translation>
    </message>
    <message>
        <source>Off. The menu appears only when you open Ferrobank.</source>
        <translation>متوقف. تظهر القائمة فقط عند فتح Ferrobank.</translation>
    </message>
    <message>
        <source>The data stays, so reinstalling brings your drive back.</source>
        <translation>تبقى البيانات، فإعادة التثبيت تعيد قرصك.</translation>
    </message>
    <message>
        <source>Your files will be in the folder above.</source>
        <translation>ستكون ملفاتك في المجلد أعلاه.</translation>
    </message>
    <message>
        <source>Your files on Ferrobank will be gone.</source>
        <translation>ستُفقد ملفاتك على Ferrobank.</translation>
    </message>
    <message>
        <source>Copying your files, then detaching the drive.</source>
        <translation>جارٍ نسخ ملفاتك ثم فصل القرص.</translation>
    </message>
    <message>
        <source>Detaching the drive.</source>
        <translation>جارٍ فصل القرص.</translation>
    </message>
    <message>
        <source>Ferrobank %1</source>
        <translation>Ferrobank %1</translation>
    </message>
    <message>
        <source>The window cannot be opened. %1</source>
        <translation>تعذّر فتح النافذة. %1</translation>
    </message>
    <message>
        <source>Choose a Folder</source>
        <translation>اختيار مجلد</translation>
    </message>
    <message>
        <source>Copy Here</source>
        <translation>نسخ هنا</translation>
    </message>
    <message>
        <source>Check for updates automatically?</source>
        <translation>البحث عن التحديثات تلقائيًا؟</translation>
    </message>
    <message>
        <source>Ferrobank can look for new versions once a day. Nothing about you or your computer is sent. You can always check from the menu.</source>
        <translation>يمكن لـ Ferrobank البحث عن إصدارات جديدة مرة يوميًا. لا يُرسل شيء عنك أو عن حاسوبك. ويمكنك البحث من القائمة دائمًا.</translation>
    </message>
    <message>
        <source>Automatically download and install updates</source>
        <translation>تنزيل التحديثات وتثبيتها تلقائيًا</translation>
    </message>
    <message>
        <source>Checking for updates…</source>
        <translation>جارٍ البحث عن تحديثات…</translation>
    </message>
    <message>
        <source>Your system is not supported</source>
        <translation>نظامك غير مدعوم</translation>
    </message>
    <message>
        <source>Ferrobank %1 is available, but it needs a newer system than yours.</source>
        <translation>يتوفر Ferrobank %1 لكنه يحتاج إلى نظام أحدث من نظامك.</translation>
    </message>
    <message>
        <source>Ferrobank %1 is available, but it does not support a system as new as yours.</source>
        <translation>يتوفر Ferrobank %1 لكنه لا يدعم نظامًا حديثًا كنظامك.</translation>
    </message>
    <message>
        <source>You’re up to date!</source>
        <translation>لديك أحدث إصدار!</translation>
    </message>
    <message>
        <source>Ferrobank %1 is currently the newest version available. You are running version %2.</source>
        <translation>‏Ferrobank %1 هو أحدث إصدار متوفر حاليًا. أنت تستخدم الإصدار %2.</translation>
    </message>
    <message>
        <source>Ferrobank %1 is currently the newest version available.</source>
        <translation>‏Ferrobank %1 هو أحدث إصدار متوفر حاليًا.</translation>
    </message>
    <message>
        <source>To update: %1</source>
        <translation>للتحديث: %1</translation>
    </message>
    <message>
        <source>An important update for Ferrobank is available</source>
        <translation>يتوفر تحديث مهم لـ Ferrobank</translation>
    </message>
    <message>
        <source>A new version of Ferrobank is available</source>
        <translation>يتوفر إصدار جديد من Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank %1 is now available; you have %2.</source>
        <translation>يتوفر الآن Ferrobank %1؛ لديك الإصدار %2.</translation>
    </message>
    <message>
        <source>Automatically download and install updates in the future</source>
        <translation>تنزيل التحديثات وتثبيتها تلقائيًا مستقبلًا</translation>
    </message>
    <message>
        <source>Downloading update…</source>
        <translation>جارٍ تنزيل التحديث…</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 من %2</translation>
    </message>
    <message>
        <source>Verifying and unpacking the update…</source>
        <translation>جارٍ التحقق من التحديث وفكّه…</translation>
    </message>
    <message>
        <source>Ready to install</source>
        <translation>جاهز للتثبيت</translation>
    </message>
    <message>
        <source>Ferrobank %1 has been downloaded. It is installed when you quit, or now.</source>
        <translation>نُزِّل Ferrobank %1. يُثبَّت عند الإنهاء، أو الآن.</translation>
    </message>
    <message>
        <source>Installing update…</source>
        <translation>جارٍ تثبيت التحديث…</translation>
    </message>
    <message>
        <source>Ferrobank %1 is installed; %2 is still running. Relaunch to finish the update.</source>
        <translation>ثُبّت Ferrobank %1؛ وما زال %2 قيد التشغيل. أعد التشغيل لإكمال التحديث.</translation>
    </message>
    <message>
        <source>Updates are switched off</source>
        <translation>التحديثات متوقفة</translation>
    </message>
    <message>
        <source>Update error!</source>
        <translation>خطأ في التحديث!</translation>
    </message>
    <message>
        <source>Your system has not answered yet.</source>
        <translation>لم يجب نظامك بعد.</translation>
    </message>
    <message>
        <source>There is no log yet.</source>
        <translation>لا يوجد سجل بعد.</translation>
    </message>
    <message>
        <source>Ferrobank goes on in the background</source>
        <translation>يواصل Ferrobank العمل في الخلفية</translation>
    </message>
    <message>
        <source>This desktop shows no icon for it. Open Ferrobank again to see your drive; the menu of its icon among your applications has Run Checks and Quit.</source>
        <translation>لا يعرض سطح المكتب هذا أيقونة له. افتح Ferrobank مرة أخرى لرؤية محرك الأقراص؛ وتتيح قائمة أيقونته بين تطبيقاتك تشغيل الفحوص والإنهاء.</translation>
    </message>
    <message>
        <source>Ferrobank is in the Trash. The command %1 is still there, because removing it needs an administrator's password. To remove it: sudo rm %1</source>
        <translation>Ferrobank في سلة المهملات. ما زال الأمر %1 موجودًا لأن إزالته تتطلب كلمة مرور المسؤول. لإزالته: sudo rm %1</translation>
    </message>
    <message>
        <source>Check Automatically</source>
        <translation>البحث تلقائيًا</translation>
    </message>
    <message>
        <source>Don’t Check</source>
        <translation>عدم البحث</translation>
    </message>
    <message>
        <source>Install Update</source>
        <translation>تثبيت التحديث</translation>
    </message>
    <message>
        <source>Install and Relaunch</source>
        <translation>تثبيت وإعادة تشغيل</translation>
    </message>
    <message>
        <source>Install on Quit</source>
        <translation>التثبيت عند الإنهاء</translation>
    </message>
    <message>
        <source>Later</source>
        <translation>لاحقًا</translation>
    </message>
    <message>
        <source>Learn More…</source>
        <translation>معرفة المزيد…</translation>
    </message>
    <message>
        <source>Relaunch</source>
        <translation>إعادة تشغيل</translation>
    </message>
    <message>
        <source>Remind Me Later</source>
        <translation>ذكّرني لاحقًا</translation>
    </message>
    <message>
        <source>Skip This Version</source>
        <translation>تخطي هذا الإصدار</translation>
    </message>
    <message>
        <source>Version History</source>
        <translation>سجل الإصدارات</translation>
    </message>
    <message>
        <source>This copy of Ferrobank can be changed without a password, and everybody on this computer would run it by typing ferrobank, its administrator too. A copy that was installed as a package is safe from that.</source>
        <translation>يمكن تغيير هذه النسخة من Ferrobank دون كلمة سر، وسيشغّلها كل من على هذا الحاسوب عند كتابة ferrobank، ومنهم المدير. أما النسخة المثبتة كحزمة فهي في مأمن من ذلك.</translation>
    </message>
</context>
</TS>
