#pragma once

#include <QtCore/QString>

namespace ferrobank {

/// One line of a native menu. Plain value. The id names the same entry for as long as the program runs, also
/// while the entry comes and goes.
struct MenuEntry {
    enum class Kind {
        Text,    ///< words only, cannot be chosen
        Divider, ///< has no words
        Button,
        Toggle, ///< a button with a mark that shows `checked`
    };

    int id = 0;
    Kind kind = Kind::Button;
    QString text; ///< shown as it is: no letter in it is a mnemonic
    bool checked = false;

    friend bool operator==(const MenuEntry&, const MenuEntry&) = default;
};

} // namespace ferrobank
