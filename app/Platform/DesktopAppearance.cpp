#include "Platform/DesktopAppearance.h"

namespace ferrobank {

void DesktopAppearance::setWishes(const Wishes& wishes)
{
    if (_wishes == wishes) {
        return;
    }
    _wishes = wishes;
    Q_EMIT changed();
}

} // namespace ferrobank
