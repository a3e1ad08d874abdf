#include <boost/python.hpp>

#include <script/kxScriptChannels.h>

#include <script/kxAnimNodeChannelWidget.h>
#include <script/kxScriptDoc.h>

namespace
{
/// What keys take their values from; a hidden window shows old ones.
kxAnimNodeChannelWidget* currentChannels()
{
    kxAnimNodeChannelWidget* const channels = kxAnimNodeChannelWidget::instance();
    if (channels != nullptr && !channels->isVisible())
        channels->updateValues(true);
    return channels;
}
} // namespace

void kxScriptChannels::keyAll()
{
    if (kxAnimNodeChannelWidget* const channels = currentChannels())
        channels->keyAll();
}

void kxScriptChannels::keySelected()
{
    if (kxAnimNodeChannelWidget* const channels = currentChannels())
        channels->keySelected();
}

void kxScriptChannels::animateClippingTransform()
{
    const osg::NodePtr node = kxAnimNodeChannelWidget::clippingNode();
    if (node != osg::NullFC)
        kxAnimNodeChannelWidget::show(node);
}

void kxScriptChannels::defineKeying()
{
    kxScriptDoc::define("keyAll", keyAll, kxScriptDoc("Sets a keyframe for all attributes.", {}));
    kxScriptDoc::define("keySelected", keySelected, kxScriptDoc("Sets a keyframe for selected attributes.", {}));
}

void kxScriptChannels::defineClipping()
{
    kxScriptDoc::define("animateClippingTransform", animateClippingTransform,
                        kxScriptDoc("Loads the clipping transform node into curve editor.", {}));
}
