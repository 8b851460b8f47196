#include "Platform/linux/updates/feed/Appcast.h"

#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/feed/VersionComparison.h"

#include <QtCore/QFileInfo>
#include <QtCore/QXmlStreamReader>

#include <algorithm>

namespace ferrobank::updates {
namespace {

using namespace Qt::StringLiterals;

constexpr auto kSparkle = "http://www.andymatuschak.org/xml-namespaces/sparkle"_L1;
constexpr auto kOurs = "https://ferrobank.org/xml-namespaces/updates"_L1;

UpdateFailure unreadable(const QString& detail)
{
    return {Problem::Feed, u"The list of updates cannot be read: %1."_s.arg(detail).toStdString()};
}

/// Reads one item; members collect what has to be seen whole before the item can be judged.
class ItemReader {
public:
    ItemReader(QXmlStreamReader& xml, const QUrl& address) : _xml(xml), _address(address) {}

    AppcastItem read();

private:
    void readPlainElement();
    void readSparkleElement();
    void readEnclosure();
    void readInformational();
    void readNotesLink();
    void readTags();
    void complete();

    QString text() { return _xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed(); }

    std::string version() { return text().toStdString(); }

    QString sparkle(QLatin1StringView name) const
    {
        return _xml.attributes().value(kSparkle, name).toString();
    }

    std::int64_t count(QStringView digits, const QString& what) const;
    QUrl page();
    QUrl resolved(QString text) const;

    QXmlStreamReader& _xml;
    QUrl _address;
    AppcastItem _item;
    bool _hasEnclosure = false;
    QString _enclosureVersion;
    QString _enclosureDisplayVersion;
    QString _elementVersion;
    QString _elementDisplayVersion;
};

std::int64_t ItemReader::count(QStringView digits, const QString& what) const
{
    bool ok = false;
    const qint64 value = digits.toLongLong(&ok);
    if (!ok || value < 0)
        throw unreadable(u"%1 is not a number"_s.arg(what));
    return value;
}

QUrl ItemReader::resolved(QString text) const
{
    text = text.trimmed();
    text.replace(u' ', u"%20"_s);
    return _address.resolved(QUrl(text, QUrl::StrictMode));
}

AppcastItem ItemReader::read()
{
    while (_xml.readNextStartElement()) {
        if (_xml.namespaceUri() == kSparkle)
            readSparkleElement();
        else if (_xml.namespaceUri() == kOurs && _xml.name() == "minimumQtVersion"_L1)
            _item.minimumQt = version();
        else if (_xml.namespaceUri().isEmpty())
            readPlainElement();
        else
            _xml.skipCurrentElement();
    }
    complete();
    return std::move(_item);
}

void ItemReader::readPlainElement()
{
    const auto name = _xml.name();
    if (name == "title"_L1)
        _item.title = text();
    else if (name == "link"_L1)
        _item.link = page();
    else if (name == "pubDate"_L1) {
        const QDateTime date = QDateTime::fromString(text(), Qt::RFC2822Date);
        if (date.isValid())
            _item.date = date.toUTC();
    } else if (name == "description"_L1) {
        const QString format = sparkle("format"_L1);
        _item.notesFormat = format == "plain-text"_L1 ? NotesFormat::PlainText
                            : format == "markdown"_L1 ? NotesFormat::Markdown
                                                      : NotesFormat::Html;
        _item.notes = text();
    } else if (name == "enclosure"_L1)
        readEnclosure();
    else
        _xml.skipCurrentElement();
}

void ItemReader::readEnclosure()
{
    if (_hasEnclosure)
        throw unreadable(u"an item has two archives"_s);
    _hasEnclosure = true;

    const QXmlStreamAttributes attributes = _xml.attributes();
    _item.archive = resolved(attributes.value("url"_L1).toString());
    const bool isWeb = _item.archive.scheme() == "https"_L1 || _item.archive.scheme() == "http"_L1;
    if (!_item.archive.isValid() || !isWeb || _item.archive.host().isEmpty())
        throw unreadable(u"the address of an archive is not a web address"_s);

    if (attributes.hasAttribute("length"_L1))
        _item.length = count(attributes.value("length"_L1), u"the length of an archive"_s);
    if (attributes.hasAttribute(kOurs, "unpackedLength"_L1))
        _item.unpackedLength =
            count(attributes.value(kOurs, "unpackedLength"_L1), u"the unpacked length of an archive"_s);
    _item.signature = sparkle("edSignature"_L1).toStdString();
    _item.system = sparkle("os"_L1);
    _item.delta = !sparkle("deltaFrom"_L1).isEmpty();
    const QString type = sparkle("installationType"_L1);
    const QString ending = QFileInfo(_item.archive.path()).suffix().toLower();
    _item.package = type.isEmpty() ? ending == "pkg"_L1 || ending == "mpkg"_L1 : type != "application"_L1;
    _enclosureVersion = sparkle("version"_L1);
    _enclosureDisplayVersion = sparkle("shortVersionString"_L1);
    _xml.skipCurrentElement();
}

void ItemReader::readSparkleElement()
{
    const auto name = _xml.name();
    if (name == "version"_L1)
        _elementVersion = text();
    else if (name == "shortVersionString"_L1)
        _elementDisplayVersion = text();
    else if (name == "minimumSystemVersion"_L1)
        _item.minimumSystem = version();
    else if (name == "maximumSystemVersion"_L1)
        _item.maximumSystem = version();
    else if (name == "minimumUpdateVersion"_L1)
        _item.minimumInstalled = version();
    else if (name == "minimumAutoupdateVersion"_L1)
        _item.minimumForAutomatic = version();
    else if (name == "ignoreSkippedUpgradesBelowVersion"_L1)
        _item.ignoreSkippedMajorsBelow = version();
    else if (name == "hardwareRequirements"_L1) {
        for (const QString& one : text().split(u',', Qt::SkipEmptyParts))
            _item.hardware.append(one.trimmed());
    } else if (name == "phasedRolloutInterval"_L1)
        _item.phasedRolloutInterval = std::chrono::seconds(count(text(), u"the interval of a roll-out"_s));
    else if (name == "channel"_L1) {
        const QString channel = text();
        const bool isName = std::ranges::all_of(channel, [](QChar c) {
            return c.unicode() < 128 && (c.isLetterOrNumber() || u"._-"_s.contains(c));
        });
        if (isName)
            _item.channel = channel;
    } else if (name == "criticalUpdate"_L1) {
        _item.critical = true;
        _item.criticalBelow = sparkle("version"_L1).toStdString();
        _xml.skipCurrentElement();
    } else if (name == "tags"_L1)
        readTags();
    else if (name == "informationalUpdate"_L1)
        readInformational();
    else if (name == "releaseNotesLink"_L1)
        readNotesLink();
    else if (name == "fullReleaseNotesLink"_L1)
        _item.versionHistory = page();
    else
        _xml.skipCurrentElement();
}

void ItemReader::readTags()
{
    while (_xml.readNextStartElement()) {
        if (_xml.namespaceUri() == kSparkle && _xml.name() == "criticalUpdate"_L1)
            _item.critical = true;
        _xml.skipCurrentElement();
    }
}

void ItemReader::readInformational()
{
    bool isForSome = false;
    while (_xml.readNextStartElement()) {
        const bool isSparkle = _xml.namespaceUri() == kSparkle;
        if (isSparkle && _xml.name() == "version"_L1) {
            _item.informationFor.push_back(version());
            isForSome = true;
        } else if (isSparkle && _xml.name() == "belowVersion"_L1) {
            _item.informationBelow = version();
            isForSome = true;
        } else
            _xml.skipCurrentElement();
    }
    _item.informationForAll = _item.informationForAll || !isForSome;
}

QUrl ItemReader::page()
{
    const QUrl url = resolved(_xml.readElementText(QXmlStreamReader::SkipChildElements));
    return url.scheme() == "https"_L1 ? url : QUrl();
}

void ItemReader::readNotesLink()
{
    NotesLink link;
    link.language = _xml.attributes().value("xml:lang"_L1).toString();
    if (link.language.isEmpty())
        link.language = u"en"_s;
    link.signature = sparkle("edSignature"_L1).toStdString();
    if (_xml.attributes().hasAttribute(kSparkle, "length"_L1))
        link.length = count(_xml.attributes().value(kSparkle, "length"_L1), u"the length of release notes"_s);
    link.url = page();
    if (!link.url.isEmpty())
        _item.notesLinks.push_back(std::move(link));
}

void ItemReader::complete()
{
    QString version = _enclosureVersion.isEmpty() ? _elementVersion : _enclosureVersion;
    if (version.isEmpty() && _hasEnclosure) {
        const QString file = _item.archive.fileName();
        const auto from = file.lastIndexOf(u'_');
        const auto to = file.lastIndexOf(u'.');
        if (from >= 0 && to > from)
            version = file.mid(from + 1, to - from - 1);
    }
    if (version.isEmpty())
        throw unreadable(u"an item has no version"_s);
    _item.version = version.toStdString();
    if (!isUsableVersion(_item.version))
        throw unreadable(u"an item has a version of letters that none may have"_s);

    const QString display =
        _enclosureDisplayVersion.isEmpty() ? _elementDisplayVersion : _enclosureDisplayVersion;
    _item.displayVersion = display.isEmpty() ? version : display;

    if (!_hasEnclosure) {
        if (_item.link.isEmpty())
            throw unreadable(u"an item has neither an archive nor a page"_s);
        _item.informationForAll = true;
    }
}

void readChannel(QXmlStreamReader& xml, const QUrl& address, Appcast& appcast)
{
    while (xml.readNextStartElement()) {
        if (xml.namespaceUri().isEmpty() && xml.name() == "item"_L1)
            appcast.items.append(ItemReader(xml, address).read());
        else if (xml.namespaceUri() == kOurs && xml.name() == "validUntil"_L1) {
            const QDateTime date = QDateTime::fromString(xml.readElementText().trimmed(), Qt::RFC2822Date);
            if (!date.isValid())
                throw unreadable(u"its expiry is not a date"_s);
            appcast.validUntil = date.toUTC();
        } else
            xml.skipCurrentElement();
    }
}

/// Whether the document declares anything before its first element. Such a feed is not read at all.
bool hasDocumentType(std::string_view content)
{
    QXmlStreamReader xml(QByteArray::fromRawData(content.data(), static_cast<qsizetype>(content.size())));
    while (!xml.atEnd()) {
        const auto token = xml.readNext();
        if (token == QXmlStreamReader::DTD)
            return true;
        if (token == QXmlStreamReader::StartElement)
            return false;
    }
    return false;
}

} // namespace

Appcast readAppcast(std::string_view content, const QUrl& address)
{
    if (hasDocumentType(content))
        throw unreadable(u"it declares a document type"_s);

    QXmlStreamReader xml(QByteArray::fromRawData(content.data(), static_cast<qsizetype>(content.size())));
    Appcast appcast;
    bool hasChannel = false;
    if (xml.readNextStartElement() && xml.name() == "rss"_L1) {
        while (xml.readNextStartElement()) {
            if (xml.name() == "channel"_L1 && !hasChannel) {
                hasChannel = true;
                readChannel(xml, address, appcast);
            } else
                xml.skipCurrentElement();
        }
    }
    while (!xml.atEnd())
        xml.readNext();
    if (xml.hasError())
        throw unreadable(u"line %1 is not well-formed"_s.arg(xml.lineNumber()));
    if (!hasChannel)
        throw unreadable(u"it is not a feed"_s);
    return appcast;
}

} // namespace ferrobank::updates
