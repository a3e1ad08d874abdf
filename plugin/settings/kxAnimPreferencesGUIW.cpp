#include <settings/kxAnimPreferencesGUIW.h>

kxAnimPreferencesGUIW::kxAnimPreferencesGUIW(QWidget* parent) : QWidget(parent)
{
    setupUi(this);
}
