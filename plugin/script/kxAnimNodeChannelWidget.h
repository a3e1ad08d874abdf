#pragma once

#include <curveeditor/kxAnimChannelWidget.h>
#include <frame/kxCallbacks.h>

/// The channels of one node in a flat list, whatever is selected in the scene.
class kxAnimNodeChannelWidget : public kxAnimChannelWidget
{
    Q_OBJECT
public:
    explicit kxAnimNodeChannelWidget(QWidget* parent = nullptr);
    ~kxAnimNodeChannelWidget() override;

    /// Null while none lives.
    static kxAnimNodeChannelWidget* instance();
    /// Adds the dock window "Node Channels", hidden and empty: the list in it is made when the window is first shown,
    /// and lists the clipping plane then. The window belongs to the dock window manager; without one nothing happens.
    static void addDock();
    /// Lists `node` in the dock window, which is added where it isn't there.
    static void show(const osg::NodePtr& node);
    /// The node that moves the application's clipping plane, null where there is none.
    static osg::NodePtr clippingNode();
    /// Lists it where nothing is listed.
    void listClippingNode();

    using kxAnimChannelWidget::rebuild;

public Q_SLOTS:
    /// Lists the node anew that was listed last.
    void rebuild(bool saveStates = true) override;
    /// Null empties the list.
    void rebuildFromNode(osg::NodePtr node);

protected Q_SLOTS:
    void rebuildTopLevelItems() override;

protected:
    bool listsSelection() const override;
    QString hint() const override;

private:
    kxInstancePointer<kxAnimNodeChannelWidget> _instance;
    class Holder;
    unsigned int _listedId = 0; // of the node
};
