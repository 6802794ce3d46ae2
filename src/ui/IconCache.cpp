#include "IconCache.h"

#include <QHash>

namespace IconCache {

QIcon icon(const QString &path)
{
    static QHash<QString, QIcon> icons;
    auto it = icons.constFind(path);
    if (it == icons.cend())
        it = icons.insert(path, QIcon(path));
    return *it;
}

} // namespace IconCache
