#pragma once

#include "Ferrobank/CLI/CheckItem.h"
#include "Ferrobank/Model/CheckItemModel.h"
#include "Ferrobank/Model/Screen.h"

#include <QtQml/qqml.h>

namespace ferrobank {

/// The model knows no QML; these make its types known there under their own names.
struct CheckItemForQml {
    Q_GADGET
    QML_FOREIGN(ferrobank::CheckItem)
    QML_NAMED_ELEMENT(CheckItem)
    QML_UNCREATABLE("rows come from the model")
};

struct FixActionsForQml {
    Q_GADGET
    QML_FOREIGN(ferrobank::FixActions)
    QML_NAMED_ELEMENT(FixActions)
    QML_UNCREATABLE("FixActions only holds names")
};

struct ScreenForQml {
    Q_GADGET
    QML_FOREIGN(ferrobank::Screen)
    QML_NAMED_ELEMENT(AppScreen)
    QML_UNCREATABLE("the model chooses the screen")
};

struct CheckItemModelForQml {
    Q_GADGET
    QML_FOREIGN(ferrobank::CheckItemModel)
    QML_ANONYMOUS
};

} // namespace ferrobank
