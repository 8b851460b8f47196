#include "Ferrobank/CLI/JsonRecord.h"

#include "Ferrobank/CLI/DecodingError.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>

namespace ferrobank {

using namespace std::string_literals;

/// Keeps the values of the outermost object and walks over everything deeper.
class JsonRecordReader final : public nlohmann::json_sax<nlohmann::json> {
public:
    explicit JsonRecordReader(JsonRecord& record) : _record(record) {}

    [[nodiscard]] bool isObject() const { return _isObject; }

    bool null() override { return keep(nullptr); }

    bool boolean(bool value) override { return keep(value); }

    bool number_integer(number_integer_t value) override
    {
        return value == 0 ? keep(quint64{0}) : keep(JsonRecord::Number{std::to_string(value)});
    }

    bool number_unsigned(number_unsigned_t value) override { return keep(quint64{value}); }

    bool number_float(number_float_t, const string_t& spelling) override
    {
        return keep(JsonRecord::Number{spelling});
    }

    bool string(string_t& value) override { return keep(std::move(value)); }

    bool binary(binary_t&) override { return false; }

    bool start_object(std::size_t) override
    {
        if (_depth == 0) {
            _isObject = true;
        }
        return deeper();
    }

    bool key(string_t& value) override
    {
        if (_depth == 1) {
            _key = std::move(value);
        }
        return true;
    }

    bool end_object() override { return shallower(); }

    bool start_array(std::size_t) override { return deeper(); }

    bool end_array() override { return shallower(); }

    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override
    {
        return false;
    }

private:
    bool keep(JsonRecord::Value value)
    {
        if (_depth == 1 && _isObject) {
            _record._values.insert_or_assign(_key, std::move(value));
        }
        return true;
    }

    bool deeper()
    {
        keep(JsonRecord::Nested{});
        ++_depth;
        return true;
    }

    bool shallower()
    {
        --_depth;
        return true;
    }

    JsonRecord& _record;
    std::string _key;
    std::size_t _depth = 0;
    bool _isObject = false;
};

JsonRecord::JsonRecord(const QByteArray& json)
{
    const QByteArray valid = QString::fromUtf8(json).toUtf8();
    JsonRecordReader reader(*this);
    // The parser takes a zero byte for the end of the text, whatever comes behind it.
    if (valid.contains('\0') || !nlohmann::json::sax_parse(valid.begin(), valid.end(), &reader) ||
        !reader.isObject())
    {
        throw DecodingError("not one JSON object");
    }
}

const JsonRecord::Value& JsonRecord::value(const char* key) const
{
    static const Value kAbsent = nullptr;
    const auto found = _values.find(std::string_view(key));
    return found == _values.end() ? kAbsent : found->second;
}

bool JsonRecord::boolean(const char* key) const
{
    const auto found = optionalBoolean(key);
    if (!found) {
        throw DecodingError("no \""s + key + "\"");
    }
    return *found;
}

QString JsonRecord::text(const char* key) const
{
    auto found = optionalText(key);
    if (!found) {
        throw DecodingError("no \""s + key + "\"");
    }
    return *std::move(found);
}

std::optional<bool> JsonRecord::optionalBoolean(const char* key) const
{
    const Value& found = value(key);
    if (std::holds_alternative<std::nullptr_t>(found)) {
        return std::nullopt;
    }
    if (const bool* boolean = std::get_if<bool>(&found)) {
        return *boolean;
    }
    throw DecodingError("\""s + key + "\" is not a boolean");
}

std::optional<QString> JsonRecord::optionalText(const char* key) const
{
    const Value& found = value(key);
    if (std::holds_alternative<std::nullptr_t>(found)) {
        return std::nullopt;
    }
    if (const std::string* text = std::get_if<std::string>(&found)) {
        return QString::fromStdString(*text);
    }
    throw DecodingError("\""s + key + "\" is not a text");
}

std::optional<quint64> JsonRecord::optionalCount(const char* key) const
{
    const Value& found = value(key);
    if (std::holds_alternative<std::nullptr_t>(found)) {
        return std::nullopt;
    }
    if (const quint64* count = std::get_if<quint64>(&found)) {
        return *count;
    }
    if (const Number* number = std::get_if<Number>(&found)) {
        if (const auto count = wholeNumber(number->spelling)) {
            return count;
        }
    }
    throw DecodingError("\""s + key + "\" is not a whole number from 0 to 2^64 - 1");
}

std::optional<quint64> wholeNumber(std::string_view spelling)
{
    const auto exponentMark = std::min(spelling.find_first_of("eE"), spelling.size());
    const std::string_view mantissa = spelling.substr(0, exponentMark);
    const bool negative = mantissa.starts_with('-');

    std::string digits;
    long long shift = 0; // the value is `digits` times ten to this
    bool inFraction = false;
    for (const char c : mantissa.substr(negative ? 1 : 0)) {
        if (c == '.') {
            inFraction = true;
            continue;
        }
        digits += c;
        shift -= inFraction ? 1 : 0;
    }
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
    if (digits.empty()) {
        return 0;
    }
    if (negative) {
        return std::nullopt;
    }
    while (digits.back() == '0') {
        digits.pop_back();
        ++shift;
    }

    if (exponentMark < spelling.size()) {
        std::string_view text = spelling.substr(exponentMark + 1);
        text.remove_prefix(text.starts_with('+') ? 1 : 0);
        long long exponent = 0;
        if (std::from_chars(text.data(), text.data() + text.size(), exponent).ec != std::errc{}) {
            return std::nullopt; // an exponent beyond 2^63: a fraction or far too big
        }
        if (__builtin_add_overflow(shift, exponent, &shift)) {
            return std::nullopt;
        }
    }
    constexpr long long kMostDigits = 20;
    if (shift < 0 || shift >= kMostDigits || static_cast<long long>(digits.size()) + shift > kMostDigits) {
        return std::nullopt;
    }
    digits.append(static_cast<std::size_t>(shift), '0');
    quint64 result = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), result);
    return error == std::errc{} ? std::optional(result) : std::nullopt;
}

} // namespace ferrobank
