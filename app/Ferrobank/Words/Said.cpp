#include "Ferrobank/Words/Said.h"

#include "Platform/Bundle.h"
#include "words/Sentences.h"

namespace ferrobank {

QString said(const QString& english)
{
    static const Sentences sentences = Sentences::ofTheUser(Bundle::main().resource("translations"));
    return sentences.size() == 0 ? english : QString::fromStdString(sentences.say(english.toStdString()));
}

} // namespace ferrobank
