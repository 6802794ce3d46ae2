#include "KorvaneImages.h"

#include <QtGlobal>

// Outside any namespace: Q_INIT_RESOURCE names a global registration function.
void initKorvaneImages()
{
    Q_INIT_RESOURCE(images);
}
