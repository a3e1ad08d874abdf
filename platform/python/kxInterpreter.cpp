#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <python/kxInterpreter.h>

#include <kxLog.h>
#include <kxScript.h>
#include <python/kxPythonSetup.h>
#include <python/kxPythonTypes.h>

#include <QCoreApplication>
#include <QThread>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <memory>

namespace
{
struct Release
{
    void operator()(PyObject* object) const { Py_DECREF(object); }
};
/// A reference that is given back; null where the call that made it raised.
typedef std::unique_ptr<PyObject, Release> Ref;

struct NumberedListener
{
    int number;
    kxInterpreter::Listener listener;
};

PyObject* runner = nullptr; // the module of kxRunner.py; never released
std::vector<NumberedListener> listeners;
int lastListener = 0;
bool areStreamsNeeded = false;
volatile std::sig_atomic_t runningScripts = 0;
volatile std::sig_atomic_t pendingSignal = 0;
void (*onInterruptTaken)() = nullptr;

/// Runs `action` on the main thread: at once there, else at the next turn of its event loop.
void onMainThread(std::function<void()> action)
{
    QCoreApplication* const application = QCoreApplication::instance();
    if (application == nullptr || application->thread() == QThread::currentThread())
        action();
    else
        QMetaObject::invokeMethod(application, std::move(action), Qt::QueuedConnection);
}

void tellListeners(kxInterpreter::Stream stream, const std::string& text)
{
    const std::vector<NumberedListener> present = listeners; // a listener may add and remove listeners
    for (const NumberedListener& entry : present)
        entry.listener(stream, text);
}

/// The log prints on the process's error stream itself.
void report(const std::string& trace)
{
    kxLog::error(QString::fromStdString(trace).trimmed());
    tellListeners(kxInterpreter::Error, trace);
}

PyObject* writeStream(PyObject*, PyObject* arguments)
{
    int isError = 0;
    const char* bytes = nullptr;
    Py_ssize_t size = 0;
    if (!PyArg_ParseTuple(arguments, "py#", &isError, &bytes, &size))
        return nullptr;
    const std::string text(bytes, std::size_t(size));
    std::FILE* const file = isError != 0 ? stderr : stdout;
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0;
    const int error = errno;
    onMainThread([isError, text] { tellListeners(isError != 0 ? kxInterpreter::Error : kxInterpreter::Output, text); });
    if (isWritten || !areStreamsNeeded)
        Py_RETURN_NONE;
    errno = error;
    return PyErr_SetFromErrnoWithFilename(PyExc_OSError, isError != 0 ? "<stderr>" : "<stdout>");
}

PyObject* unhandledError(PyObject*, PyObject* arguments)
{
    const char* bytes = nullptr;
    Py_ssize_t size = 0;
    if (!PyArg_ParseTuple(arguments, "y#", &bytes, &size))
        return nullptr;
    const std::string text(bytes, std::size_t(size));
    onMainThread([text] { report(text); });
    Py_RETURN_NONE;
}

/// Gives the signal that a script is to get, and 0 the next time.
PyObject* takeSignal(PyObject*, PyObject*)
{
    const int signal = pendingSignal;
    pendingSignal = 0;
    if (signal == SIGINT && onInterruptTaken != nullptr)
        onInterruptTaken();
    return PyLong_FromLong(signal);
}

PyObject* initStreams()
{
    static PyMethodDef methods[] = {{"write", writeStream, METH_VARARGS, nullptr},
                                    {"unhandled", unhandledError, METH_VARARGS, nullptr},
                                    {"take_signal", takeSignal, METH_NOARGS, nullptr},
                                    {nullptr, nullptr, 0, nullptr}};
    static PyModuleDef definition = {
        PyModuleDef_HEAD_INIT, "_kxStreams", nullptr, -1, methods, nullptr, nullptr, nullptr, nullptr};
    PyObject* const module = PyModule_Create(&definition);
    if (module != nullptr)
        PyModule_AddIntConstant(module, "UNREAD", kxInterpreter::Unread);
    return module;
}

bool failed(const PyStatus& status)
{
    if (PyStatus_Exception(status) == 0)
        return false;
    kxLog::error("Python can't start: %s", status.err_msg != nullptr ? status.err_msg : "unknown reason");
    return true;
}

bool initialize()
{
    PyPreConfig preConfig;
    PyPreConfig_InitIsolatedConfig(&preConfig);
    preConfig.utf8_mode = 1;
#ifdef KX_SANITIZED
    preConfig.allocator = PYMEM_ALLOCATOR_MALLOC; // Python's own pools hide faults from the sanitizers
#endif
    if (failed(Py_PreInitialize(&preConfig)))
        return false;

    PyConfig config;
    PyConfig_InitIsolatedConfig(&config);
    config.buffered_stdio = 0;
    config.write_bytecode = 0; // users' folders stay as they are
    const bool started = !failed(PyConfig_SetString(&config, &config.home, kxPythonHome)) &&
                         !failed(PyConfig_SetString(&config, &config.program_name, kxPythonProgram)) &&
                         !failed(Py_InitializeFromConfig(&config));
    PyConfig_Clear(&config);
    return started;
}

bool loadRunner()
{
    const Ref code(Py_CompileString(kxRunnerSource, "<runner>", Py_file_input));
    runner = code ? PyImport_ExecCodeModule("_kxRunner", code.get()) : nullptr;
    if (runner != nullptr)
        return true;
    PyErr_Print();
    kxLog::error(QStringLiteral("Python started, but can't run scripts."));
    return false;
}

kxScriptResult notRunning()
{
    kxScriptResult result;
    result.ok = false;
    result.exitCode = 1;
    result.trace = "Python isn't running.\n";
    return result;
}

/// The pending exception, of the machinery and not of a script.
kxScriptResult internalError()
{
    if (PyErr_ExceptionMatches(PyExc_KeyboardInterrupt) != 0 || PyErr_ExceptionMatches(PyExc_SystemExit) != 0)
    {
        // By a signal, when the script was over.
        PyErr_Clear();
        return {false, true, 128 + SIGINT, std::string()};
    }
    PyErr_Print();
    kxScriptResult result = notRunning();
    result.trace = "The script can't be run.\n";
    return result;
}

/// Reads (ok, exited, code, trace).
kxScriptResult toResult(PyObject* outcome)
{
    int ok = 0;
    int exited = 0;
    kxScriptResult result;
    PyObject* trace = nullptr;
    if (!PyArg_ParseTuple(outcome, "ppiU", &ok, &exited, &result.exitCode, &trace))
        return internalError();
    const Ref bytes(PyUnicode_AsEncodedString(trace, "utf-8", "backslashreplace"));
    if (!bytes)
        return internalError();
    result.ok = ok != 0;
    result.exited = exited != 0;
    result.trace.assign(PyBytes_AS_STRING(bytes.get()), std::size_t(PyBytes_GET_SIZE(bytes.get())));
    return result;
}

/// Calls a function of kxRunner.py with one argument, given back before the return.
kxScriptResult callRunner(const char* function, PyObject* argument)
{
    const Ref held(argument);
    ++runningScripts;
    const Ref outcome(held ? PyObject_CallMethod(runner, function, "O", argument) : nullptr);
    --runningScripts;
    return outcome ? toResult(outcome.get()) : internalError();
}

PyObject* toPath(const std::string& path)
{
    return PyUnicode_DecodeFSDefaultAndSize(path.data(), Py_ssize_t(path.size()));
}

kxScriptResult reported(kxScriptResult result)
{
    if (!result.trace.empty())
        report(result.trace);
    return result;
}
} // namespace

kxInterpreter::Lock::Lock() : _state(Py_IsInitialized() != 0 ? int(PyGILState_Ensure()) : -1) {}

kxInterpreter::Lock::~Lock()
{
    if (_state >= 0)
        PyGILState_Release(PyGILState_STATE(_state));
}

bool kxInterpreter::start()
{
    if (isRunning())
        return true;
    if (Py_IsInitialized() != 0)
    {
        kxLog::error(QStringLiteral("Python runs already, but not for scripts."));
        return false;
    }
    PyImport_AppendInittab("_kxStreams", initStreams);
    PyImport_AppendInittab(kxPythonTypes::ModuleName, kxPythonTypes::initModule);
    kxPythonRegisterFactory::run(kxPythonRegisterFactory::BeforeStart);
    if (!initialize() || !loadRunner())
        return false;
    if (!kxScript::run(std::string("from ") + kxPythonTypes::ModuleName + " import *"))
        return false;
    kxPythonRegisterFactory::run(kxPythonRegisterFactory::AfterStart);
    return true;
}

bool kxInterpreter::isRunning()
{
    return runner != nullptr;
}

void kxInterpreter::adoptBuiltInModules()
{
    if (!isRunning())
        return;
    const Lock lock;
    // Python imports only what is in this tuple, which it fills at its start.
    const Ref names(PyList_New(0));
    for (const _inittab* entry = PyImport_Inittab; names && entry->name != nullptr; ++entry)
    {
        const Ref name(PyUnicode_FromString(entry->name));
        if (!name || PyList_Append(names.get(), name.get()) != 0)
            break;
    }
    const Ref tuple(names ? PyList_AsTuple(names.get()) : nullptr);
    if (!tuple || PySys_SetObject("builtin_module_names", tuple.get()) != 0)
        PyErr_Print();
}

kxScriptResult kxInterpreter::run(const std::string& text, const std::string& name)
{
    if (!isRunning())
        return reported(notRunning());
    const Lock lock;
    const Ref outcome(
        PyObject_CallMethod(runner, "run_text", "y#s", text.data(), Py_ssize_t(text.size()), name.c_str()));
    return reported(outcome ? toResult(outcome.get()) : internalError());
}

kxScriptResult kxInterpreter::runFile(const std::string& path)
{
    if (!isRunning())
        return reported(notRunning());
    const Lock lock;
    return reported(callRunner("run_file", toPath(path)));
}

kxScriptResult kxInterpreter::runCommand(const std::string& text)
{
    if (!isRunning())
        return reported(notRunning());
    const Lock lock;
    return reported(callRunner("run_command", PyBytes_FromStringAndSize(text.data(), Py_ssize_t(text.size()))));
}

kxScriptResult kxInterpreter::runPrompt(const std::string& history)
{
    if (!isRunning())
        return reported(notRunning());
    const Lock lock;
    return reported(callRunner("run_prompt", toPath(history)));
}

void kxInterpreter::setArguments(const std::vector<std::string>& arguments)
{
    if (!isRunning())
        return;
    const Lock lock;
    const Ref list(PyList_New(0));
    for (const std::string& argument : arguments)
        if (const Ref text(toPath(argument)); list && text)
            PyList_Append(list.get(), text.get());
    if (!list || PyObject_SetAttrString(runner, "arguments", list.get()) != 0)
        PyErr_Print();
}

void kxInterpreter::heedInterrupts(void (*taken)())
{
    onInterruptTaken = taken;
    if (!isRunning())
        return;
    const Lock lock;
    if (!Ref(PyObject_CallMethod(runner, "heed_interrupts", nullptr)))
        PyErr_Print();
}

void kxInterpreter::interrupt(int signal)
{
    if (runningScripts == 0)
        return;
    pendingSignal = signal;
    PyErr_SetInterrupt();
}

kxScriptResult kxInterpreter::runInteractive(const std::string& text, bool* needsMore)
{
    if (needsMore != nullptr)
        *needsMore = false;
    if (!isRunning())
        return notRunning();
    const Lock lock;
    const Ref source(PyUnicode_DecodeUTF8(text.data(), Py_ssize_t(text.size()), "replace"));
    const Ref answer(source ? PyObject_CallMethod(runner, "run_interactive", "O", source.get()) : nullptr);
    int more = 0;
    PyObject* outcome = nullptr;
    if (!answer || !PyArg_ParseTuple(answer.get(), "pO", &more, &outcome))
        return internalError();
    if (needsMore != nullptr)
        *needsMore = more != 0;
    return toResult(outcome);
}

std::vector<std::string> kxInterpreter::complete(const std::string& text)
{
    std::vector<std::string> names;
    if (!isRunning())
        return names;
    const Lock lock;
    const Ref source(PyUnicode_DecodeUTF8(text.data(), Py_ssize_t(text.size()), "replace"));
    const Ref found(source ? PyObject_CallMethod(runner, "complete", "O", source.get()) : nullptr);
    if (!found || !PyList_Check(found.get()))
    {
        PyErr_Clear();
        return names;
    }
    for (Py_ssize_t i = 0; i < PyList_GET_SIZE(found.get()); ++i)
    {
        const char* const name = PyUnicode_AsUTF8(PyList_GET_ITEM(found.get(), i));
        if (name != nullptr)
            names.emplace_back(name);
        else
            PyErr_Clear();
    }
    return names;
}

void kxInterpreter::needStreams()
{
    areStreamsNeeded = true;
}

int kxInterpreter::addListener(Listener listener)
{
    listeners.push_back({++lastListener, std::move(listener)});
    return lastListener;
}

void kxInterpreter::removeListener(int number)
{
    listeners.erase(std::remove_if(listeners.begin(), listeners.end(),
                                   [number](const NumberedListener& entry) { return entry.number == number; }),
                    listeners.end());
}
