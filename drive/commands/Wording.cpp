#include "commands/Wording.h"

#include "platform/ToolPrograms.h"
#include "words/Sentences.h"

#include <optional>

namespace ferrobank::drive {

std::string worded(std::string_view english)
{
    static const Sentences sentences =
        Sentences::ofTheUser(ownProgram().parent_path().parent_path() / "Resources/translations");
    return sentences.say(english);
}

CheckRow worded(CheckRow row)
{
    row.title = worded(row.title);
    for (std::optional<std::string>* const words : {&row.detail, &row.fix}) {
        if (*words) {
            *words = worded(**words);
        }
    }
    return row;
}

} // namespace ferrobank::drive
