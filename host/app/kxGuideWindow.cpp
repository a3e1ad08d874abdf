#include "kxGuideWindow.h"

#include "kxHostFolders.h"

#include <QFile>
#include <QFileInfo>
#include <QTextBrowser>
#include <QVBoxLayout>

kxGuideWindow::kxGuideWindow(QWidget* parent) : QWidget(parent, Qt::Window)
{
    setObjectName(QStringLiteral("_guide"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("User Guide"));
    auto* const browser = new QTextBrowser(this);
    browser->setOpenExternalLinks(true);
    browser->setFrameShape(QFrame::NoFrame);
    browser->document()->setDocumentMargin(24);
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
}
