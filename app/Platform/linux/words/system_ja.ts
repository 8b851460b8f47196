<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja" sourcelanguage="en">
<context>
    <name>Ferrobank</name>
    <message>
        <source>Setup changes a few things on this Mac. You choose which.</source>
        <translation>設定では、このコンピュータをいくつか変更します。何を変更するかは選べます。</translation>
    </message>
    <message>
        <source>Adds ferrobank to /usr/local/bin so Terminal can run it. macOS may ask for your password once.</source>
        <translation>端末で実行できるように、ferrobankを/usr/local/binに追加します。システムが管理者のパスワードを一度求めることがあります。</translation>
    </message>
    <message>
        <source>macOS will show a few things along the way:</source>
        <translation>途中でシステムが確認を求めることがあります:</translation>
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
        <translation>コマンドの追加に必要な場合のパスワード入力。キャンセルすると省略されます。コマンドは後でFerrobankメニューからインストールできます。</translation>
    </message>
    <message>
        <source>Your drive is at ~/Ferrobank and in Finder's sidebar under Locations. The Ferrobank menu in the menu bar shows its status and space saved, and can run these checks again.</source>
        <translation>ドライブは~/⁠Ferrobankにあり、ファイルマネージャからも開けます。Ferrobankメニューでは、状態と節約した容量を確認し、これらのチェックを再実行できます。</translation>
    </message>
    <message>
        <source>Show in Finder</source>
        <translation>ファイルマネージャに表示</translation>
    </message>
    <message>
        <source>Open Privacy Settings</source>
        <translation>(left out)</translation>
    </message>
    <message>
        <source>Free on this Mac</source>
        <translation>このコンピュータの空き</translation>
    </message>
    <message>
        <source>Delete the drive's data from this Mac</source>
        <translation>このコンピュータからドライブのデータを削除</translation>
    </message>
    <message>
        <source>Ferrobank is a drive at ~/Ferrobank that stores repeated data once, so clones, worktrees and build output take a fraction of the space. Finder, Terminal and your tools all use the same path.</source>
        <translation>Ferrobankは~/⁠Ferrobankにあるドライブです。重複するデータを一度だけ保存するので、クローン、作業ツリー、ビルド出力がわずかな容量で済みます。ファイルマネージャ、端末、お使いのツールはすべて同じパスを使います。</translation>
    </message>
    <message>
        <source>Room on this Mac</source>
        <translation>このコンピュータの空き容量</translation>
    </message>
    <message>
        <source>Open System Settings › General › Login Items and turn on Ferrobank.</source>
        <translation>メッセージが示す問題を解決してから「再試行」をクリックしてください。</translation>
    </message>
    <message>
        <source>Registered with macOS; it shows in System Settings › Login Items.</source>
        <translation>ログイン時のサービスとして登録しました。Ferrobankの「ログイン項目」ウインドウに表示されます。</translation>
    </message>
    <message>
        <source>Formatting an 8 TB volume. This takes a moment the first time.</source>
        <translation>ボリュームをフォーマットしています。初回は少し時間がかかります。</translation>
    </message>
    <message>
        <source>If you clicked Don't Allow, open Privacy &amp; Security › Files &amp; Folders, turn on Network Volumes for Ferrobank, then click Try Again.</source>
        <translation>メッセージが示す問題を解決してから「再試行」をクリックしてください。詳しくは、Ferrobankメニューのログをご覧ください。</translation>
    </message>
    <message>
        <source>macOS is asking for your permission. In the dialog “Ferrobank would like to access files on a network volume”, click Allow. The drive is served from this Mac over a private connection that never leaves it.</source>
        <translation>通常より時間がかかっています。システムがパスワードを求めた場合、それはドライブのマウントのためです。</translation>
    </message>
    <message>
        <source>In Finder's sidebar under Locations, with its own icon.</source>
        <translation>ファイルマネージャの~/⁠Ferrobankに表示されます。</translation>
    </message>
    <message>
        <source>Add the drive to Finder</source>
        <translation>ドライブをファイルマネージャに追加</translation>
    </message>
    <message>
        <source>Run ferrobank in Terminal; it lives at /usr/local/bin/ferrobank.</source>
        <translation>端末でferrobankを実行できます。場所は/usr/local/bin/ferrobankです。</translation>
    </message>
    <message>
        <source>The drive's data is deleted from this Mac.</source>
        <translation>ドライブのデータはこのコンピュータから削除されました。</translation>
    </message>
</context>
</TS>
