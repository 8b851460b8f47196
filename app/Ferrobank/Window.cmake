# The window library: everything drawn, loaded when a window first opens. One QML module over three folders.

set(QT_QML_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/qml")

add_library(ferrobank-window SHARED)
ferrobank_bundle_binary(ferrobank-window)
ferrobank_precompile(ferrobank-window)

# Compiling the QML ahead of time takes minutes and saves milliseconds: only for what people run.
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
    set(cache NO_CACHEGEN)
endif()

qt_add_qml_module(
    ferrobank-window
    ${cache}
    URI Ferrobank
    VERSION 1.0
    RESOURCE_PREFIX /qt/qml
    NO_PLUGIN
    DEPENDENCIES QtQuick
    QML_FILES
        Main.qml
        Components/Announcer.qml
        Components/AppFrame.qml
        Components/BodyText.qml
        Components/ButtonFace.qml
        Components/EdgeFade.qml
        Components/FigureText.qml
        Components/FocusRing.qml
        Components/HeadingText.qml
        Components/LazyScreen.qml
        Components/Notice.qml
        Components/Page.qml
        Components/Panel.qml
        Components/Pill.qml
        Components/ProgressLine.qml
        Components/PushButton.qml
        Components/ScreenStack.qml
        Components/SelectableText.qml
        Components/SettingsRow.qml
        Components/Spinner.qml
        Components/ThinScrollBar.qml
        Components/SwitchTrack.qml
        Components/Toggle.qml
        Components/ToggleWords.qml
        Components/WarningText.qml
        Components/WindowControl.qml
        Dashboard/Dashboard.qml
        Dashboard/Header.qml
        Dashboard/Health.qml
        Dashboard/Hero.qml
        Dashboard/SavingsBar.qml
        Dashboard/Settings.qml
        Dashboard/Tile.qml
        Dashboard/Tiles.qml
        Views/About.qml
        Views/CheckList.qml
        Views/CheckRow.qml
        Views/ChecksScreen.qml
        Views/ConsentPage.qml
        Views/CopyDiagnostics.qml
        Views/DonePage.qml
        Views/LoginItem.qml
        Views/LoginItems.qml
        Views/Message.qml
        Views/Onboarding.qml
        Views/ReleaseNotes.qml
        Views/RootView.qml
        Views/SetupPage.qml
        Views/StateIcon.qml
        Views/UninstallForm.qml
        Views/UninstallScreen.qml
        Views/Update.qml
        Views/VerifyPage.qml
        Views/WelcomePage.qml
    SOURCES
        Components/FigureDocument.cpp
        Components/FigureDocument.h
        Components/Palette.cpp
        Components/Palette.h
        Components/RoundedBox.cpp
        Components/RoundedBox.h
        Components/RoundedPicture.cpp
        Components/RoundedPicture.h
        Components/SpinnerDrawing.cpp
        Components/SpinnerDrawing.h
        Components/SymbolImage.cpp
        Components/SymbolImage.h
        Components/Theme.cpp
        Components/Theme.h
        Components/WindowFit.cpp
        Components/WindowFit.h
        Dashboard/DashboardPresenter.cpp
        Dashboard/DashboardPresenter.h
        Views/CheckRowStyle.cpp
        Views/CheckRowStyle.h
        Views/ChecksPresenter.cpp
        Views/ChecksPresenter.h
        Views/DiagnosticsCopy.cpp
        Views/DiagnosticsCopy.h
        Views/LoginItemsPresenter.cpp
        Views/LoginItemsPresenter.h
        Views/ForwardingHost.h
        Views/MainWindow.h
        Views/MessageWindow.h
        Views/ModelTypes.h
        Views/OnboardingPresenter.cpp
        Views/OnboardingPresenter.h
        Views/QmlMessage.cpp
        Views/QmlMessage.h
        Views/QmlWindow.cpp
        Views/QmlWindow.h
        Views/RootPresenter.cpp
        Views/RootPresenter.h
        Views/UninstallPresenter.cpp
        Views/UninstallPresenter.h
        Views/UpdatePresenter.cpp
        Views/UpdatePresenter.h
        Views/UpdateWindow.cpp
        Views/UpdateWindow.h)

# The generated type registration includes headers by their bare names.
target_include_directories(ferrobank-window PRIVATE Components Dashboard Views)
target_link_libraries(ferrobank-window PUBLIC ferrobank-core Qt6::Gui Qt6::Qml Qt6::Quick
                                       PRIVATE ferrobank-desktop Qt6::Svg)

file(GLOB symbols RELATIVE "${CMAKE_CURRENT_SOURCE_DIR}" CONFIGURE_DEPENDS Resources/symbols/*.svg)
foreach(symbol IN LISTS symbols)
    cmake_path(GET symbol FILENAME alias)
    set_source_files_properties(${symbol} PROPERTIES QT_RESOURCE_ALIAS ${alias})
endforeach()
qt_add_resources(ferrobank-window symbols PREFIX /symbols FILES ${symbols})

# The QML compiler's output is not ours to judge.
get_target_property(sources ferrobank-window SOURCES)
foreach(source IN LISTS sources)
    if(source MATCHES "qmlcache")
        set_source_files_properties("${source}" PROPERTIES COMPILE_OPTIONS "-w")
    endif()
endforeach()
