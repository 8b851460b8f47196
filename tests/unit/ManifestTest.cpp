#include "Platform/linux/updates/install/Manifest.h"

#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/install/SafePath.h"
#include "support/TestProgram.h"

#include <QtTest/QTest>

#include <nlohmann/json.hpp>

using namespace ferrobank::updates;
using Json = nlohmann::json;

namespace {

Json file(const std::string& path)
{
    return {{"path", path},
            {"type", "file"},
            {"size", 3},
            {"executable", false},
            {"sha256", std::string(64, 'a')}};
}

Json manifest()
{
    return {{"format", 1},
            {"product", "org.ferrobank.Ferrobank"},
            {"version", "1.0.1"},
            {"channel", ""},
            {"system", "linux-x86_64"},
            {"requires", {{"glibc", "2.36"}, {"qt", "6.4.2"}}},
            {"entries", Json::array({file("Contents/Info.plist")})}};
}

bool isRefused(const std::string& text)
{
    try {
        std::ignore = readManifest(text);
        return false;
    } catch (const UpdateFailure& failure) {
        return failure.problem() == Problem::Archive;
    }
}

bool isRefused(const Json& entry)
{
    Json json = manifest();
    json["entries"].push_back(entry);
    return isRefused(json.dump());
}

Expectation expectation()
{
    return {"org.ferrobank.Ferrobank", "1.0.1", "1.0.0", "", "linux-x86_64", "2.36", "6.4.2"};
}

std::string refusal(const Expectation& expected)
{
    try {
        expectManifest(readManifest(manifest().dump()), expected);
        return {};
    } catch (const UpdateFailure& failure) {
        return failure.problem() == Problem::Version ? failure.what() : "another problem";
    }
}

} // namespace

class ManifestTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void completeManifestIsRead()
    {
        const Manifest read = readManifest(manifest().dump());
        QCOMPARE(read.version, "1.0.1");
        QCOMPARE(read.minimumQt, "6.4.2");
        QCOMPARE(read.totalSize, 3U);
        QCOMPARE(read.entries.size(), 1U);
        QCOMPARE(read.entries.at("Contents/Info.plist").sha256[0], 0xaa);
    }

    void missingOrWrongPartsAreRefused()
    {
        const Json whole = manifest();
        for (const auto& [key, value] : whole.items()) {
            if (key == "requires")
                continue;
            Json json = manifest();
            json.erase(key);
            QVERIFY2(isRefused(json.dump()), key.c_str());
            json[key] = Json::object();
            QVERIFY2(isRefused(json.dump()), key.c_str());
        }
        for (const char* text : {"", "{", "[]", "null", "3", "\"x\""})
            QVERIFY2(isRefused(std::string(text)), text);
        Json later = manifest();
        later["format"] = 2;
        QVERIFY(isRefused(later.dump()));
        QVERIFY(isRefused(std::string(200'000, '[')));
    }

    void unsafeEntriesAreRefused()
    {
        QVERIFY(!isRefused(file("Contents/a")));
        for (const char* path :
             {"", "/a", "../a", "a/../b", "a//b", "a/", ".", "a/./b", "Contents/Info.plist",
              "Contents/Resources/update-manifest.json", "Contents/Info.plist/x"})
            QVERIFY2(isRefused(file(path)), path);
        QVERIFY(isRefused(file(std::string("a\0b", 3))));
        for (const char* key : {"path", "type", "size", "executable", "sha256"}) {
            Json entry = file("b");
            entry.erase(key);
            QVERIFY2(isRefused(entry), key);
        }
        Json entry = file("b");
        entry["sha256"] = std::string(62, 'a');
        QVERIFY(isRefused(entry));
        entry["sha256"] = std::string(64, 'g');
        QVERIFY(isRefused(entry));
        for (const Json& size : {Json(-1), Json(1.5), Json("3"), Json(3'000'000'000ULL)}) {
            entry = file("b");
            entry["size"] = size;
            QVERIFY(isRefused(entry));
        }
        entry = file("b");
        entry["type"] = "device";
        QVERIFY(isRefused(entry));
    }

    void linksStayInside()
    {
        const auto link = [](const char* target) {
            return Json{{"path", "Contents/Linux/l"}, {"type", "link"}, {"target", target}};
        };
        for (const char* target : {"Ferrobank", "../Info.plist", "../../x", "a/b"})
            QVERIFY2(!isRefused(link(target)), target);
        for (const char* target : {"", "/etc/passwd", "../../../x", "a/../../../../x", "a//b", "./a", "a/..",
                                   "a/b/../c", "../a/../b"})
            QVERIFY2(isRefused(link(target)), target);
    }

    void linksThatLeadOutTogetherAreRefused()
    {
        // One leads to the top, and the other takes a step up from there.
        Json json = manifest();
        json["entries"].push_back({{"path", "Contents/Linux/up"}, {"type", "link"}, {"target", "../.."}});
        QVERIFY(!isRefused(json.dump()));
        json["entries"].push_back({{"path", "out"}, {"type", "link"}, {"target", "Contents/Linux/up/.."}});
        QVERIFY(isRefused(json.dump()));
    }

    void safePathsAreShortAndPlain()
    {
        QVERIFY(isSafePath("a/b.c/ä ö"));
        QVERIFY(isSafePath(std::string(255, 'a')));
        QVERIFY(!isSafePath(std::string(256, 'a')));
        std::string deep = "a";
        while (deep.size() < 1030)
            deep += "/a";
        QVERIFY(!isSafePath(deep));
        QVERIFY(isSafePath("..."));
    }

    void manifestMustBeExactlyWhatWasAnnounced()
    {
        QCOMPARE(refusal(expectation()), "");
        const auto with = [](auto change) {
            Expectation expected = expectation();
            change(expected);
            return refusal(expected);
        };
        QVERIFY(with([](auto& e) { e.product = "org.other"; }).find("another application") !=
                std::string::npos);
        QVERIFY(with([](auto& e) { e.system = "linux-aarch64"; }).find("computer") != std::string::npos);
        QVERIFY(with([](auto& e) { e.channel = "beta"; }).find("kind") != std::string::npos);
        QVERIFY(with([](auto& e) { e.version = "1.0.2"; }).find("announced") != std::string::npos);
        QVERIFY(with([](auto& e) { e.version = "1.0.1.0"; }).find("announced") != std::string::npos);
        QVERIFY(with([](auto& e) { e.installed = "1.0.1"; }).find("newer") != std::string::npos);
        QVERIFY(with([](auto& e) { e.installed = "1.0.2"; }).find("newer") != std::string::npos);
        QVERIFY(with([](auto& e) { e.glibc = "2.35"; }).find("newer system") != std::string::npos);
        QVERIFY(with([](auto& e) { e.qt = "6.2.4"; }).find("newer system") != std::string::npos);
    }
};

FERROBANK_TEST_WITHOUT_APPLICATION(ManifestTest)
#include "ManifestTest.moc"
