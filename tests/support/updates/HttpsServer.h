#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtNetwork/QSslServer>

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
    QByteArray location; ///< for redirects
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

private:
    void makeCertificate();
    void answer(QTcpSocket* socket, const QByteArray& head);
    void sendSlowly(QTcpSocket* socket, const QByteArray& body, int pause);

    QHash<QString, ServedFile> _files;
    QList<QByteArray> _requests;
    QByteArray _authority;
};

} // namespace ferrobank
