#include "KorvaneImages.h"
#include "TestEnv.h"

#include <QColor>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QLineF>
#include <QMap>
#include <QRegularExpression>
#include <QTest>

#include <cmath>
#include <numbers>

namespace {

const QString prefix = QStringLiteral(":/new/prefix1/images/");

QImage picture(const QString &name)
{
    return QImage(prefix + name + QStringLiteral(".png")).convertToFormat(QImage::Format_ARGB32);
}

// Each pixel as transparent, dark or light. Recolouring a badge (green to red, say) leaves this
// map as it is; only a different outline or a different mark changes it.
QList<int> shapeClasses(const QImage &image)
{
    QList<int> classes;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor c = image.pixelColor(x, y);
            classes << (c.alpha() < 128 ? 0 : (c.lightness() >= 200 ? 2 : 1));
        }
    }
    return classes;
}

// A point of the gauge: the program turns the needle 2.6 degrees clockwise per degree Celsius,
// starting at 130 degrees anticlockwise from straight up.
QPointF onScale(double celsius, double radius, QPointF centre)
{
    const double angle = (-130.0 + 2.6 * celsius) * std::numbers::pi / 180.0;
    return centre + QPointF(radius * std::sin(angle), -radius * std::cos(angle));
}

} // namespace

class TestImages : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        initKorvaneImages();
    }

    void everyImageNamedInTheCodeIsCompiledIn()
    {
        const QString src = QDir(TestEnv::sourceDir()).filePath(QStringLiteral("src"));
        QVERIFY2(QDir(src).exists(), qPrintable(QStringLiteral("no source tree at %1 (KORVANE_SOURCE_DIR)").arg(src)));

        // Full resource paths anywhere (also inside HTML), and bare names handed to a helper.
        const QRegularExpression fullPath(QStringLiteral(R"re(:/new/prefix1/images/([A-Za-z0-9_]+\.png))re"));
        const QRegularExpression bareName(QStringLiteral(R"re("([A-Za-z0-9_]+\.png)")re"));
        QMap<QString, QString> firstUse; // image name -> file:line
        QDirIterator files(src, {"*.cpp", "*.h", "*.ui", "*.html"}, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.fileName()));
            const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
            for (int i = 0; i < lines.size(); ++i) {
                for (const QRegularExpression *pattern : {&fullPath, &bareName}) {
                    auto matches = pattern->globalMatch(lines[i]);
                    while (matches.hasNext()) {
                        const QString name = matches.next().captured(1);
                        if (!firstUse.contains(name))
                            firstUse.insert(name, QStringLiteral("%1:%2").arg(QDir(src).relativeFilePath(file.fileName())).arg(i + 1));
                    }
                }
            }
        }
        QVERIFY2(!firstUse.isEmpty(), "found no image names in the code: the scan itself is broken");

        QStringList missing;
        for (auto it = firstUse.cbegin(); it != firstUse.cend(); ++it) {
            if (!QFile::exists(prefix + it.key()))
                missing << QStringLiteral("%1 (used in src/%2)").arg(it.key(), it.value());
        }
        QVERIFY2(missing.isEmpty(), qPrintable(QStringLiteral("not among the images: ") + missing.join(QStringLiteral(", "))));
    }

    void everyImageLoadsAndIsNotBlank()
    {
        // A drawing the renderer could not read comes out empty, not as a build error.
        QDirIterator entries(prefix, {"*.png"}, QDir::Files);
        int count = 0;
        while (entries.hasNext()) {
            const QString path = entries.next();
            const QImage image = QImage(path).convertToFormat(QImage::Format_ARGB32);
            QVERIFY2(!image.isNull(), qPrintable(path + QStringLiteral(" does not load")));
            int opaque = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x)
                    opaque += qAlpha(image.pixel(x, y)) >= 128;
            }
            QVERIFY2(opaque >= image.width() * image.height() / 100, qPrintable(path + QStringLiteral(" is (nearly) empty")));
            ++count;
        }
        QVERIFY(count > 40);
    }

    void diskStatesDifferInShapeNotOnlyInColour()
    {
        const QStringList states{"harddisk_Ok", "harddisk_Wrg", "harddisk_Alr", "harddisk_Stop", "harddisk_NoSMART"};
        QList<QList<int>> maps;
        for (const QString &state : states)
            maps << shapeClasses(picture(state));
        // A quarter of the 9 x 9 pixel badge: an outline or a mark of its own, not a stray pixel.
        const int enough = 20;
        for (int a = 0; a < states.size(); ++a) {
            for (int b = a + 1; b < states.size(); ++b) {
                int differing = 0;
                for (int i = 0; i < maps[a].size(); ++i)
                    differing += maps[a][i] != maps[b][i];
                QVERIFY2(differing >= enough, qPrintable(QStringLiteral("%1 and %2 differ in %3 pixels only, beyond colour")
                                                             .arg(states[a], states[b])
                                                             .arg(differing)));
            }
        }
    }

    void needleAndDialsAgreeWithTheProgramsTurn()
    {
        // The gauge draws a 50 x 50 needle about (25,25) over an 80 x 80 dial; unturned, the
        // needle points at the 0 degree mark.
        const QImage needle = picture(QStringLiteral("needle"));
        QCOMPARE(needle.size(), QSize(50, 50));
        const QPointF pivot(25, 25);
        QPointF tip = pivot;
        for (int y = 0; y < needle.height(); ++y) {
            for (int x = 0; x < needle.width(); ++x) {
                const QPointF p(x + 0.5, y + 0.5);
                if (qAlpha(needle.pixel(x, y)) >= 128 && QLineF(pivot, p).length() > QLineF(pivot, tip).length())
                    tip = p;
            }
        }
        const QLineF toTip(pivot, tip);
        QVERIFY2(toTip.length() >= 21 && toTip.length() <= 25, qPrintable(QString::number(toTip.length())));
        const QLineF toZero(pivot, onScale(0, 23, pivot));
        QVERIFY2(std::min(toTip.angleTo(toZero), 360 - toTip.angleTo(toZero)) < 6,
                 qPrintable(QStringLiteral("needle points at %1 degrees, the 0 mark is at %2").arg(toTip.angle()).arg(toZero.angle())));

        for (const QString &dialName : {QStringLiteral("term_empty"), QStringLiteral("term_empty_F")}) {
            const QImage dial = picture(dialName);
            QCOMPARE(dial.size(), QSize(80, 80));
            const QPointF centre(40, 40);
            // The long marks at 0, 50 and 100 degrees stand where the needle will point.
            for (double celsius : {0.0, 50.0, 100.0}) {
                const QPoint mark = onScale(celsius, 21, centre).toPoint();
                QVERIFY2(dial.pixelColor(mark).lightness() > 150,
                         qPrintable(QStringLiteral("%1: no mark for %2 degrees").arg(dialName).arg(celsius)));
            }
            // The temperature is written in white into this box: it must stay dark and empty.
            const QRect textBox(20, 56, 40, 12);
            for (int y = textBox.top(); y <= textBox.bottom(); ++y) {
                for (int x = textBox.left(); x <= textBox.right(); ++x) {
                    const QColor c = dial.pixelColor(x, y);
                    QVERIFY2(c.alpha() == 255 && c.lightness() < 60,
                             qPrintable(QStringLiteral("%1: pixel %2,%3 in the text box is not dark").arg(dialName).arg(x).arg(y)));
                }
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestImages)
#include "tst_images.moc"
