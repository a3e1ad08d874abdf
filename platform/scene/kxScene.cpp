#include <scene/kxScene.h>

#include <osg/AnimObject.h>
#include <osg/ChangeList.h>
#include <scene/kxChosenCamera.h>

#include <QTimer>

#include <algorithm>

using namespace osg;

/// Turns marked changes into the scene's signals, each once a turn of the event loop.
class kxScene::Watcher : public ChangeListener
{
public:
    explicit Watcher(kxScene* scene) : _scene(scene)
    {
        _timer.setSingleShot(true);
        _timer.setInterval(0);
        QObject::connect(&_timer, &QTimer::timeout, scene, [this] { flush(); });
    }

    void containerChanged(const FieldContainerPtr& container, const BitVector& whichField) override
    {
        const FieldContainerType& type = container->getType();
        if (type.isDerivedFrom(Node::_type) || type.isDerivedFrom(AttachmentContainer::_type))
        {
            const BitVector shape = AttachmentContainer::AttachmentsFieldMask | AttachmentContainer::NodeNameFieldMask |
                                    (type.isDerivedFrom(Node::_type)
                                         ? Node::CoreFieldMask | Node::ChildrenFieldMask | Node::TravMaskFieldMask
                                         : BitVector());
            if (whichField.intersects(shape))
                _structure = true;
        }
        _appearance = true;
        schedule();
    }

    void containerDestroyed(UInt32) override
    {
        _structure = true;
        schedule();
    }

    void markStructure()
    {
        _structure = true;
        _appearance = true;
        schedule();
    }

    void markSettings()
    {
        _settings = true;
        schedule();
    }

    void flush()
    {
        _timer.stop();
        // The flags go first: a listener may mark again.
        const bool structure = _structure, appearance = _appearance, settings = _settings;
        _structure = _appearance = _settings = false;
        if (structure)
            Q_EMIT _scene->structureChanged();
        if (appearance || structure)
            Q_EMIT _scene->appearanceChanged();
        if (settings)
            Q_EMIT _scene->settingsChanged();
    }

private:
    void schedule()
    {
        if (!_timer.isActive())
            _timer.start();
    }

    kxScene* _scene;
    QTimer _timer;
    bool _structure = false;
    bool _appearance = false;
    bool _settings = false;
};

kxScene* kxScene::the()
{
    // Never freed: handles may be used by statics that go later.
    static kxScene* const instance = new kxScene;
    return instance;
}

kxScene::kxScene()
{
    if (WinThreadBase::getCurrentChangeList() == nullptr)
        WinThreadBase::setCurrentChangeList(new ChangeList); // for the life of the main thread
    const auto makeGroup = [](const char* name)
    {
        const NodePtr node = Node::create();
        node->setCore(Group::create());
        node->setNodeName(name);
        return node;
    };
    _superRoot = makeGroup("SuperRoot");
    _root = makeGroup("Root");
    _sceneplateRoot = makeGroup("Sceneplates");
    _superRoot->addChild(_root);
    _superRoot->addChild(_sceneplateRoot);
    _sceneryRoot = makeGroup("Scenery");
    _superRoot->addChild(_sceneryRoot);
    _watcher = new Watcher(this);
    WinThreadBase::getCurrentChangeList()->addListener(_watcher);
}

void kxScene::addMaterial(const MaterialPtr& material)
{
    insertMaterial(_materials.size(), material);
}

void kxScene::insertMaterial(std::size_t index, const MaterialPtr& material)
{
    if (material == NullFC || std::find(_materials.begin(), _materials.end(), material) != _materials.end())
        return;
    material->addRef();
    _materials.insert(_materials.begin() + std::ptrdiff_t(std::min(index, _materials.size())), material);
    markStructureChanged();
}

void kxScene::subMaterial(const MaterialPtr& material)
{
    const auto found = std::find(_materials.begin(), _materials.end(), material);
    if (material == NullFC || found == _materials.end())
        return;
    const MaterialPtr held = *found;
    _materials.erase(found);
    held->subRef();
    markStructureChanged();
}

bool kxScene::contains(const FieldContainerPtr& object) const
{
    if (const MaterialPtr material = MaterialPtr::dcast(object))
        return std::find(_materials.begin(), _materials.end(), material) != _materials.end();
    NodePtr top = NodePtr::dcast(object);
    while (top != NullFC && top->getParent() != NullFC)
        top = top->getParent();
    return top != NullFC && top == _superRoot.get();
}

void kxScene::setSetting(const std::string& key, const std::string& value)
{
    _settings[key] = value;
}

void kxScene::clear()
{
    for (const NodePtr& top : {_root, _sceneplateRoot, _sceneryRoot})
    {
        while (top->getNChildren() > 0)
            top->subChild(top->getChild(top->getNChildren() - 1));
        while (!top->getAttachments().empty())
            top->subAttachment(top->getAttachments().back());
        markChanged(top, Node::ChildrenFieldMask | AttachmentContainer::AttachmentsFieldMask);
    }
    while (!_materials.empty())
        subMaterial(_materials.back());
    _settings.clear();
    kxChosenCamera::set(NodePtr());
    markStructureChanged();
}

void kxScene::markStructureChanged()
{
    _watcher->markStructure();
}

void kxScene::markSettingsChanged()
{
    _watcher->markSettings();
}

void kxScene::flush()
{
    _watcher->flush();
}
