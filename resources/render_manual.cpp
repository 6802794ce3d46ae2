// Build tool: prints the user manual, written in Markdown, to a PDF.
//
//     render_manual MANUAL.md OUT.pdf TITLE [DEPFILE]
//
// A4 pages set in DejaVu, a list of the sections with their pages after the manual's opening,
// and TITLE with the page number at the foot of every page. Pictures are found relative to the
// Markdown file (SVG drawings are the program's icons and are printed a line high); one that
// cannot be loaded, or that has no description and would be dropped, fails the run, so that the
// manual never ships with a hole where a picture was meant to be. DEPFILE, when given, names the
// Markdown file and the pictures, so that the build prints the manual again when any changes.

#include <QAbstractTextDocumentLayout>
#include <QFile>
#include <QFileInfo>
#include <QFontInfo>
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPalette>
#include <QPdfWriter>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextTable>
#include <QUrl>

#include <cstdio>

namespace {

// Page geometry in millimetres; the bottom margin holds the footer.
constexpr qreal kSideMarginMm = 22;
constexpr qreal kTopMarginMm = 20;
constexpr qreal kBottomMarginMm = 24;
constexpr qreal kFooterGapMm = 8;

const QColor kHeadingColour(0x1d, 0x3f, 0x6e);
const QColor kRuleColour(0x9a, 0xa4, 0xb1);
const QColor kHeaderRowColour(0xe6, 0xec, 0xf4);
const QColor kCodeColour(0xf1, 0xf3, 0xf5);
const QColor kFooterColour(0x55, 0x5d, 0x66);

QFont bodyFont()
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPointSizeF(10);
    // Any letter spacing keeps Qt from joining "fi" or "ff" into one glyph, which a search in the
    // PDF viewer or a copied command would not find again; this one is too small to see.
    font.setLetterSpacing(QFont::AbsoluteSpacing, 0.02);
    return font;
}

int fail(const QString &what)
{
    std::fprintf(stderr, "render_manual: %s\n", qPrintable(what));
    return 1;
}

/// The printable area of a page and where its footer goes, in the writer's device pixels.
struct PageFrame
{
    QRectF body;
    qreal footerTop = 0;
};

PageFrame pageFrame(const QPdfWriter &writer)
{
    const qreal perMm = writer.resolution() / 25.4;
    const qreal width = writer.width();
    const qreal height = writer.height();
    PageFrame frame;
    frame.body = QRectF(kSideMarginMm * perMm, kTopMarginMm * perMm, width - 2 * kSideMarginMm * perMm,
                        height - (kTopMarginMm + kBottomMarginMm) * perMm);
    frame.footerTop = frame.body.bottom() + kFooterGapMm * perMm;
    return frame;
}

/// One run of text of one format, as the document holds it.
struct Run
{
    int start = 0;
    int end = 0;
    QTextCharFormat format;
};

// The runs of \a block, read before any is changed: changing one may merge it with its neighbours.
QList<Run> runsOf(const QTextBlock &block)
{
    QList<Run> runs;
    for (auto it = block.begin(); !it.atEnd(); ++it)
        runs.append({it.fragment().position(), it.fragment().position() + it.fragment().length(),
                     it.fragment().charFormat()});
    return runs;
}

void setRunFormat(QTextDocument &doc, const Run &run, const QTextCharFormat &format)
{
    QTextCursor cursor(&doc);
    cursor.setPosition(run.start);
    cursor.setPosition(run.end, QTextCursor::KeepAnchor);
    cursor.setCharFormat(format);
}

// Sets the text of \a block in \a size points, dropping the importer's relative sizes so that
// the sizes are the ones chosen here. Code goes into the monospaced face, a little smaller
// unless \a codeBlock, where it is all there is.
void setBlockPointSize(QTextDocument &doc, const QTextBlock &block, qreal size, bool codeBlock)
{
    for (const Run &run : runsOf(block)) {
        QTextCharFormat format = run.format;
        const bool code = format.fontFixedPitch()
            || format.fontFamilies().toStringList().contains(QStringLiteral("monospace"));
        format.clearProperty(QTextFormat::FontSizeAdjustment);
        if (code) {
            format.setFontFamilies({QStringLiteral("DejaVu Sans Mono")});
            format.setFontFixedPitch(true);
        }
        format.setFontPointSize(code && !codeBlock ? size * 0.9 : size);
        setRunFormat(doc, run, format);
    }
}

void styleHeading(QTextDocument &doc, const QTextBlock &block)
{
    static const qreal sizes[] = {0, 21, 14.5, 11.5, 10.5, 10, 10};
    static const qreal above[] = {0, 0, 22, 14, 10, 8, 8};
    const int level = qBound(1, block.blockFormat().headingLevel(), 6);
    setBlockPointSize(doc, block, sizes[level], false);
    QTextCharFormat colour;
    colour.setForeground(kHeadingColour);
    colour.setFontWeight(QFont::Bold);
    QTextCursor cursor(block);
    cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    cursor.mergeCharFormat(colour);
    QTextBlockFormat format;
    format.setTopMargin(above[level]);
    format.setBottomMargin(level == 1 ? 14 : 5);
    cursor.mergeBlockFormat(format);
}

// Code blocks on a pale ground, code anywhere in the monospaced face at the body's size.
void styleBodyBlock(QTextDocument &doc, const QTextBlock &block)
{
    const bool fence = block.blockFormat().hasProperty(QTextFormat::BlockCodeFence);
    setBlockPointSize(doc, block, fence ? 8.5 : 10, fence);
    QTextBlockFormat format;
    format.setLineHeight(fence ? 100 : 118, QTextBlockFormat::ProportionalHeight);
    if (fence) {
        format.setBackground(kCodeColour);
        // A long line wraps rather than running off the page, where it would be cut.
        format.setNonBreakableLines(false);
        format.setTopMargin(block.previous().blockFormat().hasProperty(QTextFormat::BlockCodeFence) ? 0 : 3);
        format.setBottomMargin(block.next().blockFormat().hasProperty(QTextFormat::BlockCodeFence) ? 0 : 9);
    }
    QTextCursor(block).mergeBlockFormat(format);
}

// Whether every cell of \a column below the header holds pictures only.
bool isPictureColumn(const QTextTable *table, int column)
{
    for (int row = 1; row < table->rows(); ++row) {
        QTextCursor cell = table->cellAt(row, column).firstCursorPosition();
        cell.setPosition(table->cellAt(row, column).lastCursorPosition().position(), QTextCursor::KeepAnchor);
        const QString text = cell.selectedText().remove(QChar::ObjectReplacementCharacter).trimmed();
        if (!text.isEmpty() || cell.selectedText().isEmpty())
            return false;
    }
    return table->rows() > 1;
}

void styleTable(QTextTable *table)
{
    QTextTableFormat format = table->format();
    // No ruled lines: the shaded header row and the spacing keep the rows apart.
    format.setBorder(0);
    format.setCellSpacing(0);
    format.setCellPadding(3.5);
    format.setWidth(QTextLength(QTextLength::PercentageLength, 100));
    // Qt shares the width out evenly-ish; a column of icons needs little of it.
    QList<QTextLength> widths;
    for (int column = 0; column < table->columns(); ++column)
        widths << (isPictureColumn(table, column) ? QTextLength(QTextLength::PercentageLength, 12) : QTextLength());
    format.setColumnWidthConstraints(widths);
    format.setTopMargin(2);
    format.setBottomMargin(10);
    table->setFormat(format);
    for (int column = 0; column < table->columns(); ++column) {
        QTextTableCell cell = table->cellAt(0, column);
        QTextCharFormat head = cell.format();
        head.setBackground(kHeaderRowColour);
        cell.setFormat(head);
    }
}

void styleDocument(QTextDocument &doc)
{
    for (QTextBlock block = doc.begin(); block.isValid(); block = block.next()) {
        if (block.blockFormat().headingLevel() > 0)
            styleHeading(doc, block);
        else
            styleBodyBlock(doc, block);
    }
    for (QTextFrame *frame : doc.rootFrame()->childFrames())
        if (auto *table = qobject_cast<QTextTable *>(frame))
            styleTable(table);
}

// The picture in \a file and the size to print it at, in the document's pixels of 1/96 inch. An
// SVG drawing is one of the program's icons: printed a line high, drawn four times as fine.
QImage loadPicture(const QString &file, QSizeF *shown)
{
    QImageReader reader(file);
    const QSize size = reader.size();
    if (reader.format() == "svg" && size.isValid()) {
        reader.setScaledSize(size * 4);
        *shown = QSizeF(16.0 * size.width() / size.height(), 16);
    } else {
        *shown = size;
    }
    return reader.read();
}

// Checks that every picture loads and scales the wide ones down to \a textWidth (in the
// document's pixels). Appends the pictures' files to \a files.
bool fitImages(QTextDocument &doc, const QString &markdown, qreal textWidth, QStringList &files,
               QString *error)
{
    QList<Run> images;
    for (QTextBlock block = doc.begin(); block.isValid(); block = block.next())
        for (const Run &run : runsOf(block))
            if (run.format.isImageFormat())
                images << run;
    // Qt's reader drops a picture without a description, leaving no trace in the document.
    if (images.size() != markdown.count(QRegularExpression(QStringLiteral("!\\[[^\\]]*\\]\\(")))) {
        *error = QStringLiteral("a picture has no description (![description](file)) and would be left out");
        return false;
    }
    for (const Run &run : images) {
        QTextImageFormat format = run.format.toImageFormat();
        const QString file = doc.baseUrl().resolved(QUrl(format.name())).toLocalFile();
        QSizeF shown;
        const QImage image = loadPicture(file, &shown);
        if (image.isNull()) {
            *error = QStringLiteral("the picture %1 cannot be loaded").arg(file);
            return false;
        }
        files << file;
        doc.addResource(QTextDocument::ImageResource, QUrl(format.name()), image);
        shown *= qMin<qreal>(1.0, textWidth / shown.width());
        format.setWidth(shown.width());
        format.setHeight(shown.height());
        format.setVerticalAlignment(QTextCharFormat::AlignMiddle);
        setRunFormat(doc, run, format);
    }
    return true;
}

/// A line of the list of sections: the heading it names and the cell its page goes in.
struct ContentsLine
{
    QTextBlock heading;
    QTextTableCell pageCell;
};

// Inserts "Contents" and a table of the second-level headings before the first of them.
QList<ContentsLine> insertContents(QTextDocument &doc)
{
    QList<QTextBlock> sections;
    for (QTextBlock block = doc.begin(); block.isValid(); block = block.next())
        if (block.blockFormat().headingLevel() == 2)
            sections << block;
    if (sections.isEmpty() || !sections.first().previous().isValid())
        return {};

    QTextCursor cursor(sections.first().previous());
    cursor.movePosition(QTextCursor::EndOfBlock);
    QTextBlockFormat headingFormat;
    headingFormat.setHeadingLevel(2);
    cursor.insertBlock(headingFormat, QTextCharFormat());
    cursor.insertText(QStringLiteral("Contents"));
    styleHeading(doc, cursor.block());

    QTextTableFormat tableFormat;
    tableFormat.setBorder(0);
    tableFormat.setCellPadding(1.5);
    tableFormat.setWidth(QTextLength(QTextLength::PercentageLength, 100));
    tableFormat.setColumnWidthConstraints({QTextLength(QTextLength::PercentageLength, 90),
                                           QTextLength(QTextLength::PercentageLength, 10)});
    tableFormat.setBottomMargin(12);
    QTextTable *table = cursor.insertTable(int(sections.size()), 2, tableFormat);
    QTextBlockFormat right;
    right.setAlignment(Qt::AlignRight);
    QList<ContentsLine> lines;
    for (int row = 0; row < sections.size(); ++row) {
        QTextCursor name = table->cellAt(row, 0).firstCursorPosition();
        name.insertText(sections.at(row).text(), QTextCharFormat());
        table->cellAt(row, 1).firstCursorPosition().mergeBlockFormat(right);
        lines.append({sections.at(row), table->cellAt(row, 1)});
    }
    return lines;
}

// Lays the whole document out again. After an edit to a paginated document (a table inserted,
// a page break set), Qt's incremental layout can leave the blocks after a table that crosses a
// page unlaid: no height, never drawn, and the pages after them missing.
void settle(QTextDocument &doc)
{
    doc.markContentsDirty(0, doc.characterCount());
    doc.pageCount();
}

int pageOf(qreal y, qreal pageHeight)
{
    return int(y / pageHeight);
}

bool isHeading(const QTextBlock &block)
{
    return block.isValid() && block.blockFormat().headingLevel() > 0;
}

bool isCode(const QTextBlock &block)
{
    return block.isValid() && block.blockFormat().hasProperty(QTextFormat::BlockCodeFence);
}

qreal firstLineBottom(const QTextDocument &doc, const QTextBlock &block)
{
    const QRectF rect = doc.documentLayout()->blockBoundingRect(block);
    const QTextLayout *layout = block.layout();
    if (!layout || layout->lineCount() == 0)
        return rect.bottom();
    return rect.top() + layout->lineAt(0).rect().bottom();
}

void breakBefore(QTextDocument &doc, const QTextBlock &block)
{
    QTextBlockFormat format;
    format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
    QTextCursor(block).mergeBlockFormat(format);
    settle(doc);
}

// The first of the headings and the introducing line ("...:") right above \a first that belong
// with it on one page; \a first itself when there are none.
QTextBlock leadIn(QTextBlock first)
{
    QTextBlock above = first.previous();
    while (above.isValid() && above.text().isEmpty() && !isHeading(above))
        above = above.previous();
    if (!above.isValid() || (!isHeading(above) && !above.text().endsWith(QLatin1Char(':'))))
        return first;
    QTextBlock lead = above;
    while (isHeading(lead.previous()))
        lead = lead.previous();
    return lead;
}

// A heading left alone at the foot of a page goes to the next one, with the headings right above.
void keepHeadingWithText(QTextDocument &doc, const QTextBlock &heading)
{
    QTextBlock text = heading.next();
    while (text.isValid() && (isHeading(text) || text.text().isEmpty()))
        text = text.next();
    if (!text.isValid())
        return;
    const qreal pageHeight = doc.pageSize().height();
    const qreal top = doc.documentLayout()->blockBoundingRect(heading).top();
    if (pageOf(top, pageHeight) != pageOf(firstLineBottom(doc, text) - 1, pageHeight))
        breakBefore(doc, heading);
}

// Whether a table or a piece of code from \a top to \a bottom would cross a page end although it
// fits on a page: Qt would split a table row, or a command, in two.
bool torn(const QTextDocument &doc, qreal top, qreal bottom)
{
    const qreal pageHeight = doc.pageSize().height();
    return bottom - top <= pageHeight && pageOf(top, pageHeight) != pageOf(bottom - 1, pageHeight);
}

void keepTableWhole(QTextDocument &doc, QTextTable *table)
{
    QAbstractTextDocumentLayout *layout = doc.documentLayout();
    qreal bottom = 0;
    for (int column = 0; column < table->columns(); ++column) {
        const QTextBlock last = table->cellAt(table->rows() - 1, column).lastCursorPosition().block();
        bottom = qMax(bottom, layout->blockBoundingRect(last).bottom());
    }
    if (!torn(doc, layout->frameBoundingRect(table).top(), bottom))
        return;
    const QTextBlock first = doc.findBlock(table->firstPosition());
    const QTextBlock lead = leadIn(first);
    if (lead != first) {
        breakBefore(doc, lead);
        return;
    }
    QTextTableFormat format = table->format();
    format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
    table->setFormat(format);
    settle(doc);
}

void keepCodeWhole(QTextDocument &doc, const QTextBlock &first)
{
    QTextBlock last = first;
    while (isCode(last.next()))
        last = last.next();
    QAbstractTextDocumentLayout *layout = doc.documentLayout();
    if (torn(doc, layout->blockBoundingRect(first).top(), layout->blockBoundingRect(last).bottom()))
        breakBefore(doc, leadIn(first));
}

// Moves to the next page what would otherwise be torn apart. Each move can only push later text
// down, so one pass in reading order settles it.
void keepTogether(QTextDocument &doc)
{
    for (auto it = doc.rootFrame()->begin(); !it.atEnd(); ++it) {
        if (auto *table = qobject_cast<QTextTable *>(it.currentFrame()))
            keepTableWhole(doc, table);
        else if (isHeading(it.currentBlock()) && !isHeading(it.currentBlock().previous()))
            keepHeadingWithText(doc, it.currentBlock());
        else if (isCode(it.currentBlock()) && !isCode(it.currentBlock().previous()))
            keepCodeWhole(doc, it.currentBlock());
    }
}

void fillContents(QTextDocument &doc, const QList<ContentsLine> &lines)
{
    const qreal pageHeight = doc.pageSize().height();
    for (const ContentsLine &line : lines) {
        const qreal top = doc.documentLayout()->blockBoundingRect(line.heading).top();
        line.pageCell.firstCursorPosition().insertText(QString::number(pageOf(top, pageHeight) + 1));
    }
}

void drawFooter(QPainter &painter, const PageFrame &frame, const QString &title, int page, int pages)
{
    painter.save();
    painter.setPen(QPen(kRuleColour, 0));
    painter.drawLine(QPointF(frame.body.left(), frame.footerTop), QPointF(frame.body.right(), frame.footerTop));
    QFont font = bodyFont();
    font.setPointSizeF(8);
    painter.setFont(font);
    painter.setPen(kFooterColour);
    const QRectF line(frame.body.left(), frame.footerTop, frame.body.width(), frame.body.height());
    const int flags = Qt::AlignTop | Qt::TextSingleLine;
    const qreal gap = painter.fontMetrics().height() * 0.4;
    painter.drawText(line.adjusted(0, gap, 0, 0), flags | Qt::AlignLeft, title);
    painter.drawText(line.adjusted(0, gap, 0, 0), flags | Qt::AlignRight,
                     QStringLiteral("Page %1 of %2").arg(page).arg(pages));
    painter.restore();
}

bool printPages(QTextDocument &doc, QPdfWriter &writer, const PageFrame &frame, const QString &title)
{
    QPainter painter;
    if (!painter.begin(&writer))
        return false;
    const int pages = doc.pageCount();
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette.setColor(QPalette::Text, Qt::black);
    for (int page = 0; page < pages; ++page) {
        if (page > 0)
            writer.newPage();
        painter.save();
        painter.translate(frame.body.left(), frame.body.top() - page * frame.body.height());
        context.clip = QRectF(0, page * frame.body.height(), frame.body.width(), frame.body.height());
        painter.setClipRect(context.clip);
        doc.documentLayout()->draw(&painter, context);
        painter.restore();
        drawFooter(painter, frame, title, page + 1, pages);
    }
    return painter.end();
}

QByteArray depfileEscaped(const QString &path)
{
    return QFile::encodeName(path).replace(' ', "\\ ");
}

bool writeDepfile(const QString &path, const QString &target, const QStringList &sources)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    QByteArray text = depfileEscaped(target) + ':';
    for (const QString &source : sources)
        text += " \\\n  " + depfileEscaped(QFileInfo(source).absoluteFilePath());
    text += '\n';
    return file.write(text) == text.size();
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    if (args.size() != 4 && args.size() != 5) {
        std::fprintf(stderr, "usage: render_manual MANUAL.md OUT.pdf TITLE [DEPFILE]\n");
        return 2;
    }
    const QString source = args.at(1);
    const QString out = args.at(2);
    const QString title = args.at(3);
    QFile markdown(source);
    if (!markdown.open(QIODevice::ReadOnly))
        return fail(QStringLiteral("%1: %2").arg(source, markdown.errorString()));
    const QString text = QString::fromUtf8(markdown.readAll());
    if (text.trimmed().isEmpty())
        return fail(QStringLiteral("%1 is empty").arg(source));
    if (QFontInfo(bodyFont()).family() != bodyFont().family())
        std::fprintf(stderr, "render_manual: DejaVu Sans is not installed; the manual is set in %s\n",
                     qPrintable(QFontInfo(bodyFont()).family()));

    QPdfWriter writer(out);
    writer.setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF()));
    writer.setResolution(600);
    writer.setTitle(title);
    writer.setCreator(QStringLiteral("Korvane"));
    const PageFrame frame = pageFrame(writer);

    QTextDocument doc;
    doc.documentLayout()->setPaintDevice(&writer);
    doc.setDefaultFont(bodyFont());
    doc.setDocumentMargin(0);
    doc.setIndentWidth(22);
    doc.setBaseUrl(QUrl::fromLocalFile(QFileInfo(source).absoluteFilePath()));
    doc.setMarkdown(text, QTextDocument::MarkdownDialectGitHub);
    QStringList sources{source};
    QString error;
    // The document measures in pixels of 1/96 inch and scales them to the writer itself.
    if (!fitImages(doc, text, frame.body.width() * 96 / writer.resolution(), sources, &error))
        return fail(error);
    styleDocument(doc);
    const QList<ContentsLine> contents = insertContents(doc);
    doc.setPageSize(frame.body.size());
    settle(doc);
    keepTogether(doc);
    fillContents(doc, contents);
    settle(doc);

    if (!printPages(doc, writer, frame, title) || QFileInfo(out).size() == 0)
        return fail(QStringLiteral("cannot write %1").arg(out));
    if (args.size() == 5 && !writeDepfile(args.at(4), out, sources))
        return fail(QStringLiteral("cannot write %1").arg(args.at(4)));
    return 0;
}
