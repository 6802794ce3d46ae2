#include "WholeFile.h"

#include <QSaveFile>

namespace WholeFile {

bool write(const QString &path, const QByteArray &bytes, QString *error)
{
    // An unfinished temporary file is removed when the object goes.
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    if (error)
        *error = file.errorString();
    return false;
}

} // namespace WholeFile
