#pragma once

#include "Platform/linux/updates/feed/AppcastItem.h"

#include <QtCore/QString>

namespace ferrobank::updates {

/// Release notes as text to show without any formatting: nothing in them can load, link or run. HTML loses
/// its tags, comments, scripts and styles, keeps its lines and lists; Markdown is shown as it is written.
/// Control characters and marks that turn the direction of writing are dropped; long notes are cut at a line.
/// Pure.
[[nodiscard]] QString notesAsText(const QString& notes, NotesFormat format);

} // namespace ferrobank::updates
