<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>Ferrobank</name>
    <message>
        <source>Minimise</source>
        <translation>最小化</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>关闭</translation>
    </message>
    <message>
        <source>Checks</source>
        <translation>检查</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1：%2</translation>
    </message>
    <message>
        <source>Ferrobank checks</source>
        <translation>Ferrobank 检查</translation>
    </message>
    <message>
        <source>The parts of your setup that keep the drive working.</source>
        <translation>保证驱动器正常工作的各个部分。</translation>
    </message>
    <message>
        <source>Running checks…</source>
        <translation>正在检查…</translation>
    </message>
    <message>
        <source>Run Again</source>
        <translation>再次检查</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>完成</translation>
    </message>
    <message>
        <source>Before setup</source>
        <translation>设置之前</translation>
    </message>
    <message>
        <source>Setup changes a few things on this Mac. You choose which.</source>
        <translation>设置会更改此 Mac 上的几项内容，由您选择。</translation>
    </message>
    <message>
        <source>The drive's background service starts when you log in, so ~/Ferrobank is there when you need it. The drive needs this.</source>
        <translation>驱动器的后台服务会在您登录时启动，需要时 ~/⁠Ferrobank 随时可用。驱动器离不开它。</translation>
    </message>
    <message>
        <source>Open the Ferrobank menu at login</source>
        <translation>登录时打开 Ferrobank 菜单</translation>
    </message>
    <message>
        <source>Install the ferrobank command</source>
        <translation>安装 ferrobank 命令</translation>
    </message>
    <message>
        <source>Adds ferrobank to /usr/local/bin so Terminal can run it. macOS may ask for your password once.</source>
        <translation>将 ferrobank 添加到 /usr/local/bin，以便在“终端”中运行。macOS 可能会要求输入一次密码。</translation>
    </message>
    <message>
        <source>macOS will show a few things along the way:</source>
        <translation>过程中 macOS 会显示以下内容：</translation>
    </message>
    <message>
        <source>A “Login Item Added” notification. That is Ferrobank registering so your drive mounts when you log in. Nothing to do.</source>
        <translation>一条“已添加登录项”通知。这是 Ferrobank 在注册，以便您登录时挂载驱动器。无需任何操作。</translation>
    </message>
    <message>
        <source>A prompt asking whether Ferrobank may access files on a network volume. Your drive is served from this Mac over a private connection that never leaves it. Click Allow.</source>
        <translation>一个询问是否允许 Ferrobank 访问网络宗卷上文件的提示。您的驱动器由此 Mac 通过从不离开本机的私有连接提供。请点按“允许”。</translation>
    </message>
    <message>
        <source>A password prompt, if this Mac needs it to add the command. Cancel it to skip; you can install the command later from the Ferrobank menu.</source>
        <translation>如果此 Mac 添加命令时需要，会要求输入密码。取消即可跳过；以后可从 Ferrobank 菜单安装该命令。</translation>
    </message>
    <message>
        <source>Allow and Set Up</source>
        <translation>允许并设置</translation>
    </message>
    <message>
        <source>Copied</source>
        <translation>已拷贝</translation>
    </message>
    <message>
        <source>Copy Diagnostics</source>
        <translation>拷贝诊断信息</translation>
    </message>
    <message>
        <source>The diagnostics are on the clipboard.</source>
        <translation>诊断信息已拷贝到剪贴板。</translation>
    </message>
    <message>
        <source>Reading the drive's state</source>
        <translation>正在读取驱动器状态</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>显示</translation>
    </message>
    <message>
        <source>Ferrobank is ready</source>
        <translation>Ferrobank 已就绪</translation>
    </message>
    <message>
        <source>Your drive is at ~/Ferrobank and in Finder's sidebar under Locations. The Ferrobank menu in the menu bar shows its status and space saved, and can run these checks again.</source>
        <translation>您的驱动器位于 ~/⁠Ferrobank，也显示在“访达”边栏的“位置”下。菜单栏中的 Ferrobank 菜单会显示其状态和节省的空间，并可再次运行这些检查。</translation>
    </message>
    <message>
        <source>Open Ferrobank</source>
        <translation>打开 Ferrobank</translation>
    </message>
    <message>
        <source>Mounted</source>
        <translation>已挂载</translation>
    </message>
    <message>
        <source>Needs attention</source>
        <translation>需要处理</translation>
    </message>
    <message>
        <source>Starting…</source>
        <translation>正在启动…</translation>
    </message>
    <message>
        <source>Not set up</source>
        <translation>未设置</translation>
    </message>
    <message>
        <source>%1 of files take %2 on disk, %3× smaller.</source>
        <translation>%1 的文件在磁盘上占用 %2，缩小到 %3 分之一。</translation>
    </message>
    <message>
        <source>Ferrobank</source>
        <translation>Ferrobank</translation>
    </message>
    <message>
        <source>Show in Finder</source>
        <translation>在访达中显示</translation>
    </message>
    <message>
        <source>Run Checks</source>
        <translation>运行检查</translation>
    </message>
    <message>
        <source>%1 of %2 checks passed</source>
        <translation>%2 项检查中已通过 %1 项</translation>
    </message>
    <message>
        <source>Space saved</source>
        <translation>节省的空间</translation>
    </message>
    <message>
        <source>Nothing saved yet</source>
        <translation>尚未节省空间</translation>
    </message>
    <message>
        <source>Clones and copies of the same files are stored once.</source>
        <translation>相同文件的克隆和副本只存储一次。</translation>
    </message>
    <message>
        <source>Login Items</source>
        <translation>登录项</translation>
    </message>
    <message>
        <source>What Ferrobank starts when you log in.</source>
        <translation>您登录时 Ferrobank 启动的项目。</translation>
    </message>
    <message>
        <source>Ferrobank drive</source>
        <translation>Ferrobank 驱动器</translation>
    </message>
    <message>
        <source>Ferrobank menu</source>
        <translation>Ferrobank 菜单</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>继续</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>好</translation>
    </message>
    <message>
        <source>%1 percent</source>
        <translation>百分之 %1</translation>
    </message>
    <message>
        <source>dimmed</source>
        <translation>变暗</translation>
    </message>
    <message>
        <source>Stored on disk</source>
        <translation>磁盘占用</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1%</translation>
    </message>
    <message>
        <source>Command-line tool</source>
        <translation>命令行工具</translation>
    </message>
    <message>
        <source>Install…</source>
        <translation>安装…</translation>
    </message>
    <message>
        <source>Show Log</source>
        <translation>显示日志</translation>
    </message>
    <message>
        <source>Uninstall Ferrobank…</source>
        <translation>卸载 Ferrobank…</translation>
    </message>
    <message>
        <source>Set up your drive</source>
        <translation>设置驱动器</translation>
    </message>
    <message>
        <source>Steps of the setup</source>
        <translation>设置步骤</translation>
    </message>
    <message>
        <source>Open Login Items</source>
        <translation>打开登录项</translation>
    </message>
    <message>
        <source>Open Privacy Settings</source>
        <translation>打开隐私设置</translation>
    </message>
    <message>
        <source>Try Again</source>
        <translation>重试</translation>
    </message>
    <message>
        <source>In progress</source>
        <translation>进行中</translation>
    </message>
    <message>
        <source>Files on drive</source>
        <translation>驱动器上的文件</translation>
    </message>
    <message>
        <source>Free on this Mac</source>
        <translation>此 Mac 可用空间</translation>
    </message>
    <message>
        <source>Drive size</source>
        <translation>驱动器大小</translation>
    </message>
    <message>
        <source>dimmed: %1</source>
        <translation>变暗：%1</translation>
    </message>
    <message>
        <source>Uninstall Ferrobank</source>
        <translation>卸载 Ferrobank</translation>
    </message>
    <message>
        <source>This detaches the drive and stops Ferrobank from starting at login.</source>
        <translation>这会断开驱动器，并使 Ferrobank 不再于登录时启动。</translation>
    </message>
    <message>
        <source>Copy my files to a folder first</source>
        <translation>先将我的文件拷贝到文件夹</translation>
    </message>
    <message>
        <source>Choose…</source>
        <translation>选取…</translation>
    </message>
    <message>
        <source>Delete the drive's data from this Mac</source>
        <translation>从此 Mac 删除驱动器的数据</translation>
    </message>
    <message>
        <source>Uninstall</source>
        <translation>卸载</translation>
    </message>
    <message>
        <source>Uninstalling Ferrobank</source>
        <translation>正在卸载 Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank is uninstalled</source>
        <translation>Ferrobank 已卸载</translation>
    </message>
    <message>
        <source>Open Copied Files</source>
        <translation>打开拷贝的文件</translation>
    </message>
    <message>
        <source>Move Ferrobank to Trash</source>
        <translation>将 Ferrobank 移到废纸篓</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>退出</translation>
    </message>
    <message>
        <source>Software Update</source>
        <translation>软件更新</translation>
    </message>
    <message>
        <source>Ferrobank was updated</source>
        <translation>Ferrobank 已更新</translation>
    </message>
    <message>
        <source>Ferrobank %1 is installed. Choose “Check for Updates…” to relaunch.</source>
        <translation>已安装 Ferrobank %1。选取“检查更新…”以重新启动。</translation>
    </message>
    <message>
        <source>Important update for Ferrobank</source>
        <translation>Ferrobank 重要更新</translation>
    </message>
    <message>
        <source>Update for Ferrobank</source>
        <translation>Ferrobank 更新</translation>
    </message>
    <message>
        <source>Ferrobank %1 is available. Choose “Check for Updates…” to see what is new.</source>
        <translation>Ferrobank %1 现已可用。选取“检查更新…”查看新内容。</translation>
    </message>
    <message>
        <source>Ferrobank %1 is ready. It is installed when you close the window.</source>
        <translation>Ferrobank %1 已就绪，将在您关闭窗口时安装。</translation>
    </message>
    <message>
        <source>Ferrobank %1 is ready. It is installed when you close the window or quit.</source>
        <translation>Ferrobank %1 已就绪，将在您关闭窗口或退出时安装。</translation>
    </message>
    <message>
        <source>Updates could not be confirmed</source>
        <translation>无法确认更新</translation>
    </message>
    <message>
        <source>Ferrobank %1 could not be installed.</source>
        <translation>无法安装 Ferrobank %1。</translation>
    </message>
    <message>
        <source>Ferrobank %1 was taken back</source>
        <translation>已撤回 Ferrobank %1</translation>
    </message>
    <message>
        <source>It did not start on this computer, so %1 was put back. It is tried again after %2, or when you choose “Check for Updates…”.</source>
        <translation>它未能在此电脑上启动，因此已恢复 %1。将在 %2 之后再次尝试，或在您选取“检查更新…”时尝试。</translation>
    </message>
    <message>
        <source>An older Ferrobank is installed</source>
        <translation>安装了较旧的 Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank %1 was put in the place of %2, which is still running. The next start runs the older one.</source>
        <translation>Ferrobank %1 已取代仍在运行的 %2。下次启动将运行较旧的版本。</translation>
    </message>
    <message>
        <source>Ferrobank has not looked for updates</source>
        <translation>Ferrobank 尚未检查更新</translation>
    </message>
    <message>
        <source>The connection is paid by volume. Choose “Check for Updates…” to look now.</source>
        <translation>此连接按流量计费。选取“检查更新…”以立即检查。</translation>
    </message>
    <message>
        <source>An update could not be installed</source>
        <translation>无法安装更新</translation>
    </message>
    <message>
        <source>Ferrobank could not look for updates</source>
        <translation>Ferrobank 无法检查更新</translation>
    </message>
    <message>
        <source>It has been so for two weeks. %1</source>
        <translation>这种情况已持续两周。%1</translation>
    </message>
    <message>
        <source>It was installed here before and did not start, so %1 was put back. Check again to try it once more.</source>
        <translation>它以前在这里安装过但未能启动，因此已恢复 %1。请再次检查以重试。</translation>
    </message>
    <message>
        <source>It was installed here before, did not start, and was taken back.</source>
        <translation>它以前在这里安装过，未能启动，已被撤回。</translation>
    </message>
    <message>
        <source>Ferrobank %1 was put in the place of %2, which is still running. Relaunch to use it.</source>
        <translation>Ferrobank %1 已取代仍在运行的 %2。重新启动以使用它。</translation>
    </message>
    <message>
        <source>Checking your drive</source>
        <translation>检查驱动器</translation>
    </message>
    <message>
        <source>Ferrobank checks the parts of your setup that keep the drive working.</source>
        <translation>Ferrobank 会检查保证驱动器正常工作的各个部分。</translation>
    </message>
    <message>
        <source>Welcome to Ferrobank</source>
        <translation>欢迎使用 Ferrobank</translation>
    </message>
    <message>
        <source>Ferrobank is a drive at ~/Ferrobank that stores repeated data once, so clones, worktrees and build output take a fraction of the space. Finder, Terminal and your tools all use the same path.</source>
        <translation>Ferrobank 是位于 ~/⁠Ferrobank 的驱动器，重复的数据只存储一次，因此克隆、工作树和构建产物只占用一小部分空间。“访达”、“终端”和您的工具都使用同一路径。</translation>
    </message>
    <message>
        <source>Setup takes about a minute.</source>
        <translation>设置大约需要一分钟。</translation>
    </message>
    <message>
        <source>%1 used · %2 saved</source>
        <translation>已用 %1 · 节省 %2</translation>
    </message>
    <message>
        <source>Ferrobank · %1</source>
        <translation>Ferrobank · %1</translation>
    </message>
    <message>
        <source>Set Up Ferrobank…</source>
        <translation>设置 Ferrobank…</translation>
    </message>
    <message>
        <source>Install Command-Line Tool…</source>
        <translation>安装命令行工具…</translation>
    </message>
    <message>
        <source>Check for Updates…</source>
        <translation>检查更新…</translation>
    </message>
    <message>
        <source>Run Checks…</source>
        <translation>运行检查…</translation>
    </message>
    <message>
        <source>Open Menu at Login</source>
        <translation>登录时打开菜单</translation>
    </message>
    <message>
        <source>Quit Ferrobank Menu</source>
        <translation>退出 Ferrobank 菜单</translation>
    </message>
    <message>
        <source>Ferrobank is running</source>
        <translation>Ferrobank 正在运行</translation>
    </message>
    <message>
        <source>Drive is mounted and writable</source>
        <translation>驱动器已挂载且可写入</translation>
    </message>
    <message>
        <source>Starts at login</source>
        <translation>登录时启动</translation>
    </message>
    <message>
        <source>Room on this Mac</source>
        <translation>此 Mac 的空间</translation>
    </message>
    <message>
        <source>Running the checks</source>
        <translation>运行检查</translation>
    </message>
    <message>
        <source>Restarting Ferrobank…</source>
        <translation>正在重新启动 Ferrobank…</translation>
    </message>
    <message>
        <source>Open System Settings › General › Login Items and turn on Ferrobank.</source>
        <translation>打开“系统设置”›“通用”›“登录项”，并打开 Ferrobank。</translation>
    </message>
    <message>
        <source>Ferrobank is switched off in Login Items.</source>
        <translation>Ferrobank 在“登录项”中已关闭。</translation>
    </message>
    <message>
        <source>Turn on Ferrobank in the Login Items window that just opened; setup continues on its own.</source>
        <translation>在刚打开的“登录项”窗口中打开 Ferrobank；设置会自动继续。</translation>
    </message>
    <message>
        <source>Registered with macOS; it shows in System Settings › Login Items.</source>
        <translation>已在 macOS 中注册；可在“系统设置”›“登录项”中查看。</translation>
    </message>
    <message>
        <source>Formatting an 8 TB volume. This takes a moment the first time.</source>
        <translation>正在格式化 8 TB 的宗卷。首次需要片刻。</translation>
    </message>
    <message>
        <source>Starting the drive.</source>
        <translation>正在启动驱动器。</translation>
    </message>
    <message>
        <source>Mounted at ~/Ferrobank.</source>
        <translation>已挂载到 ~/⁠Ferrobank。</translation>
    </message>
    <message>
        <source>The drive could not be attached: %1</source>
        <translation>无法连接驱动器：%1</translation>
    </message>
    <message>
        <source>If you clicked Don't Allow, open Privacy &amp; Security › Files &amp; Folders, turn on Network Volumes for Ferrobank, then click Try Again.</source>
        <translation>如果您点按了“不允许”，请打开“隐私与安全性”›“文件与文件夹”，为 Ferrobank 打开“网络宗卷”，然后点按“重试”。</translation>
    </message>
    <message>
        <source>The drive did not mount within 5 minutes.</source>
        <translation>驱动器未在 5 分钟内挂载。</translation>
    </message>
    <message>
        <source>Choose Show Log from the Ferrobank menu; the last lines name what blocked the mount.</source>
        <translation>从 Ferrobank 菜单中选取“显示日志”；最后几行说明了挂载受阻的原因。</translation>
    </message>
    <message>
        <source>macOS is asking for your permission. In the dialog “Ferrobank would like to access files on a network volume”, click Allow. The drive is served from this Mac over a private connection that never leaves it.</source>
        <translation>macOS 正在请求您的许可。在“Ferrobank 想要访问网络宗卷上的文件”对话框中点按“允许”。驱动器由此 Mac 通过从不离开本机的私有连接提供。</translation>
    </message>
    <message>
        <source>In Finder's sidebar under Locations, with its own icon.</source>
        <translation>在“访达”边栏的“位置”下，带有自己的图标。</translation>
    </message>
    <message>
        <source>Start your drive at login</source>
        <translation>登录时启动驱动器</translation>
    </message>
    <message>
        <source>Create and mount your drive at ~/Ferrobank</source>
        <translation>创建驱动器并挂载到 ~/⁠Ferrobank</translation>
    </message>
    <message>
        <source>Add the drive to Finder</source>
        <translation>将驱动器添加到访达</translation>
    </message>
    <message>
        <source>Skipped. Choose Install Command-Line Tool… from the Ferrobank menu any time.</source>
        <translation>已跳过。可随时从 Ferrobank 菜单中选取“安装命令行工具…”。</translation>
    </message>
    <message>
        <source>Choose Install Command-Line Tool… from the Ferrobank menu any time.</source>
        <translation>可随时从 Ferrobank 菜单中选取“安装命令行工具…”。</translation>
    </message>
    <message>
        <source>Run ferrobank in Terminal; it lives at /usr/local/bin/ferrobank.</source>
        <translation>在“终端”中运行 ferrobank；它位于 /usr/local/bin/ferrobank。</translation>
    </message>
    <message>
        <source>Your files are in %1. </source>
        <translation>您的文件位于 %1。</translation>
    </message>
    <message>
        <source>The drive's data is deleted from this Mac.</source>
        <translation>驱动器的数据已从此 Mac 删除。</translation>
    </message>
    <message>
        <source>The drive's data is kept, so reinstalling Ferrobank brings your drive back.</source>
        <translation>驱动器的数据已保留，重新安装 Ferrobank 即可恢复驱动器。</translation>
    </message>
    <message>
        <source>not started</source>
        <translation>未开始</translation>
    </message>
    <message>
        <source>in progress</source>
        <translation>进行中</translation>
    </message>
    <message>
        <source>waiting for you</source>
        <translation>等待您操作</translation>
    </message>
    <message>
        <source>passed</source>
        <translation>已通过</translation>
    </message>
    <message>
        <source>failed</source>
        <translation>未通过</translation>
    </message>
    <message>
        <source>skipped</source>
        <translation>已跳过</translation>
    </message>
    <message>
        <source>Restart Ferrobank</source>
        <translation>重新启动 Ferrobank</translation>
    </message>
    <message>
        <source>Open Storage Settings</source>
        <translation>打开储存空间设置</translation>
    </message>
    <message>
        <source>On. Your drive is there when you log in.</source>
        <translation>已打开。您登录时驱动器即可使用。</translation>
    </message>
    <message>
        <source>Switched off. Your drive stays away until you turn this on.</source>
        <translation>已关闭。在您打开它之前，驱动器不会出现。</translation>
    </message>
    <message>
        <source>Off. Setup turns this on.</source>
        <translation>已关闭。设置时会打开。</translation>
    </message>
    <message>
        <source>Not available: a part of Ferrobank is missing.</source>
        <translation>不可用：Ferrobank 缺少某个部分。</translation>
    </message>
    <message>
        <source>On. The Ferrobank menu appears when you log in.</source>
        <translation>已打开。您登录时会出现 Ferrobank 菜单。</translation>
    </message>
    <message>
        <source>Switched off. The menu appears only when you open Ferrobank.</source>
        <translation>已关闭。只有打开 Ferrobank 时才会出现菜单。</translation>
    </message>
    <message>
        <source>Off. The menu appears only when you open Ferrobank.</source>
        <translation>已关闭。只有打开 Ferrobank 时才会出现菜单。</translation>
    </message>
    <message>
        <source>The data stays, so reinstalling brings your drive back.</source>
        <translation>数据会保留，重新安装即可恢复驱动器。</translation>
    </message>
    <message>
        <source>Your files will be in the folder above.</source>
        <translation>您的文件将位于上面的文件夹中。</translation>
    </message>
    <message>
        <source>Your files on Ferrobank will be gone.</source>
        <translation>您在 Ferrobank 上的文件将会丢失。</translation>
    </message>
    <message>
        <source>Copying your files, then detaching the drive.</source>
        <translation>正在拷贝您的文件，然后断开驱动器。</translation>
    </message>
    <message>
        <source>Detaching the drive.</source>
        <translation>正在断开驱动器。</translation>
    </message>
    <message>
        <source>Ferrobank %1</source>
        <translation>Ferrobank %1</translation>
    </message>
    <message>
        <source>The window cannot be opened. %1</source>
        <translation>无法打开窗口。%1</translation>
    </message>
    <message>
        <source>Choose a Folder</source>
        <translation>选取文件夹</translation>
    </message>
    <message>
        <source>Copy Here</source>
        <translation>拷贝到此处</translation>
    </message>
    <message>
        <source>Check for updates automatically?</source>
        <translation>自动检查更新？</translation>
    </message>
    <message>
        <source>Ferrobank can look for new versions once a day. Nothing about you or your computer is sent. You can always check from the menu.</source>
        <translation>Ferrobank 可以每天检查一次新版本，不会发送任何关于您或您电脑的信息。您随时可以从菜单中检查。</translation>
    </message>
    <message>
        <source>Automatically download and install updates</source>
        <translation>自动下载并安装更新</translation>
    </message>
    <message>
        <source>Checking for updates…</source>
        <translation>正在检查更新…</translation>
    </message>
    <message>
        <source>Your system is not supported</source>
        <translation>不支持您的系统</translation>
    </message>
    <message>
        <source>Ferrobank %1 is available, but it needs a newer system than yours.</source>
        <translation>Ferrobank %1 现已可用，但需要比您的更新的系统。</translation>
    </message>
    <message>
        <source>Ferrobank %1 is available, but it does not support a system as new as yours.</source>
        <translation>Ferrobank %1 现已可用，但不支持您这样新的系统。</translation>
    </message>
    <message>
        <source>You’re up to date!</source>
        <translation>已是最新版本！</translation>
    </message>
    <message>
        <source>Ferrobank %1 is currently the newest version available. You are running version %2.</source>
        <translation>Ferrobank %1 是目前的最新版本。您正在运行版本 %2。</translation>
    </message>
    <message>
        <source>Ferrobank %1 is currently the newest version available.</source>
        <translation>Ferrobank %1 是目前的最新版本。</translation>
    </message>
    <message>
        <source>To update: %1</source>
        <translation>更新方法：%1</translation>
    </message>
    <message>
        <source>An important update for Ferrobank is available</source>
        <translation>有可用的 Ferrobank 重要更新</translation>
    </message>
    <message>
        <source>A new version of Ferrobank is available</source>
        <translation>有可用的 Ferrobank 新版本</translation>
    </message>
    <message>
        <source>Ferrobank %1 is now available; you have %2.</source>
        <translation>Ferrobank %1 现已可用；您的版本是 %2。</translation>
    </message>
    <message>
        <source>Automatically download and install updates in the future</source>
        <translation>以后自动下载并安装更新</translation>
    </message>
    <message>
        <source>Downloading update…</source>
        <translation>正在下载更新…</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1（共 %2）</translation>
    </message>
    <message>
        <source>Verifying and unpacking the update…</source>
        <translation>正在验证并解压更新…</translation>
    </message>
    <message>
        <source>Ready to install</source>
        <translation>准备安装</translation>
    </message>
    <message>
        <source>Ferrobank %1 has been downloaded. It is installed when you quit, or now.</source>
        <translation>Ferrobank %1 已下载，将在退出时安装，也可立即安装。</translation>
    </message>
    <message>
        <source>Installing update…</source>
        <translation>正在安装更新…</translation>
    </message>
    <message>
        <source>Ferrobank %1 is installed; %2 is still running. Relaunch to finish the update.</source>
        <translation>已安装 Ferrobank %1；仍在运行 %2。重新启动以完成更新。</translation>
    </message>
    <message>
        <source>Updates are switched off</source>
        <translation>更新已关闭</translation>
    </message>
    <message>
        <source>Update error!</source>
        <translation>更新出错！</translation>
    </message>
    <message>
        <source>Your system has not answered yet.</source>
        <translation>您的系统尚未响应。</translation>
    </message>
    <message>
        <source>There is no log yet.</source>
        <translation>还没有日志。</translation>
    </message>
    <message>
        <source>Ferrobank goes on in the background</source>
        <translation>Ferrobank 继续在后台运行</translation>
    </message>
    <message>
        <source>This desktop shows no icon for it. Open Ferrobank again to see your drive; the menu of its icon among your applications has Run Checks and Quit.</source>
        <translation>此桌面不显示它的图标。再次打开 Ferrobank 即可查看您的驱动器；应用程序中其图标的菜单提供运行检查和退出。</translation>
    </message>
    <message>
        <source>Ferrobank is in the Trash. The command %1 is still there, because removing it needs an administrator's password. To remove it: sudo rm %1</source>
        <translation>Ferrobank 已在回收站中。命令 %1 仍然存在，因为移除它需要管理员密码。移除方法：sudo rm %1</translation>
    </message>
    <message>
        <source>Check Automatically</source>
        <translation>自动检查</translation>
    </message>
    <message>
        <source>Don’t Check</source>
        <translation>不检查</translation>
    </message>
    <message>
        <source>Install Update</source>
        <translation>安装更新</translation>
    </message>
    <message>
        <source>Install and Relaunch</source>
        <translation>安装并重新启动</translation>
    </message>
    <message>
        <source>Install on Quit</source>
        <translation>退出时安装</translation>
    </message>
    <message>
        <source>Later</source>
        <translation>稍后</translation>
    </message>
    <message>
        <source>Learn More…</source>
        <translation>了解更多…</translation>
    </message>
    <message>
        <source>Relaunch</source>
        <translation>重新启动</translation>
    </message>
    <message>
        <source>Remind Me Later</source>
        <translation>稍后提醒我</translation>
    </message>
    <message>
        <source>Skip This Version</source>
        <translation>跳过此版本</translation>
    </message>
    <message>
        <source>Version History</source>
        <translation>版本历史</translation>
    </message>
    <message>
        <source>This copy of Ferrobank can be changed without a password, and everybody on this computer would run it by typing ferrobank, its administrator too. A copy that was installed as a package is safe from that.</source>
        <translation>此 Ferrobank 副本无需密码即可被更改，而此电脑上的所有人（包括管理员）输入 ferrobank 时都会运行它。以软件包安装的副本不存在此问题。</translation>
    </message>
</context>
</TS>
