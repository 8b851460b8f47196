#include "Ferrobank/Model/TildePath.h"

namespace ferrobank {

QString abbreviatedWithTilde(const QString& path, const QString& home)
{
    QString folder = home;
    while (folder.endsWith(u'/')) {
        folder.chop(1);
    }
    if (folder.isEmpty() || !path.startsWith(folder)) {
        return path;
    }
    const QString rest = path.sliced(folder.size());
    return rest.isEmpty() || rest.startsWith(u'/') ? u'~' + rest : path;
}

} // namespace ferrobank
