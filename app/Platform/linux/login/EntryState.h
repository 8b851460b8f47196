#pragma once

#include "Platform/LoginItemRegistry.h"

namespace ferrobank {

/// What stands under our name in one of the user's folders.
enum class EntryState {
    Absent,
    Foreign,     ///< written by others, or not readable: never touched
    SwitchedOff, ///< ours, and the user does not want it
    Elsewhere,   ///< ours, but for another place or in another way than this bundle would register it
    On,
    Unanswered, ///< the one who knows does not answer
};

/// Reads as "unknown": registered, so that it can be unregistered, but to be registered anew from here.
inline constexpr auto kRegisteredElsewhere = static_cast<LoginServiceStatus>(4);

[[nodiscard]] constexpr LoginServiceStatus statusOf(EntryState state)
{
    switch (state) {
    case EntryState::Absent:
    case EntryState::Foreign:
        return LoginServiceStatus::NotRegistered;
    case EntryState::SwitchedOff:
        return LoginServiceStatus::RequiresApproval;
    case EntryState::Elsewhere:
        return kRegisteredElsewhere;
    case EntryState::On:
        return LoginServiceStatus::Enabled;
    case EntryState::Unanswered:
        return kNoAnswer;
    }
    return LoginServiceStatus::NotRegistered;
}

} // namespace ferrobank
