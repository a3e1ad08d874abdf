#pragma once

#include <QDialog>

class QListWidget;
class QPushButton;
class QStackedWidget;
class kxPreferences;

/// All pages of settings: their names at the left, the page at the right. Pages come and go with their owners.
class kxPreferencesDialog : public QDialog
{
    Q_OBJECT
public:
    explicit kxPreferencesDialog(QWidget* parent);
    ~kxPreferencesDialog() override;

    /// Shows the dialog on the page of this name; an unknown or empty name leaves the page as it is.
    void openPage(const QString& name);

protected:
    void done(int result) override;

private:
    void fill();
    void releasePages();
    kxPreferences* currentPage() const;

    QListWidget* _names;
    QStackedWidget* _stack;
    QPushButton* _defaults;
};
