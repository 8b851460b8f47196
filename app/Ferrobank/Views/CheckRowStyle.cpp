#include "Ferrobank/Views/CheckRowStyle.h"

namespace ferrobank {

using namespace Qt::StringLiterals;

bool CheckRowStyle::isRunning(CheckItem::State state)
{
    return state == CheckItem::State::Running;
}

QString CheckRowStyle::symbol(CheckItem::State state)
{
    switch (state) {
    case CheckItem::State::Pending:
        return u"circle.dotted"_s;
    case CheckItem::State::Running:
        return {};
    case CheckItem::State::AwaitingUser:
        return u"hand.raised.circle.fill"_s;
    case CheckItem::State::Pass:
        return u"checkmark.circle.fill"_s;
    case CheckItem::State::Fail:
        return u"xmark.circle.fill"_s;
    case CheckItem::State::Skipped:
        return u"minus.circle"_s;
    }
    return {};
}

Tints::Tint CheckRowStyle::tint(CheckItem::State state)
{
    switch (state) {
    case CheckItem::State::Pending:
        return Tint::Tertiary;
    case CheckItem::State::Running:
    case CheckItem::State::Skipped:
        return Tint::Secondary;
    case CheckItem::State::AwaitingUser:
        return Tint::Orange;
    case CheckItem::State::Pass:
        return Tint::Green;
    case CheckItem::State::Fail:
        return Tint::Red;
    }
    return Tint::Secondary;
}

QString CheckRowStyle::word(CheckItem::State state)
{
    switch (state) {
    case CheckItem::State::Pending:
        return tr("not started");
    case CheckItem::State::Running:
        return tr("in progress");
    case CheckItem::State::AwaitingUser:
        return tr("waiting for you");
    case CheckItem::State::Pass:
        return tr("passed");
    case CheckItem::State::Fail:
        return tr("failed");
    case CheckItem::State::Skipped:
        return tr("skipped");
    }
    return {};
}

QString CheckRowStyle::fixTitle(FixActions::Action action)
{
    switch (action) {
    case FixAction::Restart:
        return tr("Restart Ferrobank");
    case FixAction::LoginItems:
        return tr("Open Login Items");
    case FixAction::PrivacySettings:
        return tr("Open Privacy Settings");
    case FixAction::StorageSettings:
        return tr("Open Storage Settings");
    }
    return {};
}

} // namespace ferrobank
