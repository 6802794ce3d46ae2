#include "WholeFile.h"

#include <QSaveFile>

namespace WholeFile {

bool write(const QString &path, const QByteArray &bytes, QString *error)
{
    // An unfinished temporary file is removed when the object goes. The flush is checked on its
    // own: commit() does not see a buffered write the kernel cut short (file size limit, full
    // disk) and would put the truncated file in place of the old one.
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush() && file.commit())
        return true;
    if (error)
        *error = file.errorString();
    return false;
}

} // namespace WholeFile
