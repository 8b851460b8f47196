#include "Ferrobank/Diagnostics/DiagnosticReport.h"

#include "Ferrobank/Diagnostics/PrivateWords.h"
#include "Ferrobank/Service.h"

#include <utility>

namespace ferrobank {

using namespace Qt::StringLiterals;

namespace {

/// A line of the report holds no more than this of what somebody else has worded.
constexpr qsizetype kMostWords = 400;

QString orUnknown(const QString& text)
{
    return text.isEmpty() ? u"unknown"_s : text;
}

QString word(LoginServiceStatus status)
{
    const std::string_view name = statusWord(status);
    return QString::fromUtf8(name.data(), qsizetype(name.size()));
}

QString inOneLine(const QString& words)
{
    const QString line = words.simplified();
    return line.size() <= kMostWords ? line : line.first(kMostWords) + u'…';
}

class Report {
public:
    explicit Report(PrivateWords words) : _words(std::move(words)) {}

    void add(const QString& title, const QString& fact) { _lines << u"%1: %2"_s.arg(title, fact); }

    /// For what others have worded.
    void addForeign(const QString& title, const QString& fact)
    {
        add(title, orUnknown(inOneLine(withoutPrivateWords(fact, _words))));
    }

    [[nodiscard]] QString text() const { return _lines.join(u'\n') + u'\n'; }

private:
    PrivateWords _words;
    QStringList _lines;
};

void addDrive(Report& report, const DiagnosticFacts& facts)
{
    report.add(u"Setup"_s, facts.setupComplete ? u"complete"_s : u"not complete"_s);
    if (!facts.drive) {
        report.add(u"Drive"_s, u"no status yet"_s);
        return;
    }
    const DriveStatus& drive = *facts.drive;
    QStringList words{drive.installed ? u"installed"_s : u"not installed"_s,
                      drive.mounted ? u"mounted"_s : u"not mounted"_s};
    if (drive.update_pending.value_or(false)) {
        words << u"update pending"_s;
    }
    report.add(u"Drive"_s, words.join(u", "_s));
    report.addForeign(u"Mount point"_s, drive.mountpoint);
    report.addForeign(u"Mount line"_s, facts.surroundings.mountLine);
    if (drive.attach_error) {
        report.addForeign(u"Attach error"_s, *drive.attach_error);
    }
}

void addChecks(Report& report, const DiagnosticFacts& facts)
{
    if (facts.checks.isEmpty()) {
        report.add(u"Checks"_s, u"not run"_s);
    }
    for (const CheckItem& check : facts.checks) {
        const QString detail = check.detail ? u" ("_s + *check.detail + u')' : QString();
        report.addForeign(u"Check"_s, check.title + u": "_s + rawValue(check.state) + detail);
    }
}

void addToolFailures(Report& report, const DiagnosticFacts& facts)
{
    if (facts.toolFailures.isEmpty()) {
        report.add(u"Tool failures"_s, u"none"_s);
    }
    for (const ToolJournal::Entry& entry : facts.toolFailures) {
        const QString times = entry.times > 1 ? u" (%1 times)"_s.arg(entry.times) : QString();
        const QString when = entry.at.toUTC().toString(u"yyyy-MM-dd HH:mm:ss'Z'"_s);
        report.addForeign(u"Tool failure"_s,
                          when + u' ' + entry.args.join(u' ') + times + u": "_s + entry.words);
    }
}

} // namespace

QString diagnosticReport(const DiagnosticFacts& facts)
{
    const SystemFacts& around = facts.surroundings;
    Report report({.home = facts.home, .user = around.user, .host = around.host});
    report.add(u"Ferrobank"_s, u"%1, %2"_s.arg(orUnknown(facts.version), orUnknown(around.installKind)));
    report.addForeign(u"Drive tool"_s, facts.toolVersion);
    report.add(u"Toolkit"_s, orUnknown(facts.toolkit));
    report.add(u"System"_s, orUnknown(facts.system));
    report.add(u"Kernel"_s, orUnknown(facts.kernel));
    report.add(u"Language"_s, orUnknown(facts.language));
    report.add(u"Desktop"_s, orUnknown(around.desktop));
    report.add(u"Session"_s, orUnknown(around.session));
    report.add(u"Service manager"_s, orUnknown(around.serviceManager));
    report.add(u"Tray host"_s, orUnknown(around.trayHost));
    report.add(u"Portals"_s, around.portals.isEmpty() ? u"none"_s : around.portals.join(u", "_s));
    report.add(u"Drive's service"_s, word(facts.agent));
    report.add(u"Menu at login"_s, word(facts.menu));
    addDrive(report, facts);
    addChecks(report, facts);
    addToolFailures(report, facts);
    return report.text();
}

} // namespace ferrobank
