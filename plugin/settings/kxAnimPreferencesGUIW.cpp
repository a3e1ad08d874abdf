#include <settings/kxAnimPreferencesGUIW.h>

#include <QKXCollapsibleFrame.h>

kxAnimPreferencesGUIW::kxAnimPreferencesGUIW(QWidget* parent) : QWidget(parent)
{
    setupUi(this);
    QKXCollapsibleFrame::fixLayouts(this, 130, nullptr);
}
