#include "TestEnv.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

namespace {

// A line as the reader sees it: markup gone, blanks run together.
QString plain(QString line)
{
    return line.remove(QLatin1Char('`')).remove(QStringLiteral("**")).simplified();
}

// The headings of the Markdown manual, outside code blocks, with their levels.
QList<std::pair<int, QString>> headingsOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    static const QRegularExpression heading(QStringLiteral("^(#{1,6})\\s+(.+)$"));
    QList<std::pair<int, QString>> headings;
    bool inCode = false;
    for (const QString &line : QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'))) {
        inCode ^= line.startsWith(QLatin1String("```"));
        if (const QRegularExpressionMatch match = heading.match(line); !inCode && match.hasMatch())
            headings.append({int(match.capturedLength(1)), plain(match.captured(2))});
    }
    return headings;
}

} // namespace

/// The manual the build prints beside Korvane: a real PDF, up to date, holding what its Markdown
/// says, with a list of sections that points at the right pages.
class TestManual : public QObject
{
    Q_OBJECT
    QString m_pdf;
    QString m_source;
    QStringList m_pages; ///< the text of each page as pdftotext lays it out; empty without pdftotext

    bool pageHasLine(int page, const QString &text) const
    {
        const QStringList lines = m_pages.value(page - 1).split(QLatin1Char('\n'));
        return std::any_of(lines.begin(), lines.end(), [&](const QString &line) { return plain(line) == text; });
    }

private slots:
    void initTestCase()
    {
        m_pdf = qEnvironmentVariable("KORVANE_MANUAL");
        m_source = TestEnv::sourceDir() + QStringLiteral("/docs/manual/Korvane.md");
        QVERIFY2(QFileInfo::exists(m_pdf), qPrintable(m_pdf + QStringLiteral(" is missing: building Korvane prints it")));
        const QString pdftotext = QStandardPaths::findExecutable(QStringLiteral("pdftotext"));
        if (pdftotext.isEmpty())
            return;
        QProcess reader;
        reader.start(pdftotext, {QStringLiteral("-layout"), QStringLiteral("-enc"), QStringLiteral("UTF-8"), m_pdf,
                                 QStringLiteral("-")});
        QVERIFY(reader.waitForFinished(60000) && reader.exitCode() == 0);
        // A form feed ends every page.
        m_pages = QString::fromUtf8(reader.readAllStandardOutput()).split(QLatin1Char('\f'));
        m_pages.removeLast();
    }
    void isAFreshPdfOfSeveralPages()
    {
        QFile pdf(m_pdf);
        QVERIFY(pdf.open(QIODevice::ReadOnly));
        const QByteArray bytes = pdf.readAll();
        QVERIFY(bytes.startsWith("%PDF-") && bytes.trimmed().endsWith("%%EOF"));
        QVERIFY2(QFileInfo(m_pdf).lastModified() >= QFileInfo(m_source).lastModified(),
                 "the manual is older than its Markdown: the build did not print it again");
        // Qt writes its page objects uncompressed, so they can be counted without a PDF reader.
        const qsizetype pages = QString::fromLatin1(bytes).count(QRegularExpression(QStringLiteral("/Type\\s*/Page\\b")));
        QVERIFY2(pages >= 6, qPrintable(QStringLiteral("only %1 pages").arg(pages)));
        if (m_pages.isEmpty())
            QSKIP("pdftotext (poppler-utils) is not installed: the page numbers are not checked");
        QCOMPARE(m_pages.size(), pages);
        for (int page = 1; page <= pages; ++page)
            QVERIFY2(m_pages.at(page - 1).contains(QStringLiteral("Page %1 of %2").arg(page).arg(pages)),
                     qPrintable(QStringLiteral("page %1 has no page number at its foot").arg(page)));
    }

    void headingIsPrinted_data()
    {
        if (m_pages.isEmpty())
            QSKIP("pdftotext (poppler-utils) is not installed: the printed text is not checked");
        QTest::addColumn<int>("level");
        QTest::addColumn<QString>("heading");
        for (const auto &[level, heading] : headingsOf(m_source))
            QTest::newRow(qPrintable(heading)) << level << heading;
    }

    // Every heading is printed; a section's heading is listed on the first page with the page it is on.
    void headingIsPrinted()
    {
        QFETCH(int, level);
        QFETCH(QString, heading);
        if (level != 2) {
            bool found = false;
            for (int page = 1; page <= m_pages.size() && !found; ++page)
                found = pageHasLine(page, heading);
            QVERIFY(found);
            return;
        }
        // A line of the list on the first page: the section, a gap, its page.
        static const QRegularExpression entry(QStringLiteral("^\\s*(\\S.*\\S)\\s{2,}(\\d+)\\s*$"),
                                              QRegularExpression::MultilineOption);
        int listed = 0;
        for (auto it = entry.globalMatch(m_pages.first()); it.hasNext();)
            if (const QRegularExpressionMatch match = it.next(); plain(match.captured(1)) == heading)
                listed = match.captured(2).toInt();
        QVERIFY2(listed > 0, "the section is not in the list on the first page");
        QVERIFY2(pageHasLine(listed, heading), qPrintable(QStringLiteral("the section is not on page %1").arg(listed)));
    }
};

QTEST_GUILESS_MAIN(TestManual)
#include "tst_manual.moc"
