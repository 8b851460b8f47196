#include "Platform/linux/PropertyList.h"

#include "Platform/linux/SmallFile.h"

#include <plist/plist.h>

#include <cstdint>
#include <utility>

namespace ferrobank {

namespace {

std::optional<std::string> textOf(plist_t node)
{
    std::uint64_t length = 0;
    const char* text = PLIST_IS_STRING(node) ? plist_get_string_ptr(node, &length) : nullptr;
    if (text == nullptr) {
        return std::nullopt;
    }
    return std::string(text, length);
}

std::optional<bool> flagOf(plist_t node)
{
    if (!PLIST_IS_BOOLEAN(node)) {
        return std::nullopt;
    }
    std::uint8_t value = 0;
    plist_get_bool_val(node, &value);
    return value != 0;
}

} // namespace

void PropertyList::Release::operator()(void* node) const
{
    plist_free(node);
}

PropertyList::PropertyList(Root root) : _root(std::move(root)) {}

std::optional<PropertyList> PropertyList::read(const std::filesystem::path& file)
{
    const std::optional<std::string> bytes = readSmallFile(file, kSizeLimit);
    return bytes ? parse(*bytes) : std::nullopt;
}

std::optional<PropertyList> PropertyList::parse(std::string_view bytes)
{
    if (bytes.size() > kSizeLimit) {
        return std::nullopt;
    }
    plist_t root = nullptr;
    plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &root);
    Root owned(root);
    if (!PLIST_IS_DICT(root)) {
        return std::nullopt;
    }
    return PropertyList(std::move(owned));
}

std::optional<std::string> PropertyList::text(const char* key) const
{
    return textOf(plist_dict_get_item(_root.get(), key));
}

std::optional<bool> PropertyList::flag(const char* key) const
{
    return flagOf(plist_dict_get_item(_root.get(), key));
}

std::optional<std::uint64_t> PropertyList::number(const char* key) const
{
    plist_t node = plist_dict_get_item(_root.get(), key);
    if (!PLIST_IS_UINT(node)) {
        return std::nullopt;
    }
    std::uint64_t value = 0;
    plist_get_uint_val(node, &value);
    return value;
}

std::optional<bool> PropertyList::flag(const char* dictionary, const char* key) const
{
    plist_t node = plist_dict_get_item(_root.get(), dictionary);
    return PLIST_IS_DICT(node) ? flagOf(plist_dict_get_item(node, key)) : std::nullopt;
}

std::optional<std::vector<std::string>> PropertyList::texts(const char* key) const
{
    plist_t array = plist_dict_get_item(_root.get(), key);
    if (!PLIST_IS_ARRAY(array)) {
        return std::nullopt;
    }
    std::vector<std::string> result;
    for (std::uint32_t index = 0; index < plist_array_get_size(array); ++index) {
        std::optional<std::string> text = textOf(plist_array_get_item(array, index));
        if (!text) {
            return std::nullopt;
        }
        result.push_back(std::move(*text));
    }
    return result;
}

} // namespace ferrobank
