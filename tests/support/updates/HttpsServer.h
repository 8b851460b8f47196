#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtNetwork/QSslServer>
#include <QtNetwork/QTcpServer>

class QTcpSocket;

namespace ferrobank {

/// How the server answers one path.
struct ServedFile {
    enum class Fault {
        None,
        CutShort,     ///< announces everything, sends half, closes
        CutShortOnce, ///< the same for the first request only
        StopsSending, ///< sends half and then nothing
        Endless,      ///< sends on and on, announcing nothing
        WrongRange    ///< answers a range with another one
    };

    QByteArray content;
    int status = 200;
    QByteArray entityTag = "\"one\"";
    QByteArray location;            ///< for redirects
    bool isRedirectEndless = false; ///< a redirect whose body goes on and on
    int pause = 0;                  ///< milliseconds before the answer
    Fault fault = Fault::None;
    int chunkPause = 0; ///< milliseconds between pieces of 16 KiB
};

/// A web server on this machine with a certificate made at its start. Serves what it was told to, one request
/// a connection, with ranges; remembers every request.
class HttpsServer : public QSslServer {
    Q_OBJECT

public:
    /// Stops the test program when no certificate can be made.
    explicit HttpsServer(QObject* parent = nullptr);

    [[nodiscard]] QString address(const QString& path) const; ///< https://localhost:port/path

    [[nodiscard]] QByteArray authority() const { return _authority; } ///< PEM

    void serve(const QString& path, const ServedFile& file) { _files[path] = file; }

    void serve(const QString& path, const QByteArray& content) { _files[path].content = content; }

    [[nodiscard]] const QList<QByteArray>& requests() const { return _requests; } ///< whole heads

    [[nodiscard]] int requestsFor(const QByteArray& path) const;

    [[nodiscard]] qint64 flooded() const { return _flooded; } ///< bytes behind endless redirects

private:
    void makeCertificate();
    void answer(QTcpSocket* socket, const QByteArray& head);
    void sendSlowly(QTcpSocket* socket, const QByteArray& body, int pause);
    void flood(QTcpSocket* socket);

    QHash<QString, ServedFile> _files;
    QList<QByteArray> _requests;
    QByteArray _authority;
    qint64 _flooded = 0;
};

/// A web server on this machine without any security: answers every request with one body, and counts who
/// comes at all.
class PlainServer : public QTcpServer {
    Q_OBJECT

public:
    explicit PlainServer(QByteArray body, QObject* parent = nullptr);

    [[nodiscard]] QString address(const QString& path) const; ///< http://localhost:port/path

    [[nodiscard]] int connections() const { return _connections; }

private:
    QByteArray _body;
    int _connections = 0;
};

} // namespace ferrobank
