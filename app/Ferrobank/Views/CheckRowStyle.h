#pragma once

#include "Ferrobank/CLI/CheckItem.h"
#include "Ferrobank/Components/Palette.h"

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtQml/qqmlregistration.h>

namespace ferrobank {

/// How a row of checks looks and is called in each state. Pure; a singleton only so that QML reaches it.
///
/// | state        | symbol                  | colour    |
/// |--------------|-------------------------|-----------|
/// | pending      | circle.dotted           | tertiary  |
/// | running      | none: a spinner         | –         |
/// | awaitingUser | hand.raised.circle.fill | orange    |
/// | pass         | checkmark.circle.fill   | green     |
/// | fail         | xmark.circle.fill       | red       |
/// | skipped      | minus.circle            | secondary |
class CheckRowStyle : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    [[nodiscard]] Q_INVOKABLE static bool isRunning(ferrobank::CheckItem::State state);
    [[nodiscard]] Q_INVOKABLE static QString symbol(ferrobank::CheckItem::State state);
    [[nodiscard]] Q_INVOKABLE static ferrobank::Tints::Tint tint(ferrobank::CheckItem::State state);

    /// The state for people who do not see the symbol.
    [[nodiscard]] Q_INVOKABLE static QString word(ferrobank::CheckItem::State state);

    /// The title of the button that carries out the remedy.
    [[nodiscard]] Q_INVOKABLE static QString fixTitle(ferrobank::FixActions::Action action);
};

} // namespace ferrobank
