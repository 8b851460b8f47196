#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <map>
#include <optional>
#include <string>
#include <variant>

namespace ferrobank {

/// One JSON object as the drive tool prints it, asked key by key with strict types. Plain value, usable on
/// any thread.
///
/// Invalid UTF-8 is replaced before the text is read. Of equal keys the last counts. Nested values are
/// accepted and kept as "something else". Anything but one object, text after it included, is a
/// DecodingError, and so is each question whose answer has another type.
class JsonRecord {
public:
    explicit JsonRecord(const QByteArray& json);

    [[nodiscard]] bool boolean(const char* key) const;
    [[nodiscard]] QString text(const char* key) const;

    /// These give no value for a key that is absent or null.
    [[nodiscard]] std::optional<bool> optionalBoolean(const char* key) const;
    [[nodiscard]] std::optional<QString> optionalText(const char* key) const;

    /// A whole number from 0 to 2^64 - 1, evaluated exactly in every spelling ("1e3", "1.0").
    [[nodiscard]] std::optional<quint64> optionalCount(const char* key) const;

private:
    friend class JsonRecordReader;

    struct Nested {};

    /// As it is spelled, because only the spelling of a big number is exact.
    struct Number {
        std::string spelling;
    };

    using Value = std::variant<std::nullptr_t, bool, std::string, quint64, Number, Nested>;

    /// Null also for a key that is absent.
    [[nodiscard]] const Value& value(const char* key) const;

    std::map<std::string, Value, std::less<>> _values;
};

/// The exact value of a JSON number's spelling, if it is a whole number from 0 to 2^64 - 1.
[[nodiscard]] std::optional<quint64> wholeNumber(std::string_view spelling);

} // namespace ferrobank
