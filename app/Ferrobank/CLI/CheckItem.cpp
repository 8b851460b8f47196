#include "Ferrobank/CLI/CheckItem.h"

#include "Ferrobank/CLI/DecodingError.h"
#include "Ferrobank/CLI/JsonRecord.h"

#include <array>
#include <string>
#include <utility>

namespace ferrobank {

using namespace Qt::StringLiterals;

namespace {

using State = CheckItem::State;

constexpr std::array<std::pair<State, QStringView>, 6> kStates{{
    {State::Pending, u"pending"},
    {State::Running, u"running"},
    {State::AwaitingUser, u"awaitingUser"},
    {State::Pass, u"pass"},
    {State::Fail, u"fail"},
    {State::Skipped, u"skipped"},
}};

constexpr std::array<std::pair<FixAction, QStringView>, 4> kActions{{
    {FixAction::Restart, u"restart"},
    {FixAction::LoginItems, u"login-items"},
    {FixAction::PrivacySettings, u"privacy-settings"},
    {FixAction::StorageSettings, u"storage-settings"},
}};

template <typename Table>
auto caseOf(const Table& table, const QString& text) -> std::optional<decltype(table[0].first)>
{
    for (const auto& [value, word] : table) {
        if (word == text) {
            return value;
        }
    }
    return std::nullopt;
}

template <typename Table, typename Case>
QString wordOf(const Table& table, Case value)
{
    for (const auto& [candidate, word] : table) {
        if (candidate == value) {
            return word.toString();
        }
    }
    Q_ASSERT_X(false, "rawValue", "a case without a word");
    return {};
}

} // namespace

std::optional<FixAction> fixActionFromRawValue(const QString& text)
{
    return caseOf(kActions, text);
}

QString rawValue(FixAction action)
{
    return wordOf(kActions, action);
}

std::optional<CheckItem::State> checkStateFromRawValue(const QString& text)
{
    return caseOf(kStates, text);
}

QString rawValue(CheckItem::State state)
{
    return wordOf(kStates, state);
}

CheckItem CheckItem::decode(const QByteArray& json)
{
    const JsonRecord record(json);
    CheckItem item;
    item.id = record.text("id");
    item.title = record.text("title");

    const auto state = checkStateFromRawValue(record.text("state"));
    if (!state) {
        throw DecodingError("\"state\" is no known state");
    }
    item.state = *state;
    item.detail = record.optionalText("detail");
    item.fix = record.optionalText("fix");

    if (const auto word = record.optionalText("action")) {
        item.action = fixActionFromRawValue(*word);
        if (!item.action) {
            throw DecodingError("\"action\" is no known action");
        }
    }
    return item;
}

} // namespace ferrobank
