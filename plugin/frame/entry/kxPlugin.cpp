#include <boost/python.hpp>

#include <clipmaker/kxAnimClipEditor.h>
#include <curveeditor/kxAnimCurveEditor.h>
#include <script/kxAnimNodeChannelWidget.h>
#include <script/kxAnimScript.h>
#include <settings/kxAnimPreferencesGUII.h>
#include <timeline/kxAnimControlWidget.h>

#include <kxLog.h>
#include <kxScript.h>

#include <exception>

// The entry points that the host resolves by name; everything else in the library is hidden.
#define KX_PLUGIN_EXPORT extern "C" __attribute__((visibility("default")))

KX_PLUGIN_EXPORT const char* getPluginVersion();
KX_PLUGIN_EXPORT void initPlugin();
KX_PLUGIN_EXPORT void initPreferencesPlugin();
KX_PLUGIN_EXPORT PyObject* PyInit_kxAnimWidgets();

namespace
{
void runScriptHook(kxPythonRegisterFactory::Level level)
{
    switch (level)
    {
    case kxPythonRegisterFactory::BeforeStart:
        PyImport_AppendInittab("kxAnimWidgets", PyInit_kxAnimWidgets);
        break;
    case kxPythonRegisterFactory::AfterStart:
        kxScript::run("import kxAnimWidgets");
        kxScript::run("from kxAnimWidgets import *");
        break;
    }
}

const kxPythonRegister scriptRegistration(runScriptHook);

/// Runs `build` and keeps its exceptions from the host: what failed stays unbuilt, and the next call tries again.
template <class Build>
void buildStatics(const char* entryPoint, Build build)
{
    try
    {
        build();
    }
    catch (const std::exception& error)
    {
        kxLog::error("%s : %s", entryPoint, error.what());
    }
    catch (...)
    {
        kxLog::error("%s : An unknown exception occurred!", entryPoint);
    }
}
} // namespace

const char* getPluginVersion()
{
    return KX_VERSION;
}

void initPlugin()
{
    buildStatics("initPlugin",
                 []
                 {
                     // The order of construction; they are destroyed at exit in reverse.
                     static kxAnimCurveEditor curveEditor;
                     static kxAnimClipEditor clipEditor;
                     static kxAnimControlWidget timeline;
                     kxAnimNodeChannelWidget::addDock();
                 });
}

void initPreferencesPlugin()
{
    buildStatics("initPreferencesPlugin", [] { static kxAnimPreferencesGUII preferences; });
}

PyObject* PyInit_kxAnimWidgets()
{
    static PyModuleDef definition = {
        PyModuleDef_HEAD_INIT, "kxAnimWidgets", nullptr, -1, nullptr, nullptr, nullptr, nullptr, nullptr};
    return boost::python::detail::init_module(definition, kxAnimScript::registerFunctions);
}
