// A feed of any bytes is read or refused; what was read goes through the choice and the notes.

#include "Platform/linux/updates/UpdateFailure.h"
#include "Platform/linux/updates/feed/Appcast.h"
#include "Platform/linux/updates/feed/ItemChoice.h"
#include "Platform/linux/updates/feed/ReleaseNotes.h"

#include <QtCore/QTimeZone>

#include <cstdlib>

using namespace ferrobank::updates;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    try {
        const std::string_view content(reinterpret_cast<const char*>(data), size);
        const Appcast appcast = readAppcast(content, QUrl(QStringLiteral("https://example.org/feed.xml")));
        ChoiceFacts facts;
        facts.installed = "1.0";
        facts.systemNames = QStringList{QStringLiteral("linux")};
        facts.now = QDateTime::fromMSecsSinceEpoch(1'800'000'000'000, QTimeZone::utc());
        const Choice choice = chooseItem(appcast.items, facts);
        if (choice.item && !choice.item->archive.isEmpty() &&
            choice.item->system != facts.systemNames.first())
            std::abort();
        for (const AppcastItem& item : appcast.items) {
            const QString text = notesAsText(item.notes, item.notesFormat);
            if (text.size() > 20'001 || item.version.empty() || item.length < 0)
                std::abort();
        }
    } catch (const UpdateFailure&) {
        return 0;
    }
    return 0;
}
