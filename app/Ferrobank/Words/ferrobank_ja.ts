<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja" sourcelanguage="en">
<context>
    <name>Ferrobank</name>
    <message>
        <source>Minimise</source>
        <translation>最小化</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>閉じる</translation>
    </message>
    <message>
        <source>Checks</source>
        <translation>チェック</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>Ferrobank checks</source>
        <translation>Ferrobankのチェック</translation>
    </message>
    <message>
        <source>The parts of your setup that keep the drive working.</source>
        <translation>ドライブの動作を支える設定項目です。</translation>
    </message>
    <message>
        <source>Running checks…</source>
        <translation>チェック中…</translation>
    </message>
    <message>
        <source>Run Again</source>
        <translation>もう一度実行</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>完了</translation>
    </message>
    <message>
        <source>Before setup</source>
        <translation>設定の前に</translation>
    </message>
    <message>
        <source>Setup changes a few things on this Mac. You choose which.</source>
        <translation>設定では、このMacをいくつか変更します。何を変更するかは選べます。</translation>
    </message>
    <message>
        <source>The drive's background service starts when you log in, so ~/Ferrobank is there when you need it. The drive needs this.</source>
        <translation>ドライブのバックグラウンドサービスはログイン時に起動するので、~/⁠Ferrobankは必要なときにいつでも使えます。ドライブにはこのサービスが必要です。</translation>
    </message>
    <message>
        <source>Open the Ferrobank menu at login</source>
        <translation>ログイン時にFerrobankメニューを開く</translation>
    </message>
    <message>
        <source>Install the ferrobank command</source>
        <translation>ferrobankコマンドをインストール</translation>
    </message>
    <message>
        <source>Adds ferrobank to /usr/local/bin so Terminal can run it. macOS may ask for your password once.</source>
        <translation>ターミナルで実行できるように、ferrobankを/usr/local/binに追加します。macOSがパスワードを一度求めることがあります。</translation>
    </message>
    <message>
        <source>macOS will show a few things along the way:</source>
        <translation>途中でmacOSが次のものを表示します:</translation>
    </message>
    <message>
        <source>A “Login Item Added” notification. That is Ferrobank registering so your drive mounts when you log in. Nothing to do.</source>
        <translation>「ログイン項目が追加されました」という通知。ログイン時にドライブがマウントされるよう、Ferrobankが登録したことを示します。操作は不要です。</translation>
    </message>
    <message>
        <source>A prompt asking whether Ferrobank may access files on a network volume. Your drive is served from this Mac over a private connection that never leaves it. Click Allow.</source>
        <translation>Ferrobankにネットワークボリューム上のファイルへのアクセスを許可するかどうかの確認。ドライブは、このMacの外に出ないプライベート接続で提供されます。「許可」をクリックしてください。</translation>
    </message>
    <message>
        <source>A password prompt, if this Mac needs it to add the command. Cancel it to skip; you can install the command later from the Ferrobank menu.</source>
        <translation>コマンドの追加に必要な場合のパスワード入力。キャンセルすると省略されます。コマンドは後でFerrobankメニューからインストールできます。</translation>
    </message>
    <message>
        <source>Allow and Set Up</source>
        <translation>許可して設定</translation>
    </message>
    <message>
        <source>Copied</source>
        <translation>コピーしました</translation>
    </message>
    <message>
        <source>Copy Diagnostics</source>
        <translation>診断情報をコピー</translation>
    </message>
    <message>
        <source>The diagnostics are on the clipboard.</source>
        <translation>診断情報をクリップボードにコピーしました。</translation>
    </message>
    <message>
        <source>Reading the drive's state</source>
        <translation>ドライブの状態を読み込み中</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>表示</translation>
    </message>
    <message>
        <source>Ferrobank is ready</source>
        <translation>Ferrobankの準備ができました</translation>
    </message>
    <message>
        <source>Your drive is at ~/Ferrobank and in Finder's sidebar under Locations. The Ferrobank menu in the menu bar shows its status and space saved, and can run these checks again.</source>
        <translation>ドライブは~/⁠Ferrobankにあり、Finderのサイドバーの「場所」にも表示されます。メニューバーのFerrobankメニューでは、状態と節約した容量を確認し、これらのチェックを再実行できます。</translation>
    </message>
    <message>
        <source>Open Ferrobank</source>
        <translation>Ferrobankを開く</translation>
    </message>
    <message>
        <source>Mounted</source>
        <translation>マウント済み</translation>
    </message>
    <message>
        <source>Needs attention</source>
        <translation>対応が必要</translation>
    </message>
    <message>
        <source>Starting…</source>
        <translation>起動中…</translation>
    </message>
    <message>
        <source>Not set up</source>
        <translation>未設定</translation>
    </message>
    <message>
        <source>%1 of files take %2 on disk, %3× smaller.</source>
        <translation>%1のファイルがディスク上では%2、%3分の1です。</translation>
    </message>
    <message>
        <source>Ferrobank</source>
        <translation>Ferrobank</translation>
    </message>
    <message>
        <source>Show in Finder</source>
        <translation>Finderに表示</translation>
    </message>
    <message>
        <source>Run Checks</source>
        <translation>チェックを実行</translation>
    </message>
    <message>
        <source>%1 of %2 checks passed</source>
        <translation>%2件中%1件のチェックに合格</translation>
    </message>
    <message>
        <source>Space saved</source>
        <translation>節約した容量</translation>
    </message>
    <message>
        <source>Nothing saved yet</source>
        <translation>まだ節約はありません</translation>
    </message>
    <message>
        <source>Clones and copies of the same files are stored once.</source>
        <translation>同じファイルのクローンやコピーは一度だけ保存されます。</translation>
    </message>
    <message>
        <source>Login Items</source>
        <translation>ログイン項目</translation>
    </message>
    <message>
        <source>What Ferrobank starts when you log in.</source>
        <translation>ログイン時にFerrobankが起動するものです。</translation>
    </message>
    <message>
        <source>Ferrobank drive</source>
        <translation>Ferrobankドライブ</translation>
    </message>
    <message>
        <source>Ferrobank menu</source>
        <translation>Ferrobankメニュー</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>キャンセル</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>続ける</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>%1 percent</source>
        <translation>%1パーセント</translation>
    </message>
    <message>
        <source>dimmed</source>
        <translation>使用不可</translation>
    </message>
    <message>
        <source>Stored on disk</source>
        <translation>ディスク上</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1%</translation>
    </message>
    <message>
        <source>Command-line tool</source>
        <translation>コマンドラインツール</translation>
    </message>
    <message>
        <source>Install…</source>
        <translation>インストール…</translation>
    </message>
    <message>
        <source>Show Log</source>
        <translation>ログを表示</translation>
    </message>
    <message>
        <source>Uninstall Ferrobank…</source>
        <translation>Ferrobankをアンインストール…</translation>
    </message>
    <message>
        <source>Set up your drive</source>
        <translation>ドライブを設定</translation>
    </message>
    <message>
        <source>Steps of the setup</source>
        <translation>設定の手順</translation>
    </message>
    <message>
        <source>Open Login Items</source>
        <translation>ログイン項目を開く</translation>
    </message>
    <message>
        <source>Open Privacy Settings</source>
        <translation>プライバシー設定を開く</translation>
    </message>
    <message>
        <source>Try Again</source>
        <translation>再試行</translation>
    </message>
    <message>
        <source>In progress</source>
        <translation>進行中</translation>
    </message>
    <message>
        <source>Files on drive</source>
        <translation>ドライブ上のファイル</translation>
    </message>
    <message>
        <source>Free on this Mac</source>
        <translation>このMacの空き容量</translation>
    </message>
    <message>
        <source>Drive size</source>
        <translation>ドライブの容量</translation>
    </message>
    <message>
        <source>dimmed: %1</source>
        <translation>使用不可: %1</translation>
    </message>
    <message>
        <source>Uninstall Ferrobank</source>
        <translation>Ferrobankをアンインストール</translation>
    </message>
    <message>
        <source>This detaches the drive and stops Ferrobank from starting at login.</source>
        <translation>ドライブを切り離し、ログイン時にFerrobankが起動しないようにします。</translation>
    </message>
    <message>
        <source>Copy my files to a folder first</source>
        <translation>先に自分のファイルをフォルダにコピー</translation>
    </message>
    <message>
        <source>Choose…</source>
        <translation>選択…</translation>
    </message>
    <message>
        <source>Delete the drive's data from this Mac</source>
        <translation>このMacからドライブのデータを削除</translation>
    </message>
    <message>
        <source>Uninstall</source>
        <translation>アンインストール</translation>
    </message>
    <message>
        <source>Uninstalling Ferrobank</source>
        <translation>Ferrobankをアンインストール中</translation>
    </message>
    <message>
        <source>Ferrobank is uninstalled</source>
        <translation>Ferrobankをアンインストールしました</translation>
    </message>
    <message>
        <source>Open Copied Files</source>
        <translation>コピーしたファイルを開く</translation>
    </message>
    <message>
        <source>Move Ferrobank to Trash</source>
        <translation>Ferrobankをゴミ箱に入れる</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>終了</translation>
    </message>
    <message>
        <source>Software Update</source>
        <translation>ソフトウェアアップデート</translation>
    </message>
    <message>
        <source>Ferrobank was updated</source>
        <translation>Ferrobankがアップデートされました</translation>
    </message>
    <message>
        <source>Ferrobank %1 is installed. Choose “Check for Updates…” to relaunch.</source>
        <translation>Ferrobank %1がインストールされました。再起動するには「アップデートを確認…」を選んでください。</translation>
    </message>
    <message>
        <source>Important update for Ferrobank</source>
        <translation>Ferrobankの重要なアップデート</translation>
    </message>
    <message>
        <source>Update for Ferrobank</source>
        <translation>Ferrobankのアップデート</translation>
    </message>
    <message>
        <source>Ferrobank %1 is available. Choose “Check for Updates…” to see what is new.</source>
        <translation>Ferrobank %1を利用できます。新機能を見るには「アップデートを確認…」を選んでください。</translation>
    </message>
    <message>
        <source>Ferrobank %1 is ready. It is installed when you close the window.</source>
        <translation>Ferrobank %1の準備ができました。ウインドウを閉じるとインストールされます。</translation>
    </message>
    <message>
        <source>Ferrobank %1 is ready. It is installed when you close the window or quit.</source>
        <translation>Ferrobank %1の準備ができました。ウインドウを閉じるか終了するとインストールされます。</translation>
    </message>
    <message>
        <source>Updates could not be confirmed</source>
        <translation>アップデートを確認できませんでした</translation>
    </message>
    <message>
        <source>Ferrobank %1 could not be installed.</source>
        <translation>Ferrobank %1をインストールできませんでした。</translation>
    </message>
    <message>
        <source>Ferrobank %1 was taken back</source>
        <translation>Ferrobank %1は取り消されました</translation>
    </message>
    <message>
        <source>It did not start on this computer, so %1 was put back. It is tried again after %2, or when you choose “Check for Updates…”.</source>
        <translation>このコンピュータで起動しなかったため、%1に戻されました。%2以降、または「アップデートを確認…」を選ぶと、もう一度試されます。</translation>
    </message>
    <message>
        <source>An older Ferrobank is installed</source>
        <translation>古いFerrobankがインストールされています</translation>
    </message>
    <message>
        <source>Ferrobank %1 was put in the place of %2, which is still running. The next start runs the older one.</source>
        <translation>Ferrobank %1が、まだ動作している%2と置き換えられました。次回は古い方が起動します。</translation>
    </message>
    <message>
        <source>Ferrobank has not looked for updates</source>
        <translation>Ferrobankはアップデートを確認していません</translation>
    </message>
    <message>
        <source>The connection is paid by volume. Choose “Check for Updates…” to look now.</source>
        <translation>この接続は通信量に応じて課金されます。今すぐ確認するには「アップデートを確認…」を選んでください。</translation>
    </message>
    <message>
        <source>An update could not be installed</source>
        <translation>アップデートをインストールできませんでした</translation>
    </message>
    <message>
        <source>Ferrobank could not look for updates</source>
        <translation>Ferrobankはアップデートを確認できませんでした</translation>
    </message>
    <message>
        <source>It has been so for two weeks. %1</source>
        <translation>この状態が2週間続いています。%1</translation>
    </message>
    <message>
        <source>It was installed here before and did not start, so %1 was put back. Check again to try it once more.</source>
        <translation>以前ここにインストールされましたが起動しなかったため、%1に戻されました。もう一度試すには再度確認してください。</translation>
    </message>
    <message>
        <source>It was installed here before, did not start, and was taken back.</source>
        <translation>以前ここにインストールされましたが、起動せず、取り消されました。</translation>
    </message>
    <message>
        <source>Ferrobank %1 was put in the place of %2, which is still running. Relaunch to use it.</source>
        <translation>Ferrobank %1が、まだ動作している%2と置き換えられました。使うには再起動してください。</translation>
    </message>
    <message>
        <source>Checking your drive</source>
        <translation>ドライブをチェック</translation>
    </message>
    <message>
        <source>Ferrobank checks the parts of your setup that keep the drive working.</source>
        <translation>ドライブの動作を支える設定項目をFerrobankがチェックします。</translation>
    </message>
    <message>
        <source>Welcome to Ferrobank</source>
        <translation>Ferrobankへようこそ</translation>
    </message>
    <message>
        <source>Ferrobank is a drive at ~/Ferrobank that stores repeated data once, so clones, worktrees and build output take a fraction of the space. Finder, Terminal and your tools all use the same path.</source>
        <translation>Ferrobankは~/⁠Ferrobankにあるドライブです。重複するデータを一度だけ保存するので、クローン、作業ツリー、ビルド出力がわずかな容量で済みます。Finder、ターミナル、お使いのツールはすべて同じパスを使います。</translation>
    </message>
    <message>
        <source>Setup takes about a minute.</source>
        <translation>設定は1分ほどで終わります。</translation>
    </message>
    <message>
        <source>%1 used · %2 saved</source>
        <translation>使用: %1 · 節約: %2</translation>
    </message>
    <message>
        <source>Ferrobank · %1</source>
        <translation>Ferrobank · %1</translation>
    </message>
    <message>
        <source>Set Up Ferrobank…</source>
        <translation>Ferrobankを設定…</translation>
    </message>
    <message>
        <source>Install Command-Line Tool…</source>
        <translation>コマンドラインツールをインストール…</translation>
    </message>
    <message>
        <source>Check for Updates…</source>
        <translation>アップデートを確認…</translation>
    </message>
    <message>
        <source>Run Checks…</source>
        <translation>チェックを実行…</translation>
    </message>
    <message>
        <source>Open Menu at Login</source>
        <translation>ログイン時にメニューを開く</translation>
    </message>
    <message>
        <source>Quit Ferrobank Menu</source>
        <translation>Ferrobankメニューを終了</translation>
    </message>
    <message>
        <source>Ferrobank is running</source>
        <translation>Ferrobankが動作している</translation>
    </message>
    <message>
        <source>Drive is mounted and writable</source>
        <translation>ドライブがマウントされ書き込み可能</translation>
    </message>
    <message>
        <source>Starts at login</source>
        <translation>ログイン時に起動する</translation>
    </message>
    <message>
        <source>Room on this Mac</source>
        <translation>このMacの空き容量</translation>
    </message>
    <message>
        <source>Running the checks</source>
        <translation>チェックの実行</translation>
    </message>
    <message>
        <source>Restarting Ferrobank…</source>
        <translation>Ferrobankを再起動中…</translation>
    </message>
    <message>
        <source>Open System Settings › General › Login Items and turn on Ferrobank.</source>
        <translation>「システム設定」›「一般」›「ログイン項目」を開き、Ferrobankをオンにしてください。</translation>
    </message>
    <message>
        <source>Ferrobank is switched off in Login Items.</source>
        <translation>ログイン項目でFerrobankがオフになっています。</translation>
    </message>
    <message>
        <source>Turn on Ferrobank in the Login Items window that just opened; setup continues on its own.</source>
        <translation>開いた「ログイン項目」ウインドウでFerrobankをオンにしてください。設定は自動的に続きます。</translation>
    </message>
    <message>
        <source>Registered with macOS; it shows in System Settings › Login Items.</source>
        <translation>macOSに登録しました。「システム設定」›「ログイン項目」に表示されます。</translation>
    </message>
    <message>
        <source>Formatting an 8 TB volume. This takes a moment the first time.</source>
        <translation>8 TBのボリュームをフォーマットしています。初回は少し時間がかかります。</translation>
    </message>
    <message>
        <source>Starting the drive.</source>
        <translation>ドライブを起動しています。</translation>
    </message>
    <message>
        <source>Mounted at ~/Ferrobank.</source>
        <translation>~/⁠Ferrobankにマウントされました。</translation>
    </message>
    <message>
        <source>The drive could not be attached: %1</source>
        <translation>ドライブを接続できませんでした: %1</translation>
    </message>
    <message>
        <source>If you clicked Don't Allow, open Privacy &amp; Security › Files &amp; Folders, turn on Network Volumes for Ferrobank, then click Try Again.</source>
        <translation>「許可しない」をクリックした場合は、「プライバシーとセキュリティ」›「ファイルとフォルダ」を開き、Ferrobankの「ネットワークボリューム」をオンにしてから「再試行」をクリックしてください。</translation>
    </message>
    <message>
        <source>The drive did not mount within 5 minutes.</source>
        <translation>5分以内にドライブがマウントされませんでした。</translation>
    </message>
    <message>
        <source>Choose Show Log from the Ferrobank menu; the last lines name what blocked the mount.</source>
        <translation>Ferrobankメニューから「ログを表示」を選んでください。マウントを妨げた原因が最後の行に書かれています。</translation>
    </message>
    <message>
        <source>macOS is asking for your permission. In the dialog “Ferrobank would like to access files on a network volume”, click Allow. The drive is served from this Mac over a private connection that never leaves it.</source>
        <translation>macOSが許可を求めています。「Ferrobankがネットワークボリューム上のファイルへのアクセスを求めています」というダイアログで「許可」をクリックしてください。ドライブは、このMacの外に出ないプライベート接続で提供されます。</translation>
    </message>
    <message>
        <source>In Finder's sidebar under Locations, with its own icon.</source>
        <translation>Finderのサイドバーの「場所」に、専用のアイコンで表示されます。</translation>
    </message>
    <message>
        <source>Start your drive at login</source>
        <translation>ログイン時にドライブを起動</translation>
    </message>
    <message>
        <source>Create and mount your drive at ~/Ferrobank</source>
        <translation>~/⁠Ferrobankにドライブを作成してマウント</translation>
    </message>
    <message>
        <source>Add the drive to Finder</source>
        <translation>ドライブをFinderに追加</translation>
    </message>
    <message>
        <source>Skipped. Choose Install Command-Line Tool… from the Ferrobank menu any time.</source>
        <translation>省略しました。Ferrobankメニューの「コマンドラインツールをインストール…」はいつでも選べます。</translation>
    </message>
    <message>
        <source>Choose Install Command-Line Tool… from the Ferrobank menu any time.</source>
        <translation>Ferrobankメニューの「コマンドラインツールをインストール…」はいつでも選べます。</translation>
    </message>
    <message>
        <source>Run ferrobank in Terminal; it lives at /usr/local/bin/ferrobank.</source>
        <translation>ターミナルでferrobankを実行できます。場所は/usr/local/bin/ferrobankです。</translation>
    </message>
    <message>
        <source>Your files are in %1. </source>
        <translation>ファイルは%1にあります。</translation>
    </message>
    <message>
        <source>The drive's data is deleted from this Mac.</source>
        <translation>ドライブのデータはこのMacから削除されました。</translation>
    </message>
    <message>
        <source>The drive's data is kept, so reinstalling Ferrobank brings your drive back.</source>
        <translation>ドライブのデータは残っているので、Ferrobankを再インストールするとドライブが元に戻ります。</translation>
    </message>
    <message>
        <source>not started</source>
        <translation>未開始</translation>
    </message>
    <message>
        <source>in progress</source>
        <translation>進行中</translation>
    </message>
    <message>
        <source>waiting for you</source>
        <translation>操作を待っています</translation>
    </message>
    <message>
        <source>passed</source>
        <translation>合格</translation>
    </message>
    <message>
        <source>failed</source>
        <translation>失敗</translation>
    </message>
    <message>
        <source>skipped</source>
        <translation>省略</translation>
    </message>
    <message>
        <source>Restart Ferrobank</source>
        <translation>Ferrobankを再起動</translation>
    </message>
    <message>
        <source>Open Storage Settings</source>
        <translation>ストレージ設定を開く</translation>
    </message>
    <message>
        <source>On. Your drive is there when you log in.</source>
        <translation>オン。ログインするとドライブが使えます。</translation>
    </message>
    <message>
        <source>Switched off. Your drive stays away until you turn this on.</source>
        <translation>オフ。オンにするまでドライブは現れません。</translation>
    </message>
    <message>
        <source>Off. Setup turns this on.</source>
        <translation>オフ。設定するとオンになります。</translation>
    </message>
    <message>
        <source>Not available: a part of Ferrobank is missing.</source>
        <translation>利用できません: Ferrobankの一部が見つかりません。</translation>
    </message>
    <message>
        <source>On. The Ferrobank menu appears when you log in.</source>
        <translation>オン。ログインするとFerrobankメニューが表示されます。</translation>
    </message>
    <message>
        <source>Switched off. The menu appears only when you open Ferrobank.</source>
        <translation>オフ。メニューはFerrobankを開いたときだけ表示されます。</translation>
    </message>
    <message>
        <source>Off. The menu appears only when you open Ferrobank.</source>
        <translation>オフ。メニューはFerrobankを開いたときだけ表示されます。</translation>
    </message>
    <message>
        <source>The data stays, so reinstalling brings your drive back.</source>
        <translation>データは残るので、再インストールするとドライブが元に戻ります。</translation>
    </message>
    <message>
        <source>Your files will be in the folder above.</source>
        <translation>ファイルは上のフォルダに入ります。</translation>
    </message>
    <message>
        <source>Your files on Ferrobank will be gone.</source>
        <translation>Ferrobank上のファイルは失われます。</translation>
    </message>
    <message>
        <source>Copying your files, then detaching the drive.</source>
        <translation>ファイルをコピーしてから、ドライブを切り離します。</translation>
    </message>
    <message>
        <source>Detaching the drive.</source>
        <translation>ドライブを切り離しています。</translation>
    </message>
    <message>
        <source>Ferrobank %1</source>
        <translation>Ferrobank %1</translation>
    </message>
    <message>
        <source>The window cannot be opened. %1</source>
        <translation>ウインドウを開けません。%1</translation>
    </message>
    <message>
        <source>Choose a Folder</source>
        <translation>フォルダを選択</translation>
    </message>
    <message>
        <source>Copy Here</source>
        <translation>ここにコピー</translation>
    </message>
    <message>
        <source>Check for updates automatically?</source>
        <translation>アップデートを自動的に確認しますか？</translation>
    </message>
    <message>
        <source>Ferrobank can look for new versions once a day. Nothing about you or your computer is sent. You can always check from the menu.</source>
        <translation>Ferrobankは1日に1回、新しいバージョンを確認できます。あなたやコンピュータに関する情報は送信されません。メニューからいつでも確認できます。</translation>
    </message>
    <message>
        <source>Automatically download and install updates</source>
        <translation>アップデートを自動的にダウンロードしてインストール</translation>
    </message>
    <message>
        <source>Checking for updates…</source>
        <translation>アップデートを確認中…</translation>
    </message>
    <message>
        <source>Your system is not supported</source>
        <translation>お使いのシステムには対応していません</translation>
    </message>
    <message>
        <source>Ferrobank %1 is available, but it needs a newer system than yours.</source>
        <translation>Ferrobank %1を利用できますが、より新しいシステムが必要です。</translation>
    </message>
    <message>
        <source>Ferrobank %1 is available, but it does not support a system as new as yours.</source>
        <translation>Ferrobank %1を利用できますが、お使いの新しいシステムには対応していません。</translation>
    </message>
    <message>
        <source>You’re up to date!</source>
        <translation>最新の状態です</translation>
    </message>
    <message>
        <source>Ferrobank %1 is currently the newest version available. You are running version %2.</source>
        <translation>Ferrobank %1が現在の最新バージョンです。お使いのバージョンは%2です。</translation>
    </message>
    <message>
        <source>Ferrobank %1 is currently the newest version available.</source>
        <translation>Ferrobank %1が現在の最新バージョンです。</translation>
    </message>
    <message>
        <source>To update: %1</source>
        <translation>アップデート方法: %1</translation>
    </message>
    <message>
        <source>An important update for Ferrobank is available</source>
        <translation>Ferrobankの重要なアップデートがあります</translation>
    </message>
    <message>
        <source>A new version of Ferrobank is available</source>
        <translation>Ferrobankの新しいバージョンがあります</translation>
    </message>
    <message>
        <source>Ferrobank %1 is now available; you have %2.</source>
        <translation>Ferrobank %1を利用できます。お使いのバージョンは%2です。</translation>
    </message>
    <message>
        <source>Automatically download and install updates in the future</source>
        <translation>今後はアップデートを自動的にダウンロードしてインストール</translation>
    </message>
    <message>
        <source>Downloading update…</source>
        <translation>アップデートをダウンロード中…</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1/%2</translation>
    </message>
    <message>
        <source>Verifying and unpacking the update…</source>
        <translation>アップデートを検証して展開中…</translation>
    </message>
    <message>
        <source>Ready to install</source>
        <translation>インストールの準備完了</translation>
    </message>
    <message>
        <source>Ferrobank %1 has been downloaded. It is installed when you quit, or now.</source>
        <translation>Ferrobank %1をダウンロードしました。終了時に、または今すぐインストールされます。</translation>
    </message>
    <message>
        <source>Installing update…</source>
        <translation>アップデートをインストール中…</translation>
    </message>
    <message>
        <source>Ferrobank %1 is installed; %2 is still running. Relaunch to finish the update.</source>
        <translation>Ferrobank %1はインストール済みですが、%2がまだ動作しています。再起動するとアップデートが完了します。</translation>
    </message>
    <message>
        <source>Updates are switched off</source>
        <translation>アップデートはオフです</translation>
    </message>
    <message>
        <source>Update error!</source>
        <translation>アップデートエラー</translation>
    </message>
    <message>
        <source>Your system has not answered yet.</source>
        <translation>システムからまだ応答がありません。</translation>
    </message>
    <message>
        <source>There is no log yet.</source>
        <translation>ログはまだありません。</translation>
    </message>
    <message>
        <source>Ferrobank goes on in the background</source>
        <translation>Ferrobankはバックグラウンドで動作し続けます</translation>
    </message>
    <message>
        <source>This desktop shows no icon for it. Open Ferrobank again to see your drive; the menu of its icon among your applications has Run Checks and Quit.</source>
        <translation>このデスクトップにはアイコンが表示されません。ドライブを見るにはFerrobankをもう一度開いてください。アプリケーション一覧のアイコンのメニューから、チェックの実行と終了ができます。</translation>
    </message>
    <message>
        <source>Ferrobank is in the Trash. The command %1 is still there, because removing it needs an administrator's password. To remove it: sudo rm %1</source>
        <translation>Ferrobankはゴミ箱に移動しました。削除に管理者のパスワードが必要なため、コマンド%1は残っています。削除するには: sudo rm %1</translation>
    </message>
    <message>
        <source>Check Automatically</source>
        <translation>自動的に確認</translation>
    </message>
    <message>
        <source>Don’t Check</source>
        <translation>確認しない</translation>
    </message>
    <message>
        <source>Install Update</source>
        <translation>アップデートをインストール</translation>
    </message>
    <message>
        <source>Install and Relaunch</source>
        <translation>インストールして再起動</translation>
    </message>
    <message>
        <source>Install on Quit</source>
        <translation>終了時にインストール</translation>
    </message>
    <message>
        <source>Later</source>
        <translation>後で</translation>
    </message>
    <message>
        <source>Learn More…</source>
        <translation>詳しい情報…</translation>
    </message>
    <message>
        <source>Relaunch</source>
        <translation>再起動</translation>
    </message>
    <message>
        <source>Remind Me Later</source>
        <translation>後で通知</translation>
    </message>
    <message>
        <source>Skip This Version</source>
        <translation>このバージョンを飛ばす</translation>
    </message>
    <message>
        <source>Version History</source>
        <translation>バージョン履歴</translation>
    </message>
    <message>
        <source>This copy of Ferrobank can be changed without a password, and everybody on this computer would run it by typing ferrobank, its administrator too. A copy that was installed as a package is safe from that.</source>
        <translation>このFerrobankのコピーはパスワードなしで変更でき、ferrobankと入力すると、管理者を含むこのコンピュータの全員がこれを実行することになります。パッケージとしてインストールしたコピーなら安全です。</translation>
    </message>
</context>
</TS>
