#pragma once

#include "Ferrobank/CLI/CheckItem.h"
#include "Ferrobank/Model/CheckItemModel.h"
#include "Ferrobank/Model/Screen.h"

#include <QtQml/qqml.h>

namespace ferrobank {

/// The model knows no QML; these make its types known there. Of the first three only the enumerations are of
/// interest.
namespace CheckItemForQml {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(ferrobank::CheckItem)
QML_NAMED_ELEMENT(CheckItem)
} // namespace CheckItemForQml

namespace FixActionsForQml {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(ferrobank::FixActions)
QML_NAMED_ELEMENT(FixActions)
} // namespace FixActionsForQml

namespace ScreenForQml {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(ferrobank::Screen)
QML_NAMED_ELEMENT(AppScreen)
} // namespace ScreenForQml

struct CheckItemModelForQml {
    Q_GADGET
    QML_FOREIGN(ferrobank::CheckItemModel)
    QML_ANONYMOUS
};

} // namespace ferrobank
