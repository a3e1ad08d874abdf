#include "kxCodeDialog.h"

#include <python/kxConsoleLook.h>
#include <scene/kxScene.h>
#include <trust/kxCodeTrust.h>

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

#include <algorithm>

kxCodeDialog::kxCodeDialog(QWidget* parent)
    : QDialog(parent), _summary(new QLabel(this)), _list(new QListWidget(this)), _text(new QPlainTextEdit(this))
{
    setObjectName(QStringLiteral("_codeDialog"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Code of This Scene"));
    _summary->setObjectName(QStringLiteral("_codeSummary"));
    _summary->setTextFormat(Qt::PlainText);
    _summary->setWordWrap(true);
    _list->setObjectName(QStringLiteral("_codeList"));
    _list->setAccessibleName(tr("Pieces of code"));
    _list->setTextElideMode(Qt::ElideMiddle); // the number at the end stays
    _list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    _text->setObjectName(QStringLiteral("_codeText"));
    _text->setAccessibleName(tr("Code"));
    _text->setReadOnly(true);
    _text->setFont(kxConsoleLook::font());
    auto* const parts = new QSplitter(this);
    parts->addWidget(_list);
    parts->addWidget(_text);
    parts->setStretchFactor(1, 1);
    parts->setChildrenCollapsible(false);
    parts->setSizes({220, 500});
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    const auto add = [&](const QString& text, const char* name, kxCodeTrust::Answer given)
    {
        QPushButton* const button = buttons->addButton(text, QDialogButtonBox::ActionRole);
        button->setObjectName(QString::fromLatin1(name));
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, [given] { kxCodeTrust::the().answer(given); });
        _answers << button;
    };
    add(tr("Never Run It"), "_codeNever", kxCodeTrust::Never);
    add(tr("Run This Time"), "_codeThisTime", kxCodeTrust::ThisTime);
    add(tr("Always for This File"), "_codeAlways", kxCodeTrust::Always);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(_summary);
    layout->addWidget(parts, 1);
    layout->addWidget(buttons);
    resize(760, 440);
    connect(_list, &QListWidget::currentRowChanged, this, &kxCodeDialog::showPiece);
    connect(&kxCodeTrust::the(), &kxCodeTrust::changed, this, &kxCodeDialog::follow);
    follow();
}

QString kxCodeDialog::readable(const std::string& text)
{
    bool isWhole = true;
    const QString shown = kxSceneCode::readable(text, isWhole);
    return isWhole ? shown
                   : shown + tr("\n\n[It goes on; only the first %n characters are shown, so it can't be allowed.]",
                                nullptr, kxSceneCode::MostShown);
}

void kxCodeDialog::follow()
{
    const int row = std::max(0, _list->currentRow());
    _code = kxSceneCode::of(kxScene::the()->sceneryRoot());
    _list->clear();
    for (const kxSceneCode& piece : _code)
    {
        const QString name = tr("%1, step %2").arg(readable(piece.sequence)).arg(piece.step);
        _list->addItem(kxCodeTrust::the().mayRun(piece.text) ? name : tr("%1 (skipped)").arg(name));
    }
    const std::size_t waiting = kxCodeTrust::the().waiting().size();
    for (QPushButton* const answer : qAsConst(_answers))
        answer->setVisible(waiting > 0);
    _summary->setText(_code.empty() ? tr("This scene holds no code.")
                      : waiting == 0
                          ? tr("This scene holds code, which may run: %1.").arg(kxSceneCode::summary(_code.size()))
                          : kxCodeTrust::the().question());
    _list->setCurrentRow(std::min(row, _list->count() - 1));
    showPiece();
}

void kxCodeDialog::showPiece()
{
    const int row = _list->currentRow();
    const QString text =
        row < 0 || std::size_t(row) >= _code.size() ? QString() : readable(_code[std::size_t(row)].text);
    if (text != _text->toPlainText())
        _text->setPlainText(text);
}
