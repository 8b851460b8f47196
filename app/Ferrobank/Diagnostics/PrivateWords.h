#pragma once

#include <QtCore/QString>

namespace ferrobank {

/// What a text for others must not tell. Plain value; anything may be empty.
struct PrivateWords {
    QString home; ///< the user's home folder, absolute
    QString user; ///< the account's name
    QString host; ///< the computer's name, with or without its domain

    friend bool operator==(const PrivateWords&, const PrivateWords&) = default;
};

/// The text with the home folder written as "~", the account as "USER" and the computer as "HOST". Pure.
/// Whole names only: "/home/anna" is not in "/home/annabel", and "anna" not in "susanna".
[[nodiscard]] QString withoutPrivateWords(QString text, const PrivateWords& words);

} // namespace ferrobank
