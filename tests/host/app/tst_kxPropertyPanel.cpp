#include "kxSceneFixture.h"

#include <QKXSpiner.h>
#include <journal/kxHistory.h>
#include <kxSendMouse.h>
#include <kxServices.h>
#include <osg/AnimAttachments.h>
#include <panels/kxColorButton.h>
#include <panels/kxMaterialPanel.h>
#include <panels/kxPropertyPanel.h>
#include <panels/kxPropertyRow.h>
#include <panels/kxSceneTreePanel.h>
#include <scene/CameraLight.h>
#include <scene/UberMaterial.h>

#include <QtWidgets>

using namespace kxSceneFixture;

class tst_kxPropertyPanel : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        clear();
        _panel.reset(new kxPropertyPanel);
        _panel->show();
    }

    void cleanup() { _panel.reset(); }

    void showsTheFields_data()
    {
        const QStringList placed{"Visible yes", "Position 1.000 2.500 -3.000", "Rotation 10.00° 20.00° 30.00°",
                                 "Orientation 0.00° 0.00° 0.00°", "Scale 1.000 2.000 4.000"};
        const QStringList material{
            "Base colour 0.800 0.800 0.800", "Metallic 0.750",  "Roughness 0.500",    "Opacity 1.000",
            "Emissive 0.000 0.000 0.000",    "Double-sided no", "Cut-out below 0.000"};
        kxColumns<QString, QStringList>("kind", "shown");
        kxRow("transform", "transform", placed);
        kxRow("surface", "surface", placed + QStringList("Material Steel") + material);
        kxRow("camera", "camera",
              placed + QStringList({"Field of view 37.85°", "Focal length 35.00 mm", "Near 0.1000", "Far 10000.00"}));
        kxRow("light", "light",
              placed + QStringList(
                           {"Kind Directional", "Colour 1.000 1.000 1.000", "Intensity 1.000", "Cone angle 45.00°"}));
        kxRow("material", "material", material);
        kxRow("variants", "variants", placed + QStringList("Shown child 0"));
    }

    void showsTheFields()
    {
        QFETCH(QString, kind);
        const osg::MaterialPtr steel = addMaterial("Steel");
        osg::UberMaterialPtr::dcast(steel)->setMetallic(0.75f);
        const osg::NodePtr node = kind == "surface" ? addSurface("Node", steel) : addObject("Node");
        if (kind == "camera")
            node->setCore(osg::Camera::create());
        else if (kind == "light")
            node->setCore(osg::Light::create());
        else if (kind == "variants")
            node->setCore(osg::Switch::create());
        if (const osg::TransformPtr place = osg::TransformPtr::dcast(node->getCore()); place != osg::NullFC)
        {
            place->setTranslation(osg::Vec3f(1, 2.5f, -3));
            place->setEulerRotation(osg::Vec3f(10, 20, 30));
            place->setScale(osg::Vec3f(1, 2, 4));
        }
        if (kind == "material")
            kxSelection::the().selectMaterials({steel});
        else
            select({node});
        QCoreApplication::processEvents();
        QStringList shown;
        for (const kxPropertyRow* const row : _panel->findChildren<kxPropertyRow*>())
        {
            shown << row->label();
            for (const QWidget* const part : row->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
                if (const auto* const spinner = qobject_cast<const QKXDoubleSpiner*>(part))
                    shown.back() += ' ' + spinner->text();
                else if (const auto* const choice = qobject_cast<const QComboBox*>(part))
                    shown.back() += ' ' + choice->currentText();
                else if (const auto* const box = qobject_cast<const QCheckBox*>(part))
                    shown.back() += box->isChecked() ? " yes" : " no";
        }
        QTEST(shown, "shown");
        _panel->resize(1, 400);
        QCoreApplication::processEvents();
        const auto* const scroll = _panel->findChild<QScrollArea*>();
        QVERIFY(scroll->widget()->width() <= scroll->viewport()->width()); // no field is cut off
    }

    void choicesAndBoxes()
    {
        const osg::MaterialPtr steel = addMaterial("Steel"), brass = addMaterial("Brass");
        const osg::NodePtr a = addSurface("A", steel), b = addSurface("B", steel);
        b->setTravMask(0);
        select({a, b});
        auto* const visible = _panel->findChild<QCheckBox*>("visibleBox");
        QCOMPARE(visible->checkState(), Qt::PartiallyChecked);
        visible->click();
        QVERIFY(a->isActive() && b->isActive() && visible->checkState() == Qt::Checked);
        QVERIFY(!_panel->findChild<QComboBox*>("materialBox")->font().italic());
        visible->click();
        visible->click();
        QCOMPARE(visible->checkState(), Qt::Checked); // never in between by hand
        auto* const material = _panel->findChild<QComboBox*>("materialBox");
        material->setCurrentIndex(material->findText("Brass"));
        Q_EMIT material->activated(material->currentIndex());
        const auto shows = [](const osg::NodePtr& node)
        { return osg::GeometryPtr::dcast(node->getCore())->getMaterial(); };
        QVERIFY(shows(a) == brass && shows(b) == brass);
        osg::GeometryPtr::dcast(b->getCore())->setMaterial(steel);
        osg::UberMaterialPtr::dcast(brass)->setBaseColor(osg::Color3f(0, 0, 1));
        osg::markChanged(brass, osg::UberMaterial::BaseColorFieldMask);
        turn();
        const auto* const both = _panel->findChild<QScrollArea*>()->widget()->findChild<QComboBox*>("materialBox");
        QVERIFY(both->font().italic()); // the two differ
        const QColor ball = both->itemIcon(both->currentIndex()).pixmap(32).toImage().pixelColor(16, 16);
        QVERIFY(ball.blue() > 2 * ball.red());
        osg::GeometryPtr::dcast(b->getCore())->setMaterial(brass);
        _panel->resize(300, 120);
        auto* const scroll = _panel->findChild<QScrollArea*>()->verticalScrollBar();
        QCoreApplication::processEvents();
        scroll->setValue(40);
        stack()->undo(); // other rows, at the same place
        turn();
        QCOMPARE(scroll->value(), 40);
        QCOMPARE(_panel->findChild<QComboBox*>("materialBox")->currentText(), QString("Steel"));
        const osg::NodePtr light = kxSceneEdits::makeNode(osg::Light::create(), "Light");
        kxScene::the()->root()->addChild(light);
        select({light});
        Q_EMIT _panel->findChild<QComboBox*>("kindBox")->activated(2);
        QCOMPARE(int(osg::LightPtr::dcast(light->getCore())->getKind()), 2);
        QCOMPARE(_panel->findChild<QComboBox*>("kindBox")->currentText(), QString("Spot"));
        Q_EMIT _panel->findChild<kxColorButton*>()->colorPicked(osg::Vec3f(0, 0.5f, 1));
        QVERIFY(osg::LightPtr::dcast(light->getCore())->getColor() == osg::Color3f(0, 0.5f, 1));
        QCOMPARE(stack()->count(), 2);
    }

    void coloursAreChosen()
    {
        const osg::Vec3f linear(0.2f, 0.5f, 0.002f), dark(0.4f, 0.02f, 0.1f);
        QCOMPARE(kxColorButton::toScreen(linear).rgb(), qRgb(124, 188, 7)); // by the definition of sRGB
        kxColorButton button;
        button.setColor(dark);
        button.resize(30, 30);
        const auto middle = [&button] { return button.grab().toImage().pixel(15, 15); };
        QCOMPARE(middle(), kxColorButton::toScreen(dark).rgb());
        osg::Vec3f picked;
        connect(&button, &kxColorButton::colorPicked, this, [&picked](const osg::Vec3f& color) { picked = color; });
        button.click();
        auto* const dialog = button.findChild<QColorDialog*>();
        QVERIFY(dialog->isVisible());
        QCOMPARE(dialog->currentColor().rgb(), kxColorButton::toScreen(dark).rgb());
        dialog->setCurrentColor(QColor(124, 188, 7));
        for (std::size_t i = 0; i < 3; ++i)
            QVERIFY(qAbs(picked[i] - linear[i]) < 0.003f);
        dialog->reject();
        QVERIFY(picked == dark);
        button.setColor(linear);
        QCOMPARE(middle(), qRgb(124, 188, 7));
    }

    void typedValueGoesToAll()
    {
        const osg::NodePtr a = addObject("A"), b = addObject("B");
        osg::TransformPtr::dcast(b->getCore())->setTranslation(osg::Vec3f(4, 4, 4));
        select({a, b});
        QKXDoubleSpiner* const x = spinner("translationX");
        QVERIFY(x != nullptr && x->font().italic()); // the two differ
        x->setFocus();
        x->selectAll();
        QTest::keyClicks(x, "+=2");
        QTest::keyClick(x, Qt::Key_Return);
        QCOMPARE(osg::TransformPtr::dcast(a->getCore())->getTranslation().x(), 2.0f);
        QCOMPARE(osg::TransformPtr::dcast(b->getCore())->getTranslation().x(), 6.0f);
        QCOMPARE(stack()->count(), 1);
        stack()->undo();
        kxScene::the()->flush();
        QCOMPARE(x->value(), 0.0);
    }

    /// However it is entered; each field and axis is another one.
    void aRowOfNumbersIsOneStep()
    {
        const osg::NodePtr node = addObject("Rest");
        select({node});
        kxHistory::the().flush();
        kxHistory::the().clear();
        QKXDoubleSpiner* const y = spinner("eulerRotationOrientationY");
        y->setFocus();
        for (int i = 0; i < 3; ++i)
            QTest::keyClick(y, Qt::Key_Up);
        for (int i = 0; i < 5; ++i)
        {
            QWheelEvent wheel(QPointF(3, 3), y->mapToGlobal(QPoint(3, 3)), QPoint(), QPoint(0, 120), Qt::NoButton,
                              Qt::NoModifier, Qt::NoScrollPhase, false);
            QApplication::sendEvent(y, &wheel);
            QCoreApplication::processEvents();
        }
        y->selectAll();
        QTest::keyClicks(y, "35");
        QTest::keyClick(y, Qt::Key_Return);
        for (const char* const field : {"eulerRotationOrientationX", "translationX", "translationY"})
            Q_EMIT spinner(field)->relativeOperatorApplied(RelativeAdd, 3);
        QStringList texts;
        for (int i = 0; i < kxHistory::the().count(); ++i)
            texts << kxHistory::the().entry(i).text();
        QCOMPARE(texts, QStringList({"Change Orientation.Y of Rest: 35\u00b0", "Change Orientation.X of Rest: 3\u00b0",
                                     "Change Position.X of Rest: 3", "Change Position.Y of Rest: 3"}));
        kxHistory::the().setIndex(0);
        const osg::TransformPtr core = osg::TransformPtr::dcast(node->getCore());
        QVERIFY(core->getEulerRotationOrientation() == osg::Vec3f() && core->getTranslation() == osg::Vec3f());
    }

    void marksWhatIsDriven()
    {
        const osg::NodePtr node = addObject("Node");
        animate(node);
        kxAnimManager::the()->updateSceneAnimCurveData();
        kxAnimManager::the()->setCurrentFrame(6, true, true);
        select({node});
        QVERIFY(spinner("translationX")->property("driven").toBool());
        QVERIFY(!spinner("translationY")->property("driven").toBool());
        // As soon as nothing drives it any more.
        node->subAttachment(node->findAttachment<osg::AnimAttachment>());
        osg::markChanged(node, osg::Node::AttachmentsFieldMask);
        kxAnimManager::the()->reevaluateAnimations(true);
        kxScene::the()->markStructureChanged();
        kxScene::the()->flush();
        QVERIFY(!spinner("translationX")->property("driven").toBool());
    }

    void whatIsSelectedAgainIsShown()
    {
        addSurface("A", addMaterial("Steel"));
        addMaterial("Brass");
        kxMaterialPanel materials;
        QMenu menu;
        kxSceneTreePanel tree(&menu);
        const auto click = [](QAbstractItemView* view, int row)
        {
            const QModelIndex index = view->model()->index(row, 0);
            QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(index).center());
            QCoreApplication::processEvents();
        };
        const auto name = [this] { return _panel->findChild<QLineEdit*>("_name")->text(); };
        auto* const list = materials.findChild<QListView*>();
        auto* const objects = tree.findChild<QTreeView*>();
        materials.show();
        tree.show();
        for (int i = 0; i < 2; ++i)
        {
            click(list, 1);
            QCOMPARE(name(), QString("Brass"));
            click(objects, 0);
            QCOMPARE(name(), QString("A"));
        }
    }

    void tabGoesFromNumberToNumber_data()
    {
        kxColumns<bool, QStringList>("material", "numbers");
        kxRow("object", false, QStringList{"translationX", "translationY", "translationZ", "eulerRotationX"});
        kxRow("material", true, QStringList{"baseColorR", "baseColorG", "baseColorB", "metallic"});
    }

    void tabGoesFromNumberToNumber()
    {
        QFETCH(bool, material);
        QFETCH(QStringList, numbers);
        const osg::MaterialPtr steel = addMaterial("Steel");
        if (material)
            kxSelection::the().selectMaterials({steel});
        select(material ? std::vector<osg::NodePtr>() : std::vector<osg::NodePtr>{addSurface("A", steel)});
        QVERIFY(QTest::qWaitForWindowActive(_panel.data()));
        spinner(qPrintable(numbers[0]))->setFocus();
        for (int i = 0; i < numbers.size(); ++i)
        {
            QCOMPARE(QApplication::focusWidget()->objectName(), numbers[i]);
            QTest::keyClicks(QApplication::focusWidget(), "0.25");
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            kxScene::the()->flush();
            QCoreApplication::processEvents();
        }
    }

    void survivesTheEndOfItsObject()
    {
        const osg::NodePtr node = addObject("Node");
        select({node});
        QKXDoubleSpiner* const x = spinner("translationX");
        kxScene::the()->clear(); // dies at once, the panel is notified later
        Q_EMIT x->relativeOperatorApplied(RelativeAdd, 1);
        turn();
        QVERIFY(spinner("translationX") == nullptr || !spinner("translationX")->isVisible());
    }

    void followsOnce()
    {
        const osg::NodePtr a = addObject("A"), b = addObject("B"), c = addObject("C");
        select({a});
        const QPointer<QLineEdit> name = _panel->findChild<QLineEdit*>("_name");
        for (const osg::NodePtr& node : {b, a, c}) // as a script does it
            kxSelection::the().selectNodes({node});
        QVERIFY(name && name->isVisible());
        QTRY_COMPARE(_panel->findChild<QLineEdit*>("_name")->text(), QString("C"));
    }

    void pagesDieWhileAScriptTurnsTheLoop()
    {
        const auto widgets = [] { return QApplication::allWidgets().size(); };
        int after10 = 0;
        for (int i = 0; i < 30; ++i)
        {
            const osg::NodePtr node = addObject("Node");
            node->setCore(i % 2 == 0 ? osg::NodeCorePtr(osg::Geometry::create()) : osg::Transform::create());
            kxSelection::the().selectNodes({node});
            turn();
            node->setCore(osg::Transform::create());
            osg::markChanged(node, osg::Node::CoreFieldMask);
            turn();
            kxScene::the()->root()->subChild(node);
            turn();
            if (i == 10)
                after10 = widgets();
        }
        turn();
        QVERIFY2(widgets() < after10 + 100, qPrintable(QString::number(widgets() - after10)));
    }

private:
    QKXDoubleSpiner* spinner(const char* name) const
    {
        return _panel->findChild<QKXDoubleSpiner*>(QString::fromLatin1(name));
    }
    static void turn()
    {
        kxScene::the()->flush();
        QCoreApplication::processEvents();
    }
    void select(const std::vector<osg::NodePtr>& nodes)
    {
        kxSelection::the().selectNodes(nodes);
        QCoreApplication::processEvents(); // it follows when the event loop comes back
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        stack()->clear();
    }
    QScopedPointer<kxPropertyPanel> _panel;
};

QTEST_MAIN(tst_kxPropertyPanel)
#include "tst_kxPropertyPanel.moc"
