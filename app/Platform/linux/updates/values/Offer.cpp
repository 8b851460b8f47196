#include "Platform/linux/updates/values/Offer.h"

namespace ferrobank::updates {

using namespace Qt::StringLiterals;

QJsonObject offerToJson(const Offer& offer)
{
    return {{u"version"_s, offer.version},
            {u"displayVersion"_s, offer.displayVersion},
            {u"channel"_s, offer.channel},
            {u"notes"_s, offer.notes},
            {u"link"_s, QString::fromUtf8(offer.link.toEncoded())},
            {u"archive"_s, QString::fromUtf8(offer.archive.toEncoded())},
            {u"length"_s, qint64{offer.length}},
            {u"unpackedLength"_s, qint64{offer.unpackedLength}},
            {u"signature"_s, offer.signature},
            {u"critical"_s, offer.critical},
            {u"major"_s, offer.major},
            {u"informational"_s, offer.informational},
            {u"phased"_s, offer.phased},
            {u"takenBack"_s, offer.takenBack}};
}

Offer offerFromJson(const QJsonObject& json)
{
    Offer offer;
    offer.version = json[u"version"_s].toString();
    offer.displayVersion = json[u"displayVersion"_s].toString();
    offer.channel = json[u"channel"_s].toString();
    offer.notes = json[u"notes"_s].toString();
    offer.link = QUrl(json[u"link"_s].toString());
    offer.archive = QUrl(json[u"archive"_s].toString());
    offer.length = json[u"length"_s].toInteger();
    offer.unpackedLength = json[u"unpackedLength"_s].toInteger();
    offer.signature = json[u"signature"_s].toString();
    offer.critical = json[u"critical"_s].toBool();
    offer.major = json[u"major"_s].toBool();
    offer.informational = json[u"informational"_s].toBool();
    offer.phased = json[u"phased"_s].toBool();
    offer.takenBack = json[u"takenBack"_s].toBool();
    return offer;
}

} // namespace ferrobank::updates
