#include "Platform/linux/updates/worker/Download.h"

#include "Platform/linux/Descriptor.h"
#include "Platform/linux/SmallFile.h"
#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/install/Files.h"
#include "Platform/linux/updates/worker/WebRequest.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace ferrobank::updates {
namespace {

using namespace Qt::StringLiterals;

constexpr std::chrono::milliseconds kBetweenReports{100};
constexpr std::chrono::seconds kBetweenNotes{1};
constexpr int kStatusOk = 200;
constexpr int kStatusPartial = 206;

UpdateFailure wrongAnswer(const QString& detail)
{
    return {Problem::Network, u"The update could not be downloaded: %1."_s.arg(detail).toStdString()};
}

UpdateFailure notSaved(int error)
{
    return systemFailure(Problem::Place, "The update could not be saved", error);
}

class ArchiveFile {
public:
    explicit ArchiveFile(const DownloadOrder& order) : _order(order) {}

    void open();

    [[nodiscard]] std::int64_t have() const { return _have; }

    [[nodiscard]] const QByteArray& entityTag() const { return _entityTag; }

    void begin(const AnswerHead& head);
    void append(const QByteArray& bytes);
    void save();   ///< what has come so far survives a power failure
    void giveUp(); ///< keeps what is worth resuming

private:
    void startAgain();
    void readNote();
    void writeNote();

    const DownloadOrder& _order;
    Descriptor _file;
    std::int64_t _have = 0; ///< bytes of the file that count
    QByteArray _entityTag;
    std::chrono::steady_clock::time_point _lastReport;
    std::chrono::steady_clock::time_point _lastNote;
};

void ArchiveFile::open()
{
    const int flags = O_RDWR | O_NOFOLLOW | O_CLOEXEC;
    _file = Descriptor(::open(_order.file.c_str(), flags));
    struct stat facts{};
    const bool isOurs = _file.isOpen() && ::fstat(_file.number(), &facts) == 0 && S_ISREG(facts.st_mode) &&
                        facts.st_nlink == 1 && facts.st_uid == ::geteuid() && (facts.st_mode & 0777) == 0600;
    if (isOurs)
        readNote();
    if (!isOurs) {
        ::unlink(_order.file.c_str());
        _file = Descriptor(::open(_order.file.c_str(), flags | O_CREAT | O_EXCL, 0600));
    }
    if (!_file.isOpen())
        throw notSaved(errno);
}

void ArchiveFile::readNote()
{
    // The file has its full size from the start; the note tells how much of it has been written and forced
    // down.
    const auto text = readSmallFile(_order.note, kLongestRecord);
    if (!text)
        return;
    const QJsonObject note = QJsonDocument::fromJson(QByteArray::fromStdString(*text)).object();
    const qint64 have = note[u"have"_s].toInteger();
    const bool isSame = note[u"url"_s].toString() == QString::fromUtf8(_order.url.toEncoded()) &&
                        note[u"length"_s].toInteger() == _order.length && have > 0 && have <= _order.length;
    const QByteArray tag = note[u"tag"_s].toString().toUtf8();
    // A complete file needs no proof from the server that it is still the same: its signature is checked
    // anyway.
    if (!isSame || (tag.isEmpty() && have < _order.length))
        return;
    _have = have;
    _entityTag = tag;
}

void ArchiveFile::writeNote()
{
    const QJsonObject note{{u"url"_s, QString::fromUtf8(_order.url.toEncoded())},
                           {u"length"_s, qint64{_order.length}},
                           {u"have"_s, qint64{_have}},
                           {u"tag"_s, QString::fromUtf8(_entityTag)}};
    const QByteArray text = QJsonDocument(note).toJson(QJsonDocument::Compact);
    if (const int error = writeFileAtomically(_order.note, text.toStdString()); error != 0)
        throw notSaved(error);
}

void ArchiveFile::startAgain()
{
    _have = 0;
    if (::ftruncate(_file.number(), 0) != 0)
        throw notSaved(errno);
}

void ArchiveFile::begin(const AnswerHead& head)
{
    const bool isStrong = head.entityTag.startsWith('"');
    if (head.status == kStatusPartial && _have > 0) {
        const QByteArray range = "bytes " + QByteArray::number(qint64{_have}) + "-" +
                                 QByteArray::number(qint64{_order.length - 1}) + "/" +
                                 QByteArray::number(qint64{_order.length});
        if (head.contentRange != range || head.entityTag != _entityTag)
            throw wrongAnswer(u"the server sent another part of the file"_s);
    } else if (head.status == kStatusOk)
        startAgain();
    else
        throw wrongAnswer(u"the server answered with status %1"_s.arg(head.status));

    if (head.contentLength >= 0 && head.contentLength != _order.length - _have)
        throw wrongAnswer(u"the file has another size than announced"_s);
    // All the room is taken now, so that a full disk shows before the first byte.
    if (const int error = ::posix_fallocate(_file.number(), 0, _order.length); error != 0)
        throw notSaved(error);
    if (::lseek(_file.number(), _have, SEEK_SET) < 0)
        throw notSaved(errno);
    _entityTag = isStrong ? head.entityTag : QByteArray();
    writeNote();
}

void ArchiveFile::append(const QByteArray& bytes)
{
    if (bytes.size() > _order.length - _have)
        throw wrongAnswer(u"the server sends more than announced"_s);
    const std::span<const char> view(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    if (const int error = writeAll(_file.number(), std::as_bytes(view)); error != 0)
        throw notSaved(error);
    _have += bytes.size();
    const auto now = std::chrono::steady_clock::now();
    if (now - _lastReport >= kBetweenReports || _have == _order.length) {
        _lastReport = now;
        _order.progress(_have);
    }
    if (now - _lastNote >= kBetweenNotes)
        save();
}

void ArchiveFile::save()
{
    if (::fdatasync(_file.number()) != 0)
        throw notSaved(errno);
    writeNote();
    _lastNote = std::chrono::steady_clock::now();
}

void ArchiveFile::giveUp()
{
    if (_have > 0) {
        save();
        return;
    }
    ::unlink(_order.note.c_str());
    ::unlink(_order.file.c_str());
}

void downloadOnce(const DownloadOrder& order, const NetworkRules& rules)
{
    ArchiveFile file(order);
    file.open();
    if (file.have() == order.length)
        return;
    QList<QPair<QByteArray, QByteArray>> headers;
    if (file.have() > 0) {
        headers.append({"Range", "bytes=" + QByteArray::number(qint64{file.have()}) + "-"});
        headers.append({"If-Range", file.entityTag()});
    }
    try {
        get(
            order.url, headers, rules, [&file](const AnswerHead& head) { file.begin(head); },
            [&file](const QByteArray& bytes) { file.append(bytes); });
    } catch (const UpdateFailure&) {
        file.giveUp();
        throw;
    }
    file.save();
    if (file.have() < order.length)
        throw BodyCutShort();
}

} // namespace

Document fetchDocument(const QUrl& url, std::int64_t limit, const NetworkRules& rules)
{
    Document document;
    std::int64_t announced = -1;
    get(
        url, {}, rules,
        [&](const AnswerHead& head) {
            if (head.status != kStatusOk)
                throw wrongAnswer(u"the server answered with status %1"_s.arg(head.status));
            announced = head.contentLength;
            document.address = head.address;
        },
        [&](const QByteArray& bytes) {
            if (document.bytes.size() + bytes.size() > limit)
                throw wrongAnswer(u"the server sends more than expected"_s);
            document.bytes += bytes;
        });
    if (announced >= 0 && announced != document.bytes.size())
        throw BodyCutShort();
    return document;
}

void downloadArchive(const DownloadOrder& order, const NetworkRules& rules)
{
    try {
        downloadOnce(order, rules);
    } catch (const BodyCutShort&) {
        downloadOnce(order, rules);
    }
}

} // namespace ferrobank::updates
