#include "Platform/linux/PropertyList.h"

#include "Platform/linux/SmallFile.h"

#include <expat.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <type_traits>
#include <utility>

namespace ferrobank {

/// What the parser calls while it reads: a stack of the values that are still open. A document that is no
/// property list is refused whole: a value without its key, a key without its value, two roots, or nesting
/// beyond all reason.
class PropertyListReader {
public:
    using Node = PropertyList::Node;

    static std::optional<Node> read(std::string_view bytes)
    {
        const std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser(
            XML_ParserCreate("UTF-8"), &XML_ParserFree);
        if (!parser) {
            return std::nullopt;
        }
        PropertyListReader reader(parser.get());
        XML_SetUserData(parser.get(), &reader);
        XML_SetElementHandler(parser.get(), &PropertyListReader::begin, &PropertyListReader::end);
        XML_SetCharacterDataHandler(parser.get(), &PropertyListReader::words);
        XML_SetEntityDeclHandler(parser.get(), &PropertyListReader::entity);
        const XML_Status status =
            XML_Parse(parser.get(), bytes.data(), static_cast<int>(bytes.size()), XML_TRUE);
        return status == XML_STATUS_OK && reader._isWhole ? std::optional(std::move(reader._root))
                                                          : std::nullopt;
    }

private:
    static constexpr std::size_t kDepthLimit = 32;

    /// A value that is not closed yet, and the last key that waits for its value.
    struct Open {
        Node node;
        std::optional<std::string> key;
    };

    explicit PropertyListReader(XML_Parser parser) : _parser(parser) {}

    static Node::Kind kindOf(std::string_view element)
    {
        using Kind = Node::Kind;
        static constexpr std::pair<std::string_view, Kind> kKinds[] = {
            {"string", Kind::Text}, {"integer", Kind::Integer}, {"true", Kind::True},
            {"false", Kind::False}, {"array", Kind::Array},     {"dict", Kind::Dictionary},
        };
        const auto* found = std::ranges::find(kKinds, element, &std::pair<std::string_view, Kind>::first);
        return found == std::end(kKinds) ? Kind::Other : found->second;
    }

    static void begin(void* self, const XML_Char* name, const XML_Char** /*attributes*/)
    {
        static_cast<PropertyListReader*>(self)->begin(name);
    }

    static void end(void* self, const XML_Char* name) { static_cast<PropertyListReader*>(self)->end(name); }

    static void words(void* self, const XML_Char* text, int length)
    {
        auto& words = static_cast<PropertyListReader*>(self)->_words;
        words.append(text, static_cast<std::size_t>(length));
    }

    /// Nobody who writes a property list declares names for texts, other than to make a small file large.
    static void entity(void* self, const XML_Char*, int, const XML_Char*, int, const XML_Char*,
                       const XML_Char*, const XML_Char*, const XML_Char*)
    {
        static_cast<PropertyListReader*>(self)->refuse();
    }

    void begin(std::string_view name)
    {
        _words.clear();
        if (name == "plist" || name == "key") {
            return;
        }
        if (_open.size() >= kDepthLimit) {
            refuse();
            return;
        }
        _open.push_back({.node = {.kind = kindOf(name), .key = {}, .words = {}, .values = {}}, .key = {}});
    }

    void end(std::string_view name)
    {
        if (name == "plist") {
            return;
        }
        if (name == "key") {
            keep(std::move(_words));
            return;
        }
        Open closed = std::move(_open.back());
        _open.pop_back();
        if (closed.key) {
            refuse();
            return;
        }
        closed.node.words = std::move(_words);
        _words.clear();
        keep(std::move(closed.node));
    }

    void keep(std::string key)
    {
        if (_open.empty() || _open.back().node.kind != Node::Kind::Dictionary || _open.back().key) {
            refuse();
            return;
        }
        _open.back().key = std::move(key);
    }

    void keep(Node value)
    {
        if (_open.empty()) {
            if (_isWhole) {
                refuse();
                return;
            }
            _root = std::move(value);
            _isWhole = true;
            return;
        }
        Open& parent = _open.back();
        if (parent.node.kind == Node::Kind::Dictionary && parent.key) {
            value.key = std::move(*parent.key);
            parent.key.reset();
        } else if (parent.node.kind != Node::Kind::Array) {
            refuse();
            return;
        }
        parent.node.values.push_back(std::move(value));
    }

    void refuse() { XML_StopParser(_parser, XML_FALSE); }

    XML_Parser _parser;
    std::vector<Open> _open;
    std::string _words;
    Node _root;
    bool _isWhole = false;
};

const PropertyList::Node* PropertyList::Node::entry(std::string_view name) const
{
    const auto found = kind == Kind::Dictionary ? std::ranges::find(values, name, &Node::key) : values.end();
    return found == values.end() ? nullptr : std::to_address(found);
}

std::optional<bool> PropertyList::Node::flag() const
{
    if (kind != Kind::True && kind != Kind::False) {
        return std::nullopt;
    }
    return kind == Kind::True;
}

PropertyList::PropertyList(Node root) : _root(std::move(root)) {}

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
    std::optional<Node> root = PropertyListReader::read(bytes);
    if (!root || root->kind != Node::Kind::Dictionary) {
        return std::nullopt;
    }
    return PropertyList(std::move(*root));
}

std::optional<std::string> PropertyList::text(const char* key) const
{
    const Node* node = _root.entry(key);
    return node != nullptr && node->kind == Node::Kind::Text ? std::optional(node->words) : std::nullopt;
}

std::optional<bool> PropertyList::flag(const char* key) const
{
    const Node* node = _root.entry(key);
    return node != nullptr ? node->flag() : std::nullopt;
}

std::optional<std::uint64_t> PropertyList::number(const char* key) const
{
    const Node* node = _root.entry(key);
    if (node == nullptr || node->kind != Node::Kind::Integer) {
        return std::nullopt;
    }
    std::uint64_t value = 0;
    const char* const end = node->words.data() + node->words.size();
    const auto [rest, error] = std::from_chars(node->words.data(), end, value);
    return error == std::errc() && rest == end ? std::optional(value) : std::nullopt;
}

std::optional<bool> PropertyList::flag(const char* dictionary, const char* key) const
{
    const Node* outer = _root.entry(dictionary);
    const Node* inner = outer != nullptr ? outer->entry(key) : nullptr;
    return inner != nullptr ? inner->flag() : std::nullopt;
}

std::optional<std::vector<std::string>> PropertyList::texts(const char* key) const
{
    const Node* array = _root.entry(key);
    if (array == nullptr || array->kind != Node::Kind::Array) {
        return std::nullopt;
    }
    std::vector<std::string> result;
    for (const Node& item : array->values) {
        if (item.kind != Node::Kind::Text) {
            return std::nullopt;
        }
        result.push_back(item.words);
    }
    return result;
}

} // namespace ferrobank
