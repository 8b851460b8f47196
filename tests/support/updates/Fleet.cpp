#include "support/updates/Fleet.h"

#include "Platform/Clock.h"
#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/feed/Appcast.h"
#include "Platform/linux/updates/feed/Freshness.h"
#include "Platform/linux/updates/feed/ItemChoice.h"
#include "Platform/linux/updates/feed/SignedFeed.h"
#include "Platform/linux/updates/feed/VersionComparison.h"
#include "Platform/linux/updates/install/Trial.h"
#include "Platform/linux/updates/session/UpdateSession.h"
#include "support/updates/SigningKey.h"

#include <queue>

#include <algorithm>
#include <array>
#include <coroutine>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <tuple>
#include <utility>
#include <variant>

namespace ferrobank {
namespace {

using namespace Qt::StringLiterals;
using namespace updates;

using Time = std::int64_t; ///< seconds since the fleet began

constexpr Time kMinute = 60;
constexpr Time kHour = 60 * kMinute;
constexpr Time kDay = 24 * kHour;
constexpr std::int64_t kBeginning = 1'798'761'600; ///< 1 January 2027

QDateTime dateOf(Time time)
{
    return QDateTime::fromSecsSinceEpoch(kBeginning + time, Qt::UTC);
}

/// The library's distributions differ from one to the next; these do not.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : _engine(seed) {}

    std::int64_t between(std::int64_t least, std::int64_t most)
    {
        return least + static_cast<std::int64_t>(_engine() % static_cast<std::uint64_t>(most - least + 1));
    }

    bool happens(int percent) { return between(0, 99) < percent; }

    std::uint32_t number() { return static_cast<std::uint32_t>(_engine()); }

private:
    std::mt19937_64 _engine;
};

/// What is due, in its order.
class Agenda {
public:
    [[nodiscard]] Time now() const { return _now; }

    void in(Time delay, std::function<void()> act)
    {
        _entries.push({_now + std::max<Time>(delay, 0), _count++, std::move(act), {}});
    }

    void wake(Time delay, std::coroutine_handle<> sleeper)
    {
        _entries.push({_now + std::max<Time>(delay, 0), _count++, {}, sleeper});
    }

    void runUntil(Time end)
    {
        while (!_entries.empty() && _entries.top().time <= end) {
            const Entry next = _entries.top();
            _entries.pop();
            _now = next.time;
            if (next.sleeper)
                next.sleeper.resume();
            else
                next.act();
        }
        _now = std::max(_now, end);
    }

    /// Nothing is due any more. Those who sleep wake up and find their owners gone.
    void end()
    {
        for (; !_entries.empty(); _entries.pop()) {
            if (const auto sleeper = _entries.top().sleeper)
                sleeper.resume();
        }
    }

private:
    struct Entry {
        Time time;
        std::uint64_t order;
        std::function<void()> act;
        std::coroutine_handle<> sleeper; ///< in place of the act

        friend bool operator<(const Entry& one, const Entry& other)
        {
            return std::tie(other.time, other.order) < std::tie(one.time, one.order);
        }
    };

    std::priority_queue<Entry> _entries;
    Time _now = 0;
    std::uint64_t _count = 0;
};

/// One release and what is wrong with it.
struct Release {
    const char* version;
    int day;
    int crashesOn = 0;    ///< percent of the computers
    int damagedUntil = 0; ///< day; until then the archive on the server is not what was signed
    bool needsNewSystem = false;
    bool bringsNewKey = false;
    int phasedHours = 0;
};

constexpr std::array kReleases{
    Release{"1.0.0", -20},
    Release{"1.1.0", 30},
    Release{"1.2.0", 80},
    Release{"1.3.0", 130, 60},
    Release{"1.3.1", 134},
    Release{"1.4.0", 180},
    Release{"1.5.0", 225, 0, 232},
    Release{"1.6.0", 270, 0, 0, false, true},
    Release{"1.7.0", 330, 0, 0, false, true},
    Release{"1.8.0", 465, 0, 0, true, true},
    Release{"1.9.0", 520, 0, 0, true, true, 24},
    Release{"1.10.0", 580, 0, 0, true, true},
    Release{"1.11.0", 640, 40, 0, true, true},
    Release{"1.11.1", 643, 0, 0, true, true},
    Release{"1.12.0", 680, 0, 0, true, true},
};
constexpr int kNewKeySigns = 270; ///< beside the old one
constexpr int kOldKeyEnds = 560;
constexpr int kRenewedEvery = 25;
constexpr int kValidDays = 60;
constexpr int kAwayFrom = 370; ///< nobody renews the feed …
constexpr int kAwayUntil = 460;

const Release& releaseOf(const QString& version)
{
    return *std::ranges::find_if(kReleases,
                                 [&](const Release& one) { return version == QLatin1String(one.version); });
}

/// The keys that a copy trusts, by the version that is installed.
enum class KeyRing { Old, New };

/// The feed as it is served from one day on: really signed, and read once for each ring of keys.
class ServedFeed {
public:
    ServedFeed(int day, const std::vector<const SigningKey*>& keys) : _day(day)
    {
        QByteArray text =
            "<?xml version=\"1.0\"?><rss "
            "xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\" "
            "xmlns:fb=\"https://ferrobank.org/xml-namespaces/updates\"><channel><fb:validUntil>" +
            dateOf((day + kValidDays) * kDay).toString(Qt::RFC2822Date).toUtf8() + "</fb:validUntil>";
        for (const Release& release : kReleases) {
            if (release.day <= day)
                text += itemOf(release);
        }
        text += "</channel></rss>";
        std::string block;
        for (const SigningKey* key : keys)
            block += "edSignature: " + key->sign(text) + "\n";
        _file = text.toStdString() + "<!-- sparkle-signatures:\n" + block +
                "length: " + std::to_string(text.size()) + "\n-->\n";
    }

    [[nodiscard]] int day() const { return _day; }

    /// Throws what the reader threw.
    const Appcast& read(KeyRing ring, const TrustedKeys& keys)
    {
        auto& known = _read[ring];
        if (!known) {
            try {
                known =
                    readAppcast(verifiedFeedContent(_file, keys), QUrl(u"https://example.org/feed.xml"_s));
            } catch (const UpdateFailure& failure) {
                known = failure;
            }
        }
        if (const auto* failure = std::get_if<UpdateFailure>(&*known))
            throw *failure;
        return std::get<Appcast>(*known);
    }

private:
    static QByteArray itemOf(const Release& release)
    {
        QByteArray item = "<item><sparkle:version>" + QByteArray(release.version) +
                          "</sparkle:version><pubDate>" +
                          dateOf(release.day * kDay).toString(Qt::RFC2822Date).toUtf8() + "</pubDate>";
        if (release.needsNewSystem)
            item += "<sparkle:minimumSystemVersion>2.40</sparkle:minimumSystemVersion>";
        if (release.phasedHours > 0)
            item += "<sparkle:phasedRolloutInterval>" + QByteArray::number(release.phasedHours * 3600) +
                    "</sparkle:phasedRolloutInterval>";
        return item + "<enclosure url=\"" + release.version +
               ".tar.zst\" length=\"1000\" sparkle:edSignature=\"of " + release.version +
               "\" sparkle:os=\"linux\"/></item>";
    }

    int _day;
    std::string _file;
    std::map<KeyRing, std::optional<std::variant<Appcast, UpdateFailure>>> _read;
};

/// What all copies share.
struct World {
    explicit World(int lastDay)
        : oldRing({old.publicBase64(), spare.publicBase64()}),
          newRing({fresh.publicBase64(), spare.publicBase64()})
    {
        std::set<int> signings;
        for (int day = -10; day <= lastDay; day += kRenewedEvery) {
            if (day < kAwayFrom || day > kAwayUntil)
                signings.insert(day);
        }
        for (const Release& release : kReleases)
            signings.insert(release.day);
        for (const int day : signings) {
            std::vector<const SigningKey*> keys;
            if (day < kOldKeyEnds)
                keys.push_back(&old);
            if (day >= kNewKeySigns)
                keys.push_back(&fresh);
            feeds.emplace_back(day, keys);
        }
    }

    ServedFeed& feed()
    {
        const auto day = static_cast<int>(agenda.now() / kDay);
        const auto next =
            std::ranges::find_if(feeds, [day](const ServedFeed& one) { return one.day() > day; });
        return *std::prev(next);
    }

    Agenda agenda;
    SigningKey old;
    SigningKey fresh;
    SigningKey spare;
    TrustedKeys oldRing;
    TrustedKeys newRing;
    std::vector<ServedFeed> feeds;
    int toldToday = 0;
};

/// The clock of one computer: the time that passes is everybody's, the time of day is its own.
class CopyClock final : public Clock {
public:
    explicit CopyClock(Agenda& agenda) : _agenda(agenda) {}

    QCoro::Task<> sleep(std::chrono::milliseconds duration) override
    {
        Nap nap{_agenda, duration.count() / 1000};
        co_await nap;
    }

    [[nodiscard]] std::chrono::system_clock::time_point wallTime() const override
    {
        return std::chrono::system_clock::time_point(
            std::chrono::seconds(kBeginning + _agenda.now() + offset));
    }

    [[nodiscard]] QDateTime date() const { return dateOf(_agenda.now() + offset); }

    Time offset = 0;

private:
    struct Nap {
        Agenda& agenda;
        Time duration;

        [[nodiscard]] bool await_ready() const { return false; }

        void await_suspend(std::coroutine_handle<> handle) { agenda.wake(duration, handle); }

        void await_resume() const {}
    };

    Agenda& _agenda;
};

enum class Habit { AlwaysOn, Daily, Weekly, Rare };

/// One computer with one copy on it.
class Copy final : public UpdateWorker,
                   public UpdateDelegate,
                   public UpdateInterface,
                   public UpdateSurroundings,
                   public UpdateStateStore {
public:
    Copy(World& world, std::uint64_t seed, Time end);

    [[nodiscard]] CopyEnd result() const { return _end; }

    [[nodiscard]] const QString& installed() const { return _installed; }

    void switchOff() { endProcess(); }

    // UpdateWorker
    std::unique_ptr<WorkerRun> start(const QString& command, const QJsonObject& request,
                                     Listener listener) override;

    // UpdateDelegate
    bool willInstallUpdateOnQuit(const UpdateItem& /*item*/, std::function<void()> block) override
    {
        const bool mayInstall = _dice.happens(70); // else a window is open
        if (mayInstall)
            block();
        return mayInstall;
    }

    // UpdateInterface: nobody asks for anything
    void show(const UpdatePrompt& /*prompt*/) override {}

    void raise() override {}

    void close() override {}

    // UpdateSurroundings
    void notify(const QString& title, const QString& text) override
    {
        _end.lastToldDay = static_cast<int>(_world.agenda.now() / kDay);
        _end.lastNotice = title + u' ' + text;
        ++_world.toldToday;
    }

    void openPage(const QString& /*url*/) override {}

    // UpdateStateStore
    [[nodiscard]] UpdateState load() const override { return _state; }

    bool save(const UpdateState& state) override
    {
        if (!isDiskFull())
            _state = state;
        return !isDiskFull();
    }

private:
    class Run;
    using Answer = QJsonObject (Copy::*)(const QJsonObject&);

    void planDay();
    void begin();
    void click();
    bool startProgram();
    void endProcess();
    void quitInOrder();
    void install(const QString& version, bool relaunches);

    QJsonObject status(const QJsonObject& request);
    QJsonObject check(const QJsonObject& request);
    QJsonObject fetch(const QJsonObject& request);

    [[nodiscard]] QJsonObject failure(const char* problem, const char* sentence) const
    {
        return {{u"event"_s, u"failed"_s},
                {u"problem"_s, QLatin1String(problem)},
                {u"sentence"_s, QLatin1String(sentence)}};
    }

    [[nodiscard]] std::int64_t seconds() const { return kBeginning + _world.agenda.now() + _clock.offset; }

    [[nodiscard]] bool isDiskFull() const { return _world.agenda.now() < _fullUntil; }

    [[nodiscard]] bool isOnline() const { return _world.agenda.now() >= _offlineUntil; }

    [[nodiscard]] bool isBroken(const QString& version) const
    {
        return _sturdiness < releaseOf(version).crashesOn;
    }

    [[nodiscard]] KeyRing ring() const
    {
        return releaseOf(_installed).bringsNewKey ? KeyRing::New : KeyRing::Old;
    }

    World& _world;
    Dice _dice;
    CopyClock _clock;
    Time _last; ///< from then on the computer is in daily use
    Habit _habit;
    int _sturdiness = 0; ///< which releases crash here
    Time _fullUntil = 0;
    Time _offlineUntil = 0;
    Time _awayUntil = 0;

    QString _installed = u"1.0.0"_s;
    std::optional<Trial> _trial;
    std::vector<Ban> _bans;
    QJsonObject _staged; ///< the offer that waits
    UpdateState _state;
    std::unique_ptr<UpdateSession> _session;
    std::uint64_t _process = 0; ///< what belongs to an earlier one is void
    CopyEnd _end;
};

/// A command under way. Dropped with its session; what was released goes on.
class Copy::Run final : public WorkerRun {
public:
    explicit Run(std::shared_ptr<bool> isWanted) : _isWanted(std::move(isWanted)) {}

    ~Run() override
    {
        if (!_isReleased)
            *_isWanted = false;
    }

    void release() override { _isReleased = true; }

    bool waitForEvent(int /*milliseconds*/) override { return true; }

private:
    std::shared_ptr<bool> _isWanted;
    bool _isReleased = false;
};

Copy::Copy(World& world, std::uint64_t seed, Time end)
    : _world(world), _dice(seed), _clock(world.agenda), _last(end - 45 * kDay)
{
    const auto kind = _dice.between(0, 99);
    _habit = kind < 15 ? Habit::AlwaysOn : kind < 50 ? Habit::Daily : kind < 85 ? Habit::Weekly : Habit::Rare;
    _sturdiness = static_cast<int>(_dice.between(0, 99));
    _end.isOnOldSystem = _dice.happens(5);
    if (_dice.happens(2))
        _clock.offset = _dice.between(-3, 3) * kDay; // set by hand, a little wrong for ever
    _world.agenda.in(_dice.between(0, kDay), [this] { planDay(); });
}

/// What happens to the computer within a day.
void Copy::planDay()
{
    const Time now = _world.agenda.now();
    _world.agenda.in(kDay, [this] { planDay(); });
    if (_dice.between(0, 999) < 4)
        _fullUntil = now + _dice.between(1, 20) * kDay;
    if (_dice.between(0, 999) < 30)
        _offlineUntil = now + _dice.between(1, 40) * kHour;
    if (_dice.between(0, 9999) < 8)
        _offlineUntil = now + _dice.between(10, 40) * kDay;
    const Habit habit = now >= _last && _habit != Habit::AlwaysOn ? Habit::Daily : _habit;
    if (habit == Habit::AlwaysOn) {
        if (!_session || _dice.happens(4))
            begin();
        return;
    }
    if (habit == Habit::Rare && now >= _awayUntil && _dice.happens(15))
        _awayUntil = now + _dice.between(30, 300) * kDay;
    const bool isUsed = habit == Habit::Daily    ? _dice.happens(75)
                        : habit == Habit::Weekly ? _dice.happens(20)
                                                 : now >= _awayUntil && _dice.happens(40);
    if (!isUsed)
        return;
    begin();
    const std::uint64_t process = _process;
    _world.agenda.in(_dice.between(20 * kMinute, 11 * kHour), [this, process] {
        // An update may have started it again meanwhile; the computer is switched off in any case.
        if (_process < process || !_session)
            return;
        if (_dice.happens(12))
            endProcess(); // the plug
        else
            quitInOrder();
    });
}

/// Somebody starts the program, and tries again if it does not come.
void Copy::begin()
{
    if (_session)
        quitInOrder();
    const Time right = std::abs(_clock.offset) > 3 * kDay ? 0 : _clock.offset;
    _clock.offset = right;
    if (_dice.happens(2)) {
        _clock.offset = _dice.between(-1500, 1500) * kDay;
        _world.agenda.in(_dice.between(10, 600), [this, right] { _clock.offset = right; });
    }
    for (int attempt = 0; attempt < 4 && !startProgram(); ++attempt) {
    }
}

/// What the executable does at its start, and whether the program then runs.
bool Copy::startProgram()
{
    ++_end.starts;
    switch (actAtStart(_trial, _installed.toStdString(), _session != nullptr)) {
    case StartAct::Run:
        break;
    case StartAct::TakeBack:
        ++_end.takenBack;
        _bans = withFailure(_bans, _trial->version, seconds());
        _installed = QString::fromStdString(_trial->previous);
        _staged = {};
        _trial.reset();
        break;
    case StartAct::Forget:
        _trial.reset();
        break;
    }
    if (_dice.happens(2))
        return false; // no display yet: the start ends, and counts for nothing
    if (isBroken(_installed)) {
        ++_end.failedStarts;
        if (_trial && _trial->version == _installed.toStdString())
            ++_trial->starts;
        return false;
    }
    ++_process;
    UpdateConfiguration configuration;
    configuration.version = _installed;
    configuration.feed = QUrl(u"https://example.org/feed.xml"_s);
    configuration.keys = {"two keys, see ring()"};
    configuration.automaticChecks = true;
    configuration.automaticDownload = true;
    if (_trial && _trial->version == _installed.toStdString())
        ++_trial->starts;
    _session = std::make_unique<UpdateSession>(SessionCollaborators{
        .configuration = configuration,
        .bundle = u"/bundle"_s,
        .delegate = *this,
        .interface = *this,
        .surroundings = *this,
        .worker = *this,
        .clock = _clock,
        .states = *this,
        .quit =
            [this] {
                const std::uint64_t process = _process;
                _world.agenda.in(1, [this, process] {
                    if (process == _process)
                        endProcess();
                });
            },
        .isOnTrial = [this] { return _trial.has_value(); },
        .versionInPlace = [this] { return _installed; },
        .random = [this] { return _dice.number(); },
    });
    _session->start();
    return true;
}

void Copy::endProcess()
{
    _session.reset();
    _end.installed = _installed;
}

void Copy::quitInOrder()
{
    if (!_session)
        return;
    _session->applicationQuits();
    endProcess();
}

/// The application has ended; what waits takes its place.
void Copy::install(const QString& version, bool relaunches)
{
    const bool isTooLate = _session || _staged.isEmpty() || _staged[u"version"_s].toString() != version;
    if (isTooLate)
        return;
    _trial = Trial{version.toStdString(), _installed.toStdString(), 0};
    _installed = version;
    _end.installed = version;
    _staged = {};
    for (int attempt = 0; relaunches && attempt < 4 && !startProgram(); ++attempt) {
    }
}

QJsonObject Copy::status(const QJsonObject& /*request*/)
{
    _bans = startedInTime(_bans, seconds());
    QJsonObject event{{u"event"_s, u"status"_s},
                      {u"place"_s, QJsonObject{{u"mayReplace"_s, true}, {u"isFolder"_s, true}}}};
    if (!_staged.isEmpty() && !_trial)
        event[u"staged"_s] = _staged;
    for (const Ban& ban : _bans) {
        if (!isNewer(ban.version, _installed.toStdString()))
            continue;
        event[u"takenBack"_s] = QJsonObject{
            {u"version"_s, QString::fromStdString(ban.version)},
            {u"times"_s, ban.times},
            {u"until"_s, QDateTime::fromSecsSinceEpoch(endOf(ban), Qt::UTC).toString(Qt::ISODate)}};
        break;
    }
    return event;
}

QJsonObject Copy::check(const QJsonObject& request)
{
    ++_end.checks;
    // A certificate is valid for some months: far from the right time no server is believed.
    if (!isOnline() || std::abs(_clock.offset) > 90 * kDay)
        return failure("network", "The update server could not be used.");
    Freshness seen;
    seen.highest = request[u"highestVersionSeen"_s].toString().toStdString();
    seen.newest = QDateTime::fromString(request[u"newestDateSeen"_s].toString(), Qt::ISODate);
    seen.validUntil = QDateTime::fromString(request[u"validUntilSeen"_s].toString(), Qt::ISODate);
    try {
        const Appcast& appcast =
            _world.feed().read(ring(), ring() == KeyRing::New ? _world.newRing : _world.oldRing);
        expectFresh(appcast, seen, _clock.date());
        const Freshness freshness = freshnessOf(appcast, _clock.date());
        ChoiceFacts facts;
        facts.installed = _installed.toStdString();
        facts.systemVersion = _end.isOnOldSystem ? "2.36" : "2.41";
        facts.systemNames = QStringList{u"linux"_s};
        facts.rolloutGroup = static_cast<unsigned>(request[u"group"_s].toInteger()) % 7;
        facts.now = _clock.date();
        for (const Ban& ban : _bans) {
            if (isInForce(ban, seconds()))
                facts.bannedVersions.push_back(ban.version);
        }
        const Choice choice = chooseItem(appcast.items, facts);
        QJsonObject event{{u"event"_s, u"checked"_s},
                          {u"place"_s, QJsonObject{{u"mayReplace"_s, true}, {u"isFolder"_s, true}}},
                          {u"highestVersion"_s, QString::fromStdString(freshness.highest)},
                          {u"newestDate"_s, freshness.newest.toString(Qt::ISODate)},
                          {u"validUntil"_s, freshness.validUntil.toString(Qt::ISODate)}};
        if (choice.item) {
            Offer offer;
            offer.version = offer.displayVersion = QString::fromStdString(choice.item->version);
            offer.signature = QString::fromStdString(choice.item->signature);
            offer.length = choice.item->length;
            offer.phased = choice.item->phasedRolloutInterval.count() > 0;
            event[u"offer"_s] = offerToJson(offer);
        } else {
            const bool isOld = choice.reason == NoUpdate::SystemTooOld;
            event[u"reason"_s] = isOld                                  ? u"systemTooOld"_s
                                 : choice.reason == NoUpdate::TakenBack ? u"takenBack"_s
                                 : choice.reason == NoUpdate::OnLatest  ? u"onLatest"_s
                                                                        : u"unknown"_s;
            event[u"latest"_s] = choice.latest ? choice.latest->displayVersion : QString();
        }
        return event;
    } catch (const UpdateFailure& failure) {
        return {{u"event"_s, u"failed"_s},
                {u"problem"_s, QString::fromStdString(std::string(problemWord(failure.problem())))},
                {u"sentence"_s, QString::fromUtf8(failure.what())}};
    }
}

QJsonObject Copy::fetch(const QJsonObject& request)
{
    const QJsonObject offer = request[u"offer"_s].toObject();
    const Release& release = releaseOf(offer[u"version"_s].toString());
    const auto day = static_cast<int>(_world.agenda.now() / kDay);
    _staged = {};
    if (!isOnline())
        return failure("network", "The update could not be downloaded.");
    if (isDiskFull())
        return failure("space", "There is not enough room for the update.");
    ++_end.downloads;
    if (_dice.happens(3))
        return failure("network", "The update server ended the answer too early.");
    const bool isKnown = ring() == KeyRing::New ? release.day >= kNewKeySigns : release.day < kOldKeyEnds;
    if (day < release.damagedUntil || !isKnown)
        return failure("signature", "The downloaded update is not signed by its maker.");
    _staged = offer;
    return {{u"event"_s, u"staged"_s}};
}

std::unique_ptr<WorkerRun> Copy::start(const QString& command, const QJsonObject& request, Listener listener)
{
    auto isWanted = std::make_shared<bool>(true);
    auto run = std::make_unique<Run>(isWanted);
    const auto answerIn = [&](Time delay, Answer answer) {
        _world.agenda.in(delay, [this, isWanted, answer, request, listener = std::move(listener)] {
            if (!*isWanted)
                return;
            const QJsonObject event = (this->*answer)(request);
            listener(event);
        });
    };
    if (command == "status"_L1) {
        answerIn(1, &Copy::status);
    } else if (command == "check"_L1) {
        answerIn(3, &Copy::check);
    } else if (command == "fetch"_L1) {
        answerIn(_dice.between(1, 20) * kMinute, &Copy::fetch);
    } else if (command == "healthy"_L1) {
        const bool works = !_dice.happens(5);
        _world.agenda.in(2, [this, works, isWanted, listener = std::move(listener)] {
            if (works && _session)
                _trial.reset();
            if (*isWanted)
                listener({{u"event"_s, works ? u"healthy"_s : u"failed"_s}, {u"problem"_s, u"busy"_s}});
        });
    } else if (command == "install"_L1) {
        const bool relaunches = request[u"relaunch"_s].toBool();
        _world.agenda.in(1, [this, isWanted, relaunches, listener = std::move(listener)] {
            if (!*isWanted)
                return;
            if (isDiskFull()) {
                if (_session)
                    listener(failure("space", "The update could not be prepared."));
                return;
            }
            const QString version = _staged[u"version"_s].toString();
            if (relaunches)
                listener({{u"event"_s, u"waiting"_s}});
            _world.agenda.in(3, [this, version, relaunches] { install(version, relaunches); });
        });
    }
    return run;
}

} // namespace

FleetResult runFleet(const FleetOptions& options)
{
    World world(options.days);
    std::vector<std::unique_ptr<Copy>> copies;
    for (int i = 0; i < options.copies; ++i)
        copies.push_back(std::make_unique<Copy>(
            world, options.seed * 1'000'003 + static_cast<std::uint64_t>(i), options.days * kDay));
    FleetResult result;
    for (const Release& release : kReleases)
        result.releases.append(QLatin1String(release.version));
    for (int day = 0; day < options.days; ++day) {
        world.agenda.runUntil((day + 1) * kDay);
        FleetDay sample;
        sample.day = day;
        sample.told = std::exchange(world.toldToday, 0);
        sample.copies.resize(kReleases.size());
        for (const auto& copy : copies)
            ++sample.copies[static_cast<std::size_t>(result.releases.indexOf(copy->installed()))];
        result.days.push_back(std::move(sample));
    }
    for (const auto& copy : copies) {
        copy->switchOff();
        result.copies.push_back(copy->result());
    }
    world.agenda.end();
    return result;
}

QByteArray fleetPicture(const FleetResult& result)
{
    constexpr int kLeft = 56;
    constexpr int kTop = 40;
    constexpr int kWidth = 730;
    constexpr int kHeight = 300;
    constexpr int kToldTop = kTop + kHeight + 46;
    constexpr int kToldHeight = 50;
    constexpr int kDaysBetweenPoints = 2;
    constexpr std::array kColours{"#9aa5b1", "#6f9bd1", "#4f81bd", "#c0504d", "#3f9c8f",
                                  "#2f7d6f", "#8064a2", "#b08a3e", "#d1a54a", "#6a994e",
                                  "#7fb069", "#a7c957", "#bc4b51", "#5b8e7d", "#1d6f42"};
    const auto days = static_cast<int>(result.days.size());
    const auto copies = static_cast<int>(result.copies.size());
    if (days < 2 || copies == 0)
        return {};
    const auto x = [&](int day) { return kLeft + day * kWidth / (days - 1); };
    const auto number = [](int value) { return QByteArray::number(value); };
    const auto text = [&](int left, int top, const QByteArray& what, const char* more = "") {
        return "<text x=\"" + number(left) + "\" y=\"" + number(top) + "\" " + more + ">" + what +
               "</text>\n";
    };
    QByteArray svg =
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"900\" height=\"470\" viewBox=\"0 0 900 470\" "
        "font-family=\"sans-serif\" font-size=\"11\">\n<title>A simulated fleet over two years</title>\n"
        "<rect width=\"900\" height=\"470\" fill=\"#ffffff\"/>\n";
    svg += text(kLeft, 24, number(copies) + " simulated copies, by installed version", "font-size=\"14\"");
    std::vector<int> below(static_cast<std::size_t>(days), 0);
    for (std::size_t release = 0; release < kReleases.size(); ++release) {
        QByteArray upper;
        QByteArray lower;
        for (int day = 0; day < days; day += kDaysBetweenPoints) {
            const auto at = static_cast<std::size_t>(day);
            const auto y = [&](int count) { return number(kTop + kHeight - count * kHeight / copies); };
            lower.prepend(number(x(day)) + "," + y(below[at]) + " ");
            below[at] += result.days[at].copies[release];
            upper += number(x(day)) + "," + y(below[at]) + " ";
        }
        svg += "<polygon fill=\"" + QByteArray(kColours[release % kColours.size()]) + "\" points=\"" + upper +
               lower.trimmed() + "\"/>\n";
        const int line = kTop + kHeight - 8 - static_cast<int>(release) * 19;
        svg += "<rect x=\"" + number(kLeft + kWidth + 18) + "\" y=\"" + number(line - 9) +
               "\" width=\"11\" height=\"11\" fill=\"" + kColours[release % kColours.size()] + "\"/>\n";
        svg += text(kLeft + kWidth + 34, line, kReleases[release].version);
    }
    for (const int percent : {0, 50, 100})
        svg += text(kLeft - 6, kTop + kHeight - percent * kHeight / 100 + 4, number(percent) + " %",
                    "text-anchor=\"end\"");
    for (int day = 0; day < days; day += 91)
        svg += text(x(day), kTop + kHeight + 16, "day " + number(day), "text-anchor=\"middle\"");
    int mostTold = 1;
    for (const FleetDay& day : result.days)
        mostTold = std::max(mostTold, day.told);
    svg += text(kLeft, kToldTop - 6,
                "People who were told something, each day (at most " + number(mostTold) + ")");
    QByteArray bars;
    for (const FleetDay& day : result.days) {
        if (day.told > 0)
            bars += "M" + number(x(day.day)) + " " + number(kToldTop + kToldHeight) + "v-" +
                    number(std::max(1, day.told * kToldHeight / mostTold));
    }
    svg += "<path d=\"" + bars + "\" stroke=\"#c0504d\" stroke-width=\"1\" fill=\"none\"/>\n";
    svg += "<path d=\"M" + number(kLeft) + " " + number(kToldTop + kToldHeight) + "h" + number(kWidth) +
           "\" stroke=\"#888888\"/>\n";

    bool isLower = false;

    struct Mark {
        int day;
        const char* text;
    };

    for (const Mark& mark : {Mark{130, "1.3.0 crashes"}, Mark{225, "1.5.0 damaged"}, Mark{270, "new key"},
                             Mark{kAwayFrom + kValidDays, "feed not renewed"},
                             Mark{kOldKeyEnds, "old key ends"}, Mark{640, "1.11.0 crashes"}})
    {
        if (mark.day >= days)
            continue;
        svg += "<path d=\"M" + number(x(mark.day)) + " " + number(kTop) + "v" +
               number(kToldTop + kToldHeight - kTop) + "\" stroke=\"#222222\" stroke-dasharray=\"2 3\"/>\n";
        svg += text(x(mark.day), kToldTop + kToldHeight + (isLower ? 26 : 14), mark.text,
                    "text-anchor=\"middle\" font-size=\"9\"");
        isLower = !isLower; // two that are close do not cover each other
    }
    return svg + "</svg>\n";
}

} // namespace ferrobank
