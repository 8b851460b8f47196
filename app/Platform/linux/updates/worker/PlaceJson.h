#pragma once

#include "Platform/linux/updates/install/InstallPlace.h"

#include <QtCore/QJsonObject>

namespace ferrobank::updates {

/// The verdict on a place as it travels to the application.
[[nodiscard]] inline QJsonObject placeToJson(const PlaceVerdict& verdict)
{
    return {{QStringLiteral("mayReplace"), verdict.mayReplace},
            {QStringLiteral("isFolder"), verdict.kind.word == InstallKind::Word::Folder},
            {QStringLiteral("sentence"), QString::fromStdString(verdict.sentence)},
            {QStringLiteral("advice"), QString::fromStdString(verdict.kind.advice)}};
}

} // namespace ferrobank::updates
