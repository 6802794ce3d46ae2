// Build tool: renders one SVG drawing to a PNG of a given pixel size.
//
//     render_icons in.svg out.png WIDTH HEIGHT
//
// The drawing's view box is stretched over the whole picture. Anything the
// SVG reader complains about (an element it does not support, a broken path)
// fails the run, so a drawing that would render differently from how it was
// drawn stops the build instead of shipping quietly.

#include <QByteArray>
#include <QImage>
#include <QPainter>
#include <QString>
#include <QSvgRenderer>
#include <QtGlobal>

#include <cstdio>

namespace {

bool readerComplained = false;

void noteMessage(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type != QtDebugMsg && type != QtInfoMsg)
        readerComplained = true;
    std::fprintf(stderr, "render_icons: %s\n", qPrintable(message));
}

int fail(const char *what, const char *path)
{
    std::fprintf(stderr, "render_icons: %s: %s\n", path, what);
    return 1;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 5) {
        std::fprintf(stderr, "usage: render_icons in.svg out.png WIDTH HEIGHT\n");
        return 2;
    }
    const char *in = argv[1];
    const char *out = argv[2];
    bool widthOk = false;
    bool heightOk = false;
    const int width = QByteArray(argv[3]).toInt(&widthOk);
    const int height = QByteArray(argv[4]).toInt(&heightOk);
    if (!widthOk || !heightOk || width < 1 || height < 1 || width > 1024 || height > 1024)
        return fail("WIDTH and HEIGHT must be whole numbers from 1 to 1024", in);

    qInstallMessageHandler(noteMessage);
    QSvgRenderer svg(QString::fromLocal8Bit(in));
    if (!svg.isValid() || readerComplained)
        return fail("not a drawing the SVG reader accepts", in);

    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        svg.render(&painter, QRectF(0, 0, width, height));
    }
    if (readerComplained)
        return fail("the SVG reader reported a problem while drawing", in);
    if (!image.convertToFormat(QImage::Format_ARGB32).save(QString::fromLocal8Bit(out), "PNG"))
        return fail("cannot write the PNG", out);
    return 0;
}
