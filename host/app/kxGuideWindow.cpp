#include "kxGuideWindow.h"

#include "kxHostFolders.h"

#include <widgets/kxColors.h>

#include <QFile>
#include <QFileInfo>
#include <QShortcut>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextTable>
#include <QVBoxLayout>

namespace
{
constexpr int Margin = 24; // pixels around the text

/// The lines of tables thin and calm, their cells with room.
void styleTables(QTextDocument& document)
{
    for (QTextFrame* const frame : document.rootFrame()->childFrames())
    {
        auto* const table = qobject_cast<QTextTable*>(frame);
        if (table == nullptr)
            continue;
        QTextTableFormat format = table->format();
        format.setBorderCollapse(true);
        format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
        format.setBorder(1);
        format.setBorderBrush(kxColors::border());
        format.setCellPadding(6);
        format.setCellSpacing(0);
        format.setWidth(QTextLength(QTextLength::PercentageLength, 100));
        format.setTopMargin(6);
        format.setBottomMargin(12);
        table->setFormat(format);
        for (int column = 0; column < table->columns(); ++column)
        {
            QTextTableCell cell = table->cellAt(0, column);
            QTextCharFormat head = cell.format();
            head.setBackground(kxColors::bar());
            cell.setFormat(head);
        }
    }
}

/// Pictures never wider than the text.
void fitPictures(QTextDocument& document, int width)
{
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        for (auto it = block.begin(); !it.atEnd(); ++it)
        {
            const QTextFragment fragment = it.fragment();
            if (!fragment.charFormat().isImageFormat())
                continue;
            QTextImageFormat format = fragment.charFormat().toImageFormat();
            format.setWidth(width);
            QTextCursor cursor(&document);
            cursor.setPosition(fragment.position());
            cursor.setPosition(fragment.position() + fragment.length(), QTextCursor::KeepAnchor);
            cursor.setCharFormat(format);
            break; // the block's fragments are of another shape
        }
}
} // namespace

kxGuideWindow::kxGuideWindow(QWidget* parent) : QWidget(parent, Qt::Window)
{
    setObjectName(QStringLiteral("_guide"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("User Guide"));
    auto* const browser = new QTextBrowser(this);
    browser->setOpenExternalLinks(true);
    browser->setFrameShape(QFrame::NoFrame);
    browser->document()->setDocumentMargin(Margin);
    connect(new QShortcut(QKeySequence::Cancel, this), &QShortcut::activated, this, &QWidget::close);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(browser);
    resize(820, 760);

    const QString path = kxHostFolders::find(QStringLiteral("docs/user-guide.md"));
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly))
    {
        browser->setPlainText(tr("The user guide lies in the folder docs of the application, which is not here."));
        return;
    }
    browser->setSearchPaths({QFileInfo(path).absolutePath()}); // for its pictures
    browser->setMarkdown(QString::fromUtf8(file.readAll()));
    styleTables(*browser->document());
    fitPictures(*browser->document(), width() - 3 * Margin);
    browser->moveCursor(QTextCursor::Start);
}
