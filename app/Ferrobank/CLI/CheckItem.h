#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QMetaType>
#include <QtCore/QObject>
#include <QtCore/QString>

#include <optional>

namespace ferrobank {

/// Makes the enumerations known to the meta-object system, so that screens can name them.
class FixActions {
    Q_GADGET

public:
    /// The remedies that the application knows how to carry out.
    enum Action {
        Restart,         ///< "restart"
        LoginItems,      ///< "login-items"
        PrivacySettings, ///< "privacy-settings"
        StorageSettings, ///< "storage-settings"
    };
    Q_ENUM(Action)
};

using FixAction = FixActions::Action;

/// Exact, case-sensitive match of the hyphenated words above.
[[nodiscard]] std::optional<FixAction> fixActionFromRawValue(const QString& text);
[[nodiscard]] QString rawValue(FixAction action);

/// One row of health checks or of setup tasks. Plain value; two rows with the same id are the same check.
class CheckItem {
    Q_GADGET

public:
    enum class State { Pending, Running, AwaitingUser, Pass, Fail, Skipped };
    Q_ENUM(State)

    QString id;
    QString title;
    State state = State::Pending;
    std::optional<QString> detail;
    std::optional<QString> fix; ///< advice in words
    std::optional<FixAction> action;

    /// Decodes one JSON object. Invalid UTF-8 is replaced, unknown keys are ignored. Throws DecodingError,
    /// also for an unknown state or action.
    static CheckItem decode(const QByteArray& json);

    friend bool operator==(const CheckItem&, const CheckItem&) = default;
};

/// Exact, case-sensitive match of "pending", "running", "awaitingUser", "pass", "fail", "skipped".
[[nodiscard]] std::optional<CheckItem::State> checkStateFromRawValue(const QString& text);
[[nodiscard]] QString rawValue(CheckItem::State state);

} // namespace ferrobank
