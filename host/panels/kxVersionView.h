#pragma once

#include <QTimer>
#include <QTreeView>

class kxVersionModel;
class kxVersionStore;

/// A list of versions with their pictures, and what changed from one to the next. What isn't known of that is found
/// out while nobody does anything, one version at a time.
class kxVersionView : public QTreeView
{
    Q_OBJECT
public:
    /// `hint` says what to do where there are no versions.
    explicit kxVersionView(const QString& hint, QWidget* parent = nullptr);

    kxVersionModel* versions() const { return _model; }
    /// Of the current row, 0 for none.
    qint64 current() const;

Q_SIGNALS:
    /// A double click or the return key on a version.
    void chosen(qint64 number);
    void currentVersionChanged();

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void compareOne();

    kxVersionModel* _model;
    QTimer _rest;
    qint64 _pressed = 0; ///< the version that a double click is on, which ends its gesture first
};
