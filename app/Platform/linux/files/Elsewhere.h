#pragma once

#include <QCoro/QCoroTask>
#include <QtCore/QHash>
#include <QtCore/QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace ferrobank {

/// Questions that may block for ever, such as those to a file system whose server has died, asked on threads
/// of their own. Main thread.
///
/// A question that has not been answered within its limit is given up: the caller hears "no answer", the
/// thread waits on. While it does, a new question under the same key has no answer either, so that a dead
/// mount never holds more than one thread a key.
class Elsewhere {
public:
    /// `question` runs on another thread and must own what it uses; its exceptions count as no answer. The
    /// task may outlive this object.
    template <typename T>
    QCoro::Task<std::optional<T>> ask(QString key, std::function<T()> question,
                                      std::chrono::milliseconds limit)
    {
        return answerTo<T>(_givenUp, key, question, limit);
    }

private:
    struct Errand;
    using Errands = QHash<QString, std::shared_ptr<Errand>>;

    /// Whether the work was done within the limit.
    static QCoro::Task<bool> run(std::shared_ptr<Errands> givenUp, QString key, std::function<void()> work,
                                 std::chrono::milliseconds limit);

    template <typename T>
    static QCoro::Task<std::optional<T>> answerTo(std::shared_ptr<Errands> givenUp, QString key,
                                                  std::function<T()> question,
                                                  std::chrono::milliseconds limit)
    {
        const auto answer = std::make_shared<std::optional<T>>();
        const std::function<void()> work = [answer, question] { *answer = question(); };
        const bool answered = co_await run(givenUp, key, work, limit);
        // An answer that comes too late belongs to the other thread alone.
        co_return answered ? std::move(*answer) : std::nullopt;
    }

    std::shared_ptr<Errands> _givenUp = std::make_shared<Errands>();
};

} // namespace ferrobank
