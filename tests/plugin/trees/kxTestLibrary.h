#pragma once

#include <trees/kxAnimLibraryPayload.h>
#include <trees/kxAnimLibraryWidget.h>
#include <trees/kxAnimTreeWidgetItem.h>

#include <kxAnimFixture.h>
#include <scene/UberMaterial.h>
#include <scene/kxScene.h>

#include <QMimeData>
#include <QTreeWidgetItemIterator>

#include <memory>

/// A library whose protected parts are open, and short words for what it shows.
namespace kxTestLibrary
{
struct Library : kxAnimLibraryWidget
{
    using kxAnimLibraryWidget::contextMenu;
    using kxAnimLibraryWidget::dragMoveEvent;
    using kxAnimLibraryWidget::dropMimeData;
    using kxAnimLibraryWidget::mimeData;
    using kxAnimLibraryWidget::showContextMenu;

    /// The row whose texts from the top level down are these, null where there is none.
    kxAnimTreeWidgetItem* row(const QString& path)
    {
        QTreeWidgetItem* found = invisibleRootItem();
        for (const QString& text : path.split('/'))
        {
            QTreeWidgetItem* next = nullptr;
            for (int i = 0; found != nullptr && i < found->childCount() && next == nullptr; ++i)
                if (found->child(i)->text(0) == text)
                    next = found->child(i);
            found = next;
        }
        return static_cast<kxAnimTreeWidgetItem*>(found);
    }
    void select(const QString& paths)
    {
        clearSelection();
        for (const QString& path : paths.split(','))
            row(path)->setSelected(true);
    }
    /// One line a row: its depth as dots and its text; "+" behind an expanded row, "*" behind a selected one.
    QStringList dump(bool withStates = false)
    {
        QStringList lines;
        for (QTreeWidgetItemIterator it(this); *it != nullptr; ++it)
        {
            QString line = (*it)->text(0);
            for (QTreeWidgetItem* above = (*it)->parent(); above != nullptr; above = above->parent())
                line.prepend('.');
            if (withStates && (*it)->isExpanded())
                line.append('+');
            if (withStates && (*it)->isSelected())
                line.append('*');
            lines.append(line);
        }
        return lines;
    }
    kxAnimLibraryPayload payload()
    {
        const std::unique_ptr<QMimeData> mime(mimeData(selectedItems()));
        return kxAnimLibraryPayload::of(mime.get());
    }
    bool drop(const QString& source, const QString& target)
    {
        select(source);
        const std::unique_ptr<QMimeData> mime(mimeData(selectedItems()));
        return dropMimeData(target.isEmpty() ? nullptr : row(target), 0, mime.get(), Qt::CopyAction);
    }
};

inline kxAnimManager* kernel()
{
    return kxAnimManager::the();
}

inline osg::AnimNodePtr block(const char* name)
{
    return kxAnimFixture::block(name, {kxAnimFixture::curve("translation", "X", {{0.0f, 0.0f}, {1.0f, 1.0f}})});
}

inline osg::NodePtr object(const char* name, const std::vector<osg::AnimNodePtr>& animations)
{
    const osg::NodePtr node = kxAnimFixture::object(name);
    for (const osg::AnimNodePtr& animation : animations)
        kernel()->addAnimation(node, animation);
    return node;
}

inline osg::MaterialPtr material(const char* name, const std::vector<osg::AnimNodePtr>& animations)
{
    const osg::UberMaterialPtr made = osg::UberMaterial::create();
    made->setNodeName(name);
    kxScene::the()->addMaterial(made);
    for (const osg::AnimNodePtr& animation : animations)
        kernel()->addAnimation(made, animation);
    return made;
}

inline void tag(const osg::AttachmentContainerPtr& object, const std::vector<std::string>& names)
{
    const osg::TagAttachmentPtr tags = osg::TagAttachmentBase::create();
    tags->editAnimations() = names;
    object->addAttachment(tags);
}

inline std::vector<std::string> tagsOf(const osg::AttachmentContainerPtr& object)
{
    const osg::TagAttachmentPtr tags = object->findAttachment<osg::TagAttachment>();
    return tags == osg::NullFC ? std::vector<std::string>() : tags->getAnimations();
}
} // namespace kxTestLibrary
