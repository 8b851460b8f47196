<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>Ferrobank</name>
    <message>
        <source>Setup changes a few things on this Mac. You choose which.</source>
        <translation>设置会更改此电脑上的几项内容，由您选择。</translation>
    </message>
    <message>
        <source>Adds ferrobank to /usr/local/bin so Terminal can run it. macOS may ask for your password once.</source>
        <translation>将 ferrobank 添加到 /usr/local/bin，以便在终端中运行。系统可能会要求输入一次管理员密码。</translation>
    </message>
    <message>
        <source>macOS will show a few things along the way:</source>
        <translation>过程中系统可能会询问您：</translation>
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
        <translation>如果此电脑添加命令时需要，会要求输入密码。取消即可跳过；以后可从 Ferrobank 菜单安装该命令。</translation>
    </message>
    <message>
        <source>Your drive is at ~/Ferrobank and in Finder's sidebar under Locations. The Ferrobank menu in the menu bar shows its status and space saved, and can run these checks again.</source>
        <translation>您的驱动器位于 ~/⁠Ferrobank，文件管理器会在那里显示它。Ferrobank 菜单会显示其状态和节省的空间，并可再次运行这些检查。</translation>
    </message>
    <message>
        <source>Show in Finder</source>
        <translation>在文件管理器中显示</translation>
    </message>
    <message>
        <source>Open Privacy Settings</source>
        <translation>(left out)</translation>
    </message>
    <message>
        <source>Free on this Mac</source>
        <translation>此电脑可用空间</translation>
    </message>
    <message>
        <source>Delete the drive's data from this Mac</source>
        <translation>从此电脑删除驱动器的数据</translation>
    </message>
    <message>
        <source>Ferrobank is a drive at ~/Ferrobank that stores repeated data once, so clones, worktrees and build output take a fraction of the space. Finder, Terminal and your tools all use the same path.</source>
        <translation>Ferrobank 是位于 ~/⁠Ferrobank 的驱动器，重复的数据只存储一次，因此克隆、工作树和构建产物只占用一小部分空间。文件管理器、终端和您的工具都使用同一路径。</translation>
    </message>
    <message>
        <source>Room on this Mac</source>
        <translation>此电脑的空间</translation>
    </message>
    <message>
        <source>Open System Settings › General › Login Items and turn on Ferrobank.</source>
        <translation>请解决上述信息所指出的问题，然后点击“重试”。</translation>
    </message>
    <message>
        <source>Registered with macOS; it shows in System Settings › Login Items.</source>
        <translation>已注册为登录服务；可在 Ferrobank 的“登录项”窗口中查看。</translation>
    </message>
    <message>
        <source>Formatting an 8 TB volume. This takes a moment the first time.</source>
        <translation>正在格式化卷。首次需要片刻。</translation>
    </message>
    <message>
        <source>If you clicked Don't Allow, open Privacy &amp; Security › Files &amp; Folders, turn on Network Volumes for Ferrobank, then click Try Again.</source>
        <translation>请解决上述信息所指出的问题，然后点击“重试”。更多信息请查看 Ferrobank 菜单中的日志。</translation>
    </message>
    <message>
        <source>macOS is asking for your permission. In the dialog “Ferrobank would like to access files on a network volume”, click Allow. The drive is served from this Mac over a private connection that never leaves it.</source>
        <translation>所需时间比平时长。如果系统要求输入密码，那是为了挂载驱动器。</translation>
    </message>
    <message>
        <source>In Finder's sidebar under Locations, with its own icon.</source>
        <translation>文件管理器会在 ~/⁠Ferrobank 显示它。</translation>
    </message>
    <message>
        <source>Add the drive to Finder</source>
        <translation>将驱动器添加到文件管理器</translation>
    </message>
    <message>
        <source>Run ferrobank in Terminal; it lives at /usr/local/bin/ferrobank.</source>
        <translation>在终端中运行 ferrobank；它位于 /usr/local/bin/ferrobank。</translation>
    </message>
    <message>
        <source>The drive's data is deleted from this Mac.</source>
        <translation>驱动器的数据已从此电脑删除。</translation>
    </message>
    <message>
        <source>Move Ferrobank to Trash</source>
        <translation>将 Ferrobank 移到回收站</translation>
    </message>
</context>
</TS>
