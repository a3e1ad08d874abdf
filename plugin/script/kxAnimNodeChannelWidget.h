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
    /// Lists `node` in the dock window "Node Channels", which is made on the first call and belongs to the dock window
    /// manager; without one nothing happens.
    static void show(const osg::NodePtr& node);

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
    void paintEvent(QPaintEvent* event) override;

private:
    kxInstancePointer<kxAnimNodeChannelWidget> _instance;
    unsigned int _listedId = 0; // of the node
};
