#pragma once

#include <edits/kxFieldLook.h>

#include <QWidget>
#include <osg/FieldContainerFactory.h>
#include <scene/FieldDescription.h>

#include <set>
#include <string>
#include <vector>

class QCheckBox;
class QComboBox;
class QKXDoubleSpiner;
class kxColorButton;

/// One field of the selected containers: shows the first one's value, and writes to all.
class kxPropertyRow : public QWidget
{
    Q_OBJECT
public:
    /// The row that fits the field, null for one that isn't shown. `containers` isn't empty and all have the field.
    static kxPropertyRow* make(const std::vector<osg::FieldContainerPtr>& containers,
                               const osg::FieldDescription& field);

    /// Reads the values again; a field that the user is typing in is left alone.
    virtual void refresh() = 0;
    /// Marks the components that animations drive at this moment.
    void updateDriven();

    const std::string& field() const { return _field; }
    QString label() const { return _look.label; }
    /// Those that live.
    std::vector<osg::FieldContainerPtr> containers() const;

protected:
    kxPropertyRow(const std::vector<osg::FieldContainerPtr>& containers, const osg::FieldDescription& field);
    /// Null once all containers are gone.
    osg::FieldContainerPtr first() const;
    const osg::FieldDescription* description() const;
    osg::FieldValue value() const;
    void write(const osg::FieldValue& value);
    virtual void setDriven(const std::set<unsigned>& components);

    kxFieldLook _look;

private:
    std::vector<unsigned int> _ids;
    std::string _field;
    std::set<unsigned> _driven; // as it is shown
};

/// Numbers side by side, with a colour patch before them where they are red, green and blue.
class kxNumberRow : public kxPropertyRow
{
    Q_OBJECT
public:
    kxNumberRow(const std::vector<osg::FieldContainerPtr>& containers, const osg::FieldDescription& field);
    void refresh() override;

protected:
    void setDriven(const std::set<unsigned>& components) override;

private:
    void addSpinner(unsigned component, const osg::FieldDescription& field);
    float number(const osg::FieldContainerPtr& container, unsigned component) const;

    std::vector<QKXDoubleSpiner*> _spinners;
    std::vector<std::string> _suffixes;
    kxColorButton* _color = nullptr; // null where the field is no colour
};

/// Yes or no.
class kxCheckRow : public kxPropertyRow
{
    Q_OBJECT
public:
    kxCheckRow(const std::vector<osg::FieldContainerPtr>& containers, const osg::FieldDescription& field);
    void refresh() override;

protected:
    void setDriven(const std::set<unsigned>& components) override;

private:
    QCheckBox* _box;
};

/// One of a few named values, or one of the scene's materials.
class kxChoiceRow : public kxPropertyRow
{
    Q_OBJECT
public:
    kxChoiceRow(const std::vector<osg::FieldContainerPtr>& containers, const osg::FieldDescription& field,
                bool materials);
    void refresh() override;

private:
    void fillMaterials();
    bool _materials;
    QComboBox* _box;
};
