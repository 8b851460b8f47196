# The application's pictures, laid out as an icon theme so that panels find them by name, and the volume's icon file.
ferrobank_bundle_file(FROM icons/VolumeIcon.icns TO Resources/VolumeIcon.icns)

# Some panels look into no folder of a theme that does not list it.
ferrobank_bundle_file(FROM icons/index.theme TO Resources/icons/hicolor/index.theme)

set(name "${FERROBANK_BUNDLE_ID}")
ferrobank_bundle_file(FROM symbols/application.svg TO Resources/icons/hicolor/scalable/apps/${name}.svg)
foreach(edge IN ITEMS 16 24 32 48 64 128 256 512)
    ferrobank_bundle_file(FROM icons/application-${edge}.png TO
                          Resources/icons/hicolor/${edge}x${edge}/apps/${name}.png)
endforeach()
