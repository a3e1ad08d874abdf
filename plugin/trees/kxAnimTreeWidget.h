#pragma once

#include <QTreeWidget>

#include <vector>

/// Base of every tree that lists animations.
///
/// Holds no animation data: a tree shows what the kernel holds and is built anew when that has changed.
class kxAnimTreeWidget : public QTreeWidget
{
    Q_OBJECT
public:
    explicit kxAnimTreeWidget(QWidget* parent = nullptr);
    ~kxAnimTreeWidget() override;

    /// Builds anew every living tree that lists whole animations.
    static void rebuildAnimationLists();

    QSize sizeHint() const override;

public Q_SLOTS:
    /// `saveStates`: rows stay expanded and selected as they are.
    virtual void rebuild(bool saveStates) = 0;

protected:
    /// True for the trees of animations and clips; a tree of channels or of structure follows by other ways.
    virtual bool listsAnimations() const;

private:
    static std::vector<kxAnimTreeWidget*> _trees; // the living ones, in the order of their construction
};
