#pragma once

#include "kxQuestionBar.h"

class kxDocument;

/// Asks what to do where another program changed or removed the file of the open scene.
class kxFileBar : public kxQuestionBar
{
    Q_OBJECT
public:
    kxFileBar(kxDocument& document, QWidget* view);

private:
    void show(bool isGone);
    void reload();

    kxDocument& _document;
    QPushButton *_reload, *_save;
};
