#pragma once

#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/worker/Download.h"

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QPair>

namespace ferrobank::updates {

/// What an answer began with.
struct AnswerHead {
    int status = 0;
    std::int64_t contentLength = -1; ///< -1 when the server does not say
    QByteArray contentRange;
    QByteArray entityTag;
    QUrl address; ///< after redirects
};

/// The connection ended before the body did: worth another try.
class BodyCutShort : public UpdateFailure {
public:
    BodyCutShort()
        : UpdateFailure(Problem::Network,
                        "The update server could not be used: it ended the answer too early.")
    {}
};

/// One GET, followed over redirects by the rules, in an event loop of its own. `begin` sees the answer's head
/// before the first byte and `body` every piece; both may throw UpdateFailure, which ends the request and is
/// passed on. Throws UpdateFailure (Network) for everything that goes wrong on the way. Returns when the body
/// is complete.
void get(const QUrl& url, const QList<QPair<QByteArray, QByteArray>>& headers, const NetworkRules& rules,
         const std::function<void(const AnswerHead&)>& begin,
         const std::function<void(const QByteArray&)>& body);

} // namespace ferrobank::updates
