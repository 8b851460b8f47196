#include "sharing/HashIndex.h"

#include <algorithm>

namespace ferrobank::drive {

namespace {

constexpr const char* kKind = "FBFILES1";
constexpr const char* kFileName = "files.idx";
constexpr std::uint64_t kShared = std::uint64_t{1} << 63U;

} // namespace

HashIndex::HashIndex(const std::filesystem::path& folder, const std::string& uuid, const SizeChoice& wanted)
{
    auto reader = IndexReader::open(folder / kFileName, kKind, uuid);
    if (!reader) {
        return;
    }
    for (Entry entry; reader->read(&entry, sizeof entry);) {
        if (!wanted || wanted(entry.sizeAndShared & ~kShared)) {
            _entries.push_back(entry);
        }
    }
    std::sort(_entries.begin(), _entries.end(),
              [](const Entry& one, const Entry& other) { return one.identity < other.identity; });
}

FileFacts HashIndex::factsOf(const FileRecord& file) const
{
    const auto found = std::lower_bound(
        _entries.begin(), _entries.end(), file.identity,
        [](const Entry& entry, std::uint64_t identity) { return entry.identity < identity; });
    if (found == _entries.end() || found->identity != file.identity || found->stamp != file.stamp ||
        (found->sizeAndShared & ~kShared) != file.size)
    {
        return {};
    }
    return {found->hash, true, (found->sizeAndShared & kShared) != 0};
}

void HashIndex::append(IndexWriter& writer, const FileTable& table, const std::vector<FileFacts>& facts)
{
    for (std::size_t index = 0; index < facts.size(); ++index) {
        if (facts[index].hashed) {
            const FileRecord& file = table.files()[index];
            const Entry entry{file.identity, file.size | (facts[index].shared ? kShared : 0), file.stamp,
                              facts[index].hash};
            writer.append(&entry, sizeof entry);
        }
    }
}

void HashIndex::appendAll(IndexWriter& writer) const
{
    writer.append(_entries.data(), _entries.size() * sizeof(Entry));
}

std::unique_ptr<IndexWriter> HashIndex::startWriting(const std::filesystem::path& folder,
                                                     const std::string& uuid)
{
    return std::make_unique<IndexWriter>(folder / kFileName, kKind, uuid);
}

} // namespace ferrobank::drive
