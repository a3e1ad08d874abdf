#pragma once

#include <clipmaker/kxAnimClipStructureWidget.h>
#include <trees/kxAnimLibraryPayload.h>

#include <kxAnimFixture.h>
#include <kxTreeProbe.h>

/// A scene with an object, its block "walk", and clips, beside the tree of clips:
///
///   A           B          C
///   |- inner    |- step
///      |- jump
class kxClipTree : public kxAnimFixture
{
public:
    typedef kxTreeProbe<kxAnimClipStructureWidget> Tree;

    kxClipTree()
    {
        for (const char* name : {"walk", "jump", "step"})
            kernel()->addAnimation(object(), block(name, {curve("translation", "X", {{0, 0}, {2, 5}})}));
        for (const osg::AnimNodePtr& node :
             {clip("A", {clip("inner", {clone(find("jump"), 0)})}), clip("B", {clone(find("step"), 0)}), clip("C", {})})
            kernel()->addToClipStructure(node);
        tree.resize(240, 300);
        tree.rebuild(false);
        tree.expandAll();
    }

    static kxAnimManager* kernel() { return kxAnimManager::the(); }
    /// Of the first animation of that name under an object.
    static osg::AnimNodePtr find(const char* name)
    {
        kxAnimManager::NodeTopLevelAnimations all;
        kernel()->getNodesWithAnimation(kxScene::the()->root(), all);
        for (const kxAnimManager::kxAnimNodeData& entry : all)
            for (const osg::AnimNodePtr& animation : entry.animations)
                if (animation->getNodeName() == name)
                    return animation;
        return osg::AnimNodePtr();
    }
    osg::AnimNodePtr node(const QString& path) { return tree.row(path)->animNode(); }

    /// The names of the active nodes, then of the locked ones, as the boxes of their rows say.
    QStringList checks()
    {
        QStringList names;
        for (const int column : {0, 1})
            for (const QTreeWidgetItem* const row : tree.rows())
                if (row->checkState(column) == Qt::Checked)
                    names << row->text(0);
        return names;
    }

    /// What a drag of these nodes out of the library carries.
    static QMimeData* libraryDrag(const std::vector<unsigned int>& ids)
    {
        kxAnimLibraryPayload payload;
        for (const unsigned int id : ids)
            payload.rows.push_back({id, 0});
        auto* const mime = new QMimeData;
        mime->setData(QLatin1String(kxAnimLibraryPayload::MimeType), payload.encode());
        return mime;
    }
    /// Drops such a drag; an empty `target` is the blank area.
    bool dropFromLibrary(const std::vector<unsigned int>& ids, const QString& target)
    {
        const std::unique_ptr<QMimeData> mime(libraryDrag(ids));
        return tree.dropMimeData(target.isEmpty() ? nullptr : tree.row(target), 0, mime.get(), Qt::CopyAction);
    }
    /// What a tree that is made now shows.
    static QStringList fresh()
    {
        Tree other;
        other.rebuild(false);
        return other.dump();
    }

    Tree tree;
};
