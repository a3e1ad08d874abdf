#include <clipmaker/kxAnimSequenceGUIW.h>

#include <clipmaker/edits/kxClipTriggers.h>
#include <frame/kxMessageRead.h>

#include <QKXSpiner.h>
#include <kxController.h>
#include <kxMessageNames.h>
#include <kxServices.h>

#include <QComboBox>
#include <QLabel>

namespace
{
/// Texts by type; translated where they are shown.
const struct
{
    const char* title;
    const char* label;
} Texts[] = {
    {QT_TRANSLATE_NOOP("kxAnimSequenceGUIW", "Add Sequence"), QT_TRANSLATE_NOOP("kxAnimSequenceGUIW", "Sequences")},
    {QT_TRANSLATE_NOOP("kxAnimSequenceGUIW", "Add Viewpoint"), QT_TRANSLATE_NOOP("kxAnimSequenceGUIW", "Viewpoints")},
    {QT_TRANSLATE_NOOP("kxAnimSequenceGUIW", "Add Variant Set"),
     QT_TRANSLATE_NOOP("kxAnimSequenceGUIW", "Variant Sets")},
    {QT_TRANSLATE_NOOP("kxAnimSequenceGUIW", "Add Camera Track"),
     QT_TRANSLATE_NOOP("kxAnimSequenceGUIW", "Camera Tracks")},
};

/// What the host answers to the query `message` under `key`; empty where nobody does.
std::set<QString> asked(const char* message, const char* key)
{
    kxMessage query;
    kxController::call(message, query, 0);
    std::set<QString> names;
    getFromMessage(query, key, names);
    return names;
}

template <class Node>
std::set<QString> namesIn(const QList<Node>& nodes)
{
    std::set<QString> names;
    for (const Node& node : nodes)
        if (!node.isNull())
            names.insert(node.getName());
    return names;
}

template <class Service>
Service* service()
{
    return kxKernelServiceFactory::the().getService<Service>();
}
} // namespace

kxAnimSequenceGUIW::kxAnimSequenceGUIW(QWidget* parent) : QDialog(parent)
{
    setupUi(this);
}

void kxAnimSequenceGUIW::setType(unsigned int type)
{
    _names->clear();
    _names->setFocus();
    if (type > kxClipTriggers::CameraTrack)
        return;
    setWindowTitle(tr(Texts[type].title));
    _type->setText(tr(Texts[type].label));
    for (const QString& name : namesOf(type))
        _names->addItem(name);
}

void kxAnimSequenceGUIW::reset()
{
    _names->clear();
    _frame->setValue(0);
}

std::set<QString> kxAnimSequenceGUIW::namesOf(unsigned int type)
{
    if (type == kxClipTriggers::Sequence)
        return asked(kxMessageName::GetSequences, "sequences");
    if (type == kxClipTriggers::VariantSet)
        return asked(kxMessageName::GetVariants, "variants");
    const kxCameraService* const cameras = service<kxCameraService>();
    if (cameras == nullptr || (type == kxClipTriggers::CameraTrack && service<kxNodeService>() == nullptr))
        return {};
    return type == kxClipTriggers::Viewpoint ? namesIn(cameras->getViewpoints()) : namesIn(cameras->getCameraTracks());
}
