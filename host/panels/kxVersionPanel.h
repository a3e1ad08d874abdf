#pragma once

#include <QWidget>

class QAction;
class kxVersionView;

/// The versions of the open scene: a list, and what can be done with one.
class kxVersionPanel : public QWidget
{
    Q_OBJECT
public:
    explicit kxVersionPanel(QWidget* parent = nullptr);

Q_SIGNALS:
    void goToAsked(qint64 number);
    void saveAsAsked(qint64 number);

private:
    void update();
    void keepNow();
    void goTo();
    void saveAs();
    void giveName();
    /// Asks for a name; a null string where the user takes it back.
    QString askForName(const QString& title, const QString& name);

    kxVersionView* _view;
    QAction* _goTo;
    QAction* _name;
    QAction* _saveAs;
};
