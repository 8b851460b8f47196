#include "support/fakes/FakeCLI.h"

#include "Platform/ChildProcess.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

using namespace Qt::StringLiterals;

namespace ferrobank {

const QStringList FakeCLI::kStatus{u"status"_s, u"--json"_s};
const QStringList FakeCLI::kCheck{u"check"_s, u"--json"_s};
const QStringList FakeCLI::kRestart{u"restart"_s};
const QStringList FakeCLI::kRestartKeepMounted{u"restart"_s, u"--keep-mounted"_s};

FakeCLI::~FakeCLI()
{
    for (const auto& run : std::exchange(_waiting, {})) {
        run->answer = Answer::fails(u"the tool is gone"_s);
        run->ended.open();
    }
    if (_stream) {
        endLines();
    }
}

QString FakeCLI::url() const
{
    return u"/opt/Ferrobank.app/Contents/Helpers/ferrobank"_s;
}

QCoro::Task<QString> FakeCLI::run(QStringList args)
{
    _calls.append(args);
    auto run = std::make_shared<Run>();
    run->args = args;
    run->answer = _answers.value(args);
    if (_held.contains(args)) {
        _waiting.append(run);
    } else {
        run->ended.open();
    }
    return play(std::move(run));
}

QCoro::Task<QString> FakeCLI::play(std::shared_ptr<Run> run)
{
    auto end = run->ended.passage();
    co_await end;
    if (run->answer.launchFailure) {
        throw LaunchError(run->answer.launchFailure->toStdString());
    }
    if (run->answer.failure) {
        throw Failure(*run->answer.failure);
    }
    co_return run->answer.output;
}

QCoro::AsyncGenerator<QString> FakeCLI::lines(QStringList args)
{
    _calls.append(args);
    _stream = std::make_shared<Stream>();
    if (!_linesHeld) {
        _stream->lines = _lines;
        _stream->failure = _linesFailure;
        _stream->ended = true;
    }
    return play(_stream);
}

QCoro::AsyncGenerator<QString> FakeCLI::play(std::shared_ptr<Stream> stream)
{
    qsizetype given = 0;
    for (;;) {
        while (given < stream->lines.size()) {
            QString line = stream->lines.at(given);
            ++given;
            co_yield line;
        }
        if (stream->failure) {
            throw LaunchError(stream->failure->toStdString());
        }
        if (stream->ended) {
            co_return;
        }
        stream->more.shut();
        auto more = stream->more.passage();
        co_await more;
    }
}

void FakeCLI::answer(const QStringList& args, const Answer& answer)
{
    _answers.insert(args, answer);
    _held.removeAll(args);
    while (waiting(args) > 0) {
        finish(args, answer);
    }
}

void FakeCLI::answerStatus(const DriveStatus& status)
{
    answer(kStatus, Answer::text(toJson(status)));
}

void FakeCLI::hold(const QStringList& args)
{
    if (!_held.contains(args)) {
        _held.append(args);
    }
}

void FakeCLI::finish(const QStringList& args, const Answer& answer)
{
    const auto found = std::ranges::find(_waiting, args, [](const auto& run) { return run->args; });
    Q_ASSERT_X(found != _waiting.end(), "FakeCLI::finish", "no run with these arguments waits");
    const std::shared_ptr<Run> run = *found;
    _waiting.erase(found);
    run->answer = answer;
    run->ended.open();
}

int FakeCLI::waiting(const QStringList& args) const
{
    return static_cast<int>(std::ranges::count(_waiting, args, [](const auto& run) { return run->args; }));
}

void FakeCLI::streamLines(const QStringList& lines, std::optional<QString> launchFailure)
{
    _linesHeld = false;
    _lines = lines;
    _linesFailure = std::move(launchFailure);
}

void FakeCLI::holdLines()
{
    _linesHeld = true;
}

void FakeCLI::pushLine(const QString& line)
{
    Q_ASSERT_X(_stream, "FakeCLI::pushLine", "nobody reads lines");
    _stream->lines.append(line);
    _stream->more.open();
}

void FakeCLI::endLines(std::optional<QString> failure)
{
    Q_ASSERT_X(_stream, "FakeCLI::endLines", "nobody reads lines");
    const std::shared_ptr<Stream> stream = _stream;
    stream->failure = std::move(failure);
    stream->ended = true;
    stream->more.open();
}

int FakeCLI::callsOf(const QStringList& args) const
{
    return static_cast<int>(_calls.count(args));
}

QString toJson(const DriveStatus& status)
{
    nlohmann::ordered_json json{{"installed", status.installed},
                                {"mounted", status.mounted},
                                {"mountpoint", status.mountpoint.toStdString()}};
    const auto add = [&json](const char* key, const auto& value) {
        if (value) {
            json[key] = *value;
        }
    };
    add("volume_used", status.volume_used);
    add("store_bytes", status.store_bytes);
    add("saved", status.saved);
    if (status.attach_error) {
        json["attach_error"] = status.attach_error->toStdString();
    }
    add("update_pending", status.update_pending);
    json["log"] = status.log.toStdString();
    return QString::fromStdString(json.dump());
}

QString toJson(const CheckItem& row)
{
    nlohmann::ordered_json json{{"id", row.id.toStdString()},
                                {"title", row.title.toStdString()},
                                {"state", rawValue(row.state).toStdString()}};
    if (row.detail) {
        json["detail"] = row.detail->toStdString();
    }
    if (row.fix) {
        json["fix"] = row.fix->toStdString();
    }
    if (row.action) {
        json["action"] = rawValue(*row.action).toStdString();
    }
    return QString::fromStdString(json.dump());
}

} // namespace ferrobank
