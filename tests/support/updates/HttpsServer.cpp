#include "support/updates/HttpsServer.h"

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTimer>
#include <QtNetwork/QSslConfiguration>
#include <QtNetwork/QSslKey>
#include <QtNetwork/QSslSocket>

#include <memory>

namespace ferrobank {
namespace {

using namespace Qt::StringLiterals;

constexpr qsizetype kPiece = 16 * 1024;

void openssl(const QStringList& arguments)
{
    QProcess process;
    process.start(u"openssl"_s, arguments);
    if (!process.waitForFinished() || process.exitCode() != 0)
        qFatal("openssl failed: %s", process.readAllStandardError().constData());
}

QByteArray contentOf(const QString& name)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("No certificate was made.");
    return file.readAll();
}

} // namespace

HttpsServer::HttpsServer(QObject* parent) : QSslServer(parent)
{
    makeCertificate();
    connect(this, &QTcpServer::pendingConnectionAvailable, this, [this] {
        while (QTcpSocket* const socket = nextPendingConnection()) {
            auto head = std::make_shared<QByteArray>();
            connect(socket, &QTcpSocket::readyRead, this, [this, socket, head] {
                const bool isAnswered = head->contains("\r\n\r\n");
                *head += socket->readAll();
                if (isAnswered || !head->contains("\r\n\r\n"))
                    return;
                const int pause = _files.value(QString::fromUtf8(head->split(' ').value(1))).pause;
                QTimer::singleShot(pause, socket, [this, socket, head] { answer(socket, *head); });
            });
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        }
    });
    if (!listen(QHostAddress::LocalHost))
        qFatal("The test server cannot listen.");
}

void HttpsServer::makeCertificate()
{
    const QTemporaryDir folder;
    const QString key = folder.filePath(u"key.pem"_s);
    const QString certificate = folder.filePath(u"certificate.pem"_s);
    openssl({u"req"_s, u"-x509"_s, u"-newkey"_s, u"ec"_s, u"-pkeyopt"_s, u"ec_paramgen_curve:prime256v1"_s,
             u"-nodes"_s, u"-days"_s, u"2"_s, u"-subj"_s, u"/CN=localhost"_s, u"-addext"_s,
             u"subjectAltName=DNS:localhost,IP:127.0.0.1"_s, u"-keyout"_s, key, u"-out"_s, certificate});
    _authority = contentOf(certificate);
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setLocalCertificate(QSslCertificate(_authority, QSsl::Pem));
    tls.setPrivateKey(QSslKey(contentOf(key), QSsl::Ec, QSsl::Pem));
    setSslConfiguration(tls);
}

QString HttpsServer::address(const QString& path) const
{
    return u"https://localhost:%1%2"_s.arg(serverPort()).arg(path);
}

int HttpsServer::requestsFor(const QByteArray& path) const
{
    int count = 0;
    for (const QByteArray& request : _requests)
        count += request.startsWith("GET " + path + " ") ? 1 : 0;
    return count;
}

void HttpsServer::sendSlowly(QTcpSocket* socket, const QByteArray& body, int pause)
{
    socket->write(body.first(std::min(kPiece, body.size())));
    const QByteArray rest = body.mid(kPiece);
    if (rest.isEmpty()) {
        socket->disconnectFromHost();
        return;
    }
    QTimer::singleShot(pause, socket, [this, socket, rest, pause] { sendSlowly(socket, rest, pause); });
}

void HttpsServer::flood(QTcpSocket* socket)
{
    socket->write(QByteArray(kPiece, 'f'));
    _flooded += kPiece;
    QTimer::singleShot(1, socket, [this, socket] { flood(socket); });
}

void HttpsServer::answer(QTcpSocket* socket, const QByteArray& head)
{
    _requests.append(head);
    const QByteArray path = head.split(' ').value(1);
    const auto found = _files.find(QString::fromUtf8(path));
    if (found == _files.end()) {
        socket->write("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        socket->disconnectFromHost();
        return;
    }
    ServedFile& file = *found;
    using Fault = ServedFile::Fault;
    if (!file.location.isEmpty() && file.isRedirectEndless) {
        socket->write("HTTP/1.1 302 Found\r\nConnection: close\r\nLocation: " + file.location + "\r\n\r\n");
        flood(socket);
        return;
    }
    if (!file.location.isEmpty()) {
        socket->write("HTTP/1.1 302 Found\r\nContent-Length: 0\r\nConnection: close\r\nLocation: " +
                      file.location + "\r\n\r\n");
        socket->disconnectFromHost();
        return;
    }
    qsizetype from = 0;
    const auto range = head.indexOf("\r\nRange: bytes=");
    const bool isSame = head.contains("\r\nIf-Range: " + file.entityTag + "\r\n");
    if (range >= 0 && isSame)
        from = head.mid(range + 15).split('-').value(0).toLongLong();
    QByteArray body = file.content.mid(from);
    QByteArray answer = from > 0 ? QByteArray("HTTP/1.1 206 Partial Content\r\n")
                                 : "HTTP/1.1 " + QByteArray::number(file.status) + " Status\r\n";
    if (from > 0) {
        const qsizetype told = file.fault == Fault::WrongRange ? from + 1 : from;
        answer += "Content-Range: bytes " + QByteArray::number(told) + "-" +
                  QByteArray::number(file.content.size() - 1) + "/" +
                  QByteArray::number(file.content.size()) + "\r\n";
    }
    if (!file.entityTag.isEmpty())
        answer += "ETag: " + file.entityTag + "\r\n";
    if (file.fault != Fault::Endless)
        answer += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    socket->write(answer + "Connection: close\r\n\r\n");

    const bool isCut = file.fault == Fault::CutShort || file.fault == Fault::CutShortOnce;
    if (file.fault == Fault::CutShortOnce)
        file.fault = Fault::None;
    if (isCut || file.fault == Fault::StopsSending)
        body.truncate(body.size() / 2);
    if (file.fault == Fault::Endless)
        body += QByteArray(8 * 1024 * 1024, 'e');
    if (file.fault == Fault::StopsSending)
        socket->write(body);
    else if (file.chunkPause > 0)
        sendSlowly(socket, body, file.chunkPause);
    else {
        socket->write(body);
        socket->disconnectFromHost();
    }
}

PlainServer::PlainServer(QByteArray body, QObject* parent) : QTcpServer(parent), _body(std::move(body))
{
    connect(this, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket* const socket = nextPendingConnection()) {
            ++_connections;
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
                if (!socket->readAll().contains("\r\n\r\n"))
                    return;
                socket->write("HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " +
                              QByteArray::number(_body.size()) + "\r\n\r\n" + _body);
                socket->disconnectFromHost();
            });
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        }
    });
    if (!listen(QHostAddress::LocalHost))
        qFatal("The test server cannot listen.");
}

QString PlainServer::address(const QString& path) const
{
    return u"http://localhost:%1%2"_s.arg(serverPort()).arg(path);
}

} // namespace ferrobank
