#include "Platform/linux/updates/worker/WebRequest.h"

#include <QtCore/QEventLoop>
#include <QtCore/QTimer>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QNetworkRequest>
#include <QtNetwork/QSslConfiguration>

#include <exception>
#include <memory>

namespace ferrobank::updates {
namespace {

using namespace Qt::StringLiterals;

UpdateFailure unreachable(const QString& detail)
{
    return {Problem::Network, u"The update server could not be used: %1."_s.arg(detail).toStdString()};
}

QNetworkRequest makeRequest(const QUrl& url, const QList<QPair<QByteArray, QByteArray>>& headers,
                            const NetworkRules& rules)
{
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::UserAgentHeader, rules.userAgent);
    request.setRawHeader("Cache-Control", "no-cache");
    // The bytes that were signed are the bytes that travel: no transparent decompression.
    request.setRawHeader("Accept-Encoding", "identity");
    // Else the toolkit tells the user's languages.
    request.setRawHeader("Accept-Language", "*");
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    for (const auto& [name, value] : headers)
        request.setRawHeader(name, value);
    if (!rules.authority.isEmpty()) {
        QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
        tls.setCaCertificates(QSslCertificate::fromData(rules.authority, QSsl::Pem));
        request.setSslConfiguration(tls);
    }
    return request;
}

bool isSecure(const QUrl& url)
{
    return url.isValid() && url.scheme() == "https"_L1 && !url.host().isEmpty() && url.userInfo().isEmpty();
}

/// One hop. What the callbacks throw is caught at the edge of the event loop and thrown again behind it.
class Hop {
public:
    Hop(std::unique_ptr<QNetworkReply> reply, const std::function<void(const AnswerHead&)>& begin,
        const std::function<void(const QByteArray&)>& body)
        : _reply(std::move(reply)), _begin(begin), _body(body)
    {}

    /// The address to go on to, or an empty one when the body is complete.
    QUrl run(std::chrono::milliseconds stall, std::chrono::milliseconds total);

private:
    void guarded(const std::function<void()>& act);
    void readHead();
    void readBody();
    void judgeEnd();

    std::unique_ptr<QNetworkReply> _reply;
    const std::function<void(const AnswerHead&)>& _begin;
    const std::function<void(const QByteArray&)>& _body;
    std::exception_ptr _failure;
    QUrl _redirect;
    bool _hasHead = false;
};

void Hop::guarded(const std::function<void()>& act)
{
    if (_failure)
        return;
    try {
        act();
    } catch (const UpdateFailure&) {
        _failure = std::current_exception();
        _reply->abort();
    }
}

void Hop::readHead()
{
    if (_hasHead)
        return;
    const QVariant status = _reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (!status.isValid())
        return;
    _hasHead = true;
    const QVariant target = _reply->attribute(QNetworkRequest::RedirectionTargetAttribute);
    if (target.isValid()) {
        _redirect = _reply->url().resolved(target.toUrl());
        // Its body says nothing to us and may have no end.
        _reply->abort();
        return;
    }
    AnswerHead head;
    head.status = status.toInt();
    if (_reply->hasRawHeader("Content-Length"))
        head.contentLength = _reply->rawHeader("Content-Length").toLongLong();
    head.contentRange = _reply->rawHeader("Content-Range");
    head.entityTag = _reply->rawHeader("ETag");
    head.address = _reply->url();
    if (_reply->hasRawHeader("Content-Encoding") && _reply->rawHeader("Content-Encoding") != "identity")
        throw unreachable(u"it answered in a form that was not asked for"_s);
    _begin(head);
}

void Hop::readBody()
{
    readHead();
    const QByteArray bytes = _reply->readAll();
    if (_hasHead && _redirect.isEmpty() && !bytes.isEmpty())
        _body(bytes);
}

void Hop::judgeEnd()
{
    if (!_redirect.isEmpty())
        return;
    readBody();
    const int status = _reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (status >= 400)
        throw unreachable(u"it answered with status %1"_s.arg(status));
    if (_hasHead && _reply->error() == QNetworkReply::RemoteHostClosedError)
        throw BodyCutShort();
    if (_reply->error() != QNetworkReply::NoError)
        throw unreachable(_reply->errorString().remove(u'\n'));
    if (!_hasHead)
        throw unreachable(u"it did not answer"_s);
}

QUrl Hop::run(std::chrono::milliseconds stall, std::chrono::milliseconds total)
{
    QEventLoop loop;
    QTimer stalled;
    QTimer expired;
    const auto giveUp = [this](const QString& why) { guarded([&] { throw unreachable(why); }); };
    stalled.setSingleShot(true);
    expired.setSingleShot(true);
    QObject::connect(&stalled, &QTimer::timeout, [&] { giveUp(u"it stopped sending"_s); });
    QObject::connect(&expired, &QTimer::timeout, [&] { giveUp(u"it was too slow"_s); });
    QObject::connect(_reply.get(), &QNetworkReply::metaDataChanged, [&] {
        stalled.start();
        guarded([this] { readHead(); });
    });
    QObject::connect(_reply.get(), &QNetworkReply::readyRead, [&] {
        stalled.start();
        guarded([this] { readBody(); });
    });
    QObject::connect(_reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit, Qt::QueuedConnection);
    stalled.start(stall);
    expired.start(total);
    if (!_reply->isFinished())
        loop.exec();
    guarded([this] { judgeEnd(); });
    if (_failure)
        std::rethrow_exception(_failure);
    return _redirect;
}

} // namespace

void get(const QUrl& url, const QList<QPair<QByteArray, QByteArray>>& headers, const NetworkRules& rules,
         const std::function<void(const AnswerHead&)>& begin,
         const std::function<void(const QByteArray&)>& body)
{
    QNetworkAccessManager network;
    QUrl address = url;
    const auto deadline = std::chrono::steady_clock::now() + rules.total; // for all hops together
    for (int hop = 0; hop <= rules.mostRedirects; ++hop) {
        if (!isSecure(address))
            throw unreachable(u"it leads to an address that is not secure"_s);
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            throw unreachable(u"it was too slow"_s);
        std::unique_ptr<QNetworkReply> reply(network.get(makeRequest(address, headers, rules)));
        const QUrl next = Hop(std::move(reply), begin, body).run(rules.stall, left);
        if (next.isEmpty())
            return;
        address = next;
    }
    throw unreachable(u"it leads on and on"_s);
}

} // namespace ferrobank::updates
